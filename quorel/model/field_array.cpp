#include "quorel/model/field_array.h"

#include <cstdarg>

#include "quorel/model/model_messages.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"

namespace quorel {

FieldArray::FieldArray(TypeDescriptor *type, FieldDescriptor *parent) : FieldDescriptor(type, parent) {}

FieldArray::~FieldArray() = default;

std::int32_t FieldArray::getSize(RuntimeContext *context, const std::int32_t *indices) {
  return getSizeFor(context->getDataRecord(), indices);
}

std::int32_t FieldArray::getSize(RuntimeContext *context, std::int32_t count, ...) {
  va_list args;
  va_start(args, count);
  IndexList indices = readIndexList(count, args);
  va_end(args);
  return getSize(context, indices.get());
}

Field *FieldArray::getElement(RuntimeContext *, const std::int32_t *indices) {
  if (!Util::isValidElementAccess(getDimension(), indices)) {
    throw PlausiException(EXCEPTION_ILLEGAL_ACCESS, messages::kIllegalElementAccess);
  }
  return elements_.getOrMake(indices, [this, indices] {
    auto element = std::make_unique<Field>(getTypeDescriptor(), getParent());
    element->setIndices(indices);
    return element;
  });
}

Field *FieldArray::getElement(RuntimeContext *context, std::int32_t count, ...) {
  va_list args;
  va_start(args, count);
  IndexList indices = readIndexList(count, args);
  va_end(args);
  return getElement(context, indices.get());
}

}  // namespace quorel
