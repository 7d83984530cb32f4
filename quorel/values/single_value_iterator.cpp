#include "quorel/values/single_value_iterator.h"

#include "quorel/rules/plausi_exception.h"
#include "quorel/values/value_messages.h"

namespace quorel {

SingleValueIterator::SingleValueIterator(Value *value) : value_(value), delivered_(false) {}

bool SingleValueIterator::hasNext() { return !delivered_; }

Value *SingleValueIterator::next() {
  if (delivered_) throw PlausiException(EXCEPTION_ITERATION, messages::kIterationOverflow);
  delivered_ = true;
  return value_;
}

}  // namespace quorel
