// A small rule module of the kind a rule generator emits: a Plausi subclass
// with flows and a function, exported through the loadPlausi<Name> and
// unloadPlausi<Name> entries.
//
// Flows:
//   "Pruefung"  opens the rule sections Adresse > Hausnummer and reports one
//               error and one hint there, with values made on the way.
//   "Abbruch"   opens nested sections, makes values in each and throws out of
//               them, as generated code does when a built-in function fails.
//   anything else reports nothing (a host that asks the declared flows
//               refuses it first).
// Function "Wert" gives a value that lives in the root section of the run.

#include <cstring>

#include <quorel/quorel.h>

namespace {

using quorel::PlausiException;
using quorel::PlausiProblem;
using quorel::RuntimeContext;
using quorel::Value;

constexpr quorel::ProblemType kHint = static_cast<quorel::ProblemType>(2);

class SampleRules : public quorel::Plausi {
 public:
  const char *const *getFlows() const override {
    static const char *const kFlows[] = {"Pruefung", "Abbruch", nullptr};
    return kFlows;
  }

 protected:
  void performImpl(RuntimeContext *runtime, const char *flow) override {
    if (flow != nullptr && std::strcmp(flow, "Pruefung") == 0) {
      checkAddress(runtime);
    } else if (flow != nullptr && std::strcmp(flow, "Abbruch") == 0) {
      abortInRule(runtime);
    }
  }

  Value *performFunctionImpl(RuntimeContext *runtime, const char *name) override {
    if (name == nullptr || std::strcmp(name, "Wert") != 0) return runtime->createNilValue();
    // Made in the root section: alive at return, gone when the run ends.
    return runtime->createInconvertibleValue("Hausnummer fehlt");
  }

 private:
  static void checkAddress(RuntimeContext *runtime) {
    runtime->startNewSection("Adresse", false);
    runtime->startNewSection("Hausnummer", false);
    Value *number = runtime->createInvalidValue();
    if (!number->isValid()) {
      PlausiProblem *problem = runtime->createProblem(quorel::PROBLEM_ERROR, 10);
      problem->setId("ADR-001");
      problem->setShortDescription("Hausnummer fehlt.");
      problem->setLongDescription("Zur Anschrift ist keine Hausnummer angegeben.");
      problem->setReferenceFieldIndices(1, 0);
      runtime->setSectionInfosToProblem(problem);
    }
    PlausiProblem *hint = runtime->createProblem(kHint, 1);
    hint->setId("ADR-002");
    hint->setShortDescription("Anschrift ungepr\xFC" "ft.");
    runtime->setSectionInfosToProblem(hint);
    runtime->leaveCurrentSection();
    runtime->leaveCurrentSection();
  }

  static void abortInRule(RuntimeContext *runtime) {
    runtime->createNilValue();
    runtime->startNewSection("Aussen", false);
    runtime->createInvalidValue();
    runtime->startNewSection("Innen", true);
    runtime->createInconvertibleValue("unterwegs");
    throw PlausiException(quorel::EXCEPTION_ILLEGAL_ARGUMENT, "Regel abgebrochen.");
  }
};

}  // namespace

extern "C" __attribute__((visibility("default"))) quorel::Plausi *loadPlausiSample() {
  return new SampleRules();
}

extern "C" __attribute__((visibility("default"))) void unloadPlausiSample(quorel::Plausi *plausi) {
  delete plausi;
}
