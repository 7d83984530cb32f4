// UnavailableValue: the common behaviour of the two non-values of level 100,
// InvalidValue and InconvertibleValue. Such a value never throws in a
// comparison: it equals exactly the values that are not valid, differs from
// the valid ones, has no order, and contains what it equals.

#ifndef QUOREL_VALUES_UNAVAILABLE_VALUE_H_
#define QUOREL_VALUES_UNAVAILABLE_VALUE_H_

#include "quorel/values/value.h"

namespace quorel {

class UnavailableValue : public Value {
 public:
  bool isValid() override;
  bool isRange() override;
  OperatorLevel getOperatorLevel() override;

 protected:
  bool eqImpl(Value *other) override;
  bool neImpl(Value *other) override;
  bool gtImpl(Value *other) override;
  bool geImpl(Value *other) override;
  bool ltImpl(Value *other) override;
  bool leImpl(Value *other) override;
  bool containsImpl(Value *other) override;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_UNAVAILABLE_VALUE_H_
