// OwnedText: a privately owned copy of a text. A text shorter than N bytes
// lives in the object itself, a longer one in a block of the thread's
// ObjectPool, which the object keeps for the texts put into it later: an
// object used for one record after the other stops asking for memory once
// it has seen its longest text.
//
// The copy is a plain one of the bytes. The run objects copy field texts,
// dates, numbers, section names and problem texts by the million, and
// std::string's general ways of assigning cost several times the copy of a
// short text.

#ifndef QUOREL_VALUES_OWNED_TEXT_H_
#define QUOREL_VALUES_OWNED_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "quorel/values/object_pool.h"

namespace quorel {

template <std::size_t N>
class OwnedText {
 public:
  static_assert(N > 0, "the end of the text needs a byte");

  OwnedText() { inline_[0] = '\0'; }
  // The first length bytes of text, which must have as many (a NUL among
  // them too).
  OwnedText(const char *text, std::size_t length) : OwnedText() { assign(text, length); }
  OwnedText(const OwnedText &other) : OwnedText(other.data(), other.size()) {}
  OwnedText &operator=(const OwnedText &other) {
    assign(other.data(), other.size());
    return *this;
  }
  ~OwnedText() { drop(); }

  // The first length bytes of text, which must have as many; text may lie
  // inside this one.
  void assign(const char *text, std::size_t length) {
    if (length > capacity_) {
      grow(text, length);
    } else if (length <= 16) {
      moveShort(text, length);
    } else {
      std::memmove(text_, text, length);
    }
    text_[length] = '\0';
    size_ = length;
  }

  // The text with a NUL after it, valid until the next assign.
  const char *c_str() const { return text_; }
  const char *data() const { return text_; }
  char *data() { return text_; }
  std::size_t size() const { return size_; }

 private:
  // Copies up to 16 bytes inline rather than by a call: most texts are
  // short. Every byte is loaded before any is stored, so that text may lie
  // inside this one.
  void moveShort(const char *text, std::size_t length) {
    if (length >= 8) {
      std::uint64_t head, tail;
      std::memcpy(&head, text, 8);
      std::memcpy(&tail, text + length - 8, 8);
      std::memcpy(text_, &head, 8);
      std::memcpy(text_ + length - 8, &tail, 8);
    } else if (length >= 4) {
      std::uint32_t head, tail;
      std::memcpy(&head, text, 4);
      std::memcpy(&tail, text + length - 4, 4);
      std::memcpy(text_, &head, 4);
      std::memcpy(text_ + length - 4, &tail, 4);
    } else if (length > 0) {
      char first = text[0], middle = text[length / 2], last = text[length - 1];
      text_[0] = first;
      text_[length / 2] = middle;
      text_[length - 1] = last;
    }
  }
  // Moves to a block for length bytes and their end, with text copied into
  // it before the former block goes.
  void grow(const char *text, std::size_t length) {
    auto *block = static_cast<char *>(ObjectPool::allocate(length + 1));
    std::memcpy(block, text, length);
    drop();
    text_ = block;
    capacity_ = length;
  }
  void drop() {
    if (text_ != inline_) ObjectPool::release(text_, capacity_ + 1);
  }

  char *text_ = inline_;
  std::size_t size_ = 0;
  std::size_t capacity_ = N - 1;  // bytes before the end
  char inline_[N];
};

}  // namespace quorel

#endif  // QUOREL_VALUES_OWNED_TEXT_H_
