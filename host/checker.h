// Checker: one rule module loaded for one thread, and the settings of the
// runs it makes. The library needs a Plausi per thread; a front end that
// checks on N threads keeps N checkers over the same settings.
//
// The settings (and the material access and logger they name) stay the
// caller's and must outlive the checker; each checker holds copies of the
// init values, since values fill caches when they are read.

#ifndef QUOREL_HOST_CHECKER_H_
#define QUOREL_HOST_CHECKER_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <quorel/quorel.h>

#include "quorel/host/problem.h"
#include "quorel/lang/rule_set.h"

namespace quorel {
namespace host {

struct CheckSettings {
  // The rule module: a shared library and the module's name in it, or a
  // rule file read beforehand (readRules), whose name is then the module's.
  std::string library;
  std::string module;
  std::shared_ptr<const lang::RuleSet> rules;
  // The flow to run; none leaves the context's flow unset.
  std::optional<std::string> flow;
  std::int32_t weightLevel = 1;
  MaterialAccess *materials = nullptr;
  // Null keeps the library's silent logger. One logger serves one thread at
  // a time.
  Logger *logger = nullptr;
  // Init params by name; each checker runs on copies.
  std::vector<std::pair<std::string, std::shared_ptr<Value>>> inits;
  // Called on the run's thread after each check, once its context is gone:
  // a material access that makes records per query releases them here.
  std::function<void()> afterRun;
};

// What checking one record gave.
struct Outcome {
  std::vector<Problem> problems;
  std::int32_t errors = 0;  // problems of type PROBLEM_ERROR
  // A PlausiException ended the run: its type and message (Windows-1252).
  // The problems reported before it are kept.
  bool failed = false;
  std::int32_t exceptionType = 0;
  std::string message;

  // Why the run failed, as hosts report it: "Ausnahme TYPE: MESSAGE".
  std::string failure() const { return "Ausnahme " + std::to_string(exceptionType) + ": " + message; }
};

class Checker {
 public:
  // Loads the module, or makes the rule file's Plausi; a LoadError (a
  // PlausiException) when a module cannot be loaded.
  explicit Checker(const CheckSettings &settings);
  // Unloads the module.
  ~Checker();

  Checker(const Checker &) = delete;
  Checker &operator=(const Checker &) = delete;

  // Runs the flow on the record into *outcome, which is reset first.
  void check(DataRecord *record, Outcome *outcome);
  // Hands the settings to a context of this checker's module.
  void configure(PlausiContext *context);

  Plausi *plausi() const { return plausi_; }

  // "" when the module runs the settings' flow, or when none is set;
  // otherwise a message (Windows-1252) naming the flow and the flows the
  // module declares. A module that declares no flows runs any.
  std::string checkFlow() const;

 private:
  const CheckSettings &settings_;
  InitParams inits_;
  PlausiLoader loader_;
  std::unique_ptr<Plausi> ruleFile_;  // the Plausi of a rule file, else null
  Plausi *plausi_;
};

// Whether path names a rule file (it ends in ".qr") rather than a library.
bool isRuleFile(const std::string &path);

// Reads and checks a rule file; null, with every mistake of the file in
// *message (FILE:LINE:COLUMN: error: ... lines, UTF-8), when it holds any.
std::shared_ptr<const lang::RuleSet> readRules(const std::string &path, std::string *message);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_CHECKER_H_
