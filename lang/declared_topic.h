// DeclaredTopic: a topic of the record type or of a material built from
// its declaration in a rule file. It makes its fields in the order they are
// declared and keeps them in slots, so that running rules reach a field by
// its place instead of by its name.
//
// Owns its fields with their TypeDescriptors (as every Topic does); the
// declaration is the rule set's and must outlive the topic. The root topic
// of a rule set carries the rule set's Plausi as its owner, which the field
// checks find from any field below it.

#ifndef QUOREL_LANG_DECLARED_TOPIC_H_
#define QUOREL_LANG_DECLARED_TOPIC_H_

#include <cstdint>
#include <vector>

#include "quorel/lang/ast.h"
#include "quorel/model/topic.h"

namespace quorel {

class Mapping;
class Plausi;

namespace lang {

class DeclaredTopic : public Topic {
 public:
  DeclaredTopic(const FieldDecl *decl, TypeDescriptor *type, FieldDescriptor *parent);

  Topic *createElement() override { return new DeclaredTopic(decl_, getTypeDescriptor(), getParent()); }

  // The field declared at slot (FieldDecl::slot) of this topic.
  FieldDescriptor *slot(std::int32_t index) const { return slots_[static_cast<std::size_t>(index)]; }
  const FieldDecl *decl() const { return decl_; }

  // The declaration of a field of this topic, or of an element of an array
  // of it, found by its type; null for a field of another topic.
  const FieldDecl *declOf(const FieldDescriptor *field) const;

  void setOwner(Plausi *owner) { owner_ = owner; }
  Plausi *owner() const { return owner_; }

  // The root topic of decl (the record type or a material) with its type,
  // whose fields read their data-source names from mapping (may be null).
  // The caller owns both, as the Plausi it hands them to does after.
  static DeclaredTopic *createRoot(const FieldDecl *decl, Mapping *mapping);

 private:
  // A type for decl below parent, with decl's name, display name, type, mask
  // and sizes, reading mapping. The caller owns it.
  static TypeDescriptor *makeType(TypeDescriptor *parent, Mapping *mapping, const FieldDecl *decl);

  const FieldDecl *decl_;
  std::vector<FieldDescriptor *> slots_;  // owned through Topic
  Plausi *owner_ = nullptr;
};

// A new Mapping of the data-source names that root's fields declare
// (FieldDecl::columns), which the caller owns; null when none declares one,
// as a module without names registers no mapping.
Mapping *newMapping(const FieldDecl &root);

// The root topic above field, walking up its parents; field must belong to
// a tree of DeclaredTopics.
DeclaredTopic *rootOf(FieldDescriptor *field);

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_DECLARED_TOPIC_H_
