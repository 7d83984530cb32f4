// Date masks: date texts read into a tm and written from one.

#include <cstdio>
#include <cstring>

#include "quorel/masks/mask_messages.h"
#include "quorel/masks/util.h"

namespace quorel {

namespace {

using mask_messages::fail;

constexpr char kDefaultMask[] = "TT.MM.JJJJ";
constexpr char kInvalidCharacters[] = "Die Datumsangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.";
constexpr char kWrongLength[] = "Der Datumswert entspricht nicht der definierten L\xE4" "nge.";
constexpr char kBadDay[] = "Ung\xFC" "ltige Tagesangabe.";

// A date or time element: where it goes and its three messages.
struct Element {
  int std::tm::*field;
  int offset;  // added to the number read before it is stored
  int minimum;
  int maximum;  // below minimum: no range test
  const char *invalidCharacters;
  const char *wrongLength;
  const char *outOfRange;
};

constexpr Element kDay = {&std::tm::tm_mday, 0, 1, 31,
                          "Die Tagesangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.",
                          "Die Tagesangabe ist nicht zweistellig.", kBadDay};
constexpr Element kMonth = {&std::tm::tm_mon, -1, 1, 12,
                            "Die Monatsangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.",
                            "Die Monatsangabe ist nicht zweistellig.", "Ung\xFC" "ltige Monatsangabe."};
constexpr Element kShortYear = {&std::tm::tm_year, 100, 0, -1,
                                "Die Jahresangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.",
                                "Die Jahresangabe ist nicht zweistellig.", nullptr};
constexpr Element kYear = {&std::tm::tm_year, -1900, 1900, 0x7FFFFFFF,
                           "Die Jahresangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.",
                           "Die Jahresangabe ist nicht vierstellig.", "Ung\xFC" "ltige Jahresangabe."};
constexpr Element kHour = {&std::tm::tm_hour, 0, 0, 23,
                           "Die Stundenangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.",
                           "Die Stundenangabe ist nicht zweistellig.", "Ung\xFC" "ltige Stundenangabe."};
constexpr Element kMinute = {&std::tm::tm_min, 0, 0, 59,
                             "Die Minutenangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.",
                             "Die Minutenangabe ist nicht zweistellig.", "Ung\xFC" "ltige Minutenangabe."};
constexpr Element kSecond = {&std::tm::tm_sec, 0, 0, 59,
                             "Die Sekundenangabe enth\xE4" "lt ung\xFC" "ltige Zeichen.",
                             "Die Sekundenangabe ist nicht zweistellig.", "Ung\xFC" "ltige Sekundenangabe."};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isLeapYear(long long year) { return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0); }

// The element a doubled letter stands for, or null for any other character.
const Element *elementOf(char letter) {
  switch (letter) {
    case 'T': return &kDay;
    case 'M': return &kMonth;
    case 'J': return &kShortYear;
    case 'S': return &kHour;
    case 'm': return &kMinute;
    case 's': return &kSecond;
    default: return nullptr;
  }
}

// The value as the parse sees it: its terminator, and nothing but the
// terminator behind it, however far undoubled letters move the position.
class ValueReader {
 public:
  explicit ValueReader(const char *value) : value_(value), length_(std::strlen(value)) {}

  char at(std::size_t position) const { return position < length_ ? value_[position] : '\0'; }
  bool endsAt(std::size_t position) const { return position >= length_; }

