// Range: a value that stands for many values, the base of sequences,
// intervals, series and material queries.
//
// All ranges compare by one scheme: element by element through the level
// rule, true unless some element comparison fails. Against another range
// both are walked in step and must end together; against a scalar every
// element is compared with it. So ne asks whether all elements differ, and
// two empty ranges are equal, unequal and in every order at once. A range is
// never a date.

#ifndef QUOREL_VALUES_RANGE_H_
#define QUOREL_VALUES_RANGE_H_

#include "quorel/values/value.h"

namespace quorel {

class Range : public Value {
 public:
  bool isNil() override;
  bool isValid() override;
  bool isRange() override;
  std::tm *asDate() override;
  OperatorLevel getOperatorLevel() override;

 protected:
  bool eqImpl(Value *other) override;
  bool neImpl(Value *other) override;
  bool gtImpl(Value *other) override;
  bool geImpl(Value *other) override;
  bool ltImpl(Value *other) override;
  bool leImpl(Value *other) override;

 private:
  using Comparison = bool (Value::*)(Value *);
  bool compareElements(Value *other, Comparison op);
};

}  // namespace quorel

#endif  // QUOREL_VALUES_RANGE_H_
