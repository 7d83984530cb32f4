// Clauses: the parts of a problem that MELDE may fill, with the keyword that
// names each and the setter of PlausiProblem it ends in. The parser, the
// interpreter and the emitter read this one table.

#ifndef QUOREL_LANG_CLAUSES_H_
#define QUOREL_LANG_CLAUSES_H_

#include "quorel/lang/ast.h"
#include "quorel/rules/plausi_problem.h"

namespace quorel {
namespace lang {

struct ClauseInfo {
  ReportClause kind;
  const char *keyword;
  // Text clauses: the setter, and its name for generated code. Null for the
  // whole-number clauses (FELDLAENGE, INFOTYP, INDIZES).
  void (PlausiProblem::*setText)(const char *);
  const char *setter;

  bool numeric() const { return setText == nullptr; }
};

// Every clause, in the order of ReportClause.
const ClauseInfo (&allClauses())[kClauseIndices + 1];

inline const ClauseInfo &clauseInfo(ReportClause kind) { return allClauses()[kind]; }

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_CLAUSES_H_
