// Interpreter: the Plausi of a rule set. Its constructor registers what the
// rule file declares, as a rule module's does, and builds the Program that
// performImpl runs.
//
// Everything the file names is resolved once here: the topics of the
// record type and the materials, the mappings, the field checks, the
// classifications, and in the program the fields, literals and calls of
// the rules. A run then costs what the same rules cost as compiled code,
// plus one call through a handler per node.
//
// One interpreter serves one thread, like every Plausi. It keeps its rule
// set alive.

#ifndef QUOREL_LANG_INTERPRETER_H_
#define QUOREL_LANG_INTERPRETER_H_

#include <memory>
#include <vector>

#include "quorel/lang/declared_topic.h"
#include "quorel/lang/program.h"
#include "quorel/lang/rule_set.h"
#include "quorel/rules/plausi.h"

namespace quorel {

class RuntimeContext;
class Value;

namespace lang {

class Interpreter : public Plausi {
 public:
  explicit Interpreter(std::shared_ptr<const RuleSet> rules);
  ~Interpreter() override;

  const char *const *getFlows() const override { return rules_->flows(); }

  // Runs the field check declared for field (the element of an array, where
  // the check is the array's). Reached through the library's field check
  // registry.
  void runFieldCheck(RuntimeContext *runtime, Field *field);

 protected:
  void performImpl(RuntimeContext *runtime, const char *flow) override;
  Value *performFunctionImpl(RuntimeContext *runtime, const char *name) override;

 private:
  std::shared_ptr<const RuleSet> rules_;
  const Module &module_;
  DeclaredTopic *root_ = nullptr;
  std::vector<DeclaredTopic *> materials_;
  std::unique_ptr<Program> program_;
};

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_INTERPRETER_H_
