#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "quorel/masks/util.h"
#include "test_support.h"

namespace quorel {
namespace {

// An expected result: the number as text, or the message of the failure.
std::string integerOutcome(const char *value, const char *mask) {
  try {
    return std::to_string(Util::stringToInteger(value, mask));
  } catch (const PlausiException &e) {
    EXPECT_EQ(EXCEPTION_CONVERSION, e.getType());
    return e.getMessage();
  }
}

std::string realOutcome(const char *value, const char *mask) {
  try {
    // 15 digits: the decimal the text stood for, without the binary remainder.
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", Util::stringToReal(value, mask));
    return text;
  } catch (const PlausiException &e) {
    EXPECT_EQ(EXCEPTION_CONVERSION, e.getType());
    return e.getMessage();
  }
}

struct Case {
  const char *value;
  const char *mask;
  const char *expected;
};

const char kMinusNotAllowed[] = "Das Minus-Vorzeichen ist nicht erlaubt.";
const char kPlusNotAllowed[] = "Das Plus-Vorzeichen ist nicht erlaubt.";
const char kThousands[] = "Das Tausendtrennzeichen steht an einer ung\xFC" "ltigen Position.";
const char kInvalid[] = "Die Zahl enth\xE4" "lt ung\xFC" "ltige Zeichen.";
const char kMaxLength[] = "Die maximale L\xE4" "nge wurde \xFC" "berschritten.";
const char kMinLength[] = "Die minimale L\xE4" "nge wurde unterschritten.";
const char kNoFit[] = "Der Wert entspricht nicht der Maske.";

TEST(NumberMaskTest, IntegersWithEveryMessage) {
  const Case cases[] = {
      {"1.234.567", nullptr, "1234567"},
      {"+1.234.567", nullptr, "1234567"},
      {"-5", nullptr, "-5"},
      {"", "###", "0"},
      {nullptr, "#", "0"},
      {"1.23", nullptr, kThousands},
      {"1234.", nullptr, kThousands},
      {".123", nullptr, kThousands},
      {"0.123", nullptr, kThousands},
      {"1234.567", nullptr, "1234567"},
      {"12.34", nullptr, kThousands},
      {"00012", nullptr, "12"},
      {"00012", "###", kMaxLength},
      {"-", nullptr, kMinLength},
      {"+", nullptr, kMinLength},
      {"5", "\\-###", "Die Zahl muss mit dem Minus-Vorzeichen beginnen."},
      {"+5", "\\-###", kPlusNotAllowed},
      {"-5", "\\-###", "-5"},
      {"5", "\\+###", "Die Zahl muss mit dem Plus-Vorzeichen beginnen."},
      {"-5", "\\+###", kMinusNotAllowed},
      {"5", "+###", "Die Zahl muss ein Vorzeichen haben."},
      {"-5", "###", kMinusNotAllowed},
      {"+5", "###", kPlusNotAllowed},
      {"5", "-###", "5"},
      {"+5", "-###", "5"},
      {"-5", "-###", "-5"},
      {"17", "#7", "17"},
      {"18", "#7", kNoFit},
      {"7", "#7", "7"},
      {"1", "#7", kNoFit},
      {"05", "\\0#", "5"},
      {"15", "\\0#", kNoFit},
      {"5", "\\0#", kMinLength},
      {"1.234", "#.###", "1234"},
      {"1234", "#.###", "1234"},
      {"12,5", nullptr, kInvalid},
      {"1 2", nullptr, kInvalid},
      {"12", "#0##", "12"},
      {"1", "#0##", kMinLength},
      {"123", "0###", "123"},
      {"12", "0###", kMinLength},
      {"", "##0", "0"},
      {"5", "-", kMaxLength},  // a sign part alone allows no digit
      {"-", "-", kMinLength},
      {"5", "\\", kMaxLength},  // a lone backslash: the free sign, no positions
      // Faults meet: the sign before everything, the minimum before groups.
      {"+1x", "\\-##", kPlusNotAllowed},
      {"1x", "###", kInvalid},
      {"1.2", "0###", kMinLength},
      {"1234.5", "######", kThousands},
      // Beyond 64 bits a value is too long, not wrapped.
      {"9223372036854775807", nullptr, "9223372036854775807"},
      {"-9223372036854775808", nullptr, "-9223372036854775808"},
      {"9223372036854775808", nullptr, kMaxLength},
      {"12345678901234567890123", nullptr, kMaxLength},
      {"00000000000000000000001", nullptr, "1"},
      {"12345678901234567890123456", nullptr, kMaxLength},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(c.expected, integerOutcome(c.value, c.mask))
        << (c.value ? c.value : "(null)") << " / " << (c.mask ? c.mask : "(null)");
  }
}

TEST(NumberMaskTest, RealsWithEveryMessage) {
  const Case cases[] = {
      {"1,5", nullptr, "1.5"},
      {"1.234,56", nullptr, "1234.56"},
      {"0,5", nullptr, "0.5"},
      {"-0,5", nullptr, "-0.5"},
      {"1.5", nullptr, kThousands},
      {"1,", nullptr, "Das Dezimaltrennzeichen steht an einer ung\xFC" "ltigen Position."},
      {",5", nullptr, "Die minimale Anzahl der Vorkommastellen wurde unterschritten."},
      {"1,2,3", nullptr, kInvalid},
      {"1,2.3", nullptr, kInvalid},
      {"1,5", "#.###", "1.5"},
      {"12,5", "#.###", "Die maximale Anzahl der Vorkommastellen wurde \xFC" "berschritten."},
      {"1,5555", "#.###", "Die maximale Anzahl der Nachkommastellen wurde \xFC" "berschritten."},
      {"1", "##.00", "1"},
      {"1,5", "##.#0", "1.5"},
      {"1", "##.#0", "Die minimale Anzahl der Nachkommastellen wurde unterschritten."},
      {"1,55", "##.5#", "1.55"},
      {"1,65", "##.5#", kNoFit},
      {"1,5", "##.5#", "1.5"},
      {"1,5", "###.", "Die maximale Anzahl der Nachkommastellen wurde \xFC" "berschritten."},
      {"123,45", "###.##0", "123.45"},
      {"123,4", "###.##0", "Die minimale Anzahl der Nachkommastellen wurde unterschritten."},
      {"1,5", "\\-#.#", "Die Zahl muss mit dem Minus-Vorzeichen beginnen."},
      // The minimum comes after the group pass here.
      {"12.34,5", "0####.#", kThousands},
      {"", "##", "0"},
  };
  for (const Case &c : cases) {
    EXPECT_EQ(c.expected, realOutcome(c.value, c.mask)) << c.value << " / " << (c.mask ? c.mask : "(null)");
  }
  EXPECT_TRUE(std::signbit(Util::stringToReal("-0", nullptr)));
}

// A backslash in a number mask is skipped like any other literal; only in
// front of a 0 does it mean something: a position that requires a 0.
TEST(NumberMaskTest, BackslashIsOnlySkipped) {
  const char kMaxIntegerDigits[] = "Die maximale Anzahl der Vorkommastellen wurde \xFC" "berschritten.";
  const Case reals[] = {
      // The point behind the backslash still ends the integer part.
      {"123", "#\\.##", kMaxIntegerDigits},
      {"1,25", "#\\.##", "1.25"},
      {"1,205", "#.#\\0#", "1.205"},
      {"1,215", "#.#\\0#", kNoFit},
  };
  for (const Case &c : reals) {
    EXPECT_EQ(c.expected, realOutcome(c.value, c.mask)) << c.value << " / " << c.mask;
  }
  const Case integers[] = {
      // Two backslashes: no sign part; the second one makes the 0 required.
      {"05", "\\\\0#", "5"},
      {"15", "\\\\0#", kNoFit},
      {"5", "\\\\0#", kMinLength},
      {"-5", "\\\\0#", kMinusNotAllowed},
      // An escaped # and digit count as themselves; a trailing backslash is skipped.
      {"17", "\\#\\7\\", "17"},
      {"18", "\\#\\7\\", kNoFit},
  };
  for (const Case &c : integers) {
    EXPECT_EQ(c.expected, integerOutcome(c.value, c.mask)) << c.value << " / " << c.mask;
  }
}

TEST(NumberMaskTest, FractionsAreSummedDigitByDigit) {
  // 0.1 + 0.02 + 0.003 in doubles, as the reader adds them up.
  double expected = 0.0;
  expected += 1 / 10.0;
  expected += 2 / 100.0;
  expected += 3 / 1000.0;
  EXPECT_EQ(expected, Util::stringToReal("0,123", nullptr));
  EXPECT_EQ(1234.56, Util::stringToReal("1.234,56", nullptr));
}

TEST(NumberMaskTest, NumbersToText) {
  char text[Util::kRealTextSize];
  struct {
    double number;
    const char *expected;
  } reals[] = {{1234.5, "1234,5"}, {100.0, "100"}, {-0.25, "-0,25"}, {3.0, "3"}, {0.1, "0,100000000000000006"},
               {1.5e20, "1,5e+20"}, {1e-5, "1,00000000000000008e-05"}, {0.0, "0"}};
  for (const auto &r : reals) {
    Util::realToString(text, r.number);
    EXPECT_STREQ(r.expected, text) << r.number;
    EXPECT_LT(std::strlen(text), static_cast<std::size_t>(Util::kRealTextSize));
  }
  Util::realToString(text, -1.2345678901234567e-300);
  EXPECT_LT(std::strlen(text), static_cast<std::size_t>(Util::kRealTextSize));
  char integer[Util::kIntegerTextSize];
  Util::integerToString(integer, INT64_MIN);
  EXPECT_STREQ("-9223372036854775808", integer);
}

}  // namespace
}  // namespace quorel
