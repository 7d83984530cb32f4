#include "quorel/values/unavailable_value.h"

namespace quorel {

bool UnavailableValue::isValid() { return false; }
bool UnavailableValue::isRange() { return false; }
OperatorLevel UnavailableValue::getOperatorLevel() { return UNAVAILABLE_LEVEL; }

bool UnavailableValue::eqImpl(Value *other) { return !other->isValid(); }
bool UnavailableValue::neImpl(Value *other) { return other->isValid(); }
bool UnavailableValue::gtImpl(Value *) { return false; }
bool UnavailableValue::geImpl(Value *) { return false; }
bool UnavailableValue::ltImpl(Value *) { return false; }
bool UnavailableValue::leImpl(Value *) { return false; }
bool UnavailableValue::containsImpl(Value *other) { return eqImpl(other); }

}  // namespace quorel
