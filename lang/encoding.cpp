#include "quorel/lang/encoding.h"

#include <cstdint>

namespace quorel {
namespace lang {

namespace {

// The code points of the bytes 0x80..0x9F; 0 where the code page has none.
constexpr std::uint16_t kHigh[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// Decodes one UTF-8 sequence at text[*i]; -1 when it is malformed.
std::int32_t decode(const std::string &text, std::size_t *i) {
  auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  unsigned char lead = byte(*i);
  std::int32_t length = lead < 0x80 ? 1 : (lead >> 5) == 6 ? 2 : (lead >> 4) == 14 ? 3 : (lead >> 3) == 30 ? 4 : 0;
  if (length == 0 || *i + length > text.size()) return -1;
  std::int32_t code = length == 1 ? lead : lead & (0x7F >> length);
  for (std::int32_t k = 1; k < length; ++k) {
    unsigned char next = byte(*i + k);
    if ((next & 0xC0) != 0x80) return -1;
    code = (code << 6) | (next & 0x3F);
  }
  static constexpr std::int32_t kSmallest[5] = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return -1;
  *i += length;
  return code;
}

void append(std::string *out, std::int32_t code) {
  if (code < 0x80) {
    *out += static_cast<char>(code);
  } else if (code < 0x800) {
    *out += static_cast<char>(0xC0 | (code >> 6));
    *out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    *out += static_cast<char>(0xE0 | (code >> 12));
    *out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    *out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

}  // namespace

bool isValidUtf8(const std::string &text) {
  for (std::size_t i = 0; i < text.size();) {
    if (decode(text, &i) < 0) return false;
  }
  return true;
}

std::string utf8ToWindows1252(const std::string &text, std::size_t *bad) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    std::size_t start = i;
    std::int32_t code = decode(text, &i);
    if (code < 0) {  // not UTF-8 after all: callers test first
      ++i;
      code = '?';
    }
    char byte = '?';
    if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) {
      byte = static_cast<char>(code);
    } else {
      bool found = false;
      for (int k = 0; k < 32 && !found; ++k) {
        if (kHigh[k] == code) {
          byte = static_cast<char>(0x80 + k);
          found = true;
        }
      }
      if (!found && bad != nullptr && *bad == std::string::npos) *bad = start;
    }
    out += byte;
  }
  return out;
}

std::string windows1252ToUtf8(const std::string &text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      out += c;
    } else if (byte >= 0xA0) {
      append(&out, byte);
    } else {
      append(&out, kHigh[byte - 0x80] != 0 ? kHigh[byte - 0x80] : 0xFFFD);
    }
  }
  return out;
}

}  // namespace lang
}  // namespace quorel
