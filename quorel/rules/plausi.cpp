#include "quorel/rules/plausi.h"

#include "quorel/rules/plausi_context.h"
#include "quorel/rules/runtime_context.h"

namespace quorel {

Plausi::Plausi() = default;

Plausi::~Plausi() = default;

Value *Plausi::getClassificationByCode(const char *) { return &invalidValue_; }

Value *Plausi::getClassificationByValue(const char *) { return &invalidValue_; }

void Plausi::perform(PlausiContext *context) {
  RuntimeContext runtime(context, this);
  performImpl(&runtime, context->getFlow());
}

Value *Plausi::performFunction(const char *name, PlausiContext *context) {
  RuntimeContext runtime(context, this);
  // The result may die with the run's sections; the copy does not.
  return performFunctionImpl(&runtime, name)->copy();
}

}  // namespace quorel
