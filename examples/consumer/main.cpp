// The smallest host: a rule set linked in directly, one run, its problems.
#include <iostream>

#include <quorel/quorel.h>

namespace {

class OneRule : public quorel::Plausi {
 protected:
  quorel::Value *performFunctionImpl(quorel::RuntimeContext *runtime, const char *) override {
    return runtime->createInvalidValue();
  }
  void performImpl(quorel::RuntimeContext *runtime, const char *) override {
    runtime->startNewSection("Regel", false);
    quorel::PlausiProblem *problem = runtime->createProblem(quorel::PROBLEM_ERROR, 1);
    problem->setId("R1");
    runtime->setSectionInfosToProblem(problem);
    runtime->leaveCurrentSection();
  }
};

}  // namespace

int main() {
  OneRule rules;
  quorel::PlausiContext context(nullptr);
  rules.perform(&context);
  const quorel::PlausiProblem *problem = context.getProblem(0);
  std::cout << problem->getId() << " in " << problem->getPlausiSection(0) << " < "
            << problem->getPlausiSection(1) << "\n";
  return context.isOk() ? 1 : 0;
}
