#include "quorel/model/type_descriptor.h"

#include <cstdarg>
#include <algorithm>
#include <cstring>
#include <vector>

#include "quorel/rules/mapping.h"

namespace quorel {

void copyHierarchyText(const std::string &text, char *target) {
  std::size_t length = std::min(text.size(), static_cast<std::size_t>(TypeDescriptor::kHierarchyBufferSize - 1));
  std::memcpy(target, text.data(), length);
  target[length] = '\0';
}

TypeDescriptor::TypeDescriptor(TypeDescriptor *parent, Mapping *mapping, const char *fieldNameTopic,
                               const char *fieldNameDisplay, FieldType fieldType, const char *mask,
                               std::int32_t dimensionCount, ...)
    : parent_(parent),
      mapping_(mapping),
      fieldNameTopic_(fieldNameTopic != nullptr ? fieldNameTopic : ""),
      fieldType_(fieldType) {
  fieldNameDisplay_.set(fieldNameDisplay);
  if (mapping_ != nullptr) fieldNameDataset_.set(mapping_->get(getHierarchyText().c_str()));
  mask_.set(mask);
  va_list args;
  va_start(args, dimensionCount);
  dimension_ = readIndexList(dimensionCount, args);
  va_end(args);
}

TypeDescriptor::TypeDescriptor(TypeDescriptor *parent, Mapping *mapping, const char *fieldNameTopic,
                               const char *fieldNameDisplay, FieldType fieldType, const char *mask,
                               std::initializer_list<std::int32_t> dimensions)
    : TypeDescriptor(parent, mapping, fieldNameTopic, fieldNameDisplay, fieldType, mask, 0) {
  std::vector<std::int32_t> list(dimensions);
  list.push_back(-1);
  dimension_ = copyIndexList(list.data());
}

std::string TypeDescriptor::getHierarchyText() const {
  std::vector<const TypeDescriptor *> chain;
  for (const TypeDescriptor *t = this; t != nullptr; t = t->parent_) chain.push_back(t);
  std::string text;
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
    if (it != chain.rbegin()) text += '.';
    text += (*it)->fieldNameTopic_;
  }
  return text;
}

void TypeDescriptor::getHierarchyAsString(char *target) const {
  copyHierarchyText(getHierarchyText(), target);
}

}  // namespace quorel
