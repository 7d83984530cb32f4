// BoolValue: a truth value. Its text is "WAHR" or "FALSCH", its number 1 or
// 0; it has no date. Truth values compare for equality only: every order
// comparison answers false without looking at the other operand.

#ifndef QUOREL_VALUES_BOOL_VALUE_H_
#define QUOREL_VALUES_BOOL_VALUE_H_

#include "quorel/values/scalar_value.h"

namespace quorel {

class BoolValue : public ScalarValue {
 public:
  explicit BoolValue(bool flag);

  const char *asString() override;
  std::int64_t asInteger() override;
  double asReal() override;
  bool asBool() override;
  std::tm *asDate() override;
  OperatorLevel getOperatorLevel() override;
  Value *copy() override;

 protected:
  bool eqImpl(Value *other) override;
  bool neImpl(Value *other) override;
  bool gtImpl(Value *other) override;
  bool geImpl(Value *other) override;
  bool ltImpl(Value *other) override;
  bool leImpl(Value *other) override;

 private:
  bool flag_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_BOOL_VALUE_H_
