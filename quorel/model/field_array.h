// FieldArray: the descriptor of a dimensioned field of the record. It holds
// no value itself; its elements are ordinary Fields with the array's type,
// the array's parent and their indices, made on first access and owned by
// the array. Equal indices give the same element every time. Index values
// are not checked against the sizes: an element beyond the end is simply
// one the record will call empty.

#ifndef QUOREL_MODEL_FIELD_ARRAY_H_
#define QUOREL_MODEL_FIELD_ARRAY_H_

#include <cstdint>

#include "quorel/model/element_table.h"
#include "quorel/model/field.h"
#include "quorel/model/field_descriptor.h"

namespace quorel {

class RuntimeContext;

class FieldArray : public FieldDescriptor {
 public:
  FieldArray(TypeDescriptor *type, FieldDescriptor *parent);
  ~FieldArray() override;

  // Entries of the dimension after indices, asked of the run's record where
  // the dimension is declared 0; type 7 for a wrong count of indices.
  std::int32_t getSize(RuntimeContext *context, const std::int32_t *indices);
  // Followed by count indices (int).
  std::int32_t getSize(RuntimeContext *context, std::int32_t count, ...);

  // The element of indices; type 7 unless there is one index per dimension.
  Field *getElement(RuntimeContext *context, const std::int32_t *indices);
  // Followed by count indices (int).
  Field *getElement(RuntimeContext *context, std::int32_t count, ...);

 private:
  ElementTable<Field> elements_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_ARRAY_H_
