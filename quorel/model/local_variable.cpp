#include "quorel/model/local_variable.h"

#include "quorel/rules/runtime_context.h"
#include "quorel/values/nil_value.h"

namespace quorel {

LocalVariable::LocalVariable() : value_(new NilValue()) {}

LocalVariable::LocalVariable(Value *value) : value_(value->copy()) {}

LocalVariable::~LocalVariable() = default;

Value *LocalVariable::get(RuntimeContext *context) { return context->createValue(value_.get()); }

void LocalVariable::set(RuntimeContext *, Value *value) {
  if (value->isNil()) return;
  value_.reset(value->copy());
}

}  // namespace quorel
