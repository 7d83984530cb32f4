#include <string>

#include <gtest/gtest.h>

#include "quorel/functions/functions.h"
#include "quorel/values/date_value.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

const char kShiftUnit[] = "Die Einheit der Datumsverschiebung ist ung\xFC" "ltig.";
const char kDifferenceUnit[] = "Die Berechnungseinheit der Datumsdifferenz ist ung\xFC" "ltig.";

class DateFunctionsTest : public ::testing::Test {
 protected:
  RuntimeContext *rt() { return &run_.runtime; }
  Value *date(const char *text) { return rt()->createDateValue(text, nullptr); }
  Value *number(double d) { return rt()->createNumberValue(d); }
  Value *text(const char *t) { return rt()->createStringValue(t); }

  std::string shift(const char *from, double count, const char *unit) {
    return Functions::DATUM_VERSCHIEBEN(rt(), date(from), number(count), text(unit))->asString();
  }
  double distance(const char *from, const char *to, const char *unit) {
    return Functions::DATUM_DIFFERENZ(rt(), date(from), date(to), text(unit))->asReal();
  }

  TestRun run_;
};

TEST_F(DateFunctionsTest, ShiftsByCalendarRules) {
  struct Case {
    const char *from;
    double count;
    const char *unit;
    const char *expected;
  } cases[] = {
      {"31.01.2013", 1, "M", "28.02.2013"},  {"31.01.2012", 1, "M", "29.02.2012"},
      {"31.03.2013", 1, "M", "30.04.2013"},  {"29.02.2012", 1, "J", "28.02.2013"},
      {"29.02.2012", 4, "J", "29.02.2016"},  {"15.12.2013", 1, "M", "15.01.2014"},
      {"15.01.2013", -1, "M", "15.12.2012"}, {"15.01.2013", 24, "M", "15.01.2015"},
      {"15.01.2013", -12, "M", "15.01.2012"}, {"15.01.2013", -13, "M", "15.12.2011"},
      {"28.02.2012", 1, "T", "29.02.2012"},  {"28.02.2013", 1, "T", "01.03.2013"},
      {"01.03.2012", -1, "T", "29.02.2012"}, {"01.03.2013", -1, "T", "28.02.2013"},
      {"01.03.2000", -1, "T", "29.02.2000"}, {"01.03.1900", -1, "T", "28.02.1900"},
      {"31.12.2013", 1, "T", "01.01.2014"},  {"01.01.2013", -1, "T", "31.12.2012"},
      {"10.01.2013", 2, "W", "24.01.2013"},  {"04.01.2013", 1, "A", "07.01.2013"},
      {"07.01.2013", -1, "A", "04.01.2013"}, {"05.01.2013", 1, "A", "07.01.2013"},
      {"06.01.2013", 0, "A", "06.01.2013"},  {"04.01.2013", 6, "A", "14.01.2013"},
      {"04.01.2013", -10, "A", "21.12.2012"}, {"15.06.2013", 0, "T", "15.06.2013"},
      {"15.06.2013", 0, "W", "15.06.2013"},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(c.expected, shift(c.from, c.count, c.unit)) << c.from << " " << c.count << c.unit;
  }
}

// A date read by a mask without a day has day 0. Days are stepped one by one:
// going back, only a day that becomes exactly 0 moves the month, so from day
// 0 the day just runs below 0 within its month; going forward, only a day
// past the end of its month does.
TEST_F(DateFunctionsTest, DaysStepWithinTheMonthFromDayZero) {
  Value *march = rt()->createDateValue("03.2013", "MM.JJJJ");
  auto shifted = [&](Value *from, double count, const char *unit) {
    return Functions::DATUM_VERSCHIEBEN(rt(), from, number(count), text(unit));
  };
  Value *back = shifted(march, -1, "T");
  EXPECT_STREQ("03.2013", back->asString());
  EXPECT_EQ(-1, back->asDate()->tm_mday);
  Value *weeksBack = shifted(march, -2, "W");
  EXPECT_EQ(-14, weeksBack->asDate()->tm_mday);
  EXPECT_EQ(2, weeksBack->asDate()->tm_mon);
  EXPECT_EQ(113, weeksBack->asDate()->tm_year);
  Value *forward = shifted(back, 3, "T");
  EXPECT_EQ(2, forward->asDate()->tm_mday);
  EXPECT_EQ(2, forward->asDate()->tm_mon);
  // A day beyond its month's end steps into the next month at once.
  std::tm april31{};
  april31.tm_year = 113;
  april31.tm_mon = 3;
  april31.tm_mday = 31;
  EXPECT_STREQ("01.05.2013", shifted(rt()->createDateValue(&april31, nullptr), 1, "T")->asString());
  EXPECT_STREQ("29.04.2013", shifted(rt()->createDateValue(&april31, nullptr), -2, "T")->asString());
  // Working days read the weekday of the day reached, and so go by the calendar.
  std::tm *workingDay = shifted(march, -1, "A")->asDate();
  EXPECT_EQ(27, workingDay->tm_mday);
  EXPECT_EQ(1, workingDay->tm_mon);
}

