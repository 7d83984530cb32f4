// PlausiSection: one open rule, check procedure or function of a run.
//
// A section owns the objects made while it is innermost and deletes them, the
// oldest first, when it is destroyed. It also collects the fields read under
// it; those are references into the Plausi's topics. Sections are made and
// destroyed by RuntimeContext alone and never copied.

#ifndef QUOREL_RULES_PLAUSI_SECTION_H_
#define QUOREL_RULES_PLAUSI_SECTION_H_

#include <cstdint>
#include <vector>

#include "quorel/rules/nullable_text.h"

namespace quorel {

class FieldDescriptor;
class PlausiObject;

class PlausiSection {
 public:
  PlausiSection(const char *name, PlausiSection *parent, bool checkProc);
  ~PlausiSection();

  PlausiSection(const PlausiSection &) = delete;
  PlausiSection &operator=(const PlausiSection &) = delete;

  // Null for a section opened without a name.
  const char *getName() const { return name_.get(); }
  PlausiSection *getParent() const { return parent_; }
  bool isCheckProc() const { return checkProc_; }

  // Takes ownership of the object.
  void addLocalObject(PlausiObject *object);
  // Hands ownership of an object made here back to the caller; false when
  // the section does not hold it. Recent objects are found first.
  bool removeLocalObject(PlausiObject *object);

  // Notes the read in the outermost check procedure above this section, or
  // here when there is none; repeats and null are kept.
  void noteFieldAccess(FieldDescriptor *field);

  // Whether a check procedure stands anywhere above this section; the
  // section's own flag plays no part.
  bool isCalledFromCheckProc() const;

  std::int32_t getNumOfAccessedFields() const { return static_cast<std::int32_t>(accessedFields_.size()); }
  FieldDescriptor *getAccessedField(std::int32_t index) const { return accessedFields_[index]; }

 private:
  NullableText name_;
  PlausiSection *parent_;
  bool checkProc_;
  std::vector<PlausiObject *> localObjects_;
  std::vector<FieldDescriptor *> accessedFields_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_PLAUSI_SECTION_H_
