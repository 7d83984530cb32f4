// DateValue: a date and time of the language, lazy in both directions.
//
// It holds a text with a date mask, a broken-down time, or both, and makes
// the missing form only when asked: a record's date field costs no parsing
// until a rule reads it. A text that does not fit its mask fails at every
// request for the date. Of the tm only year, month, day, hour, minute and
// second are used. A null mask means the default "TT.MM.JJJJ".
//
// Dates compare field by field, masks ignored. Equality asks the other
// operand first whether it is nil or invalid; every other conversion failure
// of the other operand passes on. All forms belong to the value.

#ifndef QUOREL_VALUES_DATE_VALUE_H_
#define QUOREL_VALUES_DATE_VALUE_H_

#include <ctime>

#include "quorel/rules/nullable_text.h"
#include "quorel/values/scalar_value.h"

namespace quorel {

class DateValue : public ScalarValue {
 public:
  // Longest mask kept; a longer one is cut to this many characters.
  static constexpr int kMaxMaskLength = 25;

  // Takes the six used fields of date, which must not be null; the caller
  // keeps its tm.
  DateValue(const std::tm *date, const char *mask);
  // Keeps the text verbatim; nothing is parsed or checked here. A null text
  // reads as the empty text, the all-zero date.
  DateValue(const char *text, const char *mask);

  const char *getMask() const { return mask_.get(); }

  // Whether asDate reads the text the value was made of under mask, so
  // that it tells, and keeps, what Util::stringToDate(asString(), mask)
  // tells: a record's date is then parsed once for its check and its use.
  bool readsTextUnder(const char *mask) const;
  // asDate without throwing: the message of the fault that asDate would
  // throw, or null with the date read and kept as asDate keeps it.
  const char *readDate();

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
  void setMask(const char *mask);
  // Util::compareDate of this date against the other's; the other's
  // conversion comes first.
  std::int32_t compareTo(Value *other);

  // Inside the value rather than on the heap: runs read dates by the
  // thousand, and a date is asked for its tm at nearly every use.
  std::tm date_{};
  bool dated_ = false;     // whether date_ holds the date
  bool fromText_ = false;  // whether the text is the one the value was made of
  NullableText text_;
  NullableText mask_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_DATE_VALUE_H_
