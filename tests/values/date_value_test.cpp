#include <memory>

#include <gtest/gtest.h>

#include "quorel/values/date_value.h"
#include "quorel/values/invalid_value.h"
#include "quorel/values/nil_value.h"
#include "quorel/values/number_value.h"
#include "quorel/values/string_value.h"
#include "test_support.h"

namespace quorel {
namespace {

std::tm makeDate(int year, int month, int day) {
  std::tm tm{};
  tm.tm_year = year - 1900;
  tm.tm_mon = month - 1;
  tm.tm_mday = day;
  return tm;
}

TEST(DateValueTest, TextStaysVerbatimAndABadTextFailsAtEveryRequest) {
  DateValue bad("31.02.2020", nullptr);
  EXPECT_STREQ("31.02.2020", bad.asString());
  expectFailure([&] { bad.asDate(); }, EXCEPTION_CONVERSION, "Ung\xFC" "ltige Tagesangabe.");
  expectFailure([&] { bad.asDate(); }, EXCEPTION_CONVERSION, "Ung\xFC" "ltige Tagesangabe.");
  EXPECT_EQ(EXCEPTION_CONVERSION, thrownBy([&] { delete bad.copy(); }).getType());

  // Reading passes over the alignment letter; writing puts it out.
  DateValue aligned("01.02.2020", "LTT.MM.JJJJ");
  EXPECT_STREQ("01.02.2020", aligned.asString());
  std::unique_ptr<Value> copy(aligned.copy());
  EXPECT_STREQ("L01.02.2020", copy->asString());  // made anew by the mask
}

TEST(DateValueTest, FromATmKeepsSixFieldsAndWritesTheDefaultMask) {
  std::tm source = makeDate(2013, 9, 19);
  source.tm_wday = 4;
  source.tm_hour = 9;
  DateValue date(&source, nullptr);
  EXPECT_EQ(nullptr, date.getMask());
  EXPECT_STREQ("19.09.2013", date.asString());
  EXPECT_EQ(0, date.asDate()->tm_wday);
  EXPECT_EQ(9, date.asDate()->tm_hour);
  source.tm_mday = 1;  // the caller keeps its own tm
  EXPECT_EQ(19, date.asDate()->tm_mday);
}

TEST(DateValueTest, RefusesNumbersAndComparesAsDates) {
  std::tm tm = makeDate(2020, 2, 1);
  DateValue plain(&tm, nullptr);
  DateValue masked("2020-02-01", "JJJJ-MM-TT");
  EXPECT_TRUE(plain.eq(&masked));  // masks play no part
  const char kToReal[] = "Ein Datum kann nicht in eine Zahl konvertiert werden.";
  expectFailure([&] { plain.asReal(); }, EXCEPTION_CONVERSION, kToReal);
  expectFailure([&] { plain.asInteger(); }, EXCEPTION_CONVERSION,
                "Ein Datum kann nicht in eine ganze Zahl konvertiert werden.");
  expectFailure([&] { plain.asBool(); }, EXCEPTION_CONVERSION,
                "Ein Datum kann nicht in einen boolschen Wert konvertiert werden.");

  StringValue sameText("01.02.2020"), laterText("02.02.2020"), otherForm("2020-02-01");
  EXPECT_TRUE(sameText.eq(&plain));  // the date decides against a text
  EXPECT_TRUE(plain.lt(&laterText));
  EXPECT_TRUE(laterText.gt(&plain));
  EXPECT_EQ(EXCEPTION_CONVERSION, thrownBy([&] { plain.eq(&otherForm); }).getType());

  NumberValue one(1.0);
  const char kNumberToDate[] = "Eine Zahl kann nicht in einen Datumswert umgewandelt werden.";
  expectFailure([&] { plain.eq(&one); }, EXCEPTION_CONVERSION, kNumberToDate);
  expectFailure([&] { one.ne(&plain); }, EXCEPTION_CONVERSION, kNumberToDate);
}

TEST(DateValueTest, NonValuesAreAskedNotCaught) {
  std::tm tm = makeDate(2020, 2, 1);
  DateValue date(&tm, nullptr);
  NilValue nil;
  EXPECT_FALSE(date.eq(&nil));
  EXPECT_TRUE(date.ne(&nil));
  EXPECT_FALSE(nil.eq(&date));
  EXPECT_TRUE(nil.ne(&date));
  expectFailure([&] { date.gt(&nil); }, EXCEPTION_CONVERSION, "Wert ist nicht initialisiert.");
  InvalidValue invalid;
  EXPECT_FALSE(date.eq(&invalid));
  EXPECT_FALSE(date.gt(&invalid));
  EXPECT_TRUE(date.ne(&invalid));
}

}  // namespace
}  // namespace quorel
