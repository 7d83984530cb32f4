#include "quorel/host/encoding.h"

#include <cstdint>
#include <cstring>

#include "quorel/host/byte_words.h"

namespace quorel {
namespace host {

namespace {

// The code points of 0x80..0x9F in Windows-1252; 0 where the code page has
// no character.
const std::uint16_t kHighControls[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                         0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                         0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                         0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// A code point below 0x10000 in UTF-8 at `at`; the end of it.
char *writeCodePoint(char *at, unsigned code) {
  if (code < 0x80) {
    *at++ = static_cast<char>(code);
  } else if (code < 0x800) {
    *at++ = static_cast<char>(0xC0 | (code >> 6));
    *at++ = static_cast<char>(0x80 | (code & 0x3F));
  } else {
    *at++ = static_cast<char>(0xE0 | (code >> 12));
    *at++ = static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    *at++ = static_cast<char>(0x80 | (code & 0x3F));
  }
  return at;
}

// The Windows-1252 byte of a code point, or -1.
int byteOf(unsigned code) {
  if (code == 0) return -1;  // a library text ends at its first NUL
  if (code < 0x80 || (code >= 0xA0 && code <= 0xFF)) return static_cast<int>(code);
  for (int i = 0; i < 32; ++i) {
    if (kHighControls[i] == code && code != 0) return 0x80 + i;
  }
  return -1;
}

// The length of the UTF-8 sequence that lead begins, 0 for a byte that
// begins none.
std::size_t sequenceLength(unsigned char lead) {
  return lead < 0x80 ? 1 : (lead >> 5) == 0x6 ? 2 : (lead >> 4) == 0xE ? 3 : (lead >> 3) == 0x1E ? 4 : 0;
}

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// Decodes one UTF-8 sequence at text[*i], moving *i past it; -1 when it is
// malformed (overlong forms and surrogates included).
long decode(std::string_view text, std::size_t *i) {
  auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  unsigned char lead = byte(*i);
  std::size_t length = sequenceLength(lead);
  if (length == 0 || *i + length > text.size()) return -1;
  unsigned code = length == 1 ? lead : lead & (0x7Fu >> length);
  for (std::size_t k = 1; k < length; ++k) {
    unsigned char next = byte(*i + k);
    if (!isContinuation(next)) return -1;
    code = (code << 6) | (next & 0x3F);
  }
  static const unsigned kSmallest[5] = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return -1;
  *i += length;
  return static_cast<long>(code);
}

}  // namespace

char *writeUtf8Byte(char *at, unsigned char byte) {
  unsigned code = byte < 0x80 || byte >= 0xA0 ? byte : kHighControls[byte - 0x80];
  return writeCodePoint(at, code != 0 ? code : 0xFFFD);
}

char *writeUtf8(char *at, std::string_view text) {
  // ASCII, most of any text, goes over a word at a time.
  return words::copyUnmarked(
      at, text, [](std::uint64_t word) { return word & words::kHighBits; }, writeUtf8Byte);
}

void appendUtf8(std::string *out, std::string_view text) {
  std::size_t start = out->size();
  out->resize(start + kUtf8Growth * text.size());
  char *end = writeUtf8(&(*out)[start], text);
  out->resize(static_cast<std::size_t>(end - out->data()));
}

void appendUtf8(std::string *out, const char *text) {
  if (text != nullptr) appendUtf8(out, std::string_view(text));
}

std::string toUtf8(const char *text) {
  std::string out;
  appendUtf8(&out, text);
  return out;
}

bool fromUtf8(std::string_view utf8, std::string *out, std::size_t *offset) {
  out->clear();
  out->reserve(utf8.size());
  for (std::size_t i = 0; i < utf8.size();) {
    std::size_t start = i;
    long code = decode(utf8, &i);
    int byte = code < 0 ? -1 : byteOf(static_cast<unsigned>(code));
    if (byte < 0) {
      *offset = start;
      return false;
    }
    *out += static_cast<char>(byte);
  }
  return true;
}

std::string fromUtf8Fault(std::string_view utf8, std::size_t offset) {
  std::size_t end = offset;
  return "the character at byte " + std::to_string(offset) +
         (decode(utf8, &end) < 0 ? " is no UTF-8" : " is not in Windows-1252");
}

std::string messageText(std::string_view utf8) {
  std::string out, piece;
  std::size_t offset = 0;
  // fromUtf8 leaves in piece what it converted before the character that
  // does not fit.
  while (!fromUtf8(utf8, &piece, &offset)) {
    out += piece;
    out += '?';
    std::size_t skip = 1;
    while (offset + skip < utf8.size() && isContinuation(static_cast<unsigned char>(utf8[offset + skip]))) ++skip;
    utf8.remove_prefix(offset + skip);
  }
  return out + piece;
}

std::size_t utf8Fault(std::string_view text, std::size_t *beyondAscii) {
  *beyondAscii = std::string_view::npos;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t start = i;
    if (decode(text, &i) >= 0) {
      if (i - start > 1 && *beyondAscii == std::string_view::npos) *beyondAscii = start;
      continue;
    }
    // A lead byte whose sequence the end cuts short, its bytes so far right.
    std::size_t length = sequenceLength(static_cast<unsigned char>(text[start]));
    bool cut = length > 1 && start + length > text.size();
    for (std::size_t k = start + 1; cut && k < text.size(); ++k) {
      cut = isContinuation(static_cast<unsigned char>(text[k]));
    }
    return cut ? std::string_view::npos : start;
  }
  return std::string_view::npos;
}

bool parseEncoding(const std::string &name, FileEncoding *encoding) {
  std::string lower;
  for (char c : name) lower += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  if (lower == "windows-1252" || lower == "cp1252") {
    *encoding = FileEncoding::kWindows1252;
  } else if (lower == "utf-8" || lower == "utf8") {
    *encoding = FileEncoding::kUtf8;
  } else {
    return false;
  }
  return true;
}

}  // namespace host
}  // namespace quorel
