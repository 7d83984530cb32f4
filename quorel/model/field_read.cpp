#include "quorel/model/field_read.h"

#include "quorel/logging/logger.h"
#include "quorel/model/field_descriptor.h"
#include "quorel/model/model_messages.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/value.h"

namespace quorel {
namespace field_read {

namespace {

// Starts a debug line "<who>::get(<hierarchy>) => ", or gives null when the
// debug level is off, so that no hierarchy text is built in vain.
std::ostream *debugLine(RuntimeContext *context, const char *who, FieldDescriptor *field) {
  Logger *logger = context->getLogger();
  if (!logger->isDebugOn()) return nullptr;
  return &(logger->debug() << who << "::get(" << field->getHierarchyText() << ") => ");
}

}  // namespace

Value *readEmpty(RuntimeContext *context, const char *who, FieldDescriptor *field) {
  Value *result = context->createInvalidValue();
  if (std::ostream *line = debugLine(context, who, field)) *line << "empty";
  return result;
}

Value *readValue(RuntimeContext *context, const char *who, FieldDescriptor *field, Value *value) {
  if (value == nullptr) throw PlausiException(EXCEPTION_GENERAL, messages::kValueNotDetermined);
  if (std::ostream *line = debugLine(context, who, field)) *line << "value = \"" << value->asString() << "\"";
  return value;
}

Value *readInconvertible(RuntimeContext *context, const char *who, FieldDescriptor *field,
                         const PlausiException &failure) {
  Value *result = context->createInconvertibleValue(failure.getMessage());
  if (std::ostream *line = debugLine(context, who, field)) {
    *line << "wrongType (Exception: " << failure.getMessage() << ")";
  }
  return result;
}

}  // namespace field_read
}  // namespace quorel
