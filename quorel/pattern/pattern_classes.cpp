// Character classes and escapes of the pattern language, and the report of
// a syntax error. A class is worked out completely while it is read: its
// text is the string of its member bytes.

#include <cstdio>
#include <cstring>

#include "quorel/pattern/pattern.h"

namespace {

struct ClassName {
  const char *name;
  const char *members;
  std::size_t size;  // the members may include 0x00
};

#define QUOREL_LOWER "abcdefghijklmnopqrstuvwxyz"
#define QUOREL_UPPER "ABCDEFGHIJKLMNOPQRSTUVWXYZ"
#define QUOREL_DIGIT "0123456789"
#define QUOREL_PUNCT "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~"
#define QUOREL_CNTRL                                                                             \
  "\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10\x11\x12\x13\x14\x15\x16" \
  "\x17\x18\x19\x1A\x1B\x1C\x1D\x1E\x1F\x7F"

constexpr char kLower[] = QUOREL_LOWER;
constexpr char kUpper[] = QUOREL_UPPER;
constexpr char kAlpha[] = QUOREL_LOWER QUOREL_UPPER;
constexpr char kDigit[] = QUOREL_DIGIT;
constexpr char kAlnum[] = QUOREL_LOWER QUOREL_UPPER QUOREL_DIGIT;
constexpr char kPunct[] = QUOREL_PUNCT;
constexpr char kGraph[] = QUOREL_LOWER QUOREL_UPPER QUOREL_DIGIT QUOREL_PUNCT;
constexpr char kBlank[] = " \t";
constexpr char kSpace[] = " \t\n\x0B\f\r";
constexpr char kCntrl[] = QUOREL_CNTRL;
constexpr char kXDigit[] = "abcdefABCDEF" QUOREL_DIGIT;
constexpr char kWord[] = QUOREL_LOWER QUOREL_UPPER QUOREL_DIGIT "_";
constexpr char kWhite[] = " \t\r\n\f";

#undef QUOREL_LOWER
#undef QUOREL_UPPER
#undef QUOREL_DIGIT
#undef QUOREL_PUNCT
#undef QUOREL_CNTRL

std::string ascii() {
  std::string all;
  for (int c = 0; c < 0x80; ++c) all += static_cast<char>(c);
  return all;
}

std::string membersOf(const char *text, std::size_t size) { return std::string(text, size); }

template <std::size_t N>
std::string membersOf(const char (&text)[N]) {
  return std::string(text, N - 1);
}

bool isOctal(char c) { return c >= '0' && c <= '7'; }

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool isLetter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

// The bytes in a or in b.
std::string uniteClasses(const std::string &a, const std::string &b) { return a + b; }

// The bytes in a and in b.
std::string intersectClasses(const std::string &a, const std::string &b) {
  bool inB[256] = {};
  for (char c : b) inB[static_cast<unsigned char>(c)] = true;
  std::string both;
  for (char c : a) {
    if (inB[static_cast<unsigned char>(c)]) both += c;
  }
  return both;
}

// lower to upper in 8-bit arithmetic, both ends included, wrapping at 0xFF.
std::string expandRange(unsigned char lower, unsigned char upper) {
  std::string range;
  for (unsigned char c = lower;; ++c) {
    range += static_cast<char>(c);
    if (c == upper) break;
  }
  return range;
}

}  // namespace

void Pattern::reportSyntaxError() {
  char before = cursor_ >= 1 && cursor_ <= static_cast<std::int32_t>(text_.size())
                    ? text_[static_cast<std::size_t>(cursor_ - 1)]
                    : '\0';
  std::fprintf(stderr, "%s\n%*c^\n", text_.c_str(), static_cast<int>(cursor_ - 1), ' ');
  if (before != '\0' && std::strchr(")*+?]}", before) != nullptr) {
    std::fprintf(stderr, "Syntax Error near here. Possible unescaped meta character.\n");
  } else {
    std::fprintf(stderr, "Syntax Error near here. \n");
  }
  error_ = true;
}

std::string Pattern::invertClass(const std::string &members) const {
  bool in[256] = {};
  for (char c : members) {
    auto u = static_cast<unsigned char>(c);
    in[u] = true;
    // Under CaseInsensitive the complement leaves out both cases of a letter.
    if (has(CaseInsensitive) && isLetter(u)) in[u ^ 0x20] = true;
  }
  std::string others;
  for (int c = 0; c < 256; ++c) {
    if (!in[c]) others += static_cast<char>(c);
  }
  return others;
}

