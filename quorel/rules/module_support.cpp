#include "quorel/rules/module_support.h"

#include "quorel/rules/plausi_section.h"
#include "quorel/rules/runtime_context.h"

namespace quorel {

SectionScope::SectionScope(RuntimeContext *runtime, const char *name, bool checkProc) : runtime_(runtime) {
  runtime_->startNewSection(name, checkProc);
  section_ = runtime_->getCurrentSection()->getNumber();
}

void SectionScope::leave() {
  if (section_ == 0) return;
  std::uint64_t own = section_;
  section_ = 0;
  // Only a section that is still open is left: walking up from the
  // innermost tells whether it is, and how many stand inside it. Numbers
  // grow inwards, so the walk stops at the first one below the scope's.
  PlausiSection *open = runtime_->getCurrentSection();
  while (open != nullptr && open->getNumber() > own) open = open->getParent();
  if (open == nullptr || open->getNumber() != own) return;
  while (runtime_->getCurrentSection()->getNumber() != own) runtime_->leaveCurrentSection();
  runtime_->leaveCurrentSection();
}

}  // namespace quorel
