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
  // The flow to run; none runs the module's default, the first flow it
  // declares.
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
  // Read where the checker keeps them: valid until its next run (copies by
  // collectProblems).
  FoundProblems problems;
  std::int32_t errors = 0;  // problems of type PROBLEM_ERROR
  // An exception ended the run; the problems reported before it are kept.
  // A PlausiException gives its type and message (Windows-1252); any other
  // exception out of rule code (std::invalid_argument from std::stoi,
  // std::bad_alloc) its class name in cppType, its what() in message, and
  // exceptionType 0. Either way only this record failed.
  bool failed = false;
  std::int32_t exceptionType = 0;
  std::string cppType;
  std::string message;

  // Why the run failed, as hosts report it: "exception TYPE: MESSAGE", TYPE
  // the PlausiException's number or the C++ class name.
  std::string failure() const;
  // Within a catch block for what rule code threw other than a
  // PlausiException: marks the outcome failed with the exception's class and
  // text. A thread's cancellation is thrown on.
  void failWithCurrentException();
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

  // Runs the flow on the record into *outcome, which is reset first. No
  // exception of the rules leaves it. One thread at a time: the runs share
  // one context, which holds the problems of the last run.
  void check(DataRecord *record, Outcome *outcome);
  // Hands the settings to a context of this checker's module.
  void configure(PlausiContext *context);

  Plausi *plausi() const { return plausi_; }
  // The flow that runs: the settings' flow, or the module's default. Null
  // when neither exists; checkFlow() then refuses the settings.
  const std::string *flow() const { return flow_ ? &*flow_ : nullptr; }

  // "" when the module runs the flow; otherwise a message (Windows-1252)
  // naming the flow and the flows the module declares. A module that
  // declares no flows runs any named flow, but has no default: without a
  // flow in the settings the message says so and how to name one, as
  // howToName (the front end's own words, "--flow NAME").
  std::string checkFlow(const std::string &howToName) const;

 private:
  const CheckSettings &settings_;
  InitParams inits_;
  PlausiLoader loader_;
  std::unique_ptr<Plausi> ruleFile_;  // the Plausi of a rule file, else null
  Plausi *plausi_;
  std::optional<std::string> flow_;
  PlausiContext context_{nullptr};
  HierarchyTexts hierarchyTexts_;
};

// Whether path names a rule file (it ends in ".qr") rather than a library.
bool isRuleFile(const std::string &path);

// The init params of the settings that the rules never read, one message
// each (Windows-1252, as the names): a rule file names each parameter it
// reads (PARAMETER("Stichtag")), and a module may name them with
// QUOREL_MODULE_INIT_PARAMS, as quorel-compile's do; so a name that none of
// them names, a typo such as Stichtg, would be set and never read. None for
// a module that does not tell what it reads, and none for a rule file that
// computes the name of a parameter it reads.
std::vector<std::string> unreadInits(const CheckSettings &settings);

// A mistake among the init params of the settings, or empty: a name given
// twice, or two names that the library takes for one, since it keys them by
// a hash of the name (Windows-1252, as the names).
std::string repeatedInit(const CheckSettings &settings);

// Reads and checks a rule file; null, with every mistake of the file in
// *message (FILE:LINE:COLUMN: error: ... lines, UTF-8), when it holds any.
std::shared_ptr<const lang::RuleSet> readRules(const std::string &path, std::string *message);

}  // namespace host
}  // namespace quorel

#endif  // QUOREL_HOST_CHECKER_H_
