// InconvertibleValue: a field that the record failed to deliver in its type.
// It holds "Dieser Wert ist nicht verfuegbar: " followed by the reason and
// refuses every conversion with that text (type 8). It counts as nil, so it
// never overwrites a variable.

#ifndef QUOREL_VALUES_INCONVERTIBLE_VALUE_H_
#define QUOREL_VALUES_INCONVERTIBLE_VALUE_H_

#include <string>

#include "quorel/values/unavailable_value.h"

namespace quorel {

class InconvertibleValue : public UnavailableValue {
 public:
  // A null reason stands for "Keine weiteren Informationen.".
  explicit InconvertibleValue(const char *reason);

  bool isNil() override;
  const char *asString() override;
  std::int64_t asInteger() override;
  double asReal() override;
  bool asBool() override;
  std::tm *asDate() override;
  ValueIterator *asRange() override;
  Value *copy() override;

 private:
  struct AlreadyPrefixed {};
  InconvertibleValue(AlreadyPrefixed, const std::string &message);

  [[noreturn]] void refuse() const;

  std::string message_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_INCONVERTIBLE_VALUE_H_
