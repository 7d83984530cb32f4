// PlausiSection: one open rule, check procedure or function of a run.
//
// A section owns the objects made while it is innermost and deletes them, the
// oldest first, when it is destroyed. It also collects the fields read under
// it; those are references into the Plausi's topics. Sections are made and
// destroyed by RuntimeContext alone and never copied.
//
// A run opens and leaves sections all the time, so a section takes its
// memory from the thread's ObjectPool, and holds the name, values and reads
// of a typical rule in itself.

#ifndef QUOREL_RULES_PLAUSI_SECTION_H_
#define QUOREL_RULES_PLAUSI_SECTION_H_

#include <cstddef>
#include <cstdint>

#include "quorel/rules/inline_list.h"
#include "quorel/rules/nullable_text.h"
#include "quorel/values/object_pool.h"

namespace quorel {

class FieldDescriptor;
class PlausiObject;

class PlausiSection {
 public:
  // number: the section's place among those its run opened, from 1.
  PlausiSection(const char *name, PlausiSection *parent, bool checkProc, std::uint64_t number);
  ~PlausiSection();

  PlausiSection(const PlausiSection &) = delete;
  PlausiSection &operator=(const PlausiSection &) = delete;

  static void *operator new(std::size_t size) { return ObjectPool::allocate(size); }
  static void operator delete(void *section, std::size_t size) noexcept { ObjectPool::release(section, size); }

  // Null for a section opened without a name.
  const char *getName() const { return name_.get(); }
  std::size_t getNameLength() const { return name_.size(); }
  PlausiSection *getParent() const { return parent_; }
  // Unlike its address, which a later section may reuse, this number names
  // the section alone within its run.
  std::uint64_t getNumber() const { return number_; }
  bool isCheckProc() const { return checkProc_; }

  // Takes ownership of the object.
  void addLocalObject(PlausiObject *object) { localObjects_.push_back(object); }
  // Hands ownership of an object made here back to the caller; false when
  // the section does not hold it. Recent objects are found first.
  bool removeLocalObject(PlausiObject *object);

  // Notes the read in the outermost check procedure above this section, or
  // here when there is none; repeats and null are kept.
  void noteFieldAccess(FieldDescriptor *field) { fieldTarget_->accessedFields_.push_back(field); }

  // Whether a check procedure stands anywhere above this section; the
  // section's own flag plays no part.
  bool isCalledFromCheckProc() const { return parent_ != nullptr && parent_->outermostCheckProc_ != nullptr; }

  std::int32_t getNumOfAccessedFields() const { return static_cast<std::int32_t>(accessedFields_.size()); }
  FieldDescriptor *getAccessedField(std::int32_t index) const {
    return accessedFields_[static_cast<std::size_t>(index)];
  }

 private:
  // Room for names of up to 23 bytes, which keeps the section within the
  // largest blocks that the pool recycles.
  BasicNullableText<24> name_;
  PlausiSection *parent_;
  std::uint64_t number_;
  bool checkProc_;
  // The outermost check procedure among this section and those above, or
  // null; known when the section opens, since the sections above stay.
  PlausiSection *outermostCheckProc_;
  // Where reads under this section are noted.
  PlausiSection *fieldTarget_;
  InlineList<PlausiObject *, 8> localObjects_;
  InlineList<FieldDescriptor *, 4> accessedFields_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_PLAUSI_SECTION_H_
