#include <ctime>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/masks/util.h"
#include "test_support.h"

namespace quorel {
namespace {

const char kNoFit[] = "Der Wert entspricht nicht der Maske.";
const char kMaxLength[] = "Die maximale L\xE4" "nge wurde \xFC" "berschritten.";
const char kMinLength[] = "Die minimale L\xE4" "nge wurde unterschritten.";

std::string textOutcome(const char *value, const char *mask) {
  try {
    Util::stringToString(value, mask);
    return "ok";
  } catch (const PlausiException &e) {
    EXPECT_EQ(EXCEPTION_CONVERSION, e.getType());
    return e.getMessage();
  }
}

TEST(TextMaskTest, PositionsLengthsAndTheOrderOfFaults) {
  struct {
    const char *value;
    const char *mask;
    const char *expected;
  } cases[] = {
      {"abc", "zzz", "ok"},         {"abcd", "zzz", kMaxLength},   {"ab", "zzz", "ok"},
      {"a", "zz.z", kMinLength},    {"ab", "zz.z", "ok"},          {"abc", "zz.z", "ok"},
      {"\xC4" "b", "ZZ", kNoFit},   {"\xC4\x42", "ZZ", "ok"},      {"1B", "ZZ", kNoFit},
      {"1", "cc", "ok"},            {"", "cc", "ok"},              {"", "cc.", kMinLength},
      {"Zz", "\\Z\\z", "ok"},       {"aZ", "\\Z\\z", kNoFit},      {"ab", "Rzz", "ok"},
      {"ab", "R*zz", "ok"},         {" a", "@z", "ok"},            {"xa", "@z", kNoFit},
      {"a", "L@z", "ok"},           {" a", "L@z", kNoFit},     {"", "", "ok"},
      {nullptr, "zz", "ok"},        {"abc", nullptr, "ok"},        {"L", "LL", "ok"},
      {"\xDF", "z", "ok"},          {"\xDF", "Z", kNoFit},         {"a.b", "z\\.z", "ok"},
      {"a\\", "z\\", kMaxLength},         {"ab", "z\\", kMaxLength},     {"x9", "zc.", "ok"},
      {"x", "zc.", kMinLength},
      // Too long and wrong early: the wrong character is reported.
      {"1bcd", "zzz", kNoFit},
      // Mask characters beyond the value are not tested.
      {"a", "z9Z", "ok"},
  };
  for (const auto &c : cases) {
    EXPECT_EQ(c.expected, textOutcome(c.value, c.mask))
        << (c.value ? c.value : "(null)") << " / " << (c.mask ? c.mask : "(null)");
  }
}

std::string dateOutcome(const char *value, const char *mask, std::tm *date) {
  try {
    Util::stringToDate(date, value, mask);
    char text[Util::kDateTextSize];
    Util::dateToString(text, date, mask);
    return text;
  } catch (const PlausiException &e) {
    EXPECT_EQ(EXCEPTION_CONVERSION, e.getType());
    return e.getMessage();
  }
}

TEST(DateMaskTest, ElementsAndTheirMessages) {
  const char kBadDay[] = "Ung\xFC" "ltige Tagesangabe.";
  const char kBadMonth[] = "Ung\xFC" "ltige Monatsangabe.";
  const char kDateChars[] = "Die Datumsangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.";
  struct {
    const char *value;
    const char *mask;
    const char *expected;
  } cases[] = {
      {"29.02.2000", nullptr, "29.02.2000"},
      {"29.02.2004", nullptr, "29.02.2004"},
      {"29.02.1900", nullptr, kBadDay},
      {"29.02.2001", nullptr, kBadDay},
      {"30.02.2000", nullptr, kBadDay},
      {"31.04.2010", nullptr, kBadDay},
      {"31.03.2010", nullptr, "31.03.2010"},
      {"32.01.2010", nullptr, kBadDay},
      {"00.01.2010", nullptr, kBadDay},
      {"01.13.2010", nullptr, kBadMonth},
      {"01.00.2010", nullptr, kBadMonth},
      {"01.01.1899", nullptr, "Ung\xFC" "ltige Jahresangabe."},
      {"1.1.2010", nullptr, "Die Tagesangabe enth\xE4" "lt ung\xFC" "ltige Zeichen."},
      {"01.01.20", nullptr, "Die Jahresangabe ist nicht vierstellig."},
      {"01.01.", nullptr, "Die Jahresangabe enth\xE4" "lt ung\xFC" "ltige Zeichen."},
      {"01", nullptr, kDateChars},
      {"0", nullptr, "Die Tagesangabe ist nicht zweistellig."},
      {"01.1", nullptr, "Die Monatsangabe ist nicht zweistellig."},
      {"01.01.20100", nullptr, "Der Datumswert entspricht nicht der definierten L\xE4" "nge."},
      {"01/01/2010", nullptr, kDateChars},
      {"01.02.99", "TT.MM.JJ", "01.02.99"},
      {"99", "JJ", "99"},
      {"9", "JJ", "Die Jahresangabe ist nicht zweistellig."},
      {"24.12.2010 18:30:00", "TT.MM.JJJJ SS:mm:ss", "24.12.2010 18:30:00"},
      {"24.12.2010 24:30:00", "TT.MM.JJJJ SS:mm:ss", "Ung\xFC" "ltige Stundenangabe."},
      {"24.12.2010 18:60:00", "TT.MM.JJJJ SS:mm:ss", "Ung\xFC" "ltige Minutenangabe."},
      {"24.12.2010 18:30:60", "TT.MM.JJJJ SS:mm:ss", "Ung\xFC" "ltige Sekundenangabe."},
      {"24.12.2010 1x:30:00", "TT.MM.JJJJ SS:mm:ss", "Die Stundenangabe enth\xE4" "lt ung\xFC" "ltige Zeichen."},
      {"24.12.2010 18:3", "TT.MM.JJJJ SS:mm:ss", "Die Minutenangabe ist nicht zweistellig."},
      {"24.12.2010 18:30:0", "TT.MM.JJJJ SS:mm:ss", "Die Sekundenangabe ist nicht zweistellig."},
      {"02.2010", "MM.JJJJ", "02.2010"},
      {"2010", "JJJJ", "2010"},
      {"", "TT.MM.JJJJ", "00.01.1900"},
      {"2010-05-07", "JJJJ-MM-TT", "2010-05-07"},
      {" 07", "@TT", "@07"},
      {"x07", "@TT", kDateChars},
      // Writing knows no backslash and no alignment letter.
      {"T07", "\\TTT", "\\07"},
      {"05.2010", "MMM.JJJJ", "05.2010"},
      // Undoubled letters skip a value character and the mask character
      // behind them, and may walk past the end without reading beyond it.
      {"x2010", "T.JJJJ", ".2010"},
      {"ab", "TxSxmxsx", "xxxx"},
      {"ab", "TxSxmxsxTT", "Die Tagesangabe enth\xE4" "lt ung\xFC" "ltige Zeichen."},
  };
  for (const auto &c : cases) {
    std::tm date{};
    EXPECT_EQ(c.expected, dateOutcome(c.value, c.mask, &date)) << c.value << " / " << (c.mask ? c.mask : "(null)");
  }
}

// The default mask reads a well-formed date in one go and leaves the rest to
// the reading letter by letter. The same mask with escaped dots always takes
// the second way, so on any text the two must agree: fields or message.
TEST(DateMaskTest, TheDefaultMaskReadsAsItsSpelledOutTwin) {
  auto outcome = [](const std::string &value, const char *mask) {
    std::tm date{};
    try {
      Util::stringToDate(&date, value.c_str(), mask);
    } catch (const PlausiException &e) {
      return std::string(e.getMessage());
    }
    return std::to_string(date.tm_mday) + "/" + std::to_string(date.tm_mon) + "/" + std::to_string(date.tm_year);
  };
  const std::string seeds[] = {"29.02.2000", "29.02.1900", "31.04.2010", "31.12.9999", "01.01.1900", "00.00.0000"};
  const char replacements[] = {'0', '1', '2', '3', '9', '.', 'x', ' '};
  std::vector<std::string> texts;
  for (const std::string &seed : seeds) {
    for (std::size_t length = 0; length <= seed.size() + 1; ++length) texts.push_back((seed + "1").substr(0, length));
    for (std::size_t at = 0; at < seed.size(); ++at) {
      for (char c : replacements) {
        std::string text = seed;
        text[at] = c;
        texts.push_back(text);
      }
    }
  }
  for (const std::string &text : texts) {
    EXPECT_EQ(outcome(text, "TT\\.MM\\.JJJJ"), outcome(text, "TT.MM.JJJJ")) << text;
    EXPECT_EQ(outcome(text, "TT.MM.JJJJ"), outcome(text, nullptr)) << text;
    EXPECT_EQ(outcome(text, "TT.MM.JJJJ"), outcome(text, "LTT.MM.JJJJ")) << text;
  }
}

TEST(DateMaskTest, FieldsReadAndWritten) {
  std::tm date{};
  date.tm_wday = 3;
  Util::stringToDate(&date, "01.02.99", "TT.MM.JJ");
  EXPECT_EQ(199, date.tm_year);
  EXPECT_EQ(1, date.tm_mon);
  EXPECT_EQ(3, date.tm_wday);  // other fields are left alone
  Util::stringToDate(&date, "02.2010", "MM.JJJJ");
  EXPECT_EQ(0, date.tm_mday);

  char text[Util::kDateTextSize];
  std::tm year{};
  year.tm_year = 2005 - 1900;
  Util::dateToString(text, &year, "JJ");
  EXPECT_STREQ("05", text);
  year.tm_year = 1999 - 1900;
  Util::dateToString(text, &year, "JJ");
  EXPECT_STREQ("99", text);
  Util::dateToString(text, nullptr, "TT");
  EXPECT_STREQ("", text);
  std::tm march{};
  march.tm_mon = 2;
  march.tm_mday = 5;
  Util::dateToString(text, &march, "TT.MM.");
  EXPECT_STREQ("05.03.", text);
  Util::dateToString(text, &march, "LTT");
  EXPECT_STREQ("L05", text);
  Util::dateToString(text, &march, "");
  EXPECT_STREQ("", text);
  // Nonsense fields under a long mask never write past the buffer.
  std::tm wild{};
  wild.tm_year = 2147481647;
  wild.tm_mday = -2147483647;
  Util::dateToString(text, &wild, "JJJJTTJJJJTTJJJJTTJJJJTTJ");
  EXPECT_EQ(static_cast<std::size_t>(Util::kDateTextSize - 1), std::string(text).size());
}

}  // namespace
}  // namespace quorel
