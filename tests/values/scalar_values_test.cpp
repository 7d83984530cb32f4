#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "quorel/values/bool_value.h"
#include "quorel/values/invalid_value.h"
#include "quorel/values/nil_value.h"
#include "quorel/values/number_value.h"
#include "quorel/values/string_value.h"
#include "test_support.h"

namespace quorel {
namespace {

const char kNotABool[] = "Konnte nicht in einen boolschen Wert umgewandelt werden.";

TEST(StringValueTest, ConvertsItsTextAnewAtEachRequest) {
  StringValue empty(nullptr);
  EXPECT_STREQ("", empty.asString());
  EXPECT_EQ(0.0, empty.asReal());
  EXPECT_EQ(0, empty.asInteger());

  StringValue number("1.234,5");
  EXPECT_DOUBLE_EQ(1234.5, number.asReal());
  EXPECT_TRUE(StringValue("wAhR").asBool());
  EXPECT_FALSE(StringValue("falsch").asBool());
  expectFailure([] { StringValue("JA").asBool(); }, EXCEPTION_CONVERSION, kNotABool);
  expectFailure([] { StringValue("").asBool(); }, EXCEPTION_CONVERSION, kNotABool);
  // Only A-Z fold: an umlaut in the word is no truth word.
  expectFailure([] { StringValue("W\xC4HR").asBool(); }, EXCEPTION_CONVERSION, kNotABool);

  StringValue date("01.02.2020");
  std::tm *tm = date.asDate();
  EXPECT_EQ(120, tm->tm_year);
  EXPECT_EQ(1, tm->tm_mon);
  EXPECT_EQ(1, tm->tm_mday);
}

TEST(StringValueTest, ComparesUnsignedBytesAndContainsOnlyWhatItEquals) {
  StringValue ten("10"), nine("9"), abc("abc"), ab("ab"), high("\xE4"), low("z");
  EXPECT_TRUE(ten.lt(&nine));
  EXPECT_TRUE(ab.lt(&abc));
  EXPECT_TRUE(abc.ge(&ab));
  EXPECT_TRUE(high.gt(&low));  // 0xE4 is above 'z' as an unsigned byte
  EXPECT_TRUE(abc.contains(&abc));
  EXPECT_FALSE(abc.contains(&ab));
  StringValue oneComma("1,0"), one("1");
  EXPECT_TRUE(oneComma.ne(&one));  // texts stay texts even when they look like numbers
  NilValue nil;
  expectFailure([&] { abc.eq(&nil); }, EXCEPTION_CONVERSION, "Wert ist nicht initialisiert.");
}

TEST(BoolValueTest, HasNoOrderAndRefusesDates) {
  BoolValue yes(true), no(false);
  EXPECT_STREQ("WAHR", yes.asString());
  EXPECT_STREQ("FALSCH", no.asString());
  EXPECT_EQ(1, yes.asInteger());
  EXPECT_FALSE(yes.gt(&no));
  EXPECT_FALSE(yes.lt(&no));
  StringValue wahr("wahr");
  EXPECT_TRUE(yes.eq(&wahr));
  EXPECT_TRUE(wahr.eq(&yes));  // the truth value decides against a text
  NilValue nil;
  expectFailure([&] { yes.eq(&nil); }, EXCEPTION_CONVERSION, "Wert ist nicht initialisiert.");
  EXPECT_FALSE(yes.gt(&nil));
  expectFailure([&] { yes.asDate(); }, EXCEPTION_CONVERSION,
                "Ein boolscher Wert kann nicht in einen Datumswert umgewandelt werden.");
}

TEST(NumberValueTest, KeepsItsTextVerbatimAndParsesLazily) {
  NumberValue padded("007");
  EXPECT_STREQ("007", padded.asString());
  EXPECT_EQ(7, padded.asInteger());
  NumberValue grouped("1.234,50");
  EXPECT_STREQ("1.234,50", grouped.asString());
  std::unique_ptr<Value> copy(grouped.copy());
  EXPECT_STREQ("1234,5", copy->asString());

  NumberValue bad("abc");  // constructs without a failure
  EXPECT_STREQ("abc", bad.asString());
  PlausiException first = thrownBy([&] { bad.asReal(); });
  PlausiException second = thrownBy([&] { bad.asReal(); });
  EXPECT_EQ(EXCEPTION_CONVERSION, first.getType());
  EXPECT_STREQ(first.getMessage(), second.getMessage());
  EXPECT_STREQ(first.getMessage(), thrownBy([&] { delete bad.copy(); }).getMessage());

  NumberValue zero(static_cast<const char *>(nullptr));
  EXPECT_STREQ("0", zero.asString());
  EXPECT_EQ(0.0, zero.asReal());
  EXPECT_STREQ("-0,25", NumberValue(-0.25).asString());
}

TEST(NumberValueTest, TruncatesAndIsTrueOnlyAtOne) {
  EXPECT_EQ(2, NumberValue(2.9).asInteger());
  EXPECT_EQ(-2, NumberValue(-2.9).asInteger());
  EXPECT_EQ(INT64_MAX, NumberValue(1e300).asInteger());
  EXPECT_EQ(INT64_MIN, NumberValue(-1e300).asInteger());
  // The edges themselves: 2^63 is the first double beyond the range, -2^63
  // the last within it, and the doubles next to them stay exact.
  EXPECT_EQ(INT64_MAX, NumberValue(9223372036854775808.0).asInteger());
  EXPECT_EQ(9223372036854774784, NumberValue(9223372036854774784.0).asInteger());
  EXPECT_EQ(INT64_MIN, NumberValue(-9223372036854775808.0).asInteger());
  EXPECT_EQ(INT64_MIN, NumberValue(-9223372036854777856.0).asInteger());
  EXPECT_EQ(-9223372036854774784, NumberValue(-9223372036854774784.0).asInteger());
  EXPECT_TRUE(NumberValue(1.0).asBool());
  EXPECT_FALSE(NumberValue(2.0).asBool());
  EXPECT_FALSE(NumberValue(0.5).asBool());
  EXPECT_FALSE(NumberValue(1.0 + 2.3e-16).asBool());  // exact, unlike equality
  expectFailure([] { NumberValue(1.0).asDate(); }, EXCEPTION_CONVERSION,
                "Eine Zahl kann nicht in einen Datumswert umgewandelt werden.");
}

TEST(NumberValueTest, EqualitySwallowsOnlyTheOtherOperandsFailure) {
  NumberValue one(1.0), two(2.0);
  StringValue oneText("1"), oneComma("1,0"), x("x"), ten("10");
  EXPECT_TRUE(one.eq(&oneText));
  EXPECT_TRUE(oneComma.eq(&one));  // the number decides
  EXPECT_FALSE(one.eq(&x));
  EXPECT_TRUE(one.ne(&x));
  EXPECT_TRUE(x.ne(&one));
  EXPECT_EQ(EXCEPTION_CONVERSION, thrownBy([&] { one.gt(&x); }).getType());
  NumberValue nine(9.0);
  EXPECT_FALSE(ten.lt(&nine));  // numerically 10 > 9

  NumberValue bad("abc");
  EXPECT_EQ(EXCEPTION_CONVERSION, thrownBy([&] { bad.eq(&oneText); }).getType());

  NilValue nil;
  EXPECT_FALSE(one.eq(&nil));
  EXPECT_TRUE(one.ne(&nil));
  EXPECT_FALSE(nil.eq(&one));
  EXPECT_TRUE(nil.ne(&one));
  expectFailure([&] { one.gt(&nil); }, EXCEPTION_CONVERSION, "Wert ist nicht initialisiert.");

  InvalidValue invalid;
  EXPECT_FALSE(one.eq(&invalid));
  EXPECT_TRUE(invalid.ne(&one));
  EXPECT_FALSE(one.gt(&invalid));
  EXPECT_FALSE(one.le(&invalid));

  BoolValue yes(true);
  EXPECT_TRUE(yes.eq(&one));
  EXPECT_FALSE(yes.eq(&two));
  EXPECT_TRUE(yes.lt(&two));

  NumberValue nearlyOne(1.0 + 2.3e-16);
  EXPECT_TRUE(one.eq(&nearlyOne));
  EXPECT_FALSE(one.lt(&nearlyOne));
}

}  // namespace
}  // namespace quorel
