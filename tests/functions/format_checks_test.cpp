#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/functions/functions.h"
#include "quorel/masks/util.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

class FormatChecksTest : public ::testing::Test {
protected:
  RuntimeContext *rt() { return &run_.runtime; }
  bool conform(Value *v, FieldType type, const char *mask = nullptr) {
    return Functions::isTypeConform(rt(), v, type, mask)->asBool();
  }
  bool hatFormat(Value *pattern, Value *text) {
    return Functions::HAT_FORMAT(rt(), pattern, text)->asBool();
  }
  Value *text(const char *t) { return rt()->createStringValue(t); }

  TestRun run_;
};

TEST_F(FormatChecksTest, NonValuesConformByTheirKind) {
  for (int type = 0; type <= 7; ++type) {
    auto fieldType = static_cast<FieldType>(type);
    EXPECT_TRUE(conform(rt()->createInvalidValue(), fieldType)) << type;
    EXPECT_FALSE(conform(rt()->createInconvertibleValue("x"), fieldType))
        << type;
    EXPECT_FALSE(conform(rt()->createNilValue(), fieldType)) << type;
  }
}

// A number whose text is not made yet is judged without making it: the same
// answer as reading the text back, near the limits of the plain text too.
TEST_F(FormatChecksTest, ANumberWithoutItsTextConformsAsItsTextWould) {
  std::vector<double> numbers = {0.0, -0.0, 1.0, -1.0, 42.0, 42.5, 0.1, 1.0 / 3.0, 1e-4, -1e-4, 9.99e-5,
                                 1e17, -1e17, 1e18, 9.999999999999999e16, 123456789012345678.0, 2e25, 1e-300,
                                 5e-324, std::numeric_limits<double>::infinity(),
                                 -std::numeric_limits<double>::infinity(), std::nan("")};
  for (double limit : {1e-4, 1e17, 1e18}) {
    for (double toward : {0.0, 1e300}) numbers.push_back(std::nextafter(limit, toward));
  }
  std::mt19937_64 random(5);
  for (int i = 0; i < 2000; ++i) {
    double mantissa = std::uniform_real_distribution<double>(-10.0, 10.0)(random);
    numbers.push_back(std::ldexp(mantissa, std::uniform_int_distribution<int>(-40, 70)(random)));
    numbers.push_back(std::round(numbers.back()));
  }
  for (double number : numbers) {
    for (FieldType type : {FieldTypeReal, FieldTypeInteger}) {
      Value *bare = rt()->createNumberValue(number);
      Value *written = rt()->createNumberValue(number);
      written->asString();
      EXPECT_EQ(conform(written, type), conform(bare, type)) << number << " as " << type;
    }
  }
  // Texts with an exponent are no numbers of the default mask.
  EXPECT_TRUE(conform(rt()->createNumberValue(0.5), FieldTypeReal));
  EXPECT_FALSE(conform(rt()->createNumberValue(1e18), FieldTypeReal));
  EXPECT_FALSE(conform(rt()->createNumberValue(1e-5), FieldTypeReal));
}

TEST_F(FormatChecksTest, ValuesAreTriedByTheConversionOfTheType) {
  EXPECT_TRUE(conform(text("12"), FieldTypeInteger));
  EXPECT_FALSE(conform(text("12a"), FieldTypeInteger));
  EXPECT_TRUE(conform(rt()->createNumberValue(12.0), FieldTypeInteger));
  EXPECT_FALSE(conform(rt()->createNumberValue(1.5),
                       FieldTypeInteger)); // its text 1,5 is no integer
  EXPECT_TRUE(conform(text("1,5"), FieldTypeReal));
  EXPECT_TRUE(conform(text("wahr"), FieldTypeBool));
  EXPECT_FALSE(conform(text("ja"), FieldTypeBool));
  EXPECT_TRUE(conform(text("29.02.2012"), FieldTypeDate));
  EXPECT_FALSE(conform(text("29.02.2013"), FieldTypeDate));
  EXPECT_TRUE(conform(text("alles"), FieldTypeFree));
  EXPECT_FALSE(conform(text("alles"), FieldTypeTopic));
  EXPECT_FALSE(conform(text("alles"), static_cast<FieldType>(7)));
  EXPECT_TRUE(conform(text("abc"), FieldTypeText));
}

// A date made from text is read once when checked under its own mask; the
// answer must be the one a reading of its text as a plain text gives, under
// its own mask, another mask or none, for dates and non-dates alike.
TEST_F(FormatChecksTest, ADateConformsAsItsTextDoes) {
  const char *masks[] = {nullptr, "TT.MM.JJJJ", "JJJJ-MM-TT", "TTMMJJ"};
  const char *texts[] = {"29.02.2012", "29.02.2013", "2012-02-29", "290212",     "",           "1.1.2000",
                         "31.04.2020", "32.01.2020", "01.13.2020", "01.01.20",   "aa.bb.cccc", "01.01.2020x"};
  for (const char *own : masks) {
    for (const char *asked : masks) {
      for (const char *t : texts) {
        // The check reads without a throw what Util::stringToDate throws.
        std::string thrown;
        std::tm parsed{};
        try {
          Util::stringToDate(&parsed, t, asked);
        } catch (const PlausiException &e) {
          thrown = e.getMessage();
        }
        std::tm read{};
        const char *fault = Util::readDate(&read, t, asked);
        EXPECT_EQ(thrown, fault != nullptr ? fault : "") << t;
        bool expected = conform(text(t), FieldTypeDate, asked);
        EXPECT_EQ(thrown.empty(), expected) << t;
        Value *date = rt()->createDateValue(t, own);
        EXPECT_EQ(conform(date, FieldTypeDate, asked), expected)
            << t << " " << (own ? own : "-") << " " << (asked ? asked : "-");
        if (expected && own == asked && *t != '\0') {
          // The date kept from the check is the one a fresh value reads.
          EXPECT_EQ(Util::compareDate(date->asDate(),
                                      rt()->createDateValue(t, own)->asDate()),
                    0)
              << t;
        }
      }
    }
  }
}

TEST_F(FormatChecksTest, PatternsMatchTheWholeText) {
  EXPECT_TRUE(hatFormat(text("[0-9]+"), text("123")));
  EXPECT_FALSE(hatFormat(text("[0-9]+"), text("123a")));
  EXPECT_TRUE(hatFormat(text("[0-9]+"), rt()->createNumberValue(42.0)));
  EXPECT_FALSE(
      hatFormat(text("[0-9]+"), rt()->createNumberValue(4.5))); // text form 4,5
  // The first argument is the pattern, never the reverse.
  EXPECT_FALSE(hatFormat(text("123"), text("[0-9]+")));
  EXPECT_FALSE(hatFormat(text("(unclosed"), text("(unclosed")));
  // A missing side gives false without reading the other, which would throw.
  EXPECT_FALSE(
      hatFormat(rt()->createNilValue(), rt()->createInconvertibleValue("x")));
  EXPECT_FALSE(hatFormat(text("x"), rt()->createInvalidValue()));
}

} // namespace
} // namespace quorel
