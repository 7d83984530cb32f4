// Program: the rules, functions and field checks of a checked rule file,
// turned once into nodes that each know their handler, which is what the
// Interpreter runs.
//
// Building resolves everything that a walk of the tree would look up again
// for every record: the field of each path without indices, the literals
// (made once, kept here and only read by the rules), the materials, the
// function or field check that a call or PRUEFE reaches, the fixed texts of
// MELDE. A run then makes one call through a handler pointer per node and
// never switches over the kinds of nodes. Handlers are instantiated for
// where their operands come from, so that constants, locals and fields are
// read in place rather than through nodes of their own; NICHT folds into
// GUELTIG, PASST, IN and calls below it; chains of UND and ODER are one
// node.
//
// Problems, texts, trails, the fields read and exceptions are exactly
// those of the rules as written: the handlers evaluate in the order of the
// file and make the library calls the tree names.
//
// A program is read-only once built. It reads the module and the topics it
// was built over, which must outlive it, and owns its nodes and constants.
// Like every Plausi it serves one thread at a time.

#ifndef QUOREL_LANG_PROGRAM_H_
#define QUOREL_LANG_PROGRAM_H_

#include <memory>
#include <utility>
#include <vector>

#include "quorel/lang/arena.h"
#include "quorel/lang/ast.h"

namespace quorel {

class Field;
class RuntimeContext;
class Value;

namespace lang {

class DeclaredTopic;
struct Routine;  // a rule, function or field check, built (program_nodes.h)

class Program {
 public:
  // root is the topic of module's record type, materials the topics of its
  // materials in the order declared.
  Program(const Module &module, DeclaredTopic *root, const std::vector<DeclaredTopic *> &materials);
  ~Program();

  Program(const Program &) = delete;
  Program &operator=(const Program &) = delete;

  // Runs the rules of the flow, in order; nothing for an unknown flow.
  void runFlow(RuntimeContext *runtime, const char *flow) const;

  // The result of the function without parameters of that name; null when
  // the file declares none.
  Value *runFunction(RuntimeContext *runtime, const char *name) const;

  // Runs the field check declared for decl on field; nothing when decl has
  // none.
  void runFieldCheck(RuntimeContext *runtime, const FieldDecl *decl, Field *field) const;

 private:
  class Builder;

  Arena arena_;  // every node and routine
  std::vector<std::unique_ptr<Value>> constants_;
  std::vector<std::pair<const char *, std::vector<const Routine *>>> flows_;
  std::vector<std::pair<const FunctionDecl *, const Routine *>> functions_;
  std::vector<std::pair<const FieldDecl *, const Routine *>> fieldChecks_;
};

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_PROGRAM_H_
