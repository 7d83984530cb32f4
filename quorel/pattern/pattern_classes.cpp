// Character classes and escapes of the pattern language, and the report of
// a syntax error. A class is worked out completely while it is read, as a
// set of its member bytes.

#include <cstdio>
#include <cstring>
#include <vector>

#include "quorel/pattern/pattern.h"

namespace {

struct ClassName {
  const char *name;
  ByteSet members;
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

template <std::size_t N>
ByteSet membersOf(const char (&text)[N]) {
  return ByteSet::of(text, static_cast<std::int32_t>(N - 1));
}

bool isOctal(char c) { return c >= '0' && c <= '7'; }

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool isLetter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

ByteSet oneByte(unsigned char c) {
  ByteSet set;
  set.add(c);
  return set;
}

// A bracket class being read: what it holds so far, and how it joins the
// class around it when it closes.
struct OpenClass {
  ByteSet members;
  bool negated;
  bool intersects;  // opened by "&&[": intersection, otherwise union
};

}  // namespace

void Pattern::reportSyntaxError() {
  if (tooDeep_) return;  // its one report is written
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

ByteSet Pattern::invertClass(const ByteSet &members) const {
  ByteSet left = members;
  if (has(CaseInsensitive)) {
    // Under CaseInsensitive the complement leaves out both cases of a letter.
    for (unsigned c = 'A'; c <= 'z'; ++c) {
      auto u = static_cast<unsigned char>(c);
      if (isLetter(u) && members.contains(u)) left.add(static_cast<unsigned char>(u ^ 0x20));
    }
  }
  return ~left;
}

// Nested classes are read by a loop over a list of the open ones, not by a
// recursion per '[': a pattern from a record may nest them a million deep.
ByteSet Pattern::readClass() {
  std::vector<OpenClass> open;
  auto begin = [&](bool intersects) {
    bool negated = peek() == '^' && !atEnd();
    if (negated) ++cursor_;
    open.push_back(OpenClass{ByteSet(), negated, intersects});
  };
  begin(false);
  for (;;) {
    if (!atEnd() && peek() != ']') {
      char c = text_[static_cast<std::size_t>(cursor_++)];
      ByteSet &members = open.back().members;
      if (c == '[') {
        begin(false);
      } else if (c == '&' && peek() == '&' && !atEnd()) {
        ++cursor_;
        if (peek() != '[' || atEnd()) {
          reportSyntaxError();
          cursor_ = static_cast<std::int32_t>(text_.size());
        } else {
          ++cursor_;
          begin(true);
        }
      } else if (c == '\\') {
        ByteSet escaped;
        bool inverted = false;
        if (!readClassEscape(&escaped, &inverted)) {
          // reported; the class reading ends
        } else if (inverted) {
          members |= invertClass(escaped);
        } else if (escaped.count() <= 1 && peek() == '-' && !atEnd()) {
          members |= readRange(escaped.empty() ? 0 : escaped.first());
        } else {
          members |= escaped;
        }
      } else if (peek() == '-' && !atEnd()) {
        members |= readRange(static_cast<unsigned char>(c));
      } else {
        members.add(static_cast<unsigned char>(c));
      }
      continue;
    }
    // The innermost open class ends here, at its ']' or at the end of the
    // text, where each open class reports that it lacks its ']'.
    ByteSet closed;
    if (!atEnd()) {
      ++cursor_;
      closed = open.back().negated ? invertClass(open.back().members) : open.back().members;
    } else {
      reportSyntaxError();
    }
    bool intersects = open.back().intersects;
    open.pop_back();
    if (open.empty()) return closed;
    if (intersects) {
      open.back().members &= closed;
    } else {
      open.back().members |= closed;
    }
  }
}

ByteSet Pattern::readRange(unsigned char lower) {
  ++cursor_;  // the '-'
  if (atEnd()) {
    reportSyntaxError();
    return ByteSet();
  }
  char u = text_[static_cast<std::size_t>(cursor_++)];
  if (u == '\\') {
    ByteSet escaped;
    bool inverted = false;
    if (!readClassEscape(&escaped, &inverted)) return ByteSet();
    if (inverted || escaped.count() > 1) reportSyntaxError();
    u = escaped.empty() ? '\0' : static_cast<char>(escaped.first());
  } else if (u == '[' || u == ']' || u == '-' || u == '&') {
    reportSyntaxError();
    cursor_ = static_cast<std::int32_t>(text_.size());
    return ByteSet();
  }
  return ByteSet::range(lower, static_cast<unsigned char>(u));
}

bool Pattern::readClassEscape(ByteSet *members, bool *inverted) {
  bool quoted = false;
  *members = readEscape(inverted, &quoted);
  if (!quoted) return true;
  reportSyntaxError();
  cursor_ = static_cast<std::int32_t>(text_.size());
  return false;
}

ByteSet Pattern::readEscape(bool *inverted, bool *quoted) {
  *inverted = false;
  *quoted = false;
  if (atEnd()) {
    ++cursor_;
    reportSyntaxError();
    return ByteSet();
  }
  char c = text_[static_cast<std::size_t>(cursor_++)];
  switch (c) {
    case '0': return readOctalEscape();
    case 'a': return oneByte(0x07);
    case 'd': return membersOf(kDigit);
    case 'D': *inverted = true; return membersOf(kDigit);
    case 'e': return oneByte('\r');
    case 'f': return oneByte('\f');
    case 'n': return oneByte('\n');
    case 'p': return readClassName();
    case 'P': {
      ByteSet named = readClassName();
      *inverted = true;
      return named;
    }
    case 'Q': *quoted = true; return ByteSet();
    case 'r': return oneByte('\r');
    case 's': return membersOf(kWhite);
    case 'S': *inverted = true; return membersOf(kWhite);
    case 't': return oneByte('\t');
    case 'w': return membersOf(kWord);
    case 'W': *inverted = true; return membersOf(kWord);
    case 'x': return readHexEscape();
    default: return oneByte(static_cast<unsigned char>(c));
  }
}

ByteSet Pattern::readOctalEscape() {
  char first = peek();
  char second = peek(1);
  if (cursor_ + 1 < static_cast<std::int32_t>(text_.size()) && isOctal(first) && isOctal(second)) {
    int value = (first - '0') * 8 + (second - '0');
    cursor_ += 2;
    if (first <= '3' && !atEnd() && isOctal(peek())) {
      value = value * 8 + (peek() - '0');
      ++cursor_;
    }
    return oneByte(static_cast<unsigned char>(value));
  }
  reportSyntaxError();
  return ByteSet();
}

ByteSet Pattern::readHexEscape() {
  int high = atEnd() ? -1 : hexValue(peek());
  int low = cursor_ + 1 < static_cast<std::int32_t>(text_.size()) ? hexValue(peek(1)) : -1;
  if (high < 0 || low < 0) return oneByte(' ');
  cursor_ += 2;
  return oneByte(static_cast<unsigned char>(high * 16 + low));
}

ByteSet Pattern::readClassName() {
  static const ClassName kNames[] = {
      {"{Lower}", membersOf(kLower)},   {"{Upper}", membersOf(kUpper)},   {"{Alpha}", membersOf(kAlpha)},
      {"{Digit}", membersOf(kDigit)},   {"{Alnum}", membersOf(kAlnum)},   {"{Punct}", membersOf(kPunct)},
      {"{Graph}", membersOf(kGraph)},   {"{Print}", membersOf(kGraph)},   {"{Blank}", membersOf(kBlank)},
      {"{Space}", membersOf(kSpace)},   {"{Cntrl}", membersOf(kCntrl)},   {"{XDigit}", membersOf(kXDigit)},
      {"{ASCII}", ByteSet::range(0x00, 0x7F)},
  };
  for (const ClassName &entry : kNames) {
    std::size_t length = std::strlen(entry.name);
    if (text_.compare(static_cast<std::size_t>(cursor_), length, entry.name) == 0) {
      cursor_ += static_cast<std::int32_t>(length);
      return entry.members;
    }
  }
  reportSyntaxError();
  return ByteSet();
}
