// NullableText: a privately owned copy of a text that may be absent. Setting
// null leaves the stored text alone, which is how every text setter of the
// run objects behaves; get() hands out the stored pointer, or null. clear()
// makes it absent again but keeps the memory, so that an object used for one
// record after the other stops asking for memory once it has seen its
// longest text. A text shorter than N bytes needs no memory at all.

#ifndef QUOREL_RULES_NULLABLE_TEXT_H_
#define QUOREL_RULES_NULLABLE_TEXT_H_

#include <cstddef>
#include <cstring>

#include "quorel/values/owned_text.h"

namespace quorel {

template <std::size_t N>
class BasicNullableText {
 public:
  void set(const char *text) {
    if (text == nullptr) return;
    set(text, std::strlen(text));
  }
  // The first length bytes of text, which must have as many.
  void set(const char *text, std::size_t length) {
    text_.assign(text, length);
    set_ = true;
  }
  const char *get() const { return set_ ? text_.c_str() : nullptr; }
  // The stored text's length; 0 when absent.
  std::size_t size() const { return set_ ? text_.size() : 0; }
  bool isSet() const { return set_; }
  void clear() { set_ = false; }

 private:
  OwnedText<N> text_;
  bool set_ = false;
};

using NullableText = BasicNullableText<16>;

}  // namespace quorel

#endif  // QUOREL_RULES_NULLABLE_TEXT_H_
