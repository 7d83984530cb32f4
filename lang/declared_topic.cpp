#include "quorel/lang/declared_topic.h"

#include <memory>

#include "quorel/model/field.h"
#include "quorel/model/field_array.h"
#include "quorel/model/topic_array.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/rules/mapping.h"

namespace quorel {
namespace lang {

DeclaredTopic *DeclaredTopic::createRoot(const FieldDecl *decl, Mapping *mapping) {
  std::unique_ptr<TypeDescriptor> type(makeType(nullptr, mapping, decl));
  auto *topic = new DeclaredTopic(decl, type.get(), nullptr);
  type.release();
  return topic;
}

TypeDescriptor *DeclaredTopic::makeType(TypeDescriptor *parent, Mapping *mapping, const FieldDecl *decl) {
  const char *mask = decl->hasMask ? decl->mask.c_str() : nullptr;
  // The sizes go as int varargs; the checker allows at most eight, and the
  // constructor reads only as many as the count says.
  std::int32_t d[8] = {0, 0, 0, 0, 0, 0, 0, 0};
  for (std::size_t i = 0; i < decl->dims.size() && i < 8; ++i) d[i] = decl->dims[i];
  auto count = static_cast<std::int32_t>(decl->dims.size() < 8 ? decl->dims.size() : 8);
  return new TypeDescriptor(parent, mapping, decl->name.c_str(),
                            decl->display.c_str(), decl->type, mask, count, d[0], d[1], d[2], d[3], d[4], d[5], d[6],
                            d[7]);
}

DeclaredTopic::DeclaredTopic(const FieldDecl *decl, TypeDescriptor *type, FieldDescriptor *parent)
    : Topic(type, parent), decl_(decl) {
  slots_.reserve(decl->children.size());
  for (const auto &child : decl->children) {
    std::unique_ptr<TypeDescriptor> childType(makeType(type, type->getMapping(), child.get()));
    std::unique_ptr<FieldDescriptor> field;
    if (!child->isGroup()) {
      if (child->isArray()) {
        field.reset(new FieldArray(childType.get(), this));
      } else {
        field.reset(new Field(childType.get(), this));
      }
    } else if (child->isArray()) {
      std::unique_ptr<Topic> prototype(new DeclaredTopic(child.get(), childType.get(), this));
      field.reset(new TopicArray(childType.get(), this, prototype.get()));
      prototype.release();
    } else {
      field.reset(new DeclaredTopic(child.get(), childType.get(), this));
    }
    setField(child->name.c_str(), field.get());
    childType.release();
    slots_.push_back(field.release());
  }
}

const FieldDecl *DeclaredTopic::declOf(const FieldDescriptor *field) const {
  for (std::size_t i = 0; i < slots_.size(); ++i) {
    if (slots_[i] == field || slots_[i]->getTypeDescriptor() == field->getTypeDescriptor()) {
      return decl_->children[i].get();
    }
  }
  return nullptr;
}

Mapping *newMapping(const FieldDecl &root) {
  if (root.columns.empty()) return nullptr;
  auto *mapping = new Mapping();
  for (const auto &column : root.columns) mapping->put(column.first.c_str(), column.second.c_str());
  return mapping;
}

DeclaredTopic *rootOf(FieldDescriptor *field) {
  while (field->getParent() != nullptr) field = field->getParent();
  return static_cast<DeclaredTopic *>(field);
}

}  // namespace lang
}  // namespace quorel
