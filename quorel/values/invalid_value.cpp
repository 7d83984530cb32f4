#include "quorel/values/invalid_value.h"

#include "quorel/values/single_value_iterator.h"

namespace quorel {

InvalidValue::InvalidValue() : date_{} {}

bool InvalidValue::isNil() { return false; }
const char *InvalidValue::asString() { return ""; }
std::int64_t InvalidValue::asInteger() { return 0; }
double InvalidValue::asReal() { return 0.0; }
bool InvalidValue::asBool() { return false; }
std::tm *InvalidValue::asDate() { return &date_; }
ValueIterator *InvalidValue::asRange() { return new SingleValueIterator(this); }
Value *InvalidValue::copy() { return new InvalidValue(); }

}  // namespace quorel
