// Number masks: German number texts to numbers and back.
//
// A mask is read once into a sign rule and, per part (integer, fraction),
// the limits of its digit count and a table of required digits. The value is
// then read in two passes: left to right for characters and maxima, right
// to left for thousand groups and required digits. The order of the tests
// decides which message a value with several faults gets.

#include <charconv>
#include <cstdio>
#include <cstring>
#include <limits>

#include "quorel/masks/mask_messages.h"
#include "quorel/masks/util.h"

namespace quorel {

namespace {

using mask_messages::fail;

constexpr char kMinusNotAllowed[] = "Das Minus-Vorzeichen ist nicht erlaubt.";
constexpr char kPlusNotAllowed[] = "Das Plus-Vorzeichen ist nicht erlaubt.";
constexpr char kMinusRequired[] = "Die Zahl muss mit dem Minus-Vorzeichen beginnen.";
constexpr char kPlusRequired[] = "Die Zahl muss mit dem Plus-Vorzeichen beginnen.";
constexpr char kSignRequired[] = "Die Zahl muss ein Vorzeichen haben.";
constexpr char kBadThousands[] = "Das Tausendtrennzeichen steht an einer ung\xFC" "ltigen Position.";
constexpr char kBadDecimal[] = "Das Dezimaltrennzeichen steht an einer ung\xFC" "ltigen Position.";
constexpr char kInvalidCharacters[] = "Die Zahl enth\xE4" "lt ung\xFC" "ltige Zeichen.";
constexpr char kMaxIntegerDigits[] = "Die maximale Anzahl der Vorkommastellen wurde \xFC" "berschritten.";
constexpr char kMaxFractionDigits[] = "Die maximale Anzahl der Nachkommastellen wurde \xFC" "berschritten.";
constexpr char kMinIntegerDigits[] = "Die minimale Anzahl der Vorkommastellen wurde unterschritten.";
constexpr char kMinFractionDigits[] = "Die minimale Anzahl der Nachkommastellen wurde unterschritten.";

enum class SignRule { kFree, kRequired, kMinus, kPlus, kNone };

// Digits a part takes when the mask says nothing about it.
constexpr int kDefaultMaxDigits = 25;
// Positions a part records; further positions count but require nothing.
constexpr int kMaxPositions = 18;
constexpr int kFreeDigit = -1;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// One part of a number mask.
struct MaskPart {
  int positions = 0;        // n
  bool hasMarker = false;   // a digit character was seen
  int beforeMarker = 0;     // k
  int required[kMaxPositions];
  int maxDigits = kDefaultMaxDigits;
  int minDigits = 0;

  void addPosition(int digit) {
    if (positions < kMaxPositions) required[positions] = digit;
    ++positions;
  }
  void noteDigitCharacter() {
    if (!hasMarker) {
      hasMarker = true;
      beforeMarker = positions;
    }
  }
  // The digit required at a position, or kFreeDigit.
  int requiredAt(int position) const { return position < kMaxPositions ? required[position] : kFreeDigit; }

  // Reads positions from mask up to stop (or the end); gives where it ended.
  // A backslash escapes nothing: it is skipped like any literal, and only
  // makes a 0 right behind it a position that requires a 0.
  const char *read(const char *mask, char stop) {
    const char *p = mask;
    for (; *p != '\0' && *p != stop; ++p) {
      char c = *p;
      bool afterBackslash = p > mask && p[-1] == '\\';
      if (c == '#') {
        addPosition(kFreeDigit);
      } else if (c == '0' && !afterBackslash) {
        noteDigitCharacter();
      } else if (isDigit(c)) {
        noteDigitCharacter();
        addPosition(c - '0');
      }
    }
    return p;
  }
};

struct NumberMask {
  SignRule sign = SignRule::kFree;
  MaskPart integer;
  MaskPart fraction;

