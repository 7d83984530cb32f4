#include "quorel/values/scalar_value.h"

#include "quorel/values/single_value_iterator.h"

namespace quorel {

bool ScalarValue::isNil() { return false; }
bool ScalarValue::isValid() { return true; }
bool ScalarValue::isRange() { return false; }
ValueIterator *ScalarValue::asRange() { return new SingleValueIterator(this); }
bool ScalarValue::containsImpl(Value *other) { return eqImpl(other); }

}  // namespace quorel
