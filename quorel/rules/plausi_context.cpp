#include "quorel/rules/plausi_context.h"

#include <iostream>

#include "quorel/platform/clock.h"
#include "quorel/platform/random.h"

namespace quorel {

PlausiContext::PlausiContext(DataRecord *record)
    : defaultLogger_(&std::cout, OFF), record_(record), logger_(&defaultLogger_) {
  platform::seedRandom(static_cast<std::uint32_t>(platform::currentCalendarSeconds()));
}

PlausiContext::~PlausiContext() = default;

ExternalFunction PlausiContext::getExternalFunction(const char *name) const {
  const ExternalFunction *function = externalFunctions_.find(name);
  return function != nullptr ? *function : nullptr;
}

PlausiProblem *PlausiContext::createProblem(ProblemType type, std::int32_t weight) {
  problems_.push_back(std::make_unique<PlausiProblem>(type, weight));
  return problems_.back().get();
}

std::int32_t PlausiContext::getNumOfProblems(ProblemType type) const {
  std::int32_t count = 0;
  for (const auto &problem : problems_) {
    if (problem->getType() == type) ++count;
  }
  return count;
}

}  // namespace quorel
