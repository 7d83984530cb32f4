// NumberValue: a number, held as a double, with a text form.
//
// Built from text, it keeps the text verbatim and parses it (German number
// syntax) only when the number is first asked for; a text that is no number
// fails anew at every request. Built from a double, its text form is made
// once, on first request. copy() forces the parse and drops the text form.
//
// Numbers compare within a relative tolerance. Equality swallows a failure of
// the other operand's conversion (a number is not equal to what is no
// number); the order comparisons let it pass.

#ifndef QUOREL_VALUES_NUMBER_VALUE_H_
#define QUOREL_VALUES_NUMBER_VALUE_H_

#include "quorel/rules/nullable_text.h"
#include "quorel/values/scalar_value.h"

namespace quorel {

// Truncates toward zero. Out-of-range values saturate at the int64 limits and
// NaN gives 0, where a plain cast would be undefined.
std::int64_t truncateToInteger(double number);

class NumberValue : public ScalarValue {
 public:
  explicit NumberValue(double number);
  // A null text stands for "0". Nothing is checked here.
  explicit NumberValue(const char *text);

  const char *asString() override;
  std::int64_t asInteger() override;
  double asReal() override;
  // True exactly when the number is 1.
  bool asBool() override;
  std::tm *asDate() override;
  OperatorLevel getOperatorLevel() override;
  Value *copy() override;

  // Whether the value holds its text form: always when built from text, and
  // when built from a double once the text was asked for.
  bool hasText() const { return text_.isSet(); }

 protected:
  bool eqImpl(Value *other) override;
  bool neImpl(Value *other) override;
  bool gtImpl(Value *other) override;
  bool geImpl(Value *other) override;
  bool ltImpl(Value *other) override;
  bool leImpl(Value *other) override;

 private:
  // A SimpleDataRecord that stores a number where it held one gives its
  // value the new number, as it does with texts (StringValue::retext).
  friend class SimpleDataRecord;
  void renumber(double number);

  void initializeIfNessesary();
  // Util::compareNumbers of this number against the other's; both
  // conversions may throw, the other's first.
  std::int32_t compareTo(Value *other);

  double number_;
  NullableText text_;
  bool parsed_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_NUMBER_VALUE_H_
