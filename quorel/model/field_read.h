// The guarded read that Field and FeatureField share: an empty field reads
// as an InvalidValue, a conversion failure (type 8) as an InconvertibleValue
// carrying its message, any other failure passes on. At debug level each
// outcome leaves a line "<who>::get(<hierarchy>) => ...".

#ifndef QUOREL_MODEL_FIELD_READ_H_
#define QUOREL_MODEL_FIELD_READ_H_

#include "quorel/model/data_record.h"
#include "quorel/rules/plausi_exception.h"

namespace quorel {

class FieldDescriptor;
class RuntimeContext;
class Value;

namespace field_read {

// The outcomes of a read: each makes or takes the result and writes the
// debug line when the logger takes it.
Value *readEmpty(RuntimeContext *context, const char *who, FieldDescriptor *field);
Value *readValue(RuntimeContext *context, const char *who, FieldDescriptor *field, Value *value);
Value *readInconvertible(RuntimeContext *context, const char *who, FieldDescriptor *field,
                         const PlausiException &failure);

}  // namespace field_read

// locate() finds the record that holds the field; make(record) builds the
// value of a non-empty field from it. Both run inside the guard. They are
// template parameters so that a read costs no call through a function
// object.
template <typename Locate, typename Make>
Value *readField(RuntimeContext *context, const char *who, FieldDescriptor *field, Locate locate, Make make) {
  try {
    DataRecord *record = locate();
    if (record->isEmpty(field)) return field_read::readEmpty(context, who, field);
    return field_read::readValue(context, who, field, make(record));
  } catch (const PlausiException &e) {
    if (e.getType() != EXCEPTION_CONVERSION) throw;
    return field_read::readInconvertible(context, who, field, e);
  }
}

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_READ_H_
