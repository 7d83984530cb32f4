// The built-in functions at the edges of their ranges: shifts that start on a
// weekend or end in a short month, century years, the smallest 64-bit
// dividend, affixes as long as the text, the first and last digit and letter,
// and a pattern test of a text that is missing.

#include <string>

#include <gtest/gtest.h>

#include "quorel/functions/functions.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

class FunctionBoundariesTest : public ::testing::Test {
 protected:
  RuntimeContext *rt() { return &run_.runtime; }
  Value *number(double d) { return rt()->createNumberValue(d); }
  Value *text(const char *t) { return rt()->createStringValue(t); }

  TestRun run_;
};

// Named so that the run under a time zone with daylight saving takes it too.
class DateFunctionsAtBoundariesTest : public FunctionBoundariesTest {
 protected:
  std::string shift(const char *from, double count, const char *unit) {
    return Functions::DATUM_VERSCHIEBEN(rt(), rt()->createDateValue(from, nullptr), number(count), text(unit))
        ->asString();
  }
  double years(const char *from, const char *to) {
    return Functions::DATUM_DIFFERENZ(rt(), rt()->createDateValue(from, nullptr),
                                      rt()->createDateValue(to, nullptr), text("J"))
        ->asReal();
  }
};

TEST_F(DateFunctionsAtBoundariesTest, WorkingDaysCountedFromAWeekend) {
  // 05.01.2013 is a Saturday, 06.01.2013 a Sunday. The start day never
  // counts, and every step onto a Saturday or Sunday is free.
  EXPECT_EQ("11.01.2013", shift("05.01.2013", 5, "A"));
  EXPECT_EQ("11.01.2013", shift("06.01.2013", 5, "A"));
  EXPECT_EQ("18.01.2013", shift("05.01.2013", 10, "A"));
  EXPECT_EQ("04.01.2013", shift("05.01.2013", -1, "A"));
  EXPECT_EQ("31.12.2012", shift("06.01.2013", -5, "A"));
  EXPECT_EQ("28.12.2012", shift("05.01.2013", -6, "A"));
  // From a Friday five working days are exactly a week.
  EXPECT_EQ("11.01.2013", shift("04.01.2013", 5, "A"));
  EXPECT_EQ("28.12.2012", shift("04.01.2013", -5, "A"));
}

TEST_F(DateFunctionsAtBoundariesTest, TheDayIsLimitedInEveryShortMonth) {
  EXPECT_EQ("30.06.2013", shift("31.05.2013", 1, "M"));
  EXPECT_EQ("30.09.2013", shift("31.08.2013", 1, "M"));
  EXPECT_EQ("30.11.2013", shift("31.10.2013", 1, "M"));
  EXPECT_EQ("30.11.2012", shift("31.12.2012", -1, "M"));
  EXPECT_EQ("30.04.2013", shift("31.05.2013", -1, "M"));
  EXPECT_EQ("31.12.2013", shift("31.10.2013", 2, "M"));
}

TEST_F(DateFunctionsAtBoundariesTest, CenturyYearsLeapOnlyEveryFourHundredYears) {
  EXPECT_EQ("28.02.1900", shift("31.01.1900", 1, "M"));
  EXPECT_EQ("29.02.2000", shift("31.01.2000", 1, "M"));
  EXPECT_EQ("28.02.2100", shift("29.02.2000", 100, "J"));
  EXPECT_EQ("28.02.2100", shift("29.02.2096", 4, "J"));
  EXPECT_EQ("29.02.2400", shift("29.02.2000", 400, "J"));
}

TEST_F(DateFunctionsAtBoundariesTest, WholeYearsFromTheTwentyNinthOfFebruary) {
  // The shifted date stays on the 28th once it has been limited.
  EXPECT_EQ(0.0, years("29.02.2012", "27.02.2013"));
  EXPECT_EQ(1.0, years("29.02.2012", "28.02.2013"));
  EXPECT_EQ(4.0, years("29.02.2012", "28.02.2016"));
  EXPECT_EQ(-4.0, years("28.02.2016", "29.02.2012"));
  EXPECT_EQ(-1.0, years("28.02.2013", "29.02.2012"));
}

