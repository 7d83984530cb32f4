#include "quorel/model/field_read.h"

#include "quorel/logging/logger.h"
#include "quorel/model/data_record.h"
#include "quorel/model/field_descriptor.h"
#include "quorel/model/model_messages.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/value.h"

namespace quorel {

namespace {

// Starts a debug line "<who>::get(<hierarchy>) => ", or gives null when the
// debug level is off, so that no hierarchy text is built in vain.
std::ostream *debugLine(RuntimeContext *context, const char *who, FieldDescriptor *field) {
  Logger *logger = context->getLogger();
  if (!logger->isDebugOn()) return nullptr;
  return &(logger->debug() << who << "::get(" << field->getHierarchyText() << ") => ");
}

}  // namespace

Value *readField(RuntimeContext *context, const char *who, FieldDescriptor *field,
                 const std::function<DataRecord *()> &locate,
                 const std::function<Value *(DataRecord *)> &make) {
  Value *result = nullptr;
  try {
    DataRecord *record = locate();
    if (record->isEmpty(field)) {
      result = context->createInvalidValue();
      if (std::ostream *line = debugLine(context, who, field)) *line << "empty";
    } else {
      result = make(record);
      if (std::ostream *line = debugLine(context, who, field)) {
        *line << "value = \"" << result->asString() << "\"";
      }
    }
  } catch (const PlausiException &e) {
    if (e.getType() != EXCEPTION_CONVERSION) throw;
    result = context->createInconvertibleValue(e.getMessage());
    if (std::ostream *line = debugLine(context, who, field)) {
      *line << "wrongType (Exception: " << e.getMessage() << ")";
    }
  }
  if (result == nullptr) throw PlausiException(EXCEPTION_GENERAL, messages::kValueNotDetermined);
  return result;
}

}  // namespace quorel
