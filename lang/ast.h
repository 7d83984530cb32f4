// The syntax tree of a rule file, as the parser builds it and the checker
// completes it.
//
// The parser fills the written parts (names, literals, positions); the
// checker fills the resolved parts (declarations, slots, built-ins), which
// the interpreter and the C++ emitter read. After checking, a tree is never
// changed again, so several rule sets made from it may run on several
// threads at once. Every node owns its children.

#ifndef QUOREL_LANG_AST_H_
#define QUOREL_LANG_AST_H_

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "quorel/lang/position.h"
#include "quorel/model/field_type.h"

namespace quorel {
namespace lang {

struct Builtin;
struct Expr;
struct FieldDecl;
struct FunctionDecl;
struct Stmt;

using ExprPtr = std::unique_ptr<Expr>;
using StmtPtr = std::unique_ptr<Stmt>;
using Block = std::vector<StmtPtr>;

// A field of the record type or of a material: a scalar, an array of
// scalars, a group (nested topic) or an array of groups.
struct FieldDecl {
  Position pos;
  std::string name;
  std::string display;             // the name when none was written
  FieldType type = FieldTypeText;  // FieldTypeTopic for a group
  std::string mask;
  bool hasMask = false;
  std::string column;              // the field's name in the data source (SPALTE)
  bool hasColumn = false;
  std::vector<std::int32_t> dims;  // empty for no array; 0 for a size per record
  std::vector<std::unique_ptr<FieldDecl>> children;  // a group's fields
  std::int32_t slot = 0;           // place among the parent's children
  // Resolved, for a root (the record type or a material): the type
  // hierarchy text and data-source name of every field below it that names
  // one, in the order declared: the entries of the root's Mapping.
  std::vector<std::pair<std::string, std::string>> columns;

  bool isGroup() const { return type == FieldTypeTopic; }
  bool isArray() const { return !dims.empty(); }
  // Index of a child by name, or -1.
  std::int32_t find(const std::string &child) const;
};

// What a path starts from.
enum PathBase : std::int32_t {
  kBaseRecord,    // the record type's root
  kBaseMaterial,  // a material's root (in queries)
  kBaseRef,       // a loop variable bound to a group or field, or a checked field
};

struct PathStep {
  Position pos;
  std::string name;                // empty for a step of indices only
  std::vector<ExprPtr> indices;    // one per dimension, or none
  const FieldDecl *decl = nullptr;  // the field reached by this step
};

// A name with members and indices: Antrag.Kinder[i].Vorname, kind.Vorname.
// Read first by the interpreter, as Expr (below).
struct Path {
  // Resolved.
  std::int32_t staticId = -1;         // >= 0: a path without indices from a root, resolved once per rule set
  PathBase base = kBaseRecord;
  std::int32_t refSlot = -1;          // kBaseRef: the reference slot
  std::int32_t material = -1;         // kBaseMaterial: index of the material
  const FieldDecl *decl = nullptr;    // what the whole path names
  std::vector<PathStep> steps;
  // As written.
  Position pos;
  std::string head;
  bool hasIndices() const;
};

enum ExprKind : std::int32_t {
  kNumber,         // number
  kText,           // text
  kDate,           // text, read under "TT.MM.JJJJ"
  kTruth,          // truth
  kNil,            // NICHTS
  kInvalid,        // UNGUELTIG
  kInconvertible,  // UNUMWANDELBAR(text)
  kPath,           // a field read, or an array / group as argument
  kLocal,          // a local variable
  kNot,
  kNeg,
  kBinary,         // op
  kAnd,
  kOr,
  kIn,             // args[0] IN args[1]: args[1]->contains(args[0])
  kCall,           // a built-in or language function: builtin
  kUserCall,       // a function of the file: function
  kExternal,       // a host function: text is its name
  kInterval,       // args[0], args[1], intervalType
  kSequence,       // args[0..2]
  kSeries,         // args
  kQuery,          // query
  kExists,         // query
};

enum BinaryOp : std::int32_t { kEq, kNe, kGt, kGe, kLt, kLe, kPlus, kMinus, kMult, kDiv, kConcat };

// A filter condition of a query: material field, operator number, value.
struct Condition {
  Position pos;
  std::string field;
  std::int32_t op = 0;  // OperatorType
  ExprPtr value;
  const FieldDecl *decl = nullptr;
};

struct Query {
  std::vector<std::string> fields;  // the fields read, in order
  std::vector<Position> fieldPos;
  std::string material;
  Position materialPos;
  std::vector<Condition> conditions;
  // Resolved.
  std::int32_t materialIndex = -1;
  std::vector<const FieldDecl *> fieldDecls;
};

// What the interpreter reads at every visit comes first, within one cache
// line: a run visits the nodes of its rules for every record, and records
// many times the size of the caches push them out between visits.
struct Expr {
  ExprKind kind;
  // Resolved.
  std::int32_t constant = -1;              // literals and constant ranges: index of the constant
  std::int32_t slot = -1;                  // kLocal
  std::int32_t staticField = -1;           // kPath: path->staticId, read without the path
  BinaryOp op = kEq;
  std::vector<ExprPtr> args;
  std::unique_ptr<Path> path;
  const Builtin *builtin = nullptr;         // kCall
  const FunctionDecl *function = nullptr;  // kUserCall
  std::unique_ptr<Query> query;
  std::int32_t intervalType = 0;  // IntervalType
  FieldType fieldType = FieldTypeText;     // kCall of PASST: the type argument
  // As written.
  Position pos;
  double number = 0;
  bool truth = false;
  std::string text;

