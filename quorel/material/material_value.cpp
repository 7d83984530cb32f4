#include "quorel/material/material_value.h"

#include "quorel/model/field.h"
#include "quorel/rules/runtime_context.h"

namespace quorel {

MaterialValue::MaterialValue(RuntimeContext *context, Field *field, DataRecord *record)
    : context_(context), field_(field), record_(record) {}

MaterialValue::~MaterialValue() = default;

Value *MaterialValue::getInnerValue() {
  if (!inner_) {
    Value *read = field_->get(context_, record_);
    // The read made the value in the current section; take it over so that
    // it lives exactly as long as this value.
    PlausiSection *section = context_->getCurrentSection();
    bool taken = section != nullptr && section->removeLocalObject(read);
    inner_.reset(taken ? read : read->copy());
  }
  return inner_.get();
}

bool MaterialValue::isNil() { return getInnerValue()->isNil(); }
bool MaterialValue::isValid() { return getInnerValue()->isValid(); }
bool MaterialValue::isRange() { return getInnerValue()->isRange(); }
const char *MaterialValue::asString() { return getInnerValue()->asString(); }
std::int64_t MaterialValue::asInteger() { return getInnerValue()->asInteger(); }
double MaterialValue::asReal() { return getInnerValue()->asReal(); }
bool MaterialValue::asBool() { return getInnerValue()->asBool(); }
std::tm *MaterialValue::asDate() { return getInnerValue()->asDate(); }
ValueIterator *MaterialValue::asRange() { return getInnerValue()->asRange(); }
OperatorLevel MaterialValue::getOperatorLevel() { return getInnerValue()->getOperatorLevel(); }
Value *MaterialValue::copy() { return getInnerValue()->copy(); }

bool MaterialValue::eqImpl(Value *other) { return getInnerValue()->eq(other); }
bool MaterialValue::neImpl(Value *other) { return getInnerValue()->ne(other); }
bool MaterialValue::gtImpl(Value *other) { return getInnerValue()->gt(other); }
bool MaterialValue::geImpl(Value *other) { return getInnerValue()->ge(other); }
bool MaterialValue::ltImpl(Value *other) { return getInnerValue()->lt(other); }
bool MaterialValue::leImpl(Value *other) { return getInnerValue()->le(other); }
bool MaterialValue::containsImpl(Value *other) { return getInnerValue()->contains(other); }

}  // namespace quorel
