#include "quorel/values/nil_value.h"

#include "quorel/values/value_messages.h"

namespace quorel {

namespace {

[[noreturn]] void refuse() { messages::refuseConversion(messages::kNotInitialized); }

}  // namespace

bool NilValue::isNil() { return true; }
bool NilValue::isValid() { return true; }
bool NilValue::isRange() { return false; }
const char *NilValue::asString() { refuse(); }
std::int64_t NilValue::asInteger() { refuse(); }
double NilValue::asReal() { refuse(); }
bool NilValue::asBool() { refuse(); }
std::tm *NilValue::asDate() { refuse(); }
ValueIterator *NilValue::asRange() { refuse(); }
OperatorLevel NilValue::getOperatorLevel() { return NIL_LEVEL; }
Value *NilValue::copy() { return new NilValue(); }

bool NilValue::eqImpl(Value *) { return false; }
bool NilValue::neImpl(Value *) { return false; }
bool NilValue::gtImpl(Value *) { return false; }
bool NilValue::geImpl(Value *) { return false; }
bool NilValue::ltImpl(Value *) { return false; }
bool NilValue::leImpl(Value *) { return false; }
bool NilValue::containsImpl(Value *) { return false; }

}  // namespace quorel