  Expr(ExprKind k, Position p) : kind(k), pos(p) {}
};

enum StmtKind : std::int32_t {
  kIf,       // conditions / blocks (else: one block more than conditions)
  kLet,      // SEI slot = expr
  kAssign,   // SETZE slot = expr
  kSection,  // ABSCHNITT name: body
  kForEach,  // FUER JEDES name IN expr/path
  kForRange, // FUER name VON a BIS b
  kBreak,    // ABBRECHEN
  kReport,   // MELDE
  kCheck,    // PRUEFE path
  kTry,      // VERSUCHE body BEI FEHLER name: handler
  kReturn,   // ERGEBNIS expr
};

// The clauses of a problem report.
enum ReportClause : std::int32_t {
  kClauseText,         // TEXT: short description
  kClauseDetails,      // DETAILS: long description
  kClauseCorrection,   // KORREKTUR
  kClauseTopic,        // THEMA: reference topic
  kClauseException,    // AUSNAHME
  kClauseDisplay,      // FELDNAME: field display name
  kClauseMask,         // FELDMASKE
  kClauseValueSpace,   // WERTEBEREICH
  kClauseLength,       // FELDLAENGE (a whole number)
  kClauseInfoType,     // INFOTYP (a whole number)
  kClauseIndices,      // INDIZES e; e...
};

struct Clause {
  ReportClause kind;
  Position pos;
  std::vector<ExprPtr> values;
};

struct Report {
  std::int32_t type = 1;  // ProblemType
  ExprPtr id;
  std::int32_t weight = 0;
  std::unique_ptr<Path> field;  // reference field, or null
  std::vector<Clause> clauses;
};

// How a FUER JEDES walks.
enum LoopKind : std::int32_t { kLoopTopics, kLoopFields, kLoopValues };

// Read first by the interpreter, as Expr (above).
struct Stmt {
  StmtKind kind;
  // Resolved.
  std::int32_t slot = -1;  // local or reference slot
  LoopKind loop = kLoopValues;
  bool hasSection = false;
  std::vector<ExprPtr> exprs;
  std::vector<Block> blocks;
  std::unique_ptr<Path> path;
  std::unique_ptr<Report> report;
  // As written.
  Position pos;
  std::string name;          // the variable
  std::string section;       // ABSCHNITT, and loops with a section per round

  Stmt(StmtKind k, Position p) : kind(k), pos(p) {}
};

struct RuleDecl {
  Position pos;
  std::string name;
  std::string section;
  Block body;
  std::int32_t locals = 0;  // slots of values
  std::int32_t refs = 0;    // slots of references
};

struct FunctionDecl {
  Position pos;
  std::string name;
  std::vector<std::string> params;
  Block body;
  std::int32_t locals = 0;
  std::int32_t refs = 0;
  std::int32_t index = 0;
};

struct FieldCheckDecl {
  Position pos;
  std::unique_ptr<Path> field;
  std::string bound;    // the name the field goes by in the body
  std::string section;
  Block body;
  std::int32_t locals = 0;
  std::int32_t refs = 0;
  std::string hierarchy;  // type hierarchy text, resolved
};

struct FlowDecl {
  Position pos;
  std::string name;
  std::vector<std::string> rules;
  std::vector<Position> rulePos;
  std::vector<std::int32_t> ruleIndices;  // resolved
};

struct CodeDecl {
  Position pos;
  std::string code;
  std::string text;
  std::vector<std::unique_ptr<CodeDecl>> children;
};

struct ExternalDecl {
  Position pos;
  std::string name;
  std::int32_t arity = 0;
};

struct MaterialDecl {
  std::unique_ptr<FieldDecl> root;  // a group
  std::string dataset;
  bool hasDataset = false;
};

// A whole rule file.
struct Module {
  std::string file;  // for messages
  Position pos;
  std::string name;
  std::unique_ptr<FieldDecl> record;  // a group; null when missing
  std::vector<MaterialDecl> materials;
  std::vector<std::unique_ptr<CodeDecl>> codes;
  std::vector<ExternalDecl> externals;
  std::vector<FlowDecl> flows;
  std::vector<RuleDecl> rules;
  std::vector<std::unique_ptr<FunctionDecl>> functions;
  std::vector<FieldCheckDecl> fieldChecks;
  // Resolved: every literal that is made once per rule set, and every
  // static path.
  std::vector<const Expr *> constants;
  std::vector<const Path *> staticPaths;
  // Resolved: the names of the init params that PARAMETER reads, where each
  // is written as a text; computedParameter when one is not, so that any
  // name may be read.
  std::set<std::string> parameters;
  bool computedParameter = false;
};

}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_AST_H_
