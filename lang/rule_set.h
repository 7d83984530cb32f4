// RuleSet: a rule file, read and checked, ready to run.
//
// Reading reports every mistake of the file at once (see Diagnostics) and
// gives no rule set when there is one. A rule set never changes after it is
// made and may be shared by threads: each thread makes its own Plausi with
// createPlausi, as it would load its own copy of a rule module. A Plausi of
// a rule set runs exactly as a compiled rule module would: same problems,
// texts, trails, fields read and weights.
//
//   quorel::lang::Diagnostics diagnostics;
//   std::unique_ptr<quorel::Plausi> rules = quorel::lang::loadRuleFile("antrag.qr", &diagnostics);
//   if (rules == nullptr) std::cerr << diagnostics.format();

#ifndef QUOREL_LANG_RULE_SET_H_
#define QUOREL_LANG_RULE_SET_H_

#include <memory>
#include <string>
#include <vector>

#include "quorel/lang/ast.h"
#include "quorel/lang/diagnostics.h"
#include "quorel/rules/plausi.h"

namespace quorel {
namespace lang {

class RuleSet : public std::enable_shared_from_this<RuleSet> {
 public:
  // The module's name (MODUL), in Windows-1252.
  const std::string &name() const { return module_.name; }
  // The checked tree, for the emitter and for tools.
  const Module &module() const { return module_; }
  // The flows as Plausi::getFlows gives them: the declared ones, or the
  // one a module without ABLAUF has.
  const char *const *flows() const { return flows_.data(); }

  // A new Plausi running these rules; it keeps the rule set alive.
  std::unique_ptr<Plausi> createPlausi() const;

  // Use readRuleFile / readRuleText.
  explicit RuleSet(Module module);

 private:
  Module module_;
  std::vector<const char *> flows_;  // ended by null
};

// Reads and checks a rule file (UTF-8, or Windows-1252 when it is not valid
// UTF-8). Null when it cannot be read or holds a mistake; diagnostics tell
// which, with name as the file in every message.
std::shared_ptr<const RuleSet> readRuleFile(const std::string &path, Diagnostics *diagnostics);
std::shared_ptr<const RuleSet> readRuleText(const std::string &text, const std::string &name,
                                            Diagnostics *diagnostics);

// Both at once: the Plausi of a rule file, or null as above.
std::unique_ptr<Plausi> loadRuleFile(const std::string &path, Diagnostics *diagnostics);
std::unique_ptr<Plausi> loadRuleText(const std::string &text, const std::string &name, Diagnostics *diagnostics);

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_RULE_SET_H_
