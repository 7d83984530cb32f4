// Field: a field of the record under check, both its place in the tree of
// descriptors and the access to its value.
//
// A read notes the field in the current section (for the trail of problems)
// and makes a new value owned by the context: an InvalidValue for an empty
// field, an InconvertibleValue when the record fails to deliver it in its
// type, otherwise a value of the field's kind. Numbers and dates keep the
// record's text and parse it only when used. A write of a nil value is
// ignored; a write of an invalid value empties the field.

#ifndef QUOREL_MODEL_FIELD_H_
#define QUOREL_MODEL_FIELD_H_

#include "quorel/model/field_descriptor.h"
#include "quorel/model/variable.h"

namespace quorel {

class Field : public FieldDescriptor, public Variable {
 public:
  Field(TypeDescriptor *type, FieldDescriptor *parent);
  ~Field() override;

  // Reads from the run's record.
  Value *get(RuntimeContext *context) override;
  void set(RuntimeContext *context, Value *value) override;

  // Reads from the given record (the record of a query, for instance),
  // without noting the access.
  Value *get(RuntimeContext *context, DataRecord *record);
};

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_H_
