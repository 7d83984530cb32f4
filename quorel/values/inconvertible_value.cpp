#include "quorel/values/inconvertible_value.h"

#include "quorel/values/value_messages.h"

namespace quorel {

InconvertibleValue::InconvertibleValue(const char *reason)
    : message_(std::string(messages::kUnavailablePrefix) +
               (reason != nullptr ? reason : messages::kNoFurtherInformation)) {}

// A copy takes the stored message as it is, so the prefix stands only once.
InconvertibleValue::InconvertibleValue(AlreadyPrefixed, const std::string &message)
    : message_(message) {}

void InconvertibleValue::refuse() const { messages::refuseConversion(message_.c_str()); }

bool InconvertibleValue::isNil() { return true; }
const char *InconvertibleValue::asString() { refuse(); }
std::int64_t InconvertibleValue::asInteger() { refuse(); }
double InconvertibleValue::asReal() { refuse(); }
bool InconvertibleValue::asBool() { refuse(); }
std::tm *InconvertibleValue::asDate() { refuse(); }
ValueIterator *InconvertibleValue::asRange() { refuse(); }
Value *InconvertibleValue::copy() { return new InconvertibleValue(AlreadyPrefixed{}, message_); }

}  // namespace quorel