TEST_F(FunctionBoundariesTest, ModuloOfTheSmallestSixtyFourBitNumber) {
  // -2^63 is exact as a double, and its text reads to the same integer.
  Value *smallest = number(-9223372036854775808.0);
  EXPECT_EQ(0.0, Functions::MODULO(rt(), smallest, number(-1))->asReal());
  EXPECT_EQ(0.0, Functions::MODULO(rt(), text("-9.223.372.036.854.775.808"), number(-1))->asReal());
  EXPECT_EQ(-2.0, Functions::MODULO(rt(), smallest, number(3))->asReal());
  EXPECT_EQ(-2.0, Functions::MODULO(rt(), smallest, text("-3"))->asReal());
}

TEST_F(FunctionBoundariesTest, AnAffixAsLongAsTheWholeText) {
  EXPECT_TRUE(Functions::BEGINNT_MIT(rt(), text("abc"), text("abc"))->asBool());
  EXPECT_TRUE(Functions::ENDET_AUF(rt(), text("abc"), text("abc"))->asBool());
  EXPECT_TRUE(Functions::BEGINNT_MIT(rt(), text(""), text(""))->asBool());
  EXPECT_TRUE(Functions::ENDET_AUF(rt(), text(""), text(""))->asBool());
  EXPECT_FALSE(Functions::BEGINNT_MIT(rt(), text("abc"), text("abd"))->asBool());
  EXPECT_FALSE(Functions::ENDET_AUF(rt(), text("abc"), text("xbc"))->asBool());
  // The number 12 has the text 12.
  EXPECT_TRUE(Functions::ENDET_AUF(rt(), number(12), text("12"))->asBool());
}

TEST_F(FunctionBoundariesTest, NumericTakesEveryDigitAndNothingBeside) {
  EXPECT_TRUE(Functions::NUMERISCH(rt(), text("0"))->asBool());
  EXPECT_TRUE(Functions::NUMERISCH(rt(), text("9"))->asBool());
  EXPECT_TRUE(Functions::NUMERISCH(rt(), text("0123456789"))->asBool());
  // The bytes just below 0 and just above 9.
  EXPECT_FALSE(Functions::NUMERISCH(rt(), text("0/"))->asBool());
  EXPECT_FALSE(Functions::NUMERISCH(rt(), text(":9"))->asBool());
  EXPECT_FALSE(Functions::NUMERISCH(rt(), text("1 2"))->asBool());
}

TEST_F(FunctionBoundariesTest, CaseMappingCoversEveryPairAndStopsAtTheirEdges) {
  EXPECT_STREQ("AZ\xC4\xD6\xDC" "`{@[\xDF\xE9",
               Functions::GROSSBUCHSTABEN(rt(), text("az\xE4\xF6\xFC" "`{@[\xDF\xE9"))->asString());
  EXPECT_STREQ("az\xE4\xF6\xFC" "@[`{\xC9",
               Functions::KLEINBUCHSTABEN(rt(), text("AZ\xC4\xD6\xDC" "@[`{\xC9"))->asString());
}

TEST_F(FunctionBoundariesTest, NoPatternTestOfAMissingText) {
  // The pattern takes the empty text, which is what a missing value would read as.
  Value *any = text(".*");
  EXPECT_TRUE(Functions::HAT_FORMAT(rt(), any, text(""))->asBool());
  for (Value *missing : {rt()->createInvalidValue(), rt()->createNilValue(), rt()->createInconvertibleValue("x")}) {
    EXPECT_FALSE(Functions::HAT_FORMAT(rt(), any, missing)->asBool());
    EXPECT_FALSE(Functions::HAT_FORMAT(rt(), missing, text(""))->asBool());
  }
}

}  // namespace
}  // namespace quorel