std::string Pattern::readClass() {
  std::string result;
  bool negated = false;
  if (peek() == '^' && !atEnd()) {
    negated = true;
    ++cursor_;
  }
  while (!atEnd() && peek() != ']') {
    char c = text_[static_cast<std::size_t>(cursor_++)];
    bool ranged = false;
    unsigned char lower = 0;
    if (c == '[') {
      result = uniteClasses(result, readClass());
    } else if (c == '&' && peek() == '&' && !atEnd()) {
      ++cursor_;
      if (peek() != '[' || atEnd()) {
        reportSyntaxError();
        cursor_ = static_cast<std::int32_t>(text_.size());
      } else {
        ++cursor_;
        result = intersectClasses(result, readClass());
      }
    } else if (c == '\\') {
      bool inverted = false;
      bool quoted = false;
      std::string members = readEscape(&inverted, &quoted);
      if (quoted) {
        reportSyntaxError();
        cursor_ = static_cast<std::int32_t>(text_.size());
      } else if (inverted) {
        result = uniteClasses(result, invertClass(members));
      } else if (members.size() <= 1 && peek() == '-' && !atEnd()) {
        ranged = true;
        lower = members.empty() ? 0 : static_cast<unsigned char>(members[0]);
      } else {
        result = uniteClasses(result, members);
      }
    } else if (peek() == '-' && !atEnd()) {
      ranged = true;
      lower = static_cast<unsigned char>(c);
    } else {
      result += c;
    }
    if (!ranged) continue;

    ++cursor_;  // the '-'
    if (atEnd()) {
      reportSyntaxError();
      continue;
    }
    char u = text_[static_cast<std::size_t>(cursor_++)];
    if (u == '\\') {
      bool inverted = false;
      bool quoted = false;
      std::string members = readEscape(&inverted, &quoted);
      if (quoted) {
        reportSyntaxError();
        cursor_ = static_cast<std::int32_t>(text_.size());
        continue;
      }
      if (inverted || members.size() > 1) reportSyntaxError();
      u = members.empty() ? '\0' : members[0];
    } else if (u == '[' || u == ']' || u == '-' || u == '&') {
      reportSyntaxError();
      cursor_ = static_cast<std::int32_t>(text_.size());
      continue;
    }
    result = uniteClasses(result, expandRange(lower, static_cast<unsigned char>(u)));
  }
  if (peek() == ']' && !atEnd()) {
    ++cursor_;
    return negated ? invertClass(result) : result;
  }
  reportSyntaxError();
  return std::string();
}

std::string Pattern::readEscape(bool *inverted, bool *quoted) {
  *inverted = false;
  *quoted = false;
  if (atEnd()) {
    ++cursor_;
    reportSyntaxError();
    return std::string();
  }
  char c = text_[static_cast<std::size_t>(cursor_++)];
  // Inverted escapes carry "!!" in front until the end of this operation.
  std::string text;
  switch (c) {
    case '0': text = readOctalEscape(); break;
    case 'a': text = "\x07"; break;
    case 'd': text = membersOf(kDigit); break;
    case 'D': text = "!!" + membersOf(kDigit); break;
    case 'e': text = "\r"; break;
    case 'f': text = "\f"; break;
    case 'n': text = "\n"; break;
    case 'p': text = readClassName(); break;
    case 'P': text = "!!" + readClassName(); break;
    case 'Q': *quoted = true; break;
    case 'r': text = "\r"; break;
    case 's': text = membersOf(kWhite); break;
    case 'S': text = "!!" + membersOf(kWhite); break;
    case 't': text = "\t"; break;
    case 'w': text = membersOf(kWord); break;
    case 'W': text = "!!" + membersOf(kWord); break;
    case 'x': text = readHexEscape(); break;
    default: text = std::string(1, c); break;
  }
  if (text.compare(0, 2, "!!") == 0) {
    text.erase(0, 2);
    *inverted = true;
  }
  return text;
}

std::string Pattern::readOctalEscape() {
  char first = peek();
  char second = peek(1);
  if (cursor_ + 1 < static_cast<std::int32_t>(text_.size()) && isOctal(first) && isOctal(second)) {
    int value = (first - '0') * 8 + (second - '0');
    cursor_ += 2;
    if (first <= '3' && !atEnd() && isOctal(peek())) {
      value = value * 8 + (peek() - '0');
      ++cursor_;
    }
    return std::string(1, static_cast<char>(value));
  }
  reportSyntaxError();
  return std::string();
}

std::string Pattern::readHexEscape() {
  int high = atEnd() ? -1 : hexValue(peek());
  int low = cursor_ + 1 < static_cast<std::int32_t>(text_.size()) ? hexValue(peek(1)) : -1;
  if (high < 0 || low < 0) return " ";
  cursor_ += 2;
  return std::string(1, static_cast<char>(high * 16 + low));
}

std::string Pattern::readClassName() {
  static const ClassName kNames[] = {
      {"{Lower}", kLower, sizeof kLower - 1},   {"{Upper}", kUpper, sizeof kUpper - 1},
      {"{Alpha}", kAlpha, sizeof kAlpha - 1},   {"{Digit}", kDigit, sizeof kDigit - 1},
      {"{Alnum}", kAlnum, sizeof kAlnum - 1},   {"{Punct}", kPunct, sizeof kPunct - 1},
      {"{Graph}", kGraph, sizeof kGraph - 1},   {"{Print}", kGraph, sizeof kGraph - 1},
      {"{Blank}", kBlank, sizeof kBlank - 1},   {"{Space}", kSpace, sizeof kSpace - 1},
      {"{Cntrl}", kCntrl, sizeof kCntrl - 1},   {"{XDigit}", kXDigit, sizeof kXDigit - 1},
  };
  for (const ClassName &entry : kNames) {
    std::size_t length = std::strlen(entry.name);
    if (text_.compare(static_cast<std::size_t>(cursor_), length, entry.name) == 0) {
      cursor_ += static_cast<std::int32_t>(length);
      return membersOf(entry.members, entry.size);
    }
  }
  if (text_.compare(static_cast<std::size_t>(cursor_), 7, "{ASCII}") == 0) {
    cursor_ += 7;
    return ascii();
  }
  reportSyntaxError();
  return std::string();
}
