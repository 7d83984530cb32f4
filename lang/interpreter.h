// Interpreter: the Plausi of a rule set. Its constructor registers what the
// rule file declares, as a rule module's does; performImpl runs the rules
// of the flow by walking the checked tree.
//
// Everything the file names is resolved once here: the fields of paths
// without indices, the literals (made once, kept by the interpreter and
// only read by the rules), the materials. A run then costs what the same
// rules cost as compiled code, plus the walk.
//
// One interpreter serves one thread, like every Plausi. It keeps its rule
// set alive.

#ifndef QUOREL_LANG_INTERPRETER_H_
#define QUOREL_LANG_INTERPRETER_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "quorel/lang/ast.h"
#include "quorel/lang/declared_topic.h"
#include "quorel/lang/rule_set.h"
#include "quorel/rules/plausi.h"

namespace quorel {

class FieldDescriptor;
class PlausiSection;
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
  // registry and through PRUEFE.
  void runFieldCheck(RuntimeContext *runtime, Field *field);

 protected:
  void performImpl(RuntimeContext *runtime, const char *flow) override;
  Value *performFunctionImpl(RuntimeContext *runtime, const char *name) override;

 private:
  struct Frame;

  void runRule(RuntimeContext *runtime, const RuleDecl &rule);
  Value *callFunction(Frame &caller, const FunctionDecl &function, Value *const *args);
  Value *runFunction(RuntimeContext *runtime, const FunctionDecl &function, Value *const *args);

  // Statements; false when the block was left by ABBRECHEN or ERGEBNIS.
  bool block(Frame &f, const Block &body);
  bool statement(Frame &f, const Stmt &stmt);
  bool forEach(Frame &f, const Stmt &stmt);
  bool forRange(Frame &f, const Stmt &stmt);
  void report(Frame &f, const Report &report);
  void assign(Frame &f, std::int32_t slot, Value *value);
  bool attempt(Frame &f, const Stmt &stmt);
  bool giveBack(Frame &f, const Stmt &stmt);

  // A constant or a local without a call; anything else through evalNode.
  inline Value *eval(Frame &f, const Expr &expr);
  Value *evalNode(Frame &f, const Expr &expr);
  Value *userCall(Frame &f, const Expr &expr);
  Value *series(Frame &f, const Expr &expr);
  bool test(Frame &f, const Expr &expr);
  Value *call(Frame &f, const Expr &expr);
  Value *languageOp(Frame &f, const Expr &expr);
  Value *external(Frame &f, const Expr &expr);
  Value *query(Frame &f, const Expr &expr);
  FieldDescriptor *resolve(Frame &f, const Path &path);
  std::int32_t countOf(Frame &f, const Expr &call);

  // The constant of a literal or constant range, made once.
  Value *makeConstant(const Expr &expr);

  std::shared_ptr<const RuleSet> rules_;
  const Module &module_;
  DeclaredTopic *root_ = nullptr;
  std::vector<DeclaredTopic *> materials_;
  std::vector<FieldDescriptor *> staticFields_;
  std::vector<std::unique_ptr<Value>> constants_;
};

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_INTERPRETER_H_
