// The declared type of a field. Hosts and rule modules use the numbers.

#ifndef QUOREL_MODEL_FIELD_TYPE_H_
#define QUOREL_MODEL_FIELD_TYPE_H_

#include <cstdint>

namespace quorel {

enum FieldType : std::int32_t {
  FieldTypeText = 0,
  FieldTypeBool = 1,
  FieldTypeInteger = 2,
  FieldTypeReal = 3,
  FieldTypeDate = 4,
  FieldTypeFree = 5,
  FieldTypeTopic = 6,
};

}  // namespace quorel

#endif  // QUOREL_MODEL_FIELD_TYPE_H_
