#include "quorel/values/value.h"

namespace quorel {

bool Value::eq(Value *other) { return otherDecides(other) ? other->eqImpl(this) : eqImpl(other); }

bool Value::ne(Value *other) { return otherDecides(other) ? other->neImpl(this) : neImpl(other); }

bool Value::gt(Value *other) { return otherDecides(other) ? other->ltImpl(this) : gtImpl(other); }

bool Value::ge(Value *other) { return otherDecides(other) ? other->leImpl(this) : geImpl(other); }

bool Value::lt(Value *other) { return otherDecides(other) ? other->gtImpl(this) : ltImpl(other); }

bool Value::le(Value *other) { return otherDecides(other) ? other->geImpl(this) : leImpl(other); }

bool Value::contains(Value *other) { return containsImpl(other); }

}  // namespace quorel
