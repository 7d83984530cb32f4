// FilterCondition: one condition of a query into a material: a field of the
// material, a comparison and a value. The comparison is only a number that
// rule modules and the host's MaterialAccess agree on; the library hands it
// on unread. The value is an owned copy; the field is not owned.

#ifndef QUOREL_MATERIAL_FILTER_CONDITION_H_
#define QUOREL_MATERIAL_FILTER_CONDITION_H_

#include <cstdint>
#include <memory>

#include "quorel/values/object_pool.h"

namespace quorel {

class Field;
class Value;

// The comparison of a condition, by number. The library reads none of
// them; these names are the convention of the example host and modules.
enum OperatorType : std::int32_t {
  OPERATOR_EQUAL = 0,
  OPERATOR_NOT_EQUAL = 1,
  OPERATOR_GREATER = 2,
  OPERATOR_GREATER_EQUAL = 3,
  OPERATOR_LESS = 4,
  OPERATOR_LESS_EQUAL = 5,
};

class FilterCondition : public Pooled {
 public:
  // Keeps value->copy().
  FilterCondition(Field *field, OperatorType op, Value *value);
  ~FilterCondition();

  FilterCondition(const FilterCondition &) = delete;
  FilterCondition &operator=(const FilterCondition &) = delete;

  Field *getField() const { return field_; }
  OperatorType getOperatorType() const { return operator_; }
  Value *getComparativeValue() const { return value_.get(); }

 private:
  Field *field_;
  OperatorType operator_;
  std::unique_ptr<Value> value_;
};

}  // namespace quorel

#endif  // QUOREL_MATERIAL_FILTER_CONDITION_H_
