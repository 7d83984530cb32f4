// SingleValueIterator: delivers one value, once. The value stays its owner's;
// the iterator must not outlive it.

#ifndef QUOREL_VALUES_SINGLE_VALUE_ITERATOR_H_
#define QUOREL_VALUES_SINGLE_VALUE_ITERATOR_H_

#include "quorel/values/value_iterator.h"

namespace quorel {

class SingleValueIterator : public ValueIterator {
 public:
  explicit SingleValueIterator(Value *value);

  bool hasNext() override;
  Value *next() override;

 private:
  Value *value_;
  bool delivered_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_SINGLE_VALUE_ITERATOR_H_
