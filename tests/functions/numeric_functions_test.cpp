#include <cmath>

#include <gtest/gtest.h>

#include "quorel/functions/functions.h"
#include "quorel/model/local_array.h"
#include "quorel/platform/random.h"
#include "quorel/values/value.h"
#include "model/test_tree.h"
#include "test_support.h"

namespace quorel {
namespace {

// Seeds the generator so that its next drawing is r.
void seedForNextDrawing(std::int32_t r) {
  for (std::uint32_t seed = 0;; ++seed) {
    platform::seedRandom(seed);
    if (platform::nextRandom() == r) {
      platform::seedRandom(seed);
      return;
    }
  }
}

class NumericFunctionsTest : public ::testing::Test {
 protected:
  RuntimeContext *rt() { return &run_.runtime; }
  Value *number(double d) { return rt()->createNumberValue(d); }
  Value *text(const char *t) { return rt()->createStringValue(t); }
  Value *invalid() { return rt()->createInvalidValue(); }

  TestRun run_;
};

TEST_F(NumericFunctionsTest, PowersRemaindersAndAbsoluteValues) {
  EXPECT_EQ(1024.0, Functions::EXPONENT(rt(), number(2), number(10))->asReal());
  EXPECT_FALSE(Functions::EXPONENT(rt(), invalid(), number(10))->isValid());
  EXPECT_EQ(-1.0, Functions::MODULO(rt(), number(-7), number(3))->asReal());
  EXPECT_EQ(1.0, Functions::MODULO(rt(), number(7), number(-3))->asReal());
  EXPECT_EQ(1.0, Functions::MODULO(rt(), number(7.9), number(2.9))->asReal());
  EXPECT_EQ(0.0, Functions::MODULO(rt(), number(-9.2e18), number(-1))->asReal());
  EXPECT_FALSE(Functions::MODULO(rt(), invalid(), number(3))->isValid());
  for (Value *divisor : {invalid(), number(0), number(0.5)}) {
    expectFailure([&] { Functions::MODULO(rt(), number(3), divisor); }, EXCEPTION_DIVISION_BY_ZERO,
                  "Division durch 0.");
  }
  EXPECT_EQ(nullptr, Functions::ABSOLUTWERT(rt(), nullptr));
  Value *nil = rt()->createNilValue();
  EXPECT_EQ(nil, Functions::ABSOLUTWERT(rt(), nil));
  EXPECT_EQ(3.0, Functions::ABSOLUTWERT(rt(), text("-3"))->asReal());
}

TEST_F(NumericFunctionsTest, LogarithmsNeedPositiveUsableOperands) {
  EXPECT_NEAR(3.0, Functions::LOGARITHMUS(rt(), number(8), number(2))->asReal(), 1e-12);
  EXPECT_NEAR(1.0, Functions::NATUERLICHER_LOGARITHMUS(rt(), number(std::exp(1.0)))->asReal(), 1e-12);
  const char kMessage[] = "Der Logarithmus kann nur f\xFC" "r Zahlen > 0 berechnet werden.";
  expectFailure([&] { Functions::LOGARITHMUS(rt(), number(0), number(2)); }, EXCEPTION_ILLEGAL_ARGUMENT,
                kMessage);
  expectFailure([&] { Functions::LOGARITHMUS(rt(), number(8), rt()->createNilValue()); },
                EXCEPTION_ILLEGAL_ARGUMENT, kMessage);
  expectFailure([&] { Functions::NATUERLICHER_LOGARITHMUS(rt(), number(-1)); }, EXCEPTION_ILLEGAL_ARGUMENT,
                "Der nat\xFC" "rliche Logarithmus kann nur f\xFC" "r Zahlen > 0 berechnet werden.");
}

TEST_F(NumericFunctionsTest, RandomNumbersReachBothEnds) {
  seedForNextDrawing(0);
  EXPECT_EQ(0.0, Functions::ZUFALLSZAHL(rt())->asReal());
  seedForNextDrawing(32767);
  EXPECT_EQ(1.0, Functions::ZUFALLSZAHL(rt())->asReal());

  Value *series = rt()->createRangeSeries(3, number(1), number(2), number(3));
  seedForNextDrawing(32767);  // the place behind the last element is never read
  EXPECT_EQ(3.0, Functions::ZUFALLSZAHL_AUS_REIHE(rt(), series)->asReal());
  seedForNextDrawing(0);
  EXPECT_EQ(1.0, Functions::ZUFALLSZAHL_AUS_REIHE(rt(), series)->asReal());
  Value *scalar = text("x");
  EXPECT_EQ(scalar, Functions::ZUFALLSZAHL_AUS_REIHE(rt(), scalar));
  EXPECT_FALSE(Functions::ZUFALLSZAHL_AUS_REIHE(rt(), rt()->createRangeSeries(0))->isValid());

  LocalArray empty(1, 0);
  EXPECT_FALSE(Functions::ZUFALLSZAHL_AUS_LISTE(rt(), &empty)->isValid());
  LocalArray three(1, 3);
  three.getElement(rt(), 1, 2)->set(rt(), number(9));
  seedForNextDrawing(32766);
  EXPECT_EQ(9.0, Functions::ZUFALLSZAHL_AUS_LISTE(rt(), &three)->asReal());
}

TEST_F(NumericFunctionsTest, RandomElementOfAFieldArrayIsReadFromTheRecord) {
  StandaloneRoot root;
  SimpleDataRecord record;
  record.setValue("Root.Liste[0]", 5);
  record.setValue("Root.Liste[2]", 7);
  PlausiContext context(&record);
  RuntimeContext runtime(&context, &run_.plausi);
  seedForNextDrawing(0);
  EXPECT_EQ(5, Functions::ZUFALLSZAHL_AUS_LISTE(&runtime, root.liste)->asInteger());
  seedForNextDrawing(32766);
  EXPECT_EQ(7, Functions::ZUFALLSZAHL_AUS_LISTE(&runtime, root.liste)->asInteger());
  seedForNextDrawing(32767);  // one behind the last element: nothing stands there
  EXPECT_FALSE(Functions::ZUFALLSZAHL_AUS_LISTE(&runtime, root.liste)->isValid());
}

TEST_F(NumericFunctionsTest, NormalDistributionIgnoresTheSignOfTheDeviation) {
  platform::seedRandom(42);
  double positive = Functions::NORMALVERTEILTE_ZUFALLSZAHL(rt(), number(10), number(2))->asReal();
  platform::seedRandom(42);
  double negative = Functions::NORMALVERTEILTE_ZUFALLSZAHL(rt(), number(10), number(-2))->asReal();
  EXPECT_EQ(positive, negative);
  EXPECT_EQ(5.0, Functions::NORMALVERTEILTE_ZUFALLSZAHL(rt(), number(5), number(0))->asReal());
  EXPECT_EQ(EXCEPTION_CONVERSION,
            thrownBy([&] { Functions::NORMALVERTEILTE_ZUFALLSZAHL(rt(), rt()->createNilValue(), number(1)); })
                .getType());
}

TEST_F(NumericFunctionsTest, MaximumIsTheFirstBestElementItself) {
  Value *sequence = rt()->createSequenceRange(number(1), number(3), number(9));
  Value *nine = Functions::MAXIMUM_AUS_REIHE(rt(), sequence);
  EXPECT_EQ(9.0, nine->asReal());
  EXPECT_EQ(NUMBER_LEVEL, nine->getOperatorLevel());
  Value *ten = text("10");
  Value *series = rt()->createRangeSeries(2, ten, text("9"));
  EXPECT_STREQ("10", Functions::MAXIMUM_AUS_REIHE(rt(), series)->asString());
  EXPECT_EQ(STRING_LEVEL, Functions::MAXIMUM_AUS_REIHE(rt(), series)->getOperatorLevel());
  Value *equal = rt()->createRangeSeries(2, text("1,0"), number(1));
  EXPECT_STREQ("1,0", Functions::MAXIMUM_AUS_REIHE(rt(), equal)->asString());
  EXPECT_FALSE(Functions::MAXIMUM_AUS_REIHE(rt(), rt()->createNilValue())->isValid());
  Value *scalar = rt()->createDateValue("01.01.2020", nullptr);
  EXPECT_EQ(scalar, Functions::MAXIMUM_AUS_REIHE(rt(), scalar));

  LocalArray values(1, 3);
  values.getElement(rt(), 1, 0)->set(rt(), number(4));
  values.getElement(rt(), 1, 1)->set(rt(), number(8));
  values.getElement(rt(), 1, 2)->set(rt(), number(8));
  EXPECT_EQ(8.0, Functions::MAXIMUM_AUS_LISTE(rt(), &values)->asReal());
}

TEST_F(NumericFunctionsTest, ConversionsAndRounding) {
  EXPECT_EQ(3.0, Functions::ALS_GANZZAHL(rt(), number(2.5))->asReal());
  EXPECT_EQ(2.0, Functions::ALS_GANZZAHL(rt(), number(2.4))->asReal());
  EXPECT_EQ(-2.0, Functions::ALS_GANZZAHL(rt(), number(-2.5))->asReal());
  EXPECT_EQ(-1.0, Functions::ALS_GANZZAHL(rt(), number(-2.4))->asReal());
  EXPECT_EQ(3.0, Functions::ALS_GANZZAHL(rt(), text("2,5"))->asReal());
  EXPECT_EQ(1.0, Functions::ALS_GANZZAHL(rt(), rt()->createBoolValue(true))->asReal());
  EXPECT_EQ(2.0, Functions::ALS_GANZZAHL_OHNE_RUNDUNG(rt(), number(2.9))->asReal());
  EXPECT_EQ(-2.0, Functions::ALS_GANZZAHL_OHNE_RUNDUNG(rt(), number(-2.9))->asReal());
  Value *missing = invalid();
  EXPECT_EQ(missing, Functions::ALS_ZEICHENKETTE(rt(), missing));
  EXPECT_STREQ("1,5", Functions::ALS_ZEICHENKETTE(rt(), number(1.5))->asString());
  expectFailure([&] { Functions::ALS_KOMMAZAHL(rt(), rt()->createDateValue("01.01.2020", nullptr)); },
                EXCEPTION_CONVERSION, "Ein Datum kann nicht in eine Zahl konvertiert werden.");

  EXPECT_DOUBLE_EQ(2.35, Functions::RUNDEN(rt(), number(2.346), number(2))->asReal());
  EXPECT_DOUBLE_EQ(-2.35, Functions::RUNDEN(rt(), number(-2.346), number(2))->asReal());
  EXPECT_EQ(3.0, Functions::RUNDEN(rt(), number(2.5), nullptr)->asReal());
  EXPECT_EQ(-3.0, Functions::RUNDEN(rt(), number(-2.5), invalid())->asReal());
  EXPECT_EQ(1235.0, Functions::RUNDEN(rt(), number(1234.5), number(0))->asReal());
  EXPECT_TRUE(std::isnan(Functions::RUNDEN(rt(), number(1.5), number(-1))->asReal()));
  EXPECT_EQ(nullptr, Functions::RUNDEN(rt(), nullptr, number(2)));
}

}  // namespace
}  // namespace quorel
