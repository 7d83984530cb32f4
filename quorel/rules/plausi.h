// Plausi: a rule set at run time, and the door through which a host starts a
// run.
//
// A rule module derives from Plausi, registers what its rule source declares
// in its constructor and implements performImpl (run a flow) and
// performFunctionImpl (evaluate a named function). The host calls perform or
// performFunction with a PlausiContext; each call builds a RuntimeContext for
// its duration, whose root section "Plausi" owns the values made under it.
// Exceptions from rule code reach the caller unchanged.
//
// The order of the virtual operations is part of the interface that rule
// modules are compiled against. Not copied.

#ifndef QUOREL_RULES_PLAUSI_H_
#define QUOREL_RULES_PLAUSI_H_

#include "quorel/rules/classification_ressource.h"
#include "quorel/values/invalid_value.h"

namespace quorel {

class PlausiContext;
class RuntimeContext;
class Value;

class Plausi : public ClassificationRessource {
 public:
  Plausi();
  ~Plausi() override;

  Plausi(const Plausi &) = delete;
  Plausi &operator=(const Plausi &) = delete;

  // The registered classification, or this Plausi's own InvalidValue, which
  // no caller deletes.
  Value *getClassificationByCode(const char *code) override;
  Value *getClassificationByValue(const char *value) override;

  // Runs the context's flow; the findings land in the context.
  void perform(PlausiContext *context);

  // Evaluates the named function and gives back a copy that belongs to the
  // caller and outlives the run.
  Value *performFunction(const char *name, PlausiContext *context);

 protected:
  // Must give a value alive at its return, never null.
  virtual Value *performFunctionImpl(RuntimeContext *runtime, const char *name) = 0;
  virtual void performImpl(RuntimeContext *runtime, const char *flow) = 0;

 private:
  InvalidValue invalidValue_;
};

}  // namespace quorel

#endif  // QUOREL_RULES_PLAUSI_H_