  // forReal: the first '.' ends the integer part and starts the fraction.
  NumberMask(const char *mask, bool forReal) {
    integer.minDigits = 1;
    if (mask == nullptr || *mask == '\0') return;
    const char *p = mask;
    if (p[0] == '-') {
      ++p;
    } else if (p[0] == '+') {
      sign = SignRule::kRequired;
      ++p;
    } else if (p[0] == '\\' && p[1] == '-') {
      sign = SignRule::kMinus;
      p += 2;
    } else if (p[0] == '\\' && p[1] == '+') {
      sign = SignRule::kPlus;
      p += 2;
    } else if (!(p[0] == '\\' && p[1] == '\0')) {
      sign = SignRule::kNone;
    }
    if (*p == 'L' || *p == 'M' || *p == 'R') ++p;
    p = integer.read(p, forReal ? '.' : '\0');
    setLimits(&integer, true);
    if (forReal && *p == '.') {
      fraction.read(p + 1, '\0');
      setLimits(&fraction, false);
    }
  }

  static void setLimits(MaskPart *part, bool isInteger) {
    part->maxDigits = part->positions;
    if (!part->hasMarker) {
      part->minDigits = isInteger ? 1 : 0;
    } else {
      part->minDigits = isInteger ? part->positions - part->beforeMarker : part->beforeMarker;
    }
  }
};

// The readers below answer the message of the first fault they find, or null
// when the text is a number; a fault ends the reading at once, so the order
// of the tests decides which message a value with several faults gets.

// Tests the sign at the start of value; sets where the digits begin and
// whether the number is negative.
const char *readSign(const char *value, SignRule rule, const char **digits, bool *negative) {
  *negative = false;
  *digits = value;
  if (*value == '-') {
    if (rule == SignRule::kNone || rule == SignRule::kPlus) return kMinusNotAllowed;
    *negative = true;
    *digits = value + 1;
    return nullptr;
  }
  if (*value == '+') {
    if (rule == SignRule::kNone || rule == SignRule::kMinus) return kPlusNotAllowed;
    *digits = value + 1;
    return nullptr;
  }
  if (rule == SignRule::kMinus) return kMinusRequired;
  if (rule == SignRule::kPlus) return kPlusRequired;
  if (rule == SignRule::kRequired) return kSignRequired;
  return nullptr;
}

// The second pass over one part, right to left from end down to begin:
// thousand groups (only an integer part can hold a point here) and required
// digits.
const char *checkPart(const char *begin, const char *end, const MaskPart &part) {
  int position = part.positions;
  int group = 0;
  for (const char *p = end; p != begin;) {
    char c = *--p;
    if (c == '.') {
      if (group != 3) return kBadThousands;
      group = 0;
    } else {
      --position;
      if (position >= 0) {
        int required = part.requiredAt(position);
        if (required != kFreeDigit && required != c - '0') return mask_messages::kValueDoesNotFitMask;
      }
      ++group;
    }
  }
  return nullptr;
}

}  // namespace

const char *Util::readInteger(const char *value, const char *mask, std::int64_t *number) {
  *number = 0;
  if (value == nullptr || *value == '\0') return nullptr;
  NumberMask parsed(mask, false);
  bool negative;
  const char *digits;
  if (const char *fault = readSign(value, parsed.sign, &digits, &negative)) return fault;

  // The accumulator holds the magnitude; a negative number may reach 2^63.
  const std::uint64_t limit = negative ? std::uint64_t{1} << 63 : std::numeric_limits<std::int64_t>::max();
  std::uint64_t magnitude = 0;
  int count = 0;
  const char *p = digits;
  for (; *p != '\0'; ++p) {
    char c = *p;
    if (isDigit(c)) {
      // A value beyond 64 bits is too long for an integer, whatever the mask.
      auto digit = static_cast<std::uint64_t>(c - '0');
      if (count >= parsed.integer.maxDigits || magnitude > (limit - digit) / 10) {
        return mask_messages::kMaximalLength;
      }
      magnitude = magnitude * 10 + digit;
      ++count;
    } else if (c == '.') {
      if (magnitude == 0) return kBadThousands;
    } else {
      return kInvalidCharacters;
    }
  }
  if (count < parsed.integer.minDigits) return mask_messages::kMinimalLength;
  if (const char *fault = checkPart(digits, p, parsed.integer)) return fault;
  if (!negative) {
    *number = static_cast<std::int64_t>(magnitude);
  } else {
    *number = magnitude == (std::uint64_t{1} << 63) ? std::numeric_limits<std::int64_t>::min()
                                                     : -static_cast<std::int64_t>(magnitude);
  }
  return nullptr;
}

const char *Util::readReal(const char *value, const char *mask, double *number) {
  *number = 0.0;
  if (value == nullptr || *value == '\0') return nullptr;
  NumberMask parsed(mask, true);
  bool negative;
  const char *digits;
  if (const char *fault = readSign(value, parsed.sign, &digits, &negative)) return fault;

  double accumulator = 0.0;
  int integerCount = 0;
  int fractionCount = 0;
  const char *comma = nullptr;
  double scale = 1.0;
  const char *p = digits;
  for (; *p != '\0'; ++p) {
    char c = *p;
    if (comma == nullptr) {
      if (isDigit(c)) {
        if (integerCount >= parsed.integer.maxDigits) return kMaxIntegerDigits;
        if (accumulator > 0.0) accumulator *= 10.0;
        accumulator += c - '0';
        ++integerCount;
      } else if (c == '.') {
        if (accumulator == 0.0) return kBadThousands;
      } else if (c == ',') {
        if (p[1] == '\0') return kBadDecimal;
        comma = p;
      } else {
        return kInvalidCharacters;
      }
    } else {
      if (!isDigit(c)) return kInvalidCharacters;
      if (fractionCount >= parsed.fraction.maxDigits) return kMaxFractionDigits;
      // Summed digit by digit: d / 10^distance from the comma.
      scale *= 10.0;
      accumulator += (c - '0') / scale;
      ++fractionCount;
    }
  }
  if (comma != nullptr) {
    if (const char *fault = checkPart(comma + 1, p, parsed.fraction)) return fault;
    if (const char *fault = checkPart(digits, comma, parsed.integer)) return fault;
  } else {
    if (const char *fault = checkPart(digits, p, parsed.integer)) return fault;
  }
  if (integerCount < parsed.integer.minDigits) return kMinIntegerDigits;
  if (fractionCount < parsed.fraction.minDigits) return kMinFractionDigits;
  *number = negative ? accumulator * -1.0 : accumulator;
  return nullptr;
}

std::int64_t Util::stringToInteger(const char *value, const char *mask) {
  std::int64_t number;
  if (const char *fault = readInteger(value, mask, &number)) fail(fault);
  return number;
}

double Util::stringToReal(const char *value, const char *mask) {
  double number;
  if (const char *fault = readReal(value, mask, &number)) fail(fault);
  return number;
}

void Util::integerToString(char *target, std::int64_t number) {
  std::snprintf(target, kIntegerTextSize, "%lld", static_cast<long long>(number));
}

void Util::realToString(char *target, double number) {
  // Locale-independent, as printf's %.18g in the C locale.
  char *end = std::to_chars(target, target + kRealTextSize - 1, number, std::chars_format::general, 18).ptr;
  *end = '\0';
  char *point = std::strchr(target, '.');
  if (point == nullptr) return;
  // With an exponent, %g has already dropped the zeros of the mantissa and
  // cutting at the end would reach into the exponent: only the mark changes.
  if (std::strchr(target, 'e') == nullptr) {
    while (end > point && end[-1] == '0') *--end = '\0';
    if (end - 1 == point) {
      *point = '\0';
      return;
    }
  }
  *point = ',';
}

}  // namespace quorel
