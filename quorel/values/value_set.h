// ValueSet: a tuple of owned copies of values, as handed to a host's query
// interface. Not a value itself.

#ifndef QUOREL_VALUES_VALUE_SET_H_
#define QUOREL_VALUES_VALUE_SET_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "quorel/values/value.h"

namespace quorel {

class ValueSet {
 public:
  ValueSet() = default;
  ValueSet(const ValueSet &) = delete;
  ValueSet &operator=(const ValueSet &) = delete;

  // Appends value->copy().
  void addValue(Value *value) { values_.emplace_back(value->copy()); }
  std::int32_t getNumOfValues() const { return static_cast<std::int32_t>(values_.size()); }
  // The copy at index, which must be below getNumOfValues(); stays the set's.
  Value *getValue(std::int32_t index) const { return values_[index].get(); }

 private:
  std::vector<std::unique_ptr<Value>> values_;
};

}  // namespace quorel

#endif  // QUOREL_VALUES_VALUE_SET_H_
