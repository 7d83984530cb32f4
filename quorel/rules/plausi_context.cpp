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

void PlausiContext::reset(DataRecord *record) {
  record_ = record;
  problemCount_ = 0;
}

PlausiProblem *PlausiContext::createProblem(ProblemType type, std::int32_t weight) {
  if (problemCount_ == problems_.size()) {
    problems_.push_back(std::make_unique<PlausiProblem>(type, weight));
  } else {
    problems_[problemCount_]->renew(type, weight);
  }
  return problems_[problemCount_++].get();
}

std::int32_t PlausiContext::getNumOfProblems(ProblemType type) const {
  std::int32_t count = 0;
  for (std::size_t i = 0; i < problemCount_; ++i) {
    if (problems_[i]->getType() == type) ++count;
  }
  return count;
}

}  // namespace quorel
