// Texts read eight bytes at a time, as 64-bit words: most bytes of records
// and problems are plain ASCII, which is found and copied a word at a time.
// A mark is the high bit of a byte of a word; the first byte in memory is the
// low end of a word (the platform is little-endian).

#ifndef QUOREL_HOST_BYTE_WORDS_H_
#define QUOREL_HOST_BYTE_WORDS_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace quorel {
namespace host {
namespace words {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "bytes are counted from the low end of a word");

constexpr std::uint64_t kOnes = 0x0101010101010101u;
constexpr std::uint64_t kHighBits = 0x8080808080808080u;

// The word of the eight bytes at from.
inline std::uint64_t load(const char *from) {
  std::uint64_t word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

// The n bytes at from (1 to 8) in the low end of a word, the others zero;
// reads no byte beyond them.
inline std::uint64_t loadShort(const char *from, std::size_t n) {
  if (n == 8) return load(from);
  std::uint32_t low = 0, high = 0;
  if (n >= 4) {  // two fours that overlap unless n is 8
    std::memcpy(&low, from, 4);
    std::memcpy(&high, from + n - 4, 4);
    return low | static_cast<std::uint64_t>(high) << (8 * (n - 4));
  }
  if (n >= 2) {
    std::uint16_t first, last;
    std::memcpy(&first, from, 2);
    std::memcpy(&last, from + n - 2, 2);
    return first | static_cast<std::uint64_t>(last) << (8 * (n - 2));
  }
  return static_cast<unsigned char>(*from);
}

// Marks the bytes that are c, and no other.
inline std::uint64_t bytesOf(std::uint64_t word, char c) {
  constexpr std::uint64_t kLow7Bits = ~kHighBits;
  std::uint64_t zeroes = word ^ (kOnes * static_cast<unsigned char>(c));
  return ~(((zeroes & kLow7Bits) + kLow7Bits) | zeroes | kLow7Bits);
}

// Marks the bytes below n (n at most 0x80). Exact up to the first mark;
// bytes after it may be marked too.
inline std::uint64_t bytesBelow(std::uint64_t word, unsigned n) { return (word - kOnes * n) & ~word & kHighBits; }

// Marks the bytes that are c, exact up to the first mark as bytesBelow:
// cheaper than bytesOf where only the first mark counts.
inline std::uint64_t firstBytesOf(std::uint64_t word, char c) {
  return bytesBelow(word ^ (kOnes * static_cast<unsigned char>(c)), 1);
}

// The place in its word of the first byte marked.
inline std::size_t firstMarked(std::uint64_t marks) { return static_cast<std::size_t>(__builtin_ctzll(marks)) / 8; }

// The marks of the n bytes at the low end of a word (n from 1 to 8), the
// bytes that loadShort reads.
inline std::uint64_t lowBytes(std::size_t n) { return n < 8 ? (std::uint64_t{1} << (8 * n)) - 1 : ~std::uint64_t{0}; }

// Whether the text holds the byte c.
inline bool holds(std::string_view text, char c) {
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    if (bytesOf(load(text.data() + i), c) != 0) return true;
  }
  std::size_t n = text.size() - i;
  return n > 0 && (bytesOf(loadShort(text.data() + i, n), c) & lowBytes(n)) != 0;
}

// Whether the text holds a byte beyond ASCII.
inline bool holdsBeyondAscii(std::string_view text) {
  std::uint64_t any = 0;
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) any |= load(text.data() + i);
  if (i < text.size()) any |= loadShort(text.data() + i, text.size() - i);
  return (any & kHighBits) != 0;
}

// A hash of the text, from its words: quick rather than strong, for tables
// that compare what they find anyway.
inline std::size_t hash(std::string_view text) {
  constexpr std::uint64_t kMultiplier = 0x9E3779B97F4A7C15u;
  std::uint64_t h = text.size() * kMultiplier;
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) h = ((h ^ load(text.data() + i)) * kMultiplier) ^ (h >> 29);
  if (i < text.size()) h = ((h ^ loadShort(text.data() + i, text.size() - i)) * kMultiplier) ^ (h >> 29);
  return static_cast<std::size_t>(h ^ (h >> 32));
}

// Copies text to at, but for the bytes that marks(word) marks: each of those
// is written by special(at, byte), which gives the end of what it wrote.
// Only the first mark of a word counts: marks need be exact up to it.
// Gives the end of the copy. at needs room for three bytes per byte of text
// at the least (a word is written where three bytes are left), and for what
// special writes.
template <typename Marks, typename Special>
char *copyUnmarked(char *at, std::string_view text, Marks marks, Special special) {
  const char *from = text.data();
  const char *end = from + text.size();
  // Copies the word's n bytes up to the first mark and gives whether there
  // was one; the word goes out whole, as the room allows.
  auto copy = [&](std::uint64_t word, std::uint64_t marked, std::size_t n) {
    std::memcpy(at, &word, sizeof word);
    std::size_t plain = marked == 0 ? n : firstMarked(marked);
    at += plain;
    from += plain;
    return plain < n;
  };
  while (from != end) {
    auto left = static_cast<std::size_t>(end - from);
    if (left >= 8) {
      std::uint64_t word = load(from);
      if (copy(word, marks(word), 8)) at = special(at, static_cast<unsigned char>(*from++));
    } else if (left >= 3) {
      std::uint64_t word = loadShort(from, left);
      // Not the zeroes beyond the text.
      if (copy(word, marks(word) & lowBytes(left), left)) at = special(at, static_cast<unsigned char>(*from++));
    } else {
      auto byte = static_cast<unsigned char>(*from++);
      if ((marks(std::uint64_t{byte}) & 0x80) == 0) {
        *at++ = static_cast<char>(byte);
      } else {
        at = special(at, byte);
      }
    }
  }
  return at;
}

}  // namespace words
}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_BYTE_WORDS_H_
