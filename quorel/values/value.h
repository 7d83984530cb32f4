// Value: the dynamic value of the rule language.
//
// Every text, truth value, number, date, coded value, range and non-value that
// rule code touches is a Value *. The order of the virtual operations is part
// of the interface: rule modules are compiled against it.
//
// Comparisons go through the public eq..le, which apply the level rule: the
// operand of the strictly higher OperatorLevel decides, the left one on a tie,
// and order comparisons are mirrored when the right operand decides. Each
// ...Impl may therefore assume that its own kind is the deciding one.
// contains() asks the left operand directly, with no level rule.
//
// Ownership: asString() and asDate() results belong to the value; asRange()
// and copy() results belong to the caller. No value has a setter; values fill
// only their own caches after construction.

#ifndef QUOREL_VALUES_VALUE_H_
#define QUOREL_VALUES_VALUE_H_

#include <cstdint>
#include <ctime>

#include "quorel/values/plausi_object.h"

namespace quorel {

class ValueIterator;

// The rank of a value kind. Only the numbers and their order matter.
enum OperatorLevel : std::int32_t {
  NIL_LEVEL = 0,
  STRING_LEVEL = 1,
  BOOL_LEVEL = 2,
  NUMBER_LEVEL = 3,
  CLASSIFICATION_LEVEL = 4,
  RANGE_LEVEL = 5,
  DATE_LEVEL = 6,
  UNAVAILABLE_LEVEL = 100,
};

class Value : public PlausiObject {
 public:
  virtual bool isNil() = 0;
  virtual bool isValid() = 0;
  virtual bool isRange() = 0;
  virtual const char *asString() = 0;
  virtual std::int64_t asInteger() = 0;
  virtual double asReal() = 0;
  virtual bool asBool() = 0;
  virtual std::tm *asDate() = 0;
  virtual ValueIterator *asRange() = 0;
  virtual OperatorLevel getOperatorLevel() = 0;
  virtual Value *copy() = 0;

  // The comparisons of the language; other must not be null.
  bool eq(Value *other);
  bool ne(Value *other);
  bool gt(Value *other);
  bool ge(Value *other);
  bool lt(Value *other);
  bool le(Value *other);
  bool contains(Value *other);

  // A value that is neither nil nor invalid; the three non-values are not.
  bool isUsable() { return !isNil() && isValid(); }

 protected:
  virtual bool eqImpl(Value *other) = 0;
  virtual bool neImpl(Value *other) = 0;
  virtual bool gtImpl(Value *other) = 0;
  virtual bool geImpl(Value *other) = 0;
  virtual bool ltImpl(Value *other) = 0;
  virtual bool leImpl(Value *other) = 0;
  virtual bool containsImpl(Value *other) = 0;

  // Whether other, not this, decides a comparison between the two.
  bool otherDecides(Value *other) { return other->getOperatorLevel() > getOperatorLevel(); }
};

}  // namespace quorel

#endif  // QUOREL_VALUES_VALUE_H_
