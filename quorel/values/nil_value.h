// NilValue: a local variable that was never set. It refuses every conversion
// with "Wert ist nicht initialisiert." (type 8) and answers false to every
// comparison it decides, contains included.

#ifndef QUOREL_VALUES_NIL_VALUE_H_
#define QUOREL_VALUES_NIL_VALUE_H_

#include "quorel/values/value.h"

namespace quorel {

class NilValue : public Value {
 public:
  NilValue() = default;

  bool isNil() override;
  bool isValid() override;
  bool isRange() override;
  const char *asString() override;
  std::int64_t asInteger() override;
  double asReal() override;
  bool asBool() override;
  std::tm *asDate() override;
  ValueIterator *asRange() override;
  OperatorLevel getOperatorLevel() override;
  Value *copy() override;

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

#endif  // QUOREL_VALUES_NIL_VALUE_H_
