// InlineText: a private copy of a text that may be absent, whose bytes live
// inside the object when the text has fewer than N of them with its end, and
// in a block from the thread's ObjectPool otherwise. A section copies its
// name each time it opens, and rule names are short, so that opening a
// section asks for no memory for its name.
//
// The text is fixed at construction; not copied.

#ifndef QUOREL_RULES_INLINE_TEXT_H_
#define QUOREL_RULES_INLINE_TEXT_H_

#include <cstddef>
#include <cstring>

#include "quorel/values/object_pool.h"

namespace quorel {

template <std::size_t N>
class InlineText {
 public:
  // Copies text; null stays null.
  explicit InlineText(const char *text) {
    if (text == nullptr) return;
    size_ = std::strlen(text);
    text_ = size_ < N ? inline_ : static_cast<char *>(ObjectPool::allocate(size_ + 1));
    std::memcpy(text_, text, size_ + 1);
  }
  ~InlineText() {
    if (text_ != nullptr && text_ != inline_) ObjectPool::release(text_, size_ + 1);
  }

  InlineText(const InlineText &) = delete;
  InlineText &operator=(const InlineText &) = delete;

  // The copy, or null.
  const char *get() const { return text_; }
  // Its length; 0 for null.
  std::size_t size() const { return size_; }

 private:
  char *text_ = nullptr;
  std::size_t size_ = 0;
  char inline_[N];
};

}  // namespace quorel

#endif  // QUOREL_RULES_INLINE_TEXT_H_
