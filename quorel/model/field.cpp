#include "quorel/model/field.h"

#include <memory>

#include "quorel/model/data_record.h"
#include "quorel/model/field_read.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/date_value.h"

namespace quorel {

Field::Field(TypeDescriptor *type, FieldDescriptor *parent) : FieldDescriptor(type, parent) {}

Field::~Field() = default;

Value *Field::get(RuntimeContext *context) {
  if (PlausiSection *section = context->getCurrentSection()) section->noteFieldAccess(this);
  return get(context, context->getDataRecord());
}

Value *Field::get(RuntimeContext *context, DataRecord *record) {
  DataRecord *holder = getSubDataRecordFor(record);
  TypeDescriptor *type = getTypeDescriptor();
  return readField(
      context, "Field", this, [holder] { return holder; },
      [context, type](FieldSource &source) -> Value * {
        // A mask on a number field says only that the record holds text.
        bool asText = type->getMask() != nullptr;
        switch (type->getFieldType()) {
          case FieldTypeInteger: {
            if (asText) return context->createNumberValue(source.getString());
            std::int64_t number;
            if (!source.readInteger(&number)) return nullptr;
            return context->createNumberValue(static_cast<double>(number));
          }
          case FieldTypeReal: {
            if (asText) return context->createNumberValue(source.getString());
            double number;
            if (!source.readReal(&number)) return nullptr;
            return context->createNumberValue(number);
          }
          case FieldTypeDate:
            return context->createDateValue(source.getString(), type->getMask());
          default:
            return context->createStringValue(source.getString());
        }
      });
}

void Field::set(RuntimeContext *context, Value *value) {
  if (value->isNil()) return;
  DataRecord *target = getSubDataRecordFor(context->getDataRecord());
  if (!value->isValid()) {
    target->setEmpty(this);
    return;
  }
  TypeDescriptor *type = getTypeDescriptor();
  switch (type->getFieldType()) {
    case FieldTypeInteger:
      target->setInteger(this, value->asInteger());
      break;
    case FieldTypeReal:
      target->setReal(this, value->asReal());
      break;
    case FieldTypeDate: {
      // Stored as text under the field's own mask, whatever the source's.
      DateValue stored(value->asDate(), type->getMask());
      target->setString(this, stored.asString());
      break;
    }
    default:
      target->setString(this, value->asString());
      break;
  }
}

}  // namespace quorel
