#include "quorel/material/filter_condition.h"

#include "quorel/values/value.h"

namespace quorel {

FilterCondition::FilterCondition(Field *field, OperatorType op, Value *value)
    : field_(field), operator_(op), value_(value->copy()) {}

FilterCondition::~FilterCondition() = default;

}  // namespace quorel
