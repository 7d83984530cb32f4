#include "quorel/rules/module_support.h"

#include "quorel/rules/plausi_section.h"
#include "quorel/rules/runtime_context.h"

namespace quorel {

SectionScope::SectionScope(RuntimeContext *runtime, const char *name, bool checkProc) : runtime_(runtime) {
  runtime_->startNewSection(name, checkProc);
  section_ = runtime_->getCurrentSection();
}

void SectionScope::leave() {
  if (section_ == nullptr) return;
  PlausiSection *own = section_;
  section_ = nullptr;
  // Only a section that is still open is left: walking up from the
  // innermost tells whether it is, and how many stand inside it.
  PlausiSection *open = runtime_->getCurrentSection();
  while (open != nullptr && open != own) open = open->getParent();
  if (open == nullptr) return;
  while (runtime_->getCurrentSection() != own) runtime_->leaveCurrentSection();
  runtime_->leaveCurrentSection();
}

}  // namespace quorel
