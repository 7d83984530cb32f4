#include "quorel/values/iterator_iterator.h"

#include "quorel/rules/plausi_exception.h"
#include "quorel/values/value_messages.h"

namespace quorel {

IteratorIterator::IteratorIterator() = default;

IteratorIterator::~IteratorIterator() = default;

void IteratorIterator::addIterator(ValueIterator *iterator) {
  iterators_.emplace_back(iterator);
  if (keeper_ != nullptr) iterator->keepDeliveredIn(keeper_);
}

void IteratorIterator::keepDeliveredIn(ValueKeeper *keeper) {
  keeper_ = keeper;
  for (const auto &iterator : iterators_) iterator->keepDeliveredIn(keeper);
}

bool IteratorIterator::hasNext() { return !iterators_.empty() && iterators_.front()->hasNext(); }

Value *IteratorIterator::next() {
  if (!hasNext()) throw PlausiException(EXCEPTION_ITERATION, messages::kIterationOverflow);
  Value *value = iterators_.front()->next();
  // The delivered values outlive the iterators that delivered them.
  if (!iterators_.front()->hasNext()) iterators_.pop_front();
  return value;
}

}  // namespace quorel
