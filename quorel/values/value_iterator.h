// ValueIterator: a one-way walk over values. Iterators are neither reset nor
// copied; a new walk takes a new Value::asRange(). Who owns the delivered
// values is told by each iterator.

#ifndef QUOREL_VALUES_VALUE_ITERATOR_H_
#define QUOREL_VALUES_VALUE_ITERATOR_H_

#include "quorel/values/plausi_object.h"

namespace quorel {

class Value;
class ValueKeeper;

class ValueIterator : public PlausiObject {
 public:
  virtual bool hasNext() = 0;
  // Throws PlausiException type 10 when hasNext() is false.
  virtual Value *next() = 0;

  // Values that this walk makes from now on, and that would otherwise live
  // as long as what it walks, go to keeper, which must outlive the iterator.
  // Called by whoever keeps the iterator for as long as its values are used:
  // the section of a run, a walk inside the library. Iterators that make no
  // values ignore it.
  virtual void keepDeliveredIn(ValueKeeper *keeper);
};

}  // namespace quorel

#endif  // QUOREL_VALUES_VALUE_ITERATOR_H_
