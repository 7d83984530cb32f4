// FeatureField: a second way of reading a Field. For the two number types it
// reads the record's text and parses it lazily, whether the field has a mask
// or not, and notes no field access; for every other type it is the wrapped
// field's own read. Writes go to the wrapped field, which is not owned.

#ifndef QUOREL_MODEL_FEATURE_FIELD_H_
#define QUOREL_MODEL_FEATURE_FIELD_H_

#include "quorel/model/variable.h"

namespace quorel {

class Field;

class FeatureField : public Variable {
 public:
  explicit FeatureField(Field *field);

  Value *get(RuntimeContext *context) override;
  void set(RuntimeContext *context, Value *value) override;

 private:
  Field *field_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_FEATURE_FIELD_H_