 private:
  const char *value_;
  std::size_t length_;
};

// Reads digits of an element at position into the target field; the
// message of a fault, or null.
const char *readElement(const ValueReader &value, std::size_t *position, int digits, const Element &element,
                        std::tm *target) {
  int number = 0;
  for (int i = 0; i < digits; ++i) {
    if (i > 0 && value.endsAt(*position)) return element.wrongLength;
    char c = value.at(*position);
    if (!isDigit(c)) return element.invalidCharacters;
    number = number * 10 + (c - '0');
    ++*position;
  }
  if (element.minimum <= element.maximum && (number < element.minimum || number > element.maximum)) {
    return element.outOfRange;
  }
  target->*element.field = number + element.offset;
  return nullptr;
}

// Where the elements of the mask begin, behind an alignment letter: L and R
// always are one, M only at the head of an odd run of Ms.
const char *skipAlignment(const char *mask) {
  if (*mask == 'L' || *mask == 'R') return mask + 1;
  if (*mask == 'M') {
    std::size_t run = 0;
    while (mask[run] == 'M') ++run;
    if (run % 2 == 1) return mask + 1;
  }
  return mask;
}

int twoDigits(const char *text) { return (text[0] - '0') * 10 + (text[1] - '0'); }

// The default mask on a text of its exact shape with every element in range,
// as most dates arrive, read in one go. Anything else (another mask, a fault)
// answers false and is left to the reading letter by letter, which finds the
// fault and its message; where both read, they read the same.
bool readPlainDate(const char *value, const char *mask, std::tm *target) {
  if (std::strcmp(mask, kDefaultMask) != 0) return false;
  // In order, so that a short text ends the look at its terminator.
  auto digit = [value](int at) { return isDigit(value[at]); };
  if (!(digit(0) && digit(1) && value[2] == '.' && digit(3) && digit(4) && value[5] == '.' && digit(6) &&
        digit(7) && digit(8) && digit(9) && value[10] == '\0')) {
    return false;
  }
  int day = twoDigits(value);
  int month = twoDigits(value + 3);
  int year = twoDigits(value + 6) * 100 + twoDigits(value + 8);
  if (day < kDay.minimum || day > kDay.maximum || month < kMonth.minimum || month > kMonth.maximum ||
      year < kYear.minimum) {
    return false;
  }
  target->tm_mday = day + kDay.offset;
  target->tm_mon = month + kMonth.offset;
  target->tm_year = year + kYear.offset;
  return true;
}

// Reads value under the mask into target's date and time, element by
// element; the message of the first fault, or null.
const char *readByMask(const char *value, const char *m, std::tm *target) {
  ValueReader reader(value);
  std::size_t position = 0;
  while (*m != '\0') {
    char c = *m;
    const Element *element = elementOf(c);
    if (c == 'J' && std::strncmp(m, "JJJJ", 4) == 0) {
      if (const char *fault = readElement(reader, &position, 4, kYear, target)) return fault;
      m += 4;
    } else if (element != nullptr && m[1] == c) {
      if (const char *fault = readElement(reader, &position, 2, *element, target)) return fault;
      m += 2;
    } else if (element != nullptr) {
      // An undoubled letter skips a character of the value unread, and the
      // mask character behind it with it.
      ++position;
      m += m[1] != '\0' ? 2 : 1;
    } else {
      char expected = c;
      if (c == '@') {
        expected = ' ';
      } else if (c == '\\' && m[1] != '\0') {
        expected = *++m;
      }
      if (reader.at(position) != expected) return kInvalidCharacters;
      ++position;
      ++m;
    }
  }
  return reader.endsAt(position) ? nullptr : kWrongLength;
}

// Appends to a target of Util::kDateTextSize bytes, cutting what does not fit.
class DateWriter {
 public:
  explicit DateWriter(char *target) : target_(target), length_(0) { target_[0] = '\0'; }

  void append(const char *text) {
    while (*text != '\0' && length_ + 1 < static_cast<std::size_t>(Util::kDateTextSize)) {
      target_[length_++] = *text++;
    }
    target_[length_] = '\0';
  }
  void appendNumber(const char *format, long long number) {
    char text[32];
    std::snprintf(text, sizeof text, format, number);
    append(text);
  }

 private:
  char *target_;
  std::size_t length_;
};

}  // namespace

const char *Util::readDate(std::tm *target, const char *value, const char *mask) {
  target->tm_year = 0;
  target->tm_mon = 0;
  target->tm_mday = 0;
  target->tm_hour = 0;
  target->tm_min = 0;
  target->tm_sec = 0;
  if (value == nullptr || *value == '\0') return nullptr;
  const char *m = skipAlignment(mask != nullptr ? mask : kDefaultMask);
  if (!readPlainDate(value, m, target)) {
    if (const char *fault = readByMask(value, m, target)) return fault;
  }
  int day = target->tm_mday;
  switch (target->tm_mon) {
    case 1:
      if (day > 29 || (day == 29 && !isLeapYear(target->tm_year + 1900LL))) return kBadDay;
      break;
    case 3: case 5: case 8: case 10:
      if (day == 31) return kBadDay;
      break;
    default:
      break;
  }
  return nullptr;
}

void Util::stringToDate(std::tm *target, const char *value, const char *mask) {
  if (const char *fault = readDate(target, value, mask)) fail(fault);
}

void Util::dateToString(char *target, const std::tm *date, const char *mask) {
  DateWriter out(target);
  if (date == nullptr) return;
  const char *m = mask != nullptr ? mask : kDefaultMask;
  while (*m != '\0') {
    char c = *m;
    const Element *element = elementOf(c);
    if (c == 'J' && std::strncmp(m, "JJJJ", 4) == 0) {
      out.appendNumber("%lld", date->tm_year + 1900LL);
      m += 4;
    } else if (c == 'J' && m[1] == 'J') {
      long long year = date->tm_year + 1900LL;
      out.appendNumber("%02lld", (year % 100 + 100) % 100);
      m += 2;
    } else if (element != nullptr && m[1] == c) {
      out.appendNumber("%02lld", static_cast<long long>(date->*(element->field)) - element->offset);
      m += 2;
    } else if (element != nullptr) {
      ++m;  // an undoubled letter writes nothing
    } else {
      char text[2] = {c, '\0'};
      out.append(text);
      ++m;
    }
  }
}

}  // namespace quorel
