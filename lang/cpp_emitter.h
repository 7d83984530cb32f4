// CppEmitter: writes a checked rule set as the C++ source of a rule module,
// shaped like the hand-written ones (topic classes, a Plausi subclass with a
// method per rule, QUOREL_MODULE), which needs nothing but <quorel/quorel.h>.
//
// The module runs exactly as the interpreter runs the rule set: the same
// library calls in the same order, so the same problems, fields read and
// trails. Every operand is computed into a variable of its own before it is
// used, since C++ leaves the order of arguments open.

#ifndef QUOREL_LANG_CPP_EMITTER_H_
#define QUOREL_LANG_CPP_EMITTER_H_

#include <string>

#include "quorel/lang/rule_set.h"

namespace quorel {
namespace lang {

// The C++ source of the module; source names the rule file in its header
// comment.
std::string emitCpp(const RuleSet &rules, const std::string &source);

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_CPP_EMITTER_H_
