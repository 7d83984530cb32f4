#include "quorel/model/field_read.h"

#include <ostream>

#include "quorel/model/field_descriptor.h"
#include "quorel/model/model_messages.h"
#include "quorel/values/value.h"

namespace quorel {
namespace field_read {

namespace {

// Starts the line "<who>::get(<hierarchy>) => ".
std::ostream &debugLine(RuntimeContext *context, const char *who, FieldDescriptor *field) {
  return context->getLogger()->debug() << who << "::get(" << field->getHierarchyText() << ") => ";
}

}  // namespace

void logEmpty(RuntimeContext *context, const char *who, FieldDescriptor *field) {
  debugLine(context, who, field) << "empty";
}

void logValue(RuntimeContext *context, const char *who, FieldDescriptor *field, Value *value) {
  debugLine(context, who, field) << "value = \"" << value->asString() << "\"";
}

Value *inconvertible(RuntimeContext *context, const char *who, FieldDescriptor *field, const char *message,
                     bool debugging) {
  Value *result = context->createInconvertibleValue(message);
  if (debugging) debugLine(context, who, field) << "wrongType (Exception: " << message << ")";
  return result;
}

void refuseMissingValue() { throw PlausiException(EXCEPTION_GENERAL, messages::kValueNotDetermined); }

}  // namespace field_read
}  // namespace quorel
