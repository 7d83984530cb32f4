// The guarded read that Field and FeatureField share: an empty field reads
// as an InvalidValue, a conversion failure (type 8) as an InconvertibleValue
// carrying its message, any other failure passes on. At debug level each
// outcome leaves a line "<who>::get(<hierarchy>) => ...".

#ifndef QUOREL_MODEL_FIELD_READ_H_
#define QUOREL_MODEL_FIELD_READ_H_

#include <functional>

namespace quorel {

class DataRecord;
class FieldDescriptor;
class RuntimeContext;
class Value;

// locate finds the record that holds the field; make builds the value of a
// non-empty field from it. Both run inside the guard.
Value *readField(RuntimeContext *context, const char *who, FieldDescriptor *field,
                 const std::function<DataRecord *()> &locate,
                 const std::function<Value *(DataRecord *)> &make);

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_READ_H_