TEST_F(DateFunctionsTest, HugeCountsFinishAtOnce) {
  // A walk day by day would take minutes here.
  EXPECT_EQ("01.01.2013", shift("01.01.2013", 0, "A"));
  Value *far = Functions::DATUM_VERSCHIEBEN(rt(), date("01.01.2013"), number(2000000000), text("A"));
  EXPECT_GT(far->asDate()->tm_year, 7000000);
  Value *back = Functions::DATUM_VERSCHIEBEN(rt(), far, number(-2000000000), text("A"));
  EXPECT_EQ(113, back->asDate()->tm_year);
  EXPECT_EQ(0, back->asDate()->tm_mon);
  EXPECT_EQ(1, back->asDate()->tm_mday);
  // Only the low 32 bits of the count are used.
  EXPECT_EQ("02.01.2013", shift("01.01.2013", 4294967297.0, "T"));
}

TEST_F(DateFunctionsTest, UnitIsCheckedBeforeTheDate) {
  Value *nil = rt()->createNilValue();
  expectFailure([&] { Functions::DATUM_VERSCHIEBEN(rt(), nil, number(1), text("X")); },
                EXCEPTION_ILLEGAL_ARGUMENT, kShiftUnit);
  expectFailure([&] { Functions::DATUM_VERSCHIEBEN(rt(), nil, number(1), text("t")); },
                EXCEPTION_ILLEGAL_ARGUMENT, kShiftUnit);
  expectFailure([&] { Functions::DATUM_VERSCHIEBEN(rt(), nil, number(1), rt()->createInvalidValue()); },
                EXCEPTION_ILLEGAL_ARGUMENT, kShiftUnit);
  expectFailure([&] { Functions::DATUM_DIFFERENZ(rt(), nil, nil, text("M")); }, EXCEPTION_ILLEGAL_ARGUMENT,
                kDifferenceUnit);
  expectFailure([&] { Functions::DATUM_DIFFERENZ(rt(), nil, nil, text("A")); }, EXCEPTION_ILLEGAL_ARGUMENT,
                kDifferenceUnit);
  EXPECT_EQ(EXCEPTION_CONVERSION,
            thrownBy([&] { Functions::DATUM_VERSCHIEBEN(rt(), number(1), number(1), text("T")); }).getType());
}

TEST_F(DateFunctionsTest, ShiftKeepsTheMaskOfADate) {
  Value *masked = rt()->createDateValue("2013-01-31", "JJJJ-MM-TT");
  auto *result = static_cast<DateValue *>(Functions::DATUM_VERSCHIEBEN(rt(), masked, number(1), text("M")));
  EXPECT_STREQ("JJJJ-MM-TT", result->getMask());
  EXPECT_EQ(nullptr, static_cast<DateValue *>(
                         Functions::DATUM_VERSCHIEBEN(rt(), date("31.01.2013"), number(1), text("T")))
                         ->getMask());
  auto *fromText = static_cast<DateValue *>(
      Functions::DATUM_VERSCHIEBEN(rt(), text("31.01.2013"), number(1), text("T")));
  EXPECT_STREQ("TT.MM.JJJJ", fromText->getMask());
}

TEST_F(DateFunctionsTest, DistancesCountWholeUnits) {
  EXPECT_EQ(0, distance("01.01.2012", "31.12.2012", "J"));
  EXPECT_EQ(1, distance("01.01.2012", "01.01.2013", "J"));
  EXPECT_EQ(-1, distance("01.01.2013", "01.01.2012", "J"));
  EXPECT_EQ(0, distance("01.01.2013", "07.01.2013", "W"));
  EXPECT_EQ(0, distance("07.01.2013", "01.01.2013", "W"));
  EXPECT_EQ(2, distance("01.01.2013", "15.01.2013", "W"));
  EXPECT_EQ(-14, distance("15.01.2013", "01.01.2013", "T"));
  // From 29 February the shift falls on the 28th and stays there.
  EXPECT_EQ(4, distance("29.02.2012", "28.02.2016", "J"));
  EXPECT_EQ(3, distance("29.02.2012", "27.02.2016", "J"));
  EXPECT_EQ(1, distance("29.02.2012", "28.02.2013", "J"));
  std::tm early{}, late{};
  early.tm_year = 1 - 1900;
  early.tm_mday = 1;
  late.tm_year = 9988 - 1900;
  late.tm_mon = 11;
  late.tm_mday = 31;
  EXPECT_EQ(9987.0, Functions::DATUM_DIFFERENZ(rt(), rt()->createDateValue(&early, nullptr),
                                              rt()->createDateValue(&late, nullptr), text("J"))
                        ->asReal());
}

TEST_F(DateFunctionsTest, PartsOfADate) {
  Value *fifth = date("05.03.2013");
  EXPECT_EQ(2013.0, Functions::JAHR(rt(), fifth)->asReal());
  EXPECT_EQ(3.0, Functions::MONAT(rt(), fifth)->asReal());
  EXPECT_EQ(5.0, Functions::TAG(rt(), fifth)->asReal());
  EXPECT_STREQ("05", Functions::TAG_ALS_ZEICHENKETTE(rt(), fifth)->asString());
  EXPECT_STREQ("03", Functions::MONAT_ALS_ZEICHENKETTE(rt(), fifth)->asString());
  EXPECT_STREQ("2013", Functions::JAHR_ALS_ZEICHENKETTE(rt(), fifth)->asString());
  auto *today = static_cast<DateValue *>(Functions::HEUTE(rt()));
  EXPECT_EQ(nullptr, today->getMask());
  EXPECT_EQ(0, today->asDate()->tm_hour + today->asDate()->tm_min + today->asDate()->tm_sec);
  EXPECT_GT(today->asDate()->tm_year, 120);
}

}  // namespace
}  // namespace quorel
