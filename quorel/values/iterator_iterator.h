// IteratorIterator: walks a chain of iterators one after the other. It owns
// them. Only the head is looked at: an iterator that is empty when it comes
// to the head ends the whole walk, however many follow it. A keeper given to
// the chain goes to every iterator in it, those added later too, so that
// what they delivered outlives them when they are dropped from the head.

#ifndef QUOREL_VALUES_ITERATOR_ITERATOR_H_
#define QUOREL_VALUES_ITERATOR_ITERATOR_H_

#include <list>
#include <memory>

#include "quorel/values/object_pool.h"

#include "quorel/values/value_iterator.h"

namespace quorel {

class IteratorIterator : public ValueIterator {
 public:
  IteratorIterator();
  ~IteratorIterator() override;

  // Appends and takes ownership.
  void addIterator(ValueIterator *iterator);

  bool hasNext() override;
  Value *next() override;
  void keepDeliveredIn(ValueKeeper *keeper) override;

 private:
  std::list<std::unique_ptr<ValueIterator>, PoolAllocator<std::unique_ptr<ValueIterator>>> iterators_;
  ValueKeeper *keeper_ = nullptr;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_ITERATOR_ITERATOR_H_
