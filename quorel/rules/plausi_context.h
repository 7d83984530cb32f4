// PlausiContext: the host's side of a run. It holds what the host hands in
// (record, flow, weight level, logger, material access, init params, external
// functions) and the problems that runs leave behind.
//
// The record, the logger set by the host, the material access and the init
// param values stay the host's. The context owns the flow text, its default
// logger (silent) and every problem. It may serve several runs one after the
// other; problems accumulate until reset() begins the next record. Not
// copied.

#ifndef QUOREL_RULES_PLAUSI_CONTEXT_H_
#define QUOREL_RULES_PLAUSI_CONTEXT_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "quorel/logging/logger.h"
#include "quorel/rules/init_params.h"
#include "quorel/rules/name_map.h"
#include "quorel/rules/nullable_text.h"
#include "quorel/rules/plausi_problem.h"
#include "quorel/rules/problem_type.h"

namespace quorel {

class DataRecord;
class MaterialAccess;
class RuntimeContext;
class Value;

// A function that the host offers to rule code.
using ExternalFunction = Value *(*)(RuntimeContext *, ...);

class PlausiContext {
 public:
  // Also reseeds the process-wide random generator with the current time.
  explicit PlausiContext(DataRecord *record);
  ~PlausiContext();

  PlausiContext(const PlausiContext &) = delete;
  PlausiContext &operator=(const PlausiContext &) = delete;

  DataRecord *getDataRecord() const { return record_; }

  // Begins the next record: drops every problem (pointers to them and their
  // texts die here) and checks record from now on. What the host set stays
  // (flow, weight level, logger, material access, init params, external
  // functions), and the problems' memory serves the problems to come, so a
  // host that checks record after record with one context asks for no memory
  // for problems once the first records are done.
  void reset(DataRecord *record);

  // Stores a copy of the name; null until first set.
  void setFlow(const char *name) { flow_.set(name); }
  const char *getFlow() const { return flow_.get(); }

  void setProblemWeightLevel(std::int32_t level) { problemWeightLevel_ = level; }
  std::int32_t getProblemWeightLevel() const { return problemWeightLevel_; }

  // Null puts the silent default logger back in force; never gives null.
  void setLogger(Logger *logger) { logger_ = logger != nullptr ? logger : &defaultLogger_; }
  Logger *getLogger() const { return logger_; }

  void setMaterialAccess(MaterialAccess *access) { materialAccess_ = access; }
  MaterialAccess *getMaterialAccess() const { return materialAccess_; }

  // The value stays the caller's; a former value under the name is dropped.
  void setInitParam(const char *name, Value *value) { initParams_.set(name, value); }
  Value *getInitParam(const char *name) const { return initParams_.get(name); }

  void setExternalFunction(const char *name, ExternalFunction function) {
    externalFunctions_.put(name, function);
  }
  ExternalFunction getExternalFunction(const char *name) const;

  // A new problem, owned by this context and filled by the caller.
  PlausiProblem *createProblem(ProblemType type, std::int32_t weight);
  std::int32_t getNumOfProblems() const { return static_cast<std::int32_t>(problemCount_); }
  std::int32_t getNumOfProblems(ProblemType type) const;
  // The index must be below getNumOfProblems().
  PlausiProblem *getProblem(std::int32_t index) const { return problems_[index].get(); }
  // False once any problem of type PROBLEM_ERROR exists.
  bool isOk() const { return getNumOfProblems(PROBLEM_ERROR) == 0; }

 private:
  Logger defaultLogger_;
  DataRecord *record_;
  NullableText flow_;
  std::int32_t problemWeightLevel_ = 1;
  Logger *logger_;
  InitParams initParams_;
  NameMap<ExternalFunction> externalFunctions_;
  MaterialAccess *materialAccess_ = nullptr;
  // The first problemCount_ problems are this record's; those after them
  // are kept for reuse.
  std::vector<std::unique_ptr<PlausiProblem>> problems_;
  std::size_t problemCount_ = 0;
};

}  // namespace quorel

#endif  // QUOREL_RULES_PLAUSI_CONTEXT_H_
