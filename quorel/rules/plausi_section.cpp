#include "quorel/rules/plausi_section.h"

#include <iterator>

#include "quorel/values/plausi_object.h"

namespace quorel {

PlausiSection::PlausiSection(const char *name, PlausiSection *parent, bool checkProc)
    : parent_(parent), checkProc_(checkProc) {
  name_.set(name);
}

PlausiSection::~PlausiSection() {
  for (PlausiObject *object : localObjects_) delete object;
}

void PlausiSection::addLocalObject(PlausiObject *object) { localObjects_.push_back(object); }

bool PlausiSection::removeLocalObject(PlausiObject *object) {
  for (auto it = localObjects_.rbegin(); it != localObjects_.rend(); ++it) {
    if (*it == object) {
      localObjects_.erase(std::next(it).base());
      return true;
    }
  }
  return false;
}

bool PlausiSection::isCalledFromCheckProc() const {
  for (const PlausiSection *p = parent_; p != nullptr; p = p->parent_) {
    if (p->checkProc_) return true;
  }
  return false;
}

void PlausiSection::noteFieldAccess(FieldDescriptor *field) {
  // Everything below a check procedure is called from it, so the climb ends at
  // the outermost check procedure above this section.
  PlausiSection *target = this;
  for (PlausiSection *p = parent_; p != nullptr; p = p->parent_) {
    if (p->checkProc_) target = p;
  }
  target->accessedFields_.push_back(field);
}

}  // namespace quorel
