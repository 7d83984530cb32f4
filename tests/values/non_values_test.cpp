#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "test_support.h"

#include "quorel/rules/plausi_exception.h"
#include "quorel/values/inconvertible_value.h"
#include "quorel/values/invalid_value.h"
#include "quorel/values/nil_value.h"
#include "quorel/values/single_value_iterator.h"

namespace quorel {
namespace {

template <typename F>
void expectConversionFailure(F f, const std::string &message) {
  expectFailure(f, EXCEPTION_CONVERSION, message);
}

void expectRefusesEverything(Value *v, const std::string &message) {
  expectConversionFailure([&] { v->asString(); }, message);
  expectConversionFailure([&] { v->asInteger(); }, message);
  expectConversionFailure([&] { v->asReal(); }, message);
  expectConversionFailure([&] { v->asBool(); }, message);
  expectConversionFailure([&] { v->asDate(); }, message);
  expectConversionFailure([&] { v->asRange(); }, message);
}

TEST(NonValuesTest, NilRefusesAndComparesFalse) {
  NilValue nil, other;
  EXPECT_TRUE(nil.isNil());
  EXPECT_TRUE(nil.isValid());
  EXPECT_FALSE(nil.isRange());
  EXPECT_FALSE(nil.isUsable());
  EXPECT_EQ(NIL_LEVEL, nil.getOperatorLevel());
  expectRefusesEverything(&nil, "Wert ist nicht initialisiert.");
  EXPECT_FALSE(nil.eq(&other));
  EXPECT_FALSE(nil.ne(&other));
  EXPECT_FALSE(nil.gt(&other));
  EXPECT_FALSE(nil.ge(&other));
  EXPECT_FALSE(nil.lt(&other));
  EXPECT_FALSE(nil.le(&other));
  EXPECT_FALSE(nil.contains(&other));
  std::unique_ptr<Value> copy(nil.copy());
  EXPECT_EQ(NIL_LEVEL, copy->getOperatorLevel());
}

TEST(NonValuesTest, InvalidConvertsQuietlyAndWalksItself) {
  InvalidValue invalid;
  EXPECT_FALSE(invalid.isNil());
  EXPECT_FALSE(invalid.isValid());
  EXPECT_STREQ("", invalid.asString());
  EXPECT_EQ(0, invalid.asInteger());
  EXPECT_EQ(0.0, invalid.asReal());
  EXPECT_FALSE(invalid.asBool());
  std::tm *date = invalid.asDate();
  EXPECT_EQ(0, date->tm_year);
  EXPECT_EQ(0, date->tm_mday);
  std::unique_ptr<ValueIterator> it(invalid.asRange());
  ASSERT_TRUE(it->hasNext());
  EXPECT_EQ(&invalid, it->next());
  EXPECT_FALSE(it->hasNext());
}

TEST(NonValuesTest, InconvertibleKeepsItsReasonWithOnePrefix) {
  InconvertibleValue none(nullptr);
  EXPECT_TRUE(none.isNil());
  EXPECT_FALSE(none.isValid());
  expectRefusesEverything(&none, "Dieser Wert ist nicht verf\xFC" "gbar: Keine weiteren Informationen.");

  InconvertibleValue bad("Zeichen 3 ist falsch.");
  std::unique_ptr<Value> copy(bad.copy());
  const std::string expected = "Dieser Wert ist nicht verf\xFC" "gbar: Zeichen 3 ist falsch.";
  expectRefusesEverything(&bad, expected);
  expectRefusesEverything(copy.get(), expected);
}

TEST(NonValuesTest, UnavailableValuesCompareByValidityAndNeverThrow) {
  InvalidValue invalid, invalid2;
  InconvertibleValue inconvertible("x");
  NilValue nil;
  // Two unavailable values are equal, whatever their kinds.
  EXPECT_TRUE(invalid.eq(&invalid2));
  EXPECT_FALSE(invalid.ne(&invalid2));
  EXPECT_TRUE(invalid.eq(&inconvertible));
  EXPECT_TRUE(inconvertible.eq(&invalid));
  EXPECT_TRUE(inconvertible.contains(&invalid));
  // A nil value counts as valid, so it differs from an unavailable one, from
  // either side, because level 100 decides.
  for (Value *unavailable : {static_cast<Value *>(&invalid), static_cast<Value *>(&inconvertible)}) {
    EXPECT_FALSE(unavailable->eq(&nil));
    EXPECT_TRUE(unavailable->ne(&nil));
    EXPECT_FALSE(nil.eq(unavailable));
    EXPECT_TRUE(nil.ne(unavailable));
    EXPECT_FALSE(nil.gt(unavailable));
    EXPECT_FALSE(nil.le(unavailable));
    EXPECT_FALSE(unavailable->ge(&nil));
  }
  // Nil contains nothing: contains asks the left operand without the level rule.
  EXPECT_FALSE(nil.contains(&invalid));
}

TEST(SingleValueIteratorTest, DeliversOnceThenOverflows) {
  NilValue nil;
  SingleValueIterator it(&nil);
  ASSERT_TRUE(it.hasNext());
  EXPECT_EQ(&nil, it.next());
  EXPECT_FALSE(it.hasNext());
  PlausiException e = thrownBy([&] { it.next(); });
  EXPECT_EQ(EXCEPTION_ITERATION, e.getType());
  // The message is Windows-1252: u-umlaut is the single byte 0xFC.
  EXPECT_STREQ("Iterations\xFC" "berlauf.", e.getMessage());
  EXPECT_EQ(19u, std::string(e.getMessage()).size());
}

}  // namespace
}  // namespace quorel
