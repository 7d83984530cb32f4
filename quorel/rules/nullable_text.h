// NullableText: a privately owned copy of a text that may be absent. Setting
// null leaves the stored text alone, which is how every text setter of the
// run objects behaves; get() hands out the stored pointer, or null.

#ifndef QUOREL_RULES_NULLABLE_TEXT_H_
#define QUOREL_RULES_NULLABLE_TEXT_H_

#include <optional>
#include <string>

namespace quorel {

class NullableText {
 public:
  void set(const char *text) {
    if (text != nullptr) text_ = text;
  }
  const char *get() const { return text_ ? text_->c_str() : nullptr; }
  bool isSet() const { return text_.has_value(); }

 private:
  std::optional<std::string> text_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_NULLABLE_TEXT_H_
