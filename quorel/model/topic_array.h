// TopicArray: the descriptor of a dimensioned nested topic. Its elements are
// topics made by the prototype's createElement on first access, given their
// indices, and owned, with the prototype, by the array.

#ifndef QUOREL_MODEL_TOPIC_ARRAY_H_
#define QUOREL_MODEL_TOPIC_ARRAY_H_

#include <cstdint>
#include <memory>

#include "quorel/model/element_table.h"
#include "quorel/model/field_descriptor.h"
#include "quorel/model/topic.h"

namespace quorel {

class RuntimeContext;

class TopicArray : public FieldDescriptor {
 public:
  // Takes ownership of the prototype.
  TopicArray(TypeDescriptor *type, FieldDescriptor *parent, Topic *prototype);
  ~TopicArray() override;

  // The element of indices; type 7 unless there is one index per dimension.
  Topic *getElement(RuntimeContext *context, const std::int32_t *indices);

 private:
  std::unique_ptr<Topic> prototype_;
  ElementTable<Topic> elements_;
};

}  // namespace quorel

#endif  // QUOREL_MODEL_TOPIC_ARRAY_H_
