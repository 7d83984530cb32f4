// The operators of the language: comparison, containment, negation and
// arithmetic.

#include "quorel/functions/divisor.h"
#include "quorel/functions/functions.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/value.h"

namespace quorel {

Value *Functions::eq(RuntimeContext *runtime, Value *a, Value *b) { return runtime->createBoolValue(a->eq(b)); }
Value *Functions::ne(RuntimeContext *runtime, Value *a, Value *b) { return runtime->createBoolValue(a->ne(b)); }
Value *Functions::gt(RuntimeContext *runtime, Value *a, Value *b) { return runtime->createBoolValue(a->gt(b)); }
Value *Functions::ge(RuntimeContext *runtime, Value *a, Value *b) { return runtime->createBoolValue(a->ge(b)); }
Value *Functions::lt(RuntimeContext *runtime, Value *a, Value *b) { return runtime->createBoolValue(a->lt(b)); }
Value *Functions::le(RuntimeContext *runtime, Value *a, Value *b) { return runtime->createBoolValue(a->le(b)); }

Value *Functions::contains(RuntimeContext *runtime, Value *a, Value *b) {
  return runtime->createBoolValue(a->contains(b));
}

Value *Functions::not_(RuntimeContext *runtime, Value *a) { return runtime->createBoolValue(!a->asBool()); }

Value *Functions::plus(RuntimeContext *runtime, Value *a, Value *b) {
  bool aUsable = a->isUsable();
  bool bUsable = b->isUsable();
  if (aUsable && bUsable) {
    double left = a->asReal();
    return runtime->createNumberValue(left + b->asReal());
  }
  if (aUsable) return a;
  if (bUsable) return b;
  return runtime->createInvalidValue();
}

Value *Functions::minus(RuntimeContext *runtime, Value *a, Value *b) {
  bool aUsable = a->isUsable();
  bool bUsable = b->isUsable();
  if (aUsable && bUsable) {
    double left = a->asReal();
    return runtime->createNumberValue(left - b->asReal());
  }
  if (aUsable) return a;
  if (bUsable) return runtime->createNumberValue(b->asReal() * -1.0);
  return runtime->createInvalidValue();
}

Value *Functions::mult(RuntimeContext *runtime, Value *a, Value *b) {
  if (!a->isUsable() || !b->isUsable()) return runtime->createInvalidValue();
  double left = a->asReal();
  return runtime->createNumberValue(left * b->asReal());
}

Value *Functions::div(RuntimeContext *runtime, Value *a, Value *b) {
  checkDivisor(b);
  if (!a->isUsable()) return runtime->createInvalidValue();
  double dividend = a->asReal();
  return runtime->createNumberValue(dividend / b->asReal());
}

Value *Functions::neg(RuntimeContext *runtime, Value *a) {
  if (!a->isUsable()) return runtime->createInvalidValue();
  return runtime->createNumberValue(a->asReal() * -1.0);
}

}  // namespace quorel
