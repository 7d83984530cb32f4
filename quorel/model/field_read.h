// The guarded read that Field and FeatureField share: an empty field reads
// as an InvalidValue, a conversion failure (type 8) as an InconvertibleValue
// carrying its message, any other failure passes on. At debug level each
// outcome leaves a line "<who>::get(<hierarchy>) => ...".

#ifndef QUOREL_MODEL_FIELD_READ_H_
#define QUOREL_MODEL_FIELD_READ_H_

#include "quorel/logging/logger.h"
#include "quorel/model/data_record.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"

namespace quorel {

class FieldDescriptor;
class Value;

namespace field_read {

// The debug lines of the outcomes, for a logger that takes them.
void logEmpty(RuntimeContext *context, const char *who, FieldDescriptor *field);
void logValue(RuntimeContext *context, const char *who, FieldDescriptor *field, Value *value);
void logInconvertible(RuntimeContext *context, const char *who, FieldDescriptor *field,
                      const PlausiException &failure);

// A value that make() failed to give.
[[noreturn]] void refuseMissingValue();

}  // namespace field_read

// locate() finds the record that holds the field; make(record) builds the
// value of a non-empty field from it. Both run inside the guard. They are
// template parameters, and the debug level is asked here, so that a read
// costs no call it does not need.
template <typename Locate, typename Make>
Value *readField(RuntimeContext *context, const char *who, FieldDescriptor *field, Locate locate, Make make) {
  bool debugging = context->getLogger()->isDebugOn();
  try {
    DataRecord *record = locate();
    if (record->isEmpty(field)) {
      Value *result = context->createInvalidValue();
      if (debugging) field_read::logEmpty(context, who, field);
      return result;
    }
    Value *result = make(record);
    if (result == nullptr) field_read::refuseMissingValue();
    if (debugging) field_read::logValue(context, who, field, result);
    return result;
  } catch (const PlausiException &e) {
    if (e.getType() != EXCEPTION_CONVERSION) throw;
    Value *result = context->createInconvertibleValue(e.getMessage());
    if (debugging) field_read::logInconvertible(context, who, field, e);
    return result;
  }
}

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_READ_H_
