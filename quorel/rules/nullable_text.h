// NullableText: a privately owned copy of a text that may be absent. Setting
// null leaves the stored text alone, which is how every text setter of the
// run objects behaves; get() hands out the stored pointer, or null. clear()
// makes it absent again but keeps the memory, so that an object used for one
// record after the other stops asking for memory once it has seen its
// longest text.

#ifndef QUOREL_RULES_NULLABLE_TEXT_H_
#define QUOREL_RULES_NULLABLE_TEXT_H_

#include <cstddef>
#include <cstring>
#include <string>

#include "quorel/values/object_pool.h"
#include "quorel/values/text_copy.h"

namespace quorel {

class NullableText {
 public:
  void set(const char *text) {
    if (text == nullptr) return;
    set(text, std::strlen(text));
  }
  // The first length bytes of text, which must have as many.
  void set(const char *text, std::size_t length) {
    copyText(&text_, text, length);
    set_ = true;
  }
  const char *get() const { return set_ ? text_.c_str() : nullptr; }
  bool isSet() const { return set_; }
  void clear() {
    text_.clear();
    set_ = false;
  }

 private:
  PooledText text_;
  bool set_ = false;
};

}  // namespace quorel

#endif  // QUOREL_RULES_NULLABLE_TEXT_H_
