#include <cmath>

#include <gtest/gtest.h>

#include "quorel/functions/functions.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

const char kDivisionByZero[] = "Division durch 0.";

class OperatorsTest : public ::testing::Test {
 protected:
  RuntimeContext *rt() { return &run_.runtime; }
  Value *number(double d) { return rt()->createNumberValue(d); }
  Value *text(const char *t) { return rt()->createStringValue(t); }

  TestRun run_;
};

TEST_F(OperatorsTest, ComparisonsGiveTruthValuesAndPassFailuresOn) {
  Value *nil = rt()->createNilValue();
  EXPECT_FALSE(Functions::eq(rt(), nil, rt()->createNilValue())->asBool());
  EXPECT_FALSE(Functions::ne(rt(), nil, rt()->createNilValue())->asBool());
  EXPECT_TRUE(Functions::lt(rt(), text("10"), text("9"))->asBool());
  EXPECT_FALSE(Functions::lt(rt(), text("10"), number(9))->asBool());
  EXPECT_TRUE(Functions::contains(rt(), text("abc"), text("abc"))->asBool());
  EXPECT_EQ(EXCEPTION_CONVERSION, thrownBy([&] { Functions::gt(rt(), number(1), text("x")); }).getType());
}

TEST_F(OperatorsTest, NotFollowsAsBool) {
  EXPECT_TRUE(Functions::not_(rt(), rt()->createInvalidValue())->asBool());
  EXPECT_TRUE(Functions::not_(rt(), number(2))->asBool());
  EXPECT_FALSE(Functions::not_(rt(), number(1))->asBool());
  expectFailure([&] { Functions::not_(rt(), rt()->createNilValue()); }, EXCEPTION_CONVERSION,
                "Wert ist nicht initialisiert.");
  expectFailure([&] { Functions::not_(rt(), rt()->createInconvertibleValue("kaputt")); },
                EXCEPTION_CONVERSION, "Dieser Wert ist nicht verf\xFC" "gbar: kaputt");
}

TEST_F(OperatorsTest, MissingOperandsCountAsNothingInSumsAndSpoilProducts) {
  Value *nil = rt()->createNilValue();
  Value *invalid = rt()->createInvalidValue();
  Value *digits = text("12");
  EXPECT_EQ(digits, Functions::plus(rt(), nil, digits));
  EXPECT_EQ(digits, Functions::plus(rt(), digits, invalid));
  EXPECT_DOUBLE_EQ(24.0, Functions::plus(rt(), digits, text("12"))->asReal());
  Value *date = rt()->createDateValue("01.02.2020", nullptr);
  EXPECT_EQ(date, Functions::plus(rt(), date, invalid));
  expectFailure([&] { Functions::plus(rt(), date, number(1)); }, EXCEPTION_CONVERSION,
                "Ein Datum kann nicht in eine Zahl konvertiert werden.");
  EXPECT_FALSE(Functions::plus(rt(), nil, invalid)->isValid());

  Value *five = number(5);
  EXPECT_EQ(five, Functions::minus(rt(), five, invalid));
  EXPECT_DOUBLE_EQ(-5.0, Functions::minus(rt(), invalid, five)->asReal());
  EXPECT_DOUBLE_EQ(3.0, Functions::minus(rt(), five, number(2))->asReal());
  EXPECT_FALSE(Functions::mult(rt(), number(0), invalid)->isValid());
  EXPECT_DOUBLE_EQ(10.0, Functions::mult(rt(), five, number(2))->asReal());
}

TEST_F(OperatorsTest, DivisionTestsTheDivisorFirst) {
  Value *invalid = rt()->createInvalidValue();
  EXPECT_FALSE(Functions::div(rt(), invalid, number(5))->isValid());
  expectFailure([&] { Functions::div(rt(), number(5), invalid); }, EXCEPTION_DIVISION_BY_ZERO,
                kDivisionByZero);
  expectFailure([&] { Functions::div(rt(), invalid, rt()->createNilValue()); },
                EXCEPTION_DIVISION_BY_ZERO, kDivisionByZero);
  expectFailure([&] { Functions::div(rt(), number(1), number(1e-16)); }, EXCEPTION_DIVISION_BY_ZERO,
                kDivisionByZero);
  expectFailure([&] { Functions::div(rt(), invalid, number(0)); }, EXCEPTION_DIVISION_BY_ZERO,
                kDivisionByZero);
  // A divisor that is no number passes the zero test and fails when read.
  EXPECT_EQ(EXCEPTION_CONVERSION, thrownBy([&] { Functions::div(rt(), number(1), text("x")); }).getType());
  EXPECT_DOUBLE_EQ(2.5, Functions::div(rt(), number(5), text("2"))->asReal());
}

TEST_F(OperatorsTest, NegationOfMissingIsInvalid) {
  for (Value *missing : {rt()->createNilValue(), rt()->createInvalidValue(),
                         rt()->createInconvertibleValue("x")}) {
    Value *result = Functions::neg(rt(), missing);
    EXPECT_NE(missing, result);
    EXPECT_FALSE(result->isValid());
    EXPECT_FALSE(result->isNil());
  }
  double negativeZero = Functions::neg(rt(), number(0))->asReal();
  EXPECT_TRUE(std::signbit(negativeZero));
}

}  // namespace
}  // namespace quorel
