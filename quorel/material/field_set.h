// FieldSet: the fields a query delivers, in order. The fields are not owned.

#ifndef QUOREL_MATERIAL_FIELD_SET_H_
#define QUOREL_MATERIAL_FIELD_SET_H_

#include <cstdint>

#include "quorel/rules/inline_list.h"
#include "quorel/values/object_pool.h"

namespace quorel {

class Field;

// Rules make a field set for every query, so it comes from the pool, and
// holds the few fields of a query in itself.
class FieldSet : public Pooled {
 public:
  void addField(Field *field) { fields_.push_back(field); }
  std::int32_t getNumOfFields() const { return static_cast<std::int32_t>(fields_.size()); }
  // The index must be below getNumOfFields().
  Field *getField(std::int32_t index) const { return fields_[static_cast<std::size_t>(index)]; }

 private:
  InlineList<Field *, 4> fields_;
};

}  // namespace quorel

#endif  // QUOREL_MATERIAL_FIELD_SET_H_
