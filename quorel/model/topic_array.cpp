#include "quorel/model/topic_array.h"

#include "quorel/masks/util.h"
#include "quorel/model/model_messages.h"
#include "quorel/rules/plausi_exception.h"

namespace quorel {

TopicArray::TopicArray(TypeDescriptor *type, FieldDescriptor *parent, Topic *prototype)
    : FieldDescriptor(type, parent), prototype_(prototype) {}

TopicArray::~TopicArray() = default;

Topic *TopicArray::getElement(RuntimeContext *, const std::int32_t *indices) {
  if (!Util::isValidElementAccess(getDimension(), indices)) {
    throw PlausiException(EXCEPTION_ILLEGAL_ACCESS, messages::kIllegalElementAccess);
  }
  return elements_.getOrMake(indices, [this, indices] {
    std::unique_ptr<Topic> element(prototype_->createElement());
    element->setIndices(indices);
    return element;
  });
}

}  // namespace quorel
