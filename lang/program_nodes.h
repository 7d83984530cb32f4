// The nodes that a Program is built of, and the handlers that run them.
//
// A node or statement holds the handler that runs it, picked when the
// program is built for where its operands come from; a run makes one call
// through that pointer per node and never switches over kinds. program.cpp
// builds the nodes, program_nodes.cpp runs them. Every node lives in the
// Program's arena and is read-only once built.
//
// The handlers make exactly the library calls that the tree names, in the
// order of the file: problems, texts, trails, the fields read and
// exceptions are those of the rules as written.
//
// This header is the language's own and is not installed.

#ifndef QUOREL_LANG_PROGRAM_NODES_H_
#define QUOREL_LANG_PROGRAM_NODES_H_

#include <cstdint>
#include <string>

#include "quorel/lang/ast.h"
#include "quorel/lang/builtins.h"
#include "quorel/material/filter_condition.h"
#include "quorel/model/field_type.h"
#include "quorel/rules/plausi_problem.h"
#include "quorel/rules/problem_type.h"

namespace quorel {

class Field;
class FieldArray;
class FieldDescriptor;
class RuntimeContext;
class Value;

namespace lang {

class DeclaredTopic;

struct Frame;
struct Node;
struct Op;
struct Place;
struct Routine;

using EvalFn = Value *(*)(const Node &, Frame &);
using TestFn = bool (*)(const Node &, Frame &);
using RunFn = bool (*)(const Op &, Frame &);  // false: the block was left (ABBRECHEN, ERGEBNIS)
using ResolveFn = FieldDescriptor *(*)(const Place &, Frame &);

// Where an operand comes from. The handlers are instantiated per source, so
// that a constant, local or field is read in place, without a node and a
// call of its own.
enum Source : std::int32_t {
  kFromNode,      // Operand::node, through its handler
  kFromConstant,  // Operand::value
  kFromLocal,     // the local Operand::slot
  kFromField,     // the value of Operand::field, a path without indices
};

// An operand as its node holds it; the handler knows which member is meant.
union Operand {
  const Node *node;
  Value *value;
  FieldDescriptor *field;
  std::int32_t slot;
};

// An expression. eval gives its value; test its truth as a condition, which
// for comparisons, GUELTIG and the like needs no value made. The operands
// are a, b, c in the order they are evaluated (a constant, local or field
// node holds itself in a); kinds with more hang them on a subtype.
struct Node {
  EvalFn eval = nullptr;
  TestFn test = nullptr;
  Operand a = {};
  Operand b = {};
  Operand c = {};
};

// A step of a path that is walked at run time.
struct Step {
  std::int32_t member = -1;  // the child's slot in its topic; -1 for indices only
  bool group = false;        // the indices pick an element of a group array
  const Node **indices = nullptr;
  std::int32_t count = 0;
};

// Where a path leads: resolve finds the field.
struct Place {
  ResolveFn resolve = nullptr;
  FieldDescriptor *field = nullptr;  // a path without indices: the field; walked from the root: the root
  std::int32_t ref = -1;             // from a reference: its slot
  std::int32_t member = -1;          // a reference's member: the child's slot
  const Step *steps = nullptr;
  std::int32_t count = 0;
};

struct ListNode : Node {  // chains of UND and ODER, series, arguments
  const Node **items = nullptr;
  std::int32_t count = 0;
};

struct ReadNode : Node {  // a field's value, where the path is walked
  Place place;
};

struct Call0Node : Node {
  Value *(*call)(RuntimeContext *) = nullptr;
};

struct Call1Node : Node {
  Value *(*call)(RuntimeContext *, Value *) = nullptr;
};

struct Call2Node : Node {  // also the operators
  Value *(*call)(RuntimeContext *, Value *, Value *) = nullptr;
};

struct Call3Node : Node {
  Value *(*call)(RuntimeContext *, Value *, Value *, Value *) = nullptr;
};

struct CallArrayNode : Node {
  Value *(*call)(RuntimeContext *, FieldArray *) = nullptr;
  Place array;
};

struct CountNode : ListNode {  // ANZAHL: the indices in items
  Place array;
  const std::int32_t *dims = nullptr;  // the declared sizes, 0 for a size per record
};

struct FitsNode : Node {  // PASST: the mask is fixed, or c, or none
  FieldType type = FieldTypeText;
  const char *mask = nullptr;
};

struct UserCallNode : ListNode {  // a function of the file: the arguments in items
  const Routine *function = nullptr;
};

struct ExternalNode : ListNode {  // a host function: the arguments in items
  const std::string *name = nullptr;
};

struct ConditionNode {  // a filter condition of a query
  Field *field = nullptr;
  OperatorType op = OPERATOR_EQUAL;
  const Node *value = nullptr;
};

struct QueryNode : Node {
  DeclaredTopic *material = nullptr;
  const ConditionNode *conditions = nullptr;
  std::int32_t conditionCount = 0;
  Field **fields = nullptr;  // the fields read
  std::int32_t fieldCount = 0;
};

// A statement; a block is the chain of its statements through next.
struct Op {
  RunFn run = nullptr;
  const Op *next = nullptr;
};

struct IfOp : Op {
  const Node **conditions = nullptr;
  const Op **blocks = nullptr;  // one per condition
  std::int32_t count = 0;
  const Op *otherwise = nullptr;
};

struct LetOp : Op {  // SEI, SETZE
  Operand value = {};
  std::int32_t slot = -1;
};

struct SectionOp : Op {
  const char *name = nullptr;
  const Op *body = nullptr;
};

struct LoopOp : Op {  // FUER: the loop variable in slot
  std::int32_t slot = -1;
  const char *section = nullptr;  // a section per round, or null
  const Op *body = nullptr;
};

struct EachValueOp : LoopOp {
  const Node *range = nullptr;
};

struct EachElementOp : LoopOp {
  Place array;
  std::int32_t declared = 0;  // the declared size, 0 for a size per record
  bool topics = false;
};

struct CountingOp : LoopOp {
  const Node *first = nullptr;
  const Node *last = nullptr;
};

struct CheckOp : Op {  // PRUEFE
  Place field;
  const Routine *check = nullptr;
};

struct TryOp : Op {
  const Op *body = nullptr;
  const Op *handler = nullptr;
  std::int32_t slot = -1;  // the message
};

struct ReturnOp : Op {
  const Node *value = nullptr;
};

struct ClauseOp {
  ReportClause kind = kClauseText;
  void (PlausiProblem::*setText)(const char *) = nullptr;  // null for the whole-number clauses
  const char *text = nullptr;                             // a fixed text, else values are evaluated
  const Node **values = nullptr;
  std::int32_t count = 0;
};

struct ReportOp : Op {
  ProblemType type = PROBLEM_ERROR;
  std::int32_t weight = 0;
  const char *id = nullptr;  // a fixed id, else idNode
  const Node *idNode = nullptr;
  bool hasField = false;
  Place field;
  const ClauseOp *clauses = nullptr;
  std::int32_t count = 0;
};

// A rule, function or field check.
struct Routine {
  const Op *body = nullptr;
  const char *section = nullptr;  // rules and field checks: the section they run in
  std::int32_t locals = 0;
  std::int32_t refs = 0;
  std::int32_t params = 0;
};

// The handlers, by the kind of node they run. Those that exist per source of
// their operands are picked by the pick* functions; the rest are plain.
namespace run {

// --- routines

// A rule: its body in its own section.
void runRule(RuntimeContext *rt, const Routine &rule);
// A field check on field, in its section as a check procedure.
void runCheck(RuntimeContext *rt, const Routine &check, Field *field);
// A function called with its parameters in args (null without any); its
// result, or an InvalidValue when it ends without ERGEBNIS.
Value *runFunction(RuntimeContext *rt, const Routine &function, Value *const *args);

// --- places

FieldDescriptor *fixedPlace(const Place &p, Frame &f);
FieldDescriptor *refPlace(const Place &p, Frame &f);
FieldDescriptor *refMemberPlace(const Place &p, Frame &f);
FieldDescriptor *walkPlace(const Place &p, Frame &f);

// --- expressions

// The value and truth handlers of a node; with holds false the node stands
// for NICHT the value.
struct ValueAndTruth {
  EvalFn eval;
  TestFn test;
};

// A constant, local or field where a node is needed.
EvalFn pickLeafValue(Source s);
TestFn pickLeafTruth(Source s);
// NICHT over an operand; from a node, NICHT over its test.
TestFn pickNegation(Source a);
// a IN b, or with holds false its negation.
TestFn pickIn(Source a, Source b, bool holds);
// A comparison that needs no value made.
TestFn pickCompare(BinaryOp op, Source a, Source b);
// GUELTIG, GESETZT or BRAUCHBAR, or with holds false its negation.
TestFn pickHolds(LanguageOp op, Source a, bool holds);
// Calls of a built-in of one and two arguments (Call1Node, Call2Node),
// operators included.
ValueAndTruth pickCall1(Source a, bool holds);
EvalFn pickCall2(Source a, Source b);
ValueAndTruth pickCall2(Source a, Source b, bool holds);
// PASST (FitsNode).
ValueAndTruth pickFits(Source a, bool holds);
// CODE of a code.
EvalFn pickCodeOf(Source a);

bool truthOf(const Node &n, Frame &f);
Value *valueOfTest(const Node &n, Frame &f);
Value *readRefMember(const Node &n, Frame &f);
Value *readPlace(const Node &n, Frame &f);
Value *negative(const Node &n, Frame &f);
bool both(const Node &n, Frame &f);
bool either(const Node &n, Frame &f);
bool allOf(const Node &n, Frame &f);
bool anyOf(const Node &n, Frame &f);
Value *call0(const Node &n, Frame &f);
Value *call2Alone(const Node &n, Frame &f);
Value *call3(const Node &n, Frame &f);
Value *callArray(const Node &n, Frame &f);
Value *codeOfText(const Node &n, Frame &f);
Value *countOf(const Node &n, Frame &f);
Value *realByMask(const Node &n, Frame &f);
Value *integerByMask(const Node &n, Frame &f);
Value *dateByMask(const Node &n, Frame &f);
Value *parameter(const Node &n, Frame &f);
Value *userCall(const Node &n, Frame &f);
Value *external(const Node &n, Frame &f);
Value *interval(const Node &n, Frame &f);
Value *sequence(const Node &n, Frame &f);
Value *series(const Node &n, Frame &f);
Value *query(const Node &n, Frame &f);
Value *exists(const Node &n, Frame &f);
Value *nothing(const Node &n, Frame &f);
Value *invalid(const Node &n, Frame &f);

// --- statements

RunFn pickLet(Source value);
bool branch(const Op &op, Frame &f);
bool assign(const Op &op, Frame &f);
bool section(const Op &op, Frame &f);
bool leaveLoop(const Op &op, Frame &f);
bool eachValue(const Op &op, Frame &f);
bool eachElement(const Op &op, Frame &f);
bool counting(const Op &op, Frame &f);
bool checkField(const Op &op, Frame &f);
bool attempt(const Op &op, Frame &f);
bool giveBack(const Op &op, Frame &f);
bool report(const Op &op, Frame &f);

}  // namespace run
}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_LANG_PROGRAM_NODES_H_
