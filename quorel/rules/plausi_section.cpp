#include "quorel/rules/plausi_section.h"

#include "quorel/values/plausi_object.h"

namespace quorel {

static_assert(sizeof(PlausiSection) <= ObjectPool::kLargestBlock, "a section is one block of the pool");

PlausiSection::PlausiSection(const char *name, PlausiSection *parent, bool checkProc, std::uint64_t number)
    : parent_(parent), number_(number), checkProc_(checkProc) {
  name_.set(name);
  PlausiSection *above = parent_ != nullptr ? parent_->outermostCheckProc_ : nullptr;
  outermostCheckProc_ = above != nullptr ? above : (checkProc_ ? this : nullptr);
  // Everything below a check procedure is called from it, so reads go to the
  // outermost check procedure above this section.
  fieldTarget_ = above != nullptr ? above : this;
}

PlausiSection::~PlausiSection() {
  for (std::size_t i = 0; i < localObjects_.size(); ++i) delete localObjects_[i];
}

bool PlausiSection::removeLocalObject(PlausiObject *object) {
  for (std::size_t i = localObjects_.size(); i-- > 0;) {
    if (localObjects_[i] == object) {
      localObjects_.erase(i);
      return true;
    }
  }
  return false;
}

}  // namespace quorel
