#include "quorel/values/string_value.h"

#include <cstring>

#include "quorel/masks/util.h"
#include "quorel/platform/case_compare.h"
#include "quorel/values/value_messages.h"

namespace quorel {

StringValue::StringValue(const char *text) {
  if (text != nullptr) text_.assign(text, std::strlen(text));
}

StringValue::StringValue(std::string text) : text_(text.data(), text.size()) {}

StringValue::StringValue(const char *text, const unsigned char (&byteMap)[256]) : StringValue(text) {
  char *bytes = text_.data();
  for (std::size_t i = 0; i < text_.size(); ++i) bytes[i] = static_cast<char>(byteMap[static_cast<unsigned char>(bytes[i])]);
}

void StringValue::retext(std::string_view text) { text_.assign(text.data(), text.size()); }

const char *StringValue::asString() { return text_.c_str(); }

std::int64_t StringValue::asInteger() { return Util::stringToInteger(text_.c_str(), nullptr); }

double StringValue::asReal() { return Util::stringToReal(text_.c_str(), nullptr); }

bool StringValue::asBool() {
  if (platform::compareIgnoringCase(text_.c_str(), "WAHR") == 0) return true;
  if (platform::compareIgnoringCase(text_.c_str(), "FALSCH") == 0) return false;
  messages::refuseConversion(messages::kNotABool);
}

std::tm *StringValue::asDate() {
  // Read into a fresh tm so that a failure leaves the kept one untouched.
  std::tm parsed{};
  Util::stringToDate(&parsed, text_.c_str(), nullptr);
  if (!date_) date_ = std::make_unique<KeptDate>();
  date_->date = parsed;
  return &date_->date;
}

OperatorLevel StringValue::getOperatorLevel() { return STRING_LEVEL; }

Value *StringValue::copy() { return new StringValue(text_.c_str()); }

// strcmp orders by unsigned bytes, and a text that ends first is the smaller.
int StringValue::compareTo(Value *other) { return std::strcmp(text_.c_str(), other->asString()); }

bool StringValue::eqImpl(Value *other) { return compareTo(other) == 0; }
bool StringValue::neImpl(Value *other) { return compareTo(other) != 0; }
bool StringValue::gtImpl(Value *other) { return compareTo(other) > 0; }
bool StringValue::geImpl(Value *other) { return compareTo(other) >= 0; }
bool StringValue::ltImpl(Value *other) { return compareTo(other) < 0; }
bool StringValue::leImpl(Value *other) { return compareTo(other) <= 0; }

}  // namespace quorel
