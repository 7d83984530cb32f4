// ScalarValue: what the ordinary single values (texts, truth values, numbers,
// dates) have in common. Such a value is usable, is no range, walks as a
// single element (itself) and contains exactly what it equals, judged by its
// own kind whatever the other operand's level.

#ifndef QUOREL_VALUES_SCALAR_VALUE_H_
#define QUOREL_VALUES_SCALAR_VALUE_H_

#include "quorel/values/value.h"

namespace quorel {

class ScalarValue : public Value {
 public:
  bool isNil() override;
  bool isValid() override;
  bool isRange() override;
  ValueIterator *asRange() override;

 protected:
  bool containsImpl(Value *other) override;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_SCALAR_VALUE_H_
