// TransientWalk: a walk of a value inside the library whose delivered values
// are used at once. They die with the walk rather than with the value
// walked, so that a value which outlives runs (a classification's code, a
// range the host keeps) gathers nothing however often it is compared,
// summed or printed.

#ifndef QUOREL_VALUES_TRANSIENT_WALK_H_
#define QUOREL_VALUES_TRANSIENT_WALK_H_

#include <memory>

#include "quorel/values/value.h"
#include "quorel/values/value_iterator.h"
#include "quorel/values/value_keeper.h"

namespace quorel {

class TransientWalk {
 public:
  // The failures of value->asRange() pass on.
  explicit TransientWalk(Value *value) : iterator_(value->asRange()) { iterator_->keepDeliveredIn(&keeper_); }

  TransientWalk(const TransientWalk &) = delete;
  TransientWalk &operator=(const TransientWalk &) = delete;

  bool hasNext() { return iterator_->hasNext(); }
  Value *next() { return iterator_->next(); }

 private:
  ValueKeeper keeper_;  // declared first: outlives the iterator
  std::unique_ptr<ValueIterator> iterator_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_TRANSIENT_WALK_H_
