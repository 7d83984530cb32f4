// Masks and Util at the edges: every month with 30 days, the alignment M of
// a date mask, thousand groups of the wrong size, the escaped c of a text
// mask, and numbers right at the tolerance of the comparison.

#include <ctime>
#include <string>

#include <gtest/gtest.h>

#include "quorel/masks/util.h"
#include "test_support.h"

namespace quorel {
namespace {

const char kBadDay[] = "Ung\xFC" "ltige Tagesangabe.";
const char kDateCharacters[] = "Die Datumsangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.";
const char kThousands[] = "Das Tausendtrennzeichen steht an einer ung\xFC" "ltigen Position.";

// "ok" or the message of the conversion's failure.
template <typename F>
std::string outcome(F f) {
  try {
    f();
    return "ok";
  } catch (const PlausiException &e) {
    EXPECT_EQ(EXCEPTION_CONVERSION, e.getType());
    return e.getMessage();
  }
}

std::string dateOutcome(const char *value, const char *mask) {
  std::tm date{};
  return outcome([&] { Util::stringToDate(&date, value, mask); });
}

TEST(MaskBoundariesTest, NoMonthOfThirtyDaysHasADay31) {
  for (const char *value : {"31.04.2010", "31.06.2010", "31.09.2010", "31.11.2010"}) {
    EXPECT_EQ(kBadDay, dateOutcome(value, nullptr)) << value;
  }
  for (const char *value : {"30.04.2010", "30.06.2010", "30.09.2010", "30.11.2010", "31.01.2010",
                            "31.03.2010", "31.05.2010", "31.07.2010", "31.08.2010", "31.10.2010",
                            "31.12.2010"}) {
    EXPECT_EQ("ok", dateOutcome(value, nullptr)) << value;
  }
}

TEST(MaskBoundariesTest, AnOddRunOfMStartsWithAnAlignmentLetter) {
  // MMM.JJJJ is the alignment M followed by MM.JJJJ: the point is a literal.
  std::tm date{};
  Util::stringToDate(&date, "02.2010", "MMM.JJJJ");
  EXPECT_EQ(1, date.tm_mon);
  EXPECT_EQ(110, date.tm_year);
  EXPECT_EQ(kDateCharacters, dateOutcome("02x2010", "MMM.JJJJ"));
  // MM.JJJJ has none: the month is read, and the point is still a literal.
  EXPECT_EQ(kDateCharacters, dateOutcome("02x2010", "MM.JJJJ"));
}

TEST(MaskBoundariesTest, EveryThousandGroupRightOfAPointHasThreeDigits) {
  EXPECT_EQ(1234567, Util::stringToInteger("1.234.567", nullptr));
  EXPECT_EQ(kThousands, outcome([] { Util::stringToInteger("1.2345", nullptr); }));
  EXPECT_EQ(kThousands, outcome([] { Util::stringToInteger("1.234.5678", nullptr); }));
  EXPECT_EQ(kThousands, outcome([] { Util::stringToInteger("1.2345.678", nullptr); }));
  EXPECT_EQ(kThousands, outcome([] { Util::stringToReal("1.2345,5", nullptr); }));
  EXPECT_EQ(1234.5, Util::stringToReal("1.234,5", nullptr));
}

TEST(MaskBoundariesTest, AnEscapedCIsALiteralC) {
  EXPECT_EQ("ok", outcome([] { Util::stringToString("c", "\\c"); }));
  EXPECT_EQ("Der Wert entspricht nicht der Maske.", outcome([] { Util::stringToString("x", "\\c"); }));
  EXPECT_EQ("ok", outcome([] { Util::stringToString("xc", "c\\c"); }));
}

TEST(MaskBoundariesTest, OnlyNumbersBelowTheToleranceAreZero) {
  EXPECT_EQ(0, Util::compareNumbers(3.9e-16, 0.0));
  EXPECT_EQ(1, Util::compareNumbers(4e-16, 0.0));
  EXPECT_EQ(-1, Util::compareNumbers(0.0, 4e-16));
  EXPECT_EQ(-1, Util::compareNumbers(-4e-16, 0.0));
}

}  // namespace
}  // namespace quorel
