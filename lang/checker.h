// Checker: the meaning of a parsed rule file. It resolves every name (fields,
// materials, rules, functions, variables), counts arguments, refuses what
// is known to go wrong before any record is read (a type that does not fit,
// a mask the library refuses, a sequence that runs the wrong way, a
// duplicate problem id, a recursive function) and reports each mistake with
// its place. What it resolves it writes into the tree, for the interpreter
// and the emitter.

#ifndef QUOREL_LANG_CHECKER_H_
#define QUOREL_LANG_CHECKER_H_

#include "quorel/lang/ast.h"
#include "quorel/lang/diagnostics.h"

namespace quorel {
namespace lang {

// Checks and completes module; true when it holds no error (and the
// diagnostics none before).
bool check(Module *module, Diagnostics *diagnostics);

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_CHECKER_H_
