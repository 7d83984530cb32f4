#include "quorel/model/feature_field.h"

#include "quorel/model/data_record.h"
#include "quorel/model/field.h"
#include "quorel/model/field_read.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/rules/runtime_context.h"

namespace quorel {

FeatureField::FeatureField(Field *field) : field_(field) {}

Value *FeatureField::get(RuntimeContext *context) {
  FieldType type = field_->getTypeDescriptor()->getFieldType();
  if (type != FieldTypeInteger && type != FieldTypeReal) return field_->get(context);
  Field *field = field_;
  return readField(
      context, "FeatureField", field,
      [field, context] { return field->getSubDataRecordFor(context->getDataRecord()); },
      [context](FieldSource &source) { return context->createNumberValue(source.getString()); });
}

void FeatureField::set(RuntimeContext *context, Value *value) { field_->set(context, value); }

}  // namespace quorel
