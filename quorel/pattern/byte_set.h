// ByteSet: a set of byte values, 0x00 to 0xFF, as 256 bits.
//
// The compiler works out every character class as a ByteSet, so that each
// union, intersection, inversion and range costs a few word operations
// whatever the class holds, and a class node tests an input byte with one
// shift and mask. A plain value type; copying is cheap.

#ifndef QUOREL_PATTERN_BYTE_SET_H_
#define QUOREL_PATTERN_BYTE_SET_H_

#include <cstdint>

class ByteSet {
 public:
  ByteSet() = default;

  // The set of the bytes of text[0..size).
  static ByteSet of(const char *text, std::int32_t size) {
    ByteSet set;
    for (std::int32_t i = 0; i < size; ++i) set.add(static_cast<unsigned char>(text[i]));
    return set;
  }

  // lower to upper in 8-bit arithmetic, both ends included: an upper end
  // below the lower end wraps from 0xFF to 0x00.
  static ByteSet range(unsigned char lower, unsigned char upper) {
    ByteSet set;
    for (unsigned c = lower;; c = (c + 1) & 0xFF) {
      set.add(static_cast<unsigned char>(c));
      if (c == upper) break;
    }
    return set;
  }

  bool contains(unsigned char c) const { return (words_[c >> 6] >> (c & 63)) & 1u; }
  void add(unsigned char c) { words_[c >> 6] |= std::uint64_t{1} << (c & 63); }
  bool empty() const { return (words_[0] | words_[1] | words_[2] | words_[3]) == 0; }

  std::int32_t count() const {
    std::int32_t n = 0;
    for (std::uint64_t w : words_) n += __builtin_popcountll(w);
    return n;
  }

  // The smallest member; only for a set that is not empty.
  unsigned char first() const {
    for (unsigned i = 0; i < 4; ++i) {
      if (words_[i] != 0) return static_cast<unsigned char>(i * 64 + __builtin_ctzll(words_[i]));
    }
    return 0;
  }

  ByteSet &operator|=(const ByteSet &other) {
    for (unsigned i = 0; i < 4; ++i) words_[i] |= other.words_[i];
    return *this;
  }
  ByteSet &operator&=(const ByteSet &other) {
    for (unsigned i = 0; i < 4; ++i) words_[i] &= other.words_[i];
    return *this;
  }
  ByteSet operator~() const {
    ByteSet set;
    for (unsigned i = 0; i < 4; ++i) set.words_[i] = ~words_[i];
    return set;
  }
  bool operator==(const ByteSet &other) const {
    for (unsigned i = 0; i < 4; ++i) {
      if (words_[i] != other.words_[i]) return false;
    }
    return true;
  }

 private:
  std::uint64_t words_[4] = {0, 0, 0, 0};
};

#endif  // QUOREL_PATTERN_BYTE_SET_H_
