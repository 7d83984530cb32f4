// ValueIterator: a one-way walk over values. Iterators are neither reset nor
// copied; a new walk takes a new Value::asRange(). Who owns the delivered
// values is told by each iterator.

#ifndef QUOREL_VALUES_VALUE_ITERATOR_H_
#define QUOREL_VALUES_VALUE_ITERATOR_H_

#include "quorel/values/plausi_object.h"

namespace quorel {

class Value;

class ValueIterator : public PlausiObject {
 public:
  virtual bool hasNext() = 0;
  // Throws PlausiException type 10 when hasNext() is false.
  virtual Value *next() = 0;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_VALUE_ITERATOR_H_
