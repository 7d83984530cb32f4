#include "quorel/rules/plausi_section.h"

#include <iterator>

#include "quorel/values/plausi_object.h"

namespace quorel {

namespace {

// Room the lists start with: the values and the reads of a typical rule.
constexpr std::size_t kExpectedObjects = 8;
constexpr std::size_t kExpectedFields = 4;

}  // namespace

PlausiSection::PlausiSection(const char *name, PlausiSection *parent, bool checkProc)
    : name_(name != nullptr ? name : ""), parent_(parent), checkProc_(checkProc) {
  PlausiSection *above = parent_ != nullptr ? parent_->outermostCheckProc_ : nullptr;
  outermostCheckProc_ = above != nullptr ? above : (checkProc_ ? this : nullptr);
  // Everything below a check procedure is called from it, so reads go to the
  // outermost check procedure above this section.
  fieldTarget_ = above != nullptr ? above : this;
  localObjects_.reserve(kExpectedObjects);
  accessedFields_.reserve(kExpectedFields);
}

PlausiSection::~PlausiSection() {
  for (PlausiObject *object : localObjects_) delete object;
}

bool PlausiSection::removeLocalObject(PlausiObject *object) {
  for (auto it = localObjects_.rbegin(); it != localObjects_.rend(); ++it) {
    if (*it == object) {
      localObjects_.erase(std::next(it).base());
      return true;
    }
  }
  return false;
}

}  // namespace quorel
