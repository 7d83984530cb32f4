// Linked against the library and loaded by dlopen: whether the library's
// thread-local state works when the library itself was loaded late.

#include <memory>
#include <string>

#include <quorel/quorel.h>

namespace {

class NoRules : public quorel::Plausi {
 protected:
  quorel::Value *performFunctionImpl(quorel::RuntimeContext *runtime, const char *) override {
    return runtime->createNilValue();
  }
  void performImpl(quorel::RuntimeContext *, const char *) override {}
};

}  // namespace

// 1 when a run, a sequence walk and a pattern all answered right.
extern "C" __attribute__((visibility("default"))) int probeLateLoadedLibrary() {
  NoRules plausi;
  quorel::PlausiContext context(nullptr);
  quorel::RuntimeContext run(&context, &plausi);
  quorel::Value *steps =
      run.createSequenceRange(run.createNumberValue(1.0), run.createNumberValue(2.0), run.createNumberValue(9.0));
  bool ok = quorel::Functions::MAXIMUM_AUS_REIHE(&run, steps)->asInteger() == 9;
  ok = ok && std::string(quorel::Functions::GROSSBUCHSTABEN(&run, run.createStringValue("abc"))->asString()) == "ABC";
  ok = ok && Pattern::matches("[0-9]{5}", "12345", 0) && !Pattern::matches("[0-9]{5}", "1234", 0);
  return ok ? 1 : 0;
}
