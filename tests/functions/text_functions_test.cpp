#include <gtest/gtest.h>

#include "quorel/functions/functions.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

class TextFunctionsTest : public ::testing::Test {
 protected:
  RuntimeContext *rt() { return &run_.runtime; }
  Value *text(const char *t) { return rt()->createStringValue(t); }
  Value *number(double d) { return rt()->createNumberValue(d); }
  std::string teil(const char *t, double start, double length) {
    return Functions::TEIL(rt(), text(t), number(start), number(length))->asString();
  }
  std::string ersetzen(Value *t, Value *search, Value *replacement) {
    return Functions::ERSETZEN(rt(), t, search, replacement)->asString();
  }

  TestRun run_;
};

TEST_F(TextFunctionsTest, LengthCountsBytes) {
  EXPECT_EQ(0.0, Functions::WERTLAENGE(rt(), nullptr)->asReal());
  EXPECT_EQ(0.0, Functions::WERTLAENGE(rt(), rt()->createInvalidValue())->asReal());
  EXPECT_EQ(6.0, Functions::WERTLAENGE(rt(), text("M\xFCller"))->asReal());
  EXPECT_EQ(EXCEPTION_CONVERSION,
            thrownBy([&] { Functions::WERTLAENGE(rt(), rt()->createNilValue()); }).getType());
}

TEST_F(TextFunctionsTest, PartClampsEveryBound) {
  EXPECT_EQ("bcd", teil("abcdef", 2, 3));
  EXPECT_EQ("bcdef", teil("abcdef", 2, 0));
  EXPECT_EQ("ab", teil("abcdef", 0, 2));
  EXPECT_EQ("ab", teil("abcdef", -5, 2));
  EXPECT_EQ("", teil("abcdef", 9, 1));
  EXPECT_EQ("ef", teil("abcdef", 5, 99));
  // The starts pass as their low 32 bits, the least one too.
  EXPECT_EQ("bc", teil("abcdef", 4294967298.0, 2));
  EXPECT_EQ("ab", teil("abcdef", -1e300, 2));
  expectFailure([&] { Functions::TEIL(rt(), nullptr, number(1), number(1)); }, EXCEPTION_CONVERSION,
                "Die Zeichenkette kann nur aus einer Zeichenkette ausgelesen werden.");
  expectFailure([&] { Functions::TEIL(rt(), text("a"), nullptr, number(1)); },
                EXCEPTION_ILLEGAL_ARGUMENT, "Der Startindex ist ung\xFC" "ltig.");
  expectFailure([&] { Functions::TEIL(rt(), text("a"), number(1), nullptr); },
                EXCEPTION_ILLEGAL_ARGUMENT, "Die L\xE4" "nge ist ung\xFC" "ltig.");
}

TEST_F(TextFunctionsTest, ConcatenationAndAffixes) {
  EXPECT_STREQ("x", Functions::KONKATENIEREN(rt(), nullptr, text("x"))->asString());
  EXPECT_STREQ("", Functions::KONKATENIEREN(rt(), nullptr, nullptr)->asString());
  EXPECT_STREQ("1,5 kg", Functions::KONKATENIEREN(rt(), number(1.5), text(" kg"))->asString());

  EXPECT_TRUE(Functions::BEGINNT_MIT(rt(), text("abc"), text(""))->asBool());
  EXPECT_TRUE(Functions::BEGINNT_MIT(rt(), text("abc"), text("ab"))->asBool());
  EXPECT_FALSE(Functions::BEGINNT_MIT(rt(), text("ab"), text("abc"))->asBool());
  EXPECT_FALSE(Functions::BEGINNT_MIT(rt(), nullptr, text(""))->asBool());
  EXPECT_FALSE(Functions::BEGINNT_MIT(rt(), text("abc"), text("AB"))->asBool());
  EXPECT_TRUE(Functions::ENDET_AUF(rt(), text("abc"), text("bc"))->asBool());
  EXPECT_TRUE(Functions::ENDET_AUF(rt(), text("abc"), text(""))->asBool());
  EXPECT_FALSE(Functions::ENDET_AUF(rt(), text("bc"), text("abc"))->asBool());
  EXPECT_FALSE(Functions::ENDET_AUF(rt(), text("abc"), nullptr)->asBool());
}

TEST_F(TextFunctionsTest, CaseMapsLettersAndUmlautsOnly) {
  EXPECT_STREQ("STRA\xDF" "E MIT \xC4" "PFELN",
               Functions::GROSSBUCHSTABEN(rt(), text("stra\xDF" "e mit \xC4" "pfeln"))->asString());
  EXPECT_STREQ("\xE4\xF6\xFC" "abc\xC9", Functions::KLEINBUCHSTABEN(rt(), text("\xC4\xD6\xDC" "ABC\xC9"))->asString());
  Value *invalid = rt()->createInvalidValue();
  Value *nil = rt()->createNilValue();
  EXPECT_EQ(invalid, Functions::GROSSBUCHSTABEN(rt(), invalid));
  EXPECT_EQ(nil, Functions::KLEINBUCHSTABEN(rt(), nil));
  EXPECT_EQ(nullptr, Functions::GROSSBUCHSTABEN(rt(), nullptr));
  Value *upperOne = Functions::GROSSBUCHSTABEN(rt(), number(1));
  EXPECT_EQ(STRING_LEVEL, upperOne->getOperatorLevel());
  EXPECT_STREQ("1", upperOne->asString());
}

TEST_F(TextFunctionsTest, NumericMeansDigitsOnly) {
  EXPECT_TRUE(Functions::NUMERISCH(rt(), text("123"))->asBool());
  EXPECT_FALSE(Functions::NUMERISCH(rt(), text("-1"))->asBool());
  EXPECT_FALSE(Functions::NUMERISCH(rt(), text("1,5"))->asBool());
  EXPECT_TRUE(Functions::NUMERISCH(rt(), text(""))->asBool());
  EXPECT_TRUE(Functions::NUMERISCH(rt(), nullptr)->asBool());
  EXPECT_TRUE(Functions::NUMERISCH(rt(), rt()->createInvalidValue())->asBool());
}

TEST_F(TextFunctionsTest, ReplaceScansLeftToRightWithoutOverlap) {
  EXPECT_EQ("aXaX", ersetzen(text("abcabc"), text("bc"), text("X")));
  EXPECT_EQ("bb", ersetzen(text("aaaa"), text("aa"), text("b")));
  EXPECT_EQ("abc", ersetzen(text("abc"), text(""), text("X")));
  EXPECT_EQ("ac", ersetzen(text("abc"), text("b"), text("")));
  EXPECT_EQ("ac", ersetzen(text("abc"), text("b"), nullptr));
  EXPECT_EQ("", ersetzen(nullptr, text("b"), text("c")));
  EXPECT_EQ("", ersetzen(text(""), rt()->createNilValue(), nullptr));
  EXPECT_EQ("xaax", ersetzen(text("xax"), text("a"), text("aa")));  // no rescan of the result
}

}  // namespace
}  // namespace quorel
