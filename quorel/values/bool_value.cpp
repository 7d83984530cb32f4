#include "quorel/values/bool_value.h"

#include "quorel/values/value_messages.h"

namespace quorel {

BoolValue::BoolValue(bool flag) : flag_(flag) {}

const char *BoolValue::asString() { return flag_ ? "WAHR" : "FALSCH"; }
std::int64_t BoolValue::asInteger() { return flag_ ? 1 : 0; }
double BoolValue::asReal() { return flag_ ? 1.0 : 0.0; }
bool BoolValue::asBool() { return flag_; }
std::tm *BoolValue::asDate() { messages::refuseConversion(messages::kBoolToDate); }
OperatorLevel BoolValue::getOperatorLevel() { return BOOL_LEVEL; }
Value *BoolValue::copy() { return new BoolValue(flag_); }

bool BoolValue::eqImpl(Value *other) { return flag_ == other->asBool(); }
bool BoolValue::neImpl(Value *other) { return flag_ != other->asBool(); }
bool BoolValue::gtImpl(Value *) { return false; }
bool BoolValue::geImpl(Value *) { return false; }
bool BoolValue::ltImpl(Value *) { return false; }
bool BoolValue::leImpl(Value *) { return false; }

}  // namespace quorel
