// InvalidValue: an empty field, or a function that had nothing to compute on.
// It converts quietly to "", 0, 0.0, false and an all-zero date, and walks as
// a single element: itself.

#ifndef QUOREL_VALUES_INVALID_VALUE_H_
#define QUOREL_VALUES_INVALID_VALUE_H_

#include "quorel/values/unavailable_value.h"

namespace quorel {

class InvalidValue : public UnavailableValue {
 public:
  InvalidValue();

  bool isNil() override;
  const char *asString() override;
  std::int64_t asInteger() override;
  double asReal() override;
  bool asBool() override;
  std::tm *asDate() override;
  ValueIterator *asRange() override;
  Value *copy() override;

 private:
  std::tm date_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_INVALID_VALUE_H_
