#include "quorel/lang/program.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "quorel/functions/functions.h"
#include "quorel/lang/builtins.h"
#include "quorel/lang/clauses.h"
#include "quorel/lang/declared_topic.h"
#include "quorel/masks/util.h"
#include "quorel/material/field_set.h"
#include "quorel/material/material.h"
#include "quorel/material/record_filter.h"
#include "quorel/model/data_record.h"
#include "quorel/model/field.h"
#include "quorel/model/field_array.h"
#include "quorel/model/topic_array.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/rules/module_support.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/plausi_problem.h"
#include "quorel/rules/plausi_section.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/bool_value.h"
#include "quorel/values/date_value.h"
#include "quorel/values/inconvertible_value.h"
#include "quorel/values/interval_range.h"
#include "quorel/values/invalid_value.h"
#include "quorel/values/nil_value.h"
#include "quorel/values/number_value.h"
#include "quorel/values/range_series.h"
#include "quorel/values/sequence_range.h"
#include "quorel/values/string_value.h"
#include "quorel/values/value_iterator.h"

namespace quorel {
namespace lang {

struct Routine;

namespace {

using F = Functions;

constexpr char kDateMask[] = "TT.MM.JJJJ";

struct Frame;
struct Node;
struct Op;
struct Place;

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

}  // namespace

// A rule, function or field check.
struct Routine {
  const Op *body = nullptr;
  const char *section = nullptr;  // rules and field checks: the section they run in
  std::int32_t locals = 0;
  std::int32_t refs = 0;
  std::int32_t params = 0;
};

namespace {

// The locals of one routine while it runs: on the stack for the usual few,
// on the heap beyond.
struct Frame {
  static constexpr std::int32_t kInline = 8;

  Frame(RuntimeContext *runtime, const Routine &routine) : rt(runtime), entry(runtime->getCurrentSection()) {
    if (routine.locals > kInline || routine.refs > kInline) {
      heap = std::make_unique<Heap>();
      heap->locals.resize(static_cast<std::size_t>(routine.locals));
      heap->homes.resize(static_cast<std::size_t>(routine.locals));
      heap->refs.resize(static_cast<std::size_t>(routine.refs));
      locals = heap->locals.data();
      homes = heap->homes.data();
      refs = heap->refs.data();
    }
  }

  struct Heap {
    std::vector<Value *> locals;
    std::vector<PlausiSection *> homes;
    std::vector<FieldDescriptor *> refs;
  };

  RuntimeContext *rt;
  PlausiSection *entry;  // the section the frame began in
  Value *result = nullptr;
  bool returned = false;
  Value *inlineLocals[kInline];
  PlausiSection *inlineHomes[kInline];  // the section each local was declared in
  FieldDescriptor *inlineRefs[kInline];
  std::unique_ptr<Heap> heap;
  Value **locals = inlineLocals;
  PlausiSection **homes = inlineHomes;
  FieldDescriptor **refs = inlineRefs;
};

inline Value *eval(const Node &n, Frame &f) { return n.eval(n, f); }
inline bool test(const Node &n, Frame &f) { return n.test(n, f); }

template <Source S>
inline Value *operand(const Operand &o, Frame &f) {
  if constexpr (S == kFromConstant) {
    return o.value;
  } else if constexpr (S == kFromLocal) {
    return f.locals[o.slot];
  } else if constexpr (S == kFromField) {
    return static_cast<Field *>(o.field)->get(f.rt);
  } else {
    return eval(*o.node, f);
  }
}

// pick(std::integral_constant<Source, s>()): the handler instantiated for
// the source of an operand.
template <typename Pick>
auto bySource(Source s, Pick pick) {
  switch (s) {
    case kFromConstant: return pick(std::integral_constant<Source, kFromConstant>());
    case kFromLocal: return pick(std::integral_constant<Source, kFromLocal>());
    case kFromField: return pick(std::integral_constant<Source, kFromField>());
    default: return pick(std::integral_constant<Source, kFromNode>());
  }
}

// The size of the dimension of array after indices: the declared one, or
// the record's for a size of 0.
std::int32_t sizeOf(RuntimeContext *runtime, FieldDescriptor *array, std::int32_t declared, std::int32_t *indices) {
  return declared != 0 ? declared : runtime->getDataRecord()->getSize(array, indices);
}

// --- routines

bool runBlock(const Op *op, Frame &f) {
  for (; op != nullptr; op = op->next) {
    if (!op->run(*op, f)) return false;
  }
  return true;
}

void runCheck(RuntimeContext *rt, const Routine &check, Field *field) {
  SectionScope section(rt, check.section, true);
  Frame f(rt, check);
  f.refs[0] = field;
  runBlock(check.body, f);
}

Value *runFunction(RuntimeContext *rt, const Routine &function, Value *const *args) {
  Frame f(rt, function);
  for (std::int32_t i = 0; i < function.params; ++i) {
    f.locals[i] = args[i];
    f.homes[i] = f.entry;
  }
  runBlock(function.body, f);
  return f.returned ? f.result : rt->createInvalidValue();
}

// --- places

FieldDescriptor *fixedPlace(const Place &p, Frame &) { return p.field; }
FieldDescriptor *refPlace(const Place &p, Frame &f) { return f.refs[p.ref]; }
FieldDescriptor *refMemberPlace(const Place &p, Frame &f) {
  return static_cast<DeclaredTopic *>(f.refs[p.ref])->slot(p.member);
}

FieldDescriptor *walkPlace(const Place &p, Frame &f) {
  FieldDescriptor *field = p.ref >= 0 ? f.refs[p.ref] : p.field;
  for (const Step *step = p.steps; step != p.steps + p.count; ++step) {
    if (step->member >= 0) field = static_cast<DeclaredTopic *>(field)->slot(step->member);
    if (step->count == 0) continue;
    std::int32_t index[9];
    for (std::int32_t k = 0; k < step->count; ++k) {
      index[k] = static_cast<std::int32_t>(eval(*step->indices[k], f)->asInteger());
    }
    index[step->count] = -1;
    if (step->group) {
      field = static_cast<TopicArray *>(field)->getElement(f.rt, index);
    } else {
      field = static_cast<FieldArray *>(field)->getElement(f.rt, index);
    }
  }
  return field;
}

inline FieldDescriptor *resolve(const Place &p, Frame &f) { return p.resolve(p, f); }

// --- expressions

// A constant, local or field where a node is needed.
template <Source S>
Value *leafValue(const Node &n, Frame &f) {
  return operand<S>(n.a, f);
}

template <Source S>
bool leafTruth(const Node &n, Frame &f) {
  return operand<S>(n.a, f)->asBool();
}

// A member of a reference: a the reference's slot, b the member's.
Value *readRefMember(const Node &n, Frame &f) {
  return static_cast<Field *>(static_cast<DeclaredTopic *>(f.refs[n.a.slot])->slot(n.b.slot))->get(f.rt);
}

Value *readPlace(const Node &n, Frame &f) {
  return static_cast<Field *>(resolve(static_cast<const ReadNode &>(n).place, f))->get(f.rt);
}

bool truthOf(const Node &n, Frame &f) { return eval(n, f)->asBool(); }
Value *valueOfTest(const Node &n, Frame &f) { return f.rt->createBoolValue(test(n, f)); }

// The truth of the value that E makes, or with kHolds false its negation:
// a NICHT folded into the node below it.
template <EvalFn E, bool kHolds>
bool truthOfValue(const Node &n, Frame &f) {
  return E(n, f)->asBool() == kHolds;
}

template <Source A>
bool negation(const Node &n, Frame &f) {
  if constexpr (A == kFromNode) {
    return !test(*n.a.node, f);
  } else {
    return !operand<A>(n.a, f)->asBool();
  }
}

Value *negative(const Node &n, Frame &f) { return F::neg(f.rt, eval(*n.a.node, f)); }

bool both(const Node &n, Frame &f) { return test(*n.a.node, f) && test(*n.b.node, f); }
bool either(const Node &n, Frame &f) { return test(*n.a.node, f) || test(*n.b.node, f); }

bool allOf(const Node &n, Frame &f) {
  const auto &list = static_cast<const ListNode &>(n);
  for (std::int32_t i = 0; i < list.count; ++i) {
    if (!test(*list.items[i], f)) return false;
  }
  return true;
}

bool anyOf(const Node &n, Frame &f) {
  const auto &list = static_cast<const ListNode &>(n);
  for (std::int32_t i = 0; i < list.count; ++i) {
    if (test(*list.items[i], f)) return true;
  }
  return false;
}

template <Source A, Source B, bool kHolds>
bool isIn(const Node &n, Frame &f) {
  Value *element = operand<A>(n.a, f);
  return operand<B>(n.b, f)->contains(element) == kHolds;
}

template <BinaryOp op, Source A, Source B>
bool compare(const Node &n, Frame &f) {
  Value *a = operand<A>(n.a, f);
  Value *b = operand<B>(n.b, f);
  if constexpr (op == kEq) return a->eq(b);
  if constexpr (op == kNe) return a->ne(b);
  if constexpr (op == kGt) return a->gt(b);
  if constexpr (op == kGe) return a->ge(b);
  if constexpr (op == kLt) return a->lt(b);
  if constexpr (op == kLe) return a->le(b);
  return false;
}

// GUELTIG, GESETZT or BRAUCHBAR, or with kHolds false its negation.
template <LanguageOp op, Source A, bool kHolds>
bool holds(const Node &n, Frame &f) {
  Value *v = operand<A>(n.a, f);
  if constexpr (op == kOpValid) return v->isValid() == kHolds;
  if constexpr (op == kOpSet) return v->isNil() != kHolds;
  if constexpr (op == kOpUsable) return v->isUsable() == kHolds;
  return false;
}

Value *call0(const Node &n, Frame &f) { return static_cast<const Call0Node &>(n).call(f.rt); }

template <Source A>
Value *call1(const Node &n, Frame &f) {
  return static_cast<const Call1Node &>(n).call(f.rt, operand<A>(n.a, f));
}

template <Source A, Source B>
Value *call2(const Node &n, Frame &f) {
  Value *a = operand<A>(n.a, f);
  return static_cast<const Call2Node &>(n).call(f.rt, a, operand<B>(n.b, f));
}

// RUNDEN without digits.
Value *call2Alone(const Node &n, Frame &f) {
  return static_cast<const Call2Node &>(n).call(f.rt, eval(*n.a.node, f), nullptr);
}

Value *call3(const Node &n, Frame &f) {
  Value *a = eval(*n.a.node, f);
  Value *b = eval(*n.b.node, f);
  return static_cast<const Call3Node &>(n).call(f.rt, a, b, eval(*n.c.node, f));
}

Value *callArray(const Node &n, Frame &f) {
  const auto &call = static_cast<const CallArrayNode &>(n);
  return call.call(f.rt, static_cast<FieldArray *>(resolve(call.array, f)));
}

template <Source A>
Value *codeOf(const Node &n, Frame &f) {
  return f.rt->getClassificationByCode(operand<A>(n.a, f)->asString());
}

Value *codeOfText(const Node &n, Frame &f) { return f.rt->getClassificationByValue(eval(*n.a.node, f)->asString()); }

// ANZAHL(array; indices...): the size of the dimension after the indices.
Value *countOf(const Node &n, Frame &f) {
  const auto &count = static_cast<const CountNode &>(n);
  FieldDescriptor *array = resolve(count.array, f);
  std::int32_t index[9];
  for (std::int32_t k = 0; k < count.count; ++k) index[k] = static_cast<std::int32_t>(eval(*count.items[k], f)->asInteger());
  index[count.count] = -1;
  std::int32_t size = sizeOf(f.rt, array, count.dims[count.count], count.count == 0 ? nullptr : index);
  return f.rt->createNumberValue(static_cast<double>(size));
}

template <Source A>
Value *fits(const Node &n, Frame &f) {
  const auto &fits = static_cast<const FitsNode &>(n);
  Value *v = operand<A>(n.a, f);
  const char *mask = n.c.node != nullptr ? eval(*n.c.node, f)->asString() : fits.mask;
  return F::isTypeConform(f.rt, v, fits.type, mask);
}

Value *realByMask(const Node &n, Frame &f) {
  Value *v = eval(*n.a.node, f);
  return f.rt->createNumberValue(Util::stringToReal(v->asString(), eval(*n.b.node, f)->asString()));
}

Value *integerByMask(const Node &n, Frame &f) {
  Value *v = eval(*n.a.node, f);
  return f.rt->createNumberValue(static_cast<double>(Util::stringToInteger(v->asString(), eval(*n.b.node, f)->asString())));
}

Value *dateByMask(const Node &n, Frame &f) {
  Value *v = eval(*n.a.node, f);
  const char *mask = eval(*n.b.node, f)->asString();
  std::tm date{};
  Util::stringToDate(&date, v->asString(), mask);
  return f.rt->createDateValue(&date, mask);
}

Value *parameter(const Node &n, Frame &f) {
  Value *param = f.rt->getInitParam(eval(*n.a.node, f)->asString());
  return param != nullptr ? param : f.rt->createNilValue();
}

Value *userCall(const Node &n, Frame &f) {
  const auto &call = static_cast<const UserCallNode &>(n);
  Value *args[16];
  std::unique_ptr<Value *[]> many;
  Value **into = args;
  if (call.count > 16) {
    many.reset(new Value *[static_cast<std::size_t>(call.count)]);
    into = many.get();
  }
  for (std::int32_t i = 0; i < call.count; ++i) into[i] = eval(*call.items[i], f);
  return runFunction(f.rt, *call.function, into);
}

Value *external(const Node &n, Frame &f) {
  const auto &call = static_cast<const ExternalNode &>(n);
  RuntimeContext *rt = f.rt;
  ExternalFunction function = rt->getExternalFunction(call.name->c_str());
  if (function == nullptr) {
    std::string message = "Die externe Funktion " + *call.name + " ist nicht vorhanden.";
    throw PlausiException(EXCEPTION_GENERAL, message.c_str());
  }
  Value *a[8] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
  for (std::int32_t i = 0; i < call.count && i < 8; ++i) a[i] = eval(*call.items[i], f);
  // The count first, then the values; the function reads as many as it is told.
  Value *result = function(rt, static_cast<int>(call.count), a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]);
  return result != nullptr ? result : rt->createInvalidValue();
}

// The bounds in a and b, the IntervalType in c.
Value *interval(const Node &n, Frame &f) {
  Value *first = eval(*n.a.node, f);
  return f.rt->createIntervalRange(first, eval(*n.b.node, f), static_cast<IntervalType>(n.c.slot));
}

Value *sequence(const Node &n, Frame &f) {
  Value *first = eval(*n.a.node, f);
  Value *second = eval(*n.b.node, f);
  return f.rt->createSequenceRange(first, second, eval(*n.c.node, f));
}

Value *series(const Node &n, Frame &f) {
  const auto &list = static_cast<const ListNode &>(n);
  auto series = std::make_unique<RangeSeries>();
  for (std::int32_t i = 0; i < list.count; ++i) series->addRange(eval(*list.items[i], f));
  f.rt->getCurrentSection()->addLocalObject(series.get());
  return series.release();
}

Value *query(const Node &n, Frame &f) {
  const auto &q = static_cast<const QueryNode &>(n);
  auto filter = std::make_unique<RecordFilter>();
  for (std::int32_t i = 0; i < q.conditionCount; ++i) {
    const ConditionNode &condition = q.conditions[i];
    Value *compared = eval(*condition.value, f);
    filter->addCondition(new FilterCondition(condition.field, condition.op, compared));
  }
  auto fields = std::make_unique<FieldSet>();
  for (std::int32_t i = 0; i < q.fieldCount; ++i) fields->addField(q.fields[i]);
  auto result = std::make_unique<Material>(f.rt, q.material, filter.release(), fields.release());
  f.rt->getCurrentSection()->addLocalObject(result.get());
  return result.release();
}

Value *exists(const Node &n, Frame &f) {
  std::unique_ptr<ValueIterator> walk(query(n, f)->asRange());
  return f.rt->createBoolValue(walk->hasNext());
}

Value *nothing(const Node &, Frame &f) { return f.rt->createNilValue(); }
Value *invalid(const Node &, Frame &f) { return f.rt->createInvalidValue(); }

// --- statements

bool branch(const Op &op, Frame &f) {
  const auto &branch = static_cast<const IfOp &>(op);
  for (std::int32_t i = 0; i < branch.count; ++i) {
    if (test(*branch.conditions[i], f)) return runBlock(branch.blocks[i], f);
  }
  return runBlock(branch.otherwise, f);
}

template <Source S>
bool let(const Op &op, Frame &f) {
  const auto &let = static_cast<const LetOp &>(op);
  f.locals[let.slot] = operand<S>(let.value, f);
  f.homes[let.slot] = f.rt->getCurrentSection();
  return true;
}

bool assign(const Op &op, Frame &f) {
  const auto &set = static_cast<const LetOp &>(op);
  Value *value = eval(*set.value.node, f);
  PlausiSection *home = f.homes[set.slot];
  if (home != f.rt->getCurrentSection()) {
    // The value would die with the inner section: the variable keeps a
    // copy in the section it was declared in.
    std::unique_ptr<Value> copy(value->copy());
    home->addLocalObject(copy.get());
    value = copy.release();
  }
  f.locals[set.slot] = value;
  return true;
}

bool section(const Op &op, Frame &f) {
  const auto &part = static_cast<const SectionOp &>(op);
  SectionScope scope(f.rt, part.name);
  return runBlock(part.body, f);
}

bool leaveLoop(const Op &, Frame &) { return false; }

// One round of a loop whose variable is set; false when the loop ends.
template <typename SetVariable>
inline bool round(const LoopOp &loop, Frame &f, bool *left, SetVariable set) {
  std::optional<SectionScope> scope;
  if (loop.section != nullptr) scope.emplace(f.rt, loop.section);
  set();
  if (runBlock(loop.body, f)) return true;
  *left = !f.returned;
  return false;
}

bool eachValue(const Op &op, Frame &f) {
  const auto &loop = static_cast<const EachValueOp &>(op);
  std::unique_ptr<ValueIterator> walk(eval(*loop.range, f)->asRange());
  bool left = true;
  while (walk->hasNext()) {
    if (!round(loop, f, &left, [&] {
          f.locals[loop.slot] = walk->next();
          f.homes[loop.slot] = f.rt->getCurrentSection();
        })) {
      return left;
    }
  }
  return true;
}

bool eachElement(const Op &op, Frame &f) {
  const auto &loop = static_cast<const EachElementOp &>(op);
  FieldDescriptor *array = resolve(loop.array, f);
  std::int32_t count = sizeOf(f.rt, array, loop.declared, nullptr);
  std::int32_t index[] = {0, -1};
  bool left = true;
  for (std::int32_t i = 0; i < count; ++i) {
    if (!round(loop, f, &left, [&] {
          index[0] = i;
          f.refs[loop.slot] = loop.topics ? static_cast<FieldDescriptor *>(static_cast<TopicArray *>(array)->getElement(f.rt, index))
                                          : static_cast<FieldArray *>(array)->getElement(f.rt, index);
        })) {
      return left;
    }
  }
  return true;
}

bool counting(const Op &op, Frame &f) {
  const auto &loop = static_cast<const CountingOp &>(op);
  std::int64_t first = eval(*loop.first, f)->asInteger();
  std::int64_t last = eval(*loop.last, f)->asInteger();
  bool left = true;
  for (std::int64_t i = first; i <= last; ++i) {
    if (!round(loop, f, &left, [&] {
          f.locals[loop.slot] = f.rt->createNumberValue(static_cast<double>(i));
          f.homes[loop.slot] = f.rt->getCurrentSection();
        })) {
      return left;
    }
  }
  return true;
}

bool checkField(const Op &op, Frame &f) {
  const auto &check = static_cast<const CheckOp &>(op);
  runCheck(f.rt, *check.check, static_cast<Field *>(resolve(check.field, f)));
  return true;
}

bool attempt(const Op &op, Frame &f) {
  const auto &attempt = static_cast<const TryOp &>(op);
  std::string message;
  try {
    return runBlock(attempt.body, f);
  } catch (const PlausiException &e) {
    message = e.getMessage();
  }
  f.locals[attempt.slot] = f.rt->createStringValue(std::move(message));
  f.homes[attempt.slot] = f.rt->getCurrentSection();
  return runBlock(attempt.handler, f);
}

bool giveBack(const Op &op, Frame &f) {
  Value *result = eval(*static_cast<const ReturnOp &>(op).value, f);
  if (f.rt->getCurrentSection() != f.entry) {
    std::unique_ptr<Value> copy(result->copy());
    f.entry->addLocalObject(copy.get());
    result = copy.release();
  }
  f.result = result;
  f.returned = true;
  return false;
}

bool report(const Op &op, Frame &f) {
  const auto &report = static_cast<const ReportOp &>(op);
  RuntimeContext *rt = f.rt;
  if (report.weight < rt->getProblemWeightLevel()) return true;
  // Everything is evaluated and converted before the problem is made, so
  // that a fault on the way leaves no half-filled problem behind.
  struct Part {
    const char *text;
    std::int32_t numbers[8];
    std::int32_t count;
  };
  const char *id = report.id != nullptr ? report.id : eval(*report.idNode, f)->asString();
  FieldDescriptor *field = report.hasField ? resolve(report.field, f) : nullptr;
  Part parts[kClauseIndices + 1];  // each clause at most once; filled as far as evaluated
  for (std::int32_t c = 0; c < report.count; ++c) {
    const ClauseOp &clause = report.clauses[c];
    if (clause.text != nullptr) continue;
    Part &part = parts[c];
    part.text = nullptr;
    part.count = 0;
    for (std::int32_t i = 0; i < clause.count; ++i) {
      Value *v = eval(*clause.values[i], f);
      if (clause.setText != nullptr) {
        part.text = v->asString();
      } else if (part.count < 8) {
        part.numbers[part.count++] = static_cast<std::int32_t>(v->asInteger());
      }
    }
  }
  PlausiProblem *problem = rt->createProblem(report.type, report.weight);
  problem->setId(id);
  if (field != nullptr) {
    problem->setReferenceField(field);
    TypeDescriptor *type = field->getTypeDescriptor();
    problem->setFieldDisplayName(type->getFieldNameDisplay());
    problem->setFieldType(type->getFieldType());
    problem->setFieldMask(type->getMask());
  }
  for (std::int32_t c = 0; c < report.count; ++c) {
    const ClauseOp &clause = report.clauses[c];
    const Part &part = parts[c];
    if (clause.setText != nullptr) {
      (problem->*clause.setText)(clause.text != nullptr ? clause.text : part.text);
    } else if (clause.kind == kClauseLength) {
      problem->setFieldLength(part.numbers[0]);
    } else if (clause.kind == kClauseInfoType) {
      problem->setInfoType(static_cast<ProblemInfoType>(part.numbers[0]));
    } else {
      const std::int32_t *i = part.numbers;
      problem->setReferenceFieldIndices(part.count, i[0], i[1], i[2], i[3], i[4], i[5], i[6], i[7]);
    }
  }
  rt->setSectionInfosToProblem(problem);
  return true;
}

}  // namespace

// --- building

// Builds the routines of one Program from the checked tree. Each node is
// made before its operands, in the order a run visits them, so that a run
// walks the arena forward.
class Program::Builder {
 public:
  Builder(Program *program, const Module &module, DeclaredTopic *root, const std::vector<DeclaredTopic *> &materials)
      : program_(program), arena_(&program->arena_), module_(module), root_(root), materials_(materials) {}

  void build() {
    // Paths without indices from the root lead to one field for good.
    for (const Path *path : module_.staticPaths) {
      FieldDescriptor *field = root_;
      for (const PathStep &step : path->steps) field = static_cast<DeclaredTopic *>(field)->slot(step.decl->slot);
      staticFields_.push_back(field);
    }
    for (const Expr *expr : module_.constants) program_->constants_.emplace_back(makeConstant(*expr));
    // Every routine exists before any body is built: calls and PRUEFE may
    // reach those declared later.
    for (const auto &function : module_.functions) {
      Routine *routine = routineOf(nullptr, function->locals, function->refs);
      routine->params = static_cast<std::int32_t>(function->params.size());
      functions_.push_back(routine);
      program_->functions_.emplace_back(function.get(), routine);
    }
    std::vector<Routine *> checks;
    for (const FieldCheckDecl &check : module_.fieldChecks) {
      Routine *routine = routineOf(check.section.c_str(), check.locals, check.refs);
      checks.push_back(routine);
      program_->fieldChecks_.emplace_back(check.field->decl, routine);
    }
    std::vector<Routine *> rules;
    for (const RuleDecl &rule : module_.rules) {
      Routine *routine = routineOf(rule.section.c_str(), rule.locals, rule.refs);
      routine->body = block(rule.body);
      rules.push_back(routine);
    }
    for (std::size_t i = 0; i < module_.functions.size(); ++i) functions_[i]->body = block(module_.functions[i]->body);
    for (std::size_t i = 0; i < module_.fieldChecks.size(); ++i) checks[i]->body = block(module_.fieldChecks[i].body);
    for (const FlowDecl &flow : module_.flows) {
      std::vector<const Routine *> order;
      for (std::int32_t index : flow.ruleIndices) order.push_back(rules[static_cast<std::size_t>(index)]);
      program_->flows_.emplace_back(flow.name.c_str(), std::move(order));
    }
  }

 private:
  // A routine without a body yet, running in section (null: the caller's).
  Routine *routineOf(const char *section, std::int32_t locals, std::int32_t refs) {
    Routine *routine = arena_->make<Routine>();
    routine->section = section;
    routine->locals = locals;
    routine->refs = refs;
    return routine;
  }

  template <typename T>
  T *op(RunFn run) {
    T *made = arena_->make<T>();
    made->run = run;
    return made;
  }

  // An operand as the builder sees it: where it comes from, and what its
  // node holds of it.
  struct Arg {
    Source source;
    Operand operand;
  };

  template <typename T>
  T *node(EvalFn eval, TestFn test = truthOf) {
    T *made = arena_->make<T>();
    made->eval = eval;
    made->test = test;
    return made;
  }

  Value *constantOf(const Expr &expr) const {
    return program_->constants_[static_cast<std::size_t>(expr.constant)].get();
  }

  // The constant of a literal or constant range, made once.
  Value *makeConstant(const Expr &expr) const {
    switch (expr.kind) {
      case kNumber: return new NumberValue(expr.number);
      case kText: return new StringValue(expr.text.c_str());
      case kDate: return new DateValue(expr.text.c_str(), kDateMask);
      case kTruth: return new BoolValue(expr.truth);
      case kNil: return new NilValue();
      case kInvalid: return new InvalidValue();
      case kInconvertible: return new InconvertibleValue(expr.text.c_str());
      case kInterval:
        return new IntervalRange(constantOf(*expr.args[0]), constantOf(*expr.args[1]),
                                 static_cast<IntervalType>(expr.intervalType));
      case kSequence: return new SequenceRange(constantOf(*expr.args[0]), constantOf(*expr.args[1]), constantOf(*expr.args[2]));
      case kSeries: {
        auto *series = new RangeSeries();
        for (const ExprPtr &arg : expr.args) series->addRange(constantOf(*arg));
        return series;
      }
      default: return new NilValue();  // not reached: the checker makes constants of these kinds only
    }
  }

  // The text of a text literal, which its constant keeps for good; null
  // for anything else.
  const char *fixedText(const Expr &expr) const {
    return expr.constant >= 0 && expr.kind == kText ? constantOf(expr)->asString() : nullptr;
  }

  // --- statements

  const Op *block(const Block &body) {
    const Op *first = nullptr;
    Op *last = nullptr;
    for (const StmtPtr &stmt : body) {
      Op *made = statement(*stmt);
      if (last == nullptr) {
        first = made;
      } else {
        last->next = made;
      }
      last = made;
    }
    return first;
  }

  Op *statement(const Stmt &stmt) {
    switch (stmt.kind) {
      case kIf: {
        auto *branchOp = op<IfOp>(branch);
        branchOp->count = static_cast<std::int32_t>(stmt.exprs.size());
        branchOp->conditions = nodes(stmt.exprs);
        branchOp->blocks = arena_->array<const Op *>(stmt.exprs.size());
        for (std::size_t i = 0; i < stmt.exprs.size(); ++i) branchOp->blocks[i] = block(stmt.blocks[i]);
        if (stmt.blocks.size() > stmt.exprs.size()) branchOp->otherwise = block(stmt.blocks.back());
        return branchOp;
      }
      case kLet: {
        Arg value = arg(*stmt.exprs[0]);
        auto *letOp = op<LetOp>(bySource(value.source, [](auto s) -> RunFn { return let<decltype(s)::value>; }));
        letOp->value = value.operand;
        letOp->slot = stmt.slot;
        return letOp;
      }
      case kAssign: {
        auto *setOp = op<LetOp>(assign);
        setOp->value.node = expr(*stmt.exprs[0]);
        setOp->slot = stmt.slot;
        return setOp;
      }
      case kSection: {
        auto *sectionOp = op<SectionOp>(section);
        sectionOp->name = stmt.section.c_str();
        sectionOp->body = block(stmt.blocks[0]);
        return sectionOp;
      }
      case kForEach: return forEach(stmt);
      case kForRange: {
        auto *loop = op<CountingOp>(counting);
        loop->first = expr(*stmt.exprs[0]);
        loop->last = expr(*stmt.exprs[1]);
        return loopOf(loop, stmt);
      }
      case kBreak: return op<Op>(leaveLoop);
      case kReport: return report(*stmt.report);
      case kCheck: {
        auto *checkOp = op<CheckOp>(checkField);
        checkOp->field = place(*stmt.path);
        checkOp->check = fieldCheck(stmt.path->decl);
        return checkOp;
      }
      case kTry: {
        auto *tryOp = op<TryOp>(attempt);
        tryOp->body = block(stmt.blocks[0]);
        tryOp->handler = block(stmt.blocks[1]);
        tryOp->slot = stmt.slot;
        return tryOp;
      }
      case kReturn: {
        auto *returnOp = op<ReturnOp>(giveBack);
        returnOp->value = expr(*stmt.exprs[0]);
        return returnOp;
      }
    }
    return op<Op>(leaveLoop);  // not reached: every kind is handled above
  }

  Op *forEach(const Stmt &stmt) {
    const Expr &over = *stmt.exprs[0];
    if (stmt.loop == kLoopValues) {
      auto *loop = op<EachValueOp>(eachValue);
      loop->range = expr(over);
      return loopOf(loop, stmt);
    }
    auto *loop = op<EachElementOp>(eachElement);
    loop->array = place(*over.path);
    loop->declared = over.path->decl->dims[0];
    loop->topics = stmt.loop == kLoopTopics;
    return loopOf(loop, stmt);
  }

  Op *loopOf(LoopOp *loop, const Stmt &stmt) {
    loop->slot = stmt.slot;
    if (stmt.hasSection) loop->section = stmt.section.c_str();
    loop->body = block(stmt.blocks[0]);
    return loop;
  }

  const Routine *fieldCheck(const FieldDecl *decl) const {
    for (const auto &check : program_->fieldChecks_) {
      if (check.first == decl) return check.second;
    }
    return nullptr;  // not reached: the checker asks for a field check
  }

  Op *report(const Report &report) {
    auto *reportOp = op<ReportOp>(lang::report);
    reportOp->type = static_cast<ProblemType>(report.type);
    reportOp->weight = report.weight;
    reportOp->id = fixedText(*report.id);
    if (reportOp->id == nullptr) reportOp->idNode = expr(*report.id);
    if (report.field != nullptr) {
      reportOp->hasField = true;
      reportOp->field = place(*report.field);
    }
    auto *clauses = arena_->array<ClauseOp>(report.clauses.size());
    for (std::size_t c = 0; c < report.clauses.size(); ++c) {
      const Clause &clause = report.clauses[c];
      ClauseOp &built = clauses[c];
      built.kind = clause.kind;
      built.setText = clauseInfo(clause.kind).setText;
      if (built.setText != nullptr && clause.values.size() == 1) built.text = fixedText(*clause.values[0]);
      if (built.text == nullptr) {
        built.values = nodes(clause.values);
        built.count = static_cast<std::int32_t>(clause.values.size());
      }
    }
    reportOp->clauses = clauses;
    reportOp->count = static_cast<std::int32_t>(report.clauses.size());
    return reportOp;
  }

  // --- expressions

  Place place(const Path &path) {
    Place built;
    if (path.staticId >= 0) {
      built.resolve = fixedPlace;
      built.field = staticFields_[static_cast<std::size_t>(path.staticId)];
      return built;
    }
    if (path.base == kBaseRef) built.ref = path.refSlot;
    if (path.base == kBaseRef && path.steps.empty()) {
      built.resolve = refPlace;
      return built;
    }
    if (refMember(path)) {
      built.resolve = refMemberPlace;
      built.member = path.steps[0].decl->slot;
      return built;
    }
    built.resolve = walkPlace;
    built.field = root_;
    auto *steps = arena_->array<Step>(path.steps.size());
    for (std::size_t i = 0; i < path.steps.size(); ++i) {
      const PathStep &step = path.steps[i];
      if (!step.name.empty()) steps[i].member = step.decl->slot;
      steps[i].group = step.decl->isGroup();
      steps[i].indices = nodes(step.indices);
      steps[i].count = static_cast<std::int32_t>(step.indices.size());
    }
    built.steps = steps;
    built.count = static_cast<std::int32_t>(path.steps.size());
    return built;
  }

  // A member of a reference without indices: kind.Vorname.
  static bool refMember(const Path &path) {
    return path.base == kBaseRef && path.steps.size() == 1 && path.steps[0].indices.empty() &&
           !path.steps[0].name.empty();
  }

  // e as an operand: constants, locals and fields are read in place.
  Arg arg(const Expr &e) {
    Arg built{kFromNode, {}};
    if (e.constant >= 0) {
      built.source = kFromConstant;
      built.operand.value = constantOf(e);
    } else if (e.kind == kLocal) {
      built.source = kFromLocal;
      built.operand.slot = e.slot;
    } else if (e.kind == kPath && e.staticField >= 0) {
      built.source = kFromField;
      built.operand.field = staticFields_[static_cast<std::size_t>(e.staticField)];
    } else {
      built.operand.node = inner(e);
    }
    return built;
  }

  // e as a node of its own. The node of a constant, local or field is made
  // once and shared.
  const Node *expr(const Expr &e) {
    Arg built = arg(e);
    if (built.source == kFromNode) return built.operand.node;
    std::uintptr_t key = built.source == kFromLocal ? static_cast<std::uintptr_t>(built.operand.slot)
                         : built.source == kFromField ? reinterpret_cast<std::uintptr_t>(built.operand.field)
                                                       : reinterpret_cast<std::uintptr_t>(built.operand.value);
    const Node *&leaf = leaves_[{built.source, key}];
    if (leaf == nullptr) {
      Node *made = bySource(built.source, [this](auto s) {
        constexpr Source source = decltype(s)::value;
        return node<Node>(leafValue<source>, leafTruth<source>);
      });
      made->a = built.operand;
      leaf = made;
    }
    return leaf;
  }

  const Node **nodes(const std::vector<ExprPtr> &exprs) {
    const Node **list = arena_->array<const Node *>(exprs.size());
    for (std::size_t i = 0; i < exprs.size(); ++i) list[i] = expr(*exprs[i]);
    return list;
  }

  // Every other expression.
  const Node *inner(const Expr &e) {
    switch (e.kind) {
      case kPath: {
        if (refMember(*e.path)) {
          Node *made = node<Node>(readRefMember);
          made->a.slot = e.path->refSlot;
          made->b.slot = e.path->steps[0].decl->slot;
          return made;
        }
        auto *made = node<ReadNode>(readPlace);
        made->place = place(*e.path);
        return made;
      }
      case kNot: return polar(*e.args[0], false);
      case kNeg: return operands(node<Node>(negative), e);
      case kAnd:
      case kOr: return chain(e);
      case kIn: return in(e, true);
      case kBinary: return binary(e);
      case kCall: return call(e, true);
      case kUserCall: {
        auto *made = list<UserCallNode>(userCall, e.args);
        made->function = functions_[static_cast<std::size_t>(e.function->index)];
        return made;
      }
      case kExternal: {
        auto *made = list<ExternalNode>(external, e.args);
        made->name = &e.text;
        return made;
      }
      case kInterval: {
        Node *made = operands(node<Node>(interval), e);
        made->c.slot = e.intervalType;
        return made;
      }
      case kSequence: return operands(node<Node>(sequence), e);
      case kSeries: return list<ListNode>(series, e.args);
      case kQuery:
      case kExists: return queryOf(e);
      default: return node<Node>(nothing);  // not reached: literals are constants
    }
  }

  // The operands of e as nodes in a, b, c.
  template <typename T>
  T *operands(T *made, const Expr &e) {
    Operand *slots[] = {&made->a, &made->b, &made->c};
    for (std::size_t i = 0; i < e.args.size() && i < 3; ++i) slots[i]->node = expr(*e.args[i]);
    return made;
  }

  template <typename T>
  T *list(EvalFn eval, const std::vector<ExprPtr> &exprs) {
    T *made = node<T>(eval);
    made->items = nodes(exprs);
    made->count = static_cast<std::int32_t>(exprs.size());
    return made;
  }

  // e as a condition that holds when the truth of e is holds. NICHT folds
  // into the tests that can say either; anything else gets a node of its
  // own.
  const Node *polar(const Expr &e, bool holds) {
    if (e.constant < 0 && e.kind == kIn) return in(e, holds);
    if (e.constant < 0 && e.kind == kCall) return call(e, holds);
    if (holds) return expr(e);
    Arg inner = arg(e);
    Node *made = node<Node>(valueOfTest);
    made->a = inner.operand;
    made->test = bySource(inner.source, [](auto s) -> TestFn { return negation<decltype(s)::value>; });
    return made;
  }

  const Node *negationOf(const Node *inner) {
    Node *made = node<Node>(valueOfTest, negation<kFromNode>);
    made->a.node = inner;
    return made;
  }

  // Sets the value and truth of made from E, the handler of its value; with
  // holds false made stands for NICHT that value.
  template <EvalFn E>
  static void valueAndTruth(Node *made, bool holds) {
    if (holds) {
      made->eval = E;
      made->test = truthOfValue<E, true>;
    } else {
      made->eval = valueOfTest;
      made->test = truthOfValue<E, false>;
    }
  }

  const Node *in(const Expr &e, bool holds) {
    Node *made = node<Node>(valueOfTest);
    std::pair<Source, Source> sources = twoArgs(made, e);
    made->test = bySource(sources.first, [&](auto x) {
      return bySource(sources.second, [&](auto y) -> TestFn {
        constexpr Source first = decltype(x)::value;
        constexpr Source second = decltype(y)::value;
        if (holds) return isIn<first, second, true>;
        return isIn<first, second, false>;
      });
    });
    return made;
  }

  // A UND or ODER and the ones of the same kind below its left operand,
  // which is how a chain a UND b UND c is read: one node that tests each.
  const Node *chain(const Expr &e) {
    std::vector<const Expr *> parts;
    const Expr *at = &e;
    for (; at->kind == e.kind && at->constant < 0; at = at->args[0].get()) parts.push_back(at->args[1].get());
    parts.push_back(at);
    std::reverse(parts.begin(), parts.end());
    bool all = e.kind == kAnd;
    if (parts.size() == 2) {
      Node *made = node<Node>(valueOfTest, all ? both : either);
      made->a.node = expr(*parts[0]);
      made->b.node = expr(*parts[1]);
      return made;
    }
    auto *made = node<ListNode>(valueOfTest, all ? allOf : anyOf);
    made->items = arena_->array<const Node *>(parts.size());
    made->count = static_cast<std::int32_t>(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i) made->items[i] = expr(*parts[i]);
    return made;
  }

  const Node *binary(const Expr &e) {
    static Value *(*const kApply[])(RuntimeContext *, Value *, Value *) = {
        F::eq, F::ne, F::gt, F::ge, F::lt, F::le, F::plus, F::minus, F::mult, F::div, F::KONKATENIEREN};
    auto *made = node<Call2Node>(nullptr);
    made->call = kApply[e.op];
    std::pair<Source, Source> sources = twoArgs(made, e);
    Source a = sources.first;
    Source b = sources.second;
    made->eval = bySource(a, [b](auto x) {
      return bySource(b, [](auto y) -> EvalFn { return call2<decltype(x)::value, decltype(y)::value>; });
    });
    switch (e.op) {
      case kEq: made->test = comparison<kEq>(a, b); break;
      case kNe: made->test = comparison<kNe>(a, b); break;
      case kGt: made->test = comparison<kGt>(a, b); break;
      case kGe: made->test = comparison<kGe>(a, b); break;
      case kLt: made->test = comparison<kLt>(a, b); break;
      case kLe: made->test = comparison<kLe>(a, b); break;
      default: break;
    }
    return made;
  }

  template <BinaryOp op>
  static TestFn comparison(Source a, Source b) {
    return bySource(a, [b](auto x) {
      return bySource(b, [](auto y) -> TestFn { return compare<op, decltype(x)::value, decltype(y)::value>; });
    });
  }

  // A call of a built-in; with holds false, NICHT that call.
  const Node *call(const Expr &e, bool holds) {
    const Builtin &b = *e.builtin;
    if (b.op != kOpNone) return languageOp(e, holds);
    if (b.callArray != nullptr) {
      auto *made = node<CallArrayNode>(callArray);
      made->call = b.callArray;
      made->array = place(*e.args[0]->path);
      return holds ? made : negationOf(made);
    }
    if (e.args.size() == 1 && b.call1 != nullptr) {
      auto *made = node<Call1Node>(nullptr);
      made->call = b.call1;
      Arg a = arg(*e.args[0]);
      made->a = a.operand;
      bySource(a.source, [&](auto x) { valueAndTruth<call1<decltype(x)::value>>(made, holds); });
      return made;
    }
    if (e.args.size() == 2) {
      auto *made = node<Call2Node>(nullptr);
      made->call = b.call2;
      std::pair<Source, Source> sources = twoArgs(made, e);
      bySource(sources.first, [&](auto x) {
        bySource(sources.second, [&](auto y) { valueAndTruth<call2<decltype(x)::value, decltype(y)::value>>(made, holds); });
      });
      return made;
    }
    Node *made;
    if (e.args.empty()) {
      auto *none = node<Call0Node>(call0);
      none->call = b.call0;
      made = none;
    } else if (e.args.size() == 1) {
      auto *alone = operands(node<Call2Node>(call2Alone), e);
      alone->call = b.call2;
      made = alone;
    } else {
      auto *three = operands(node<Call3Node>(call3), e);
      three->call = b.call3;
      made = three;
    }
    return holds ? made : negationOf(made);
  }

  // The two operands of e into made; their sources.
  std::pair<Source, Source> twoArgs(Node *made, const Expr &e) {
    Arg a = arg(*e.args[0]);
    Arg b = arg(*e.args[1]);
    made->a = a.operand;
    made->b = b.operand;
    return {a.source, b.source};
  }

  // An operation of the language; with holds false, NICHT that operation.
  const Node *languageOp(const Expr &e, bool holds) {
    LanguageOp op = e.builtin->op;
    if (op == kOpValid || op == kOpSet || op == kOpUsable) {
      Node *made = node<Node>(valueOfTest);
      Arg a = arg(*e.args[0]);
      made->a = a.operand;
      made->test = bySource(a.source, [op, holds](auto x) -> TestFn {
        constexpr Source s = decltype(x)::value;
        if (op == kOpValid) return holds ? lang::holds<kOpValid, s, true> : lang::holds<kOpValid, s, false>;
        if (op == kOpSet) return holds ? lang::holds<kOpSet, s, true> : lang::holds<kOpSet, s, false>;
        return holds ? lang::holds<kOpUsable, s, true> : lang::holds<kOpUsable, s, false>;
      });
      return made;
    }
    if (op == kOpFits) {
      auto *made = node<FitsNode>(nullptr);
      Arg a = arg(*e.args[0]);
      made->a = a.operand;
      made->type = e.fieldType;
      if (e.args.size() > 2) {
        made->mask = fixedText(*e.args[2]);
        if (made->mask == nullptr) made->c.node = expr(*e.args[2]);
      }
      bySource(a.source, [&](auto x) { valueAndTruth<fits<decltype(x)::value>>(made, holds); });
      return made;
    }
    const Node *made = valueOp(e);
    return holds ? made : negationOf(made);
  }

  // The operations of the language that make a value.
  const Node *valueOp(const Expr &e) {
    switch (e.builtin->op) {
      case kOpCode: {
        Node *made = node<Node>(nullptr);
        Arg a = arg(*e.args[0]);
        made->a = a.operand;
        made->eval = bySource(a.source, [](auto x) -> EvalFn { return codeOf<decltype(x)::value>; });
        return made;
      }
      case kOpCodeOfText: return operands(node<Node>(codeOfText), e);
      case kOpCount: {
        auto *made = node<CountNode>(countOf);
        const Path &path = *e.args[0]->path;
        made->array = place(path);
        made->dims = path.decl->dims.data();
        std::size_t count = std::min<std::size_t>(e.args.size() - 1, 8);  // the checker bounds it
        made->items = arena_->array<const Node *>(count);
        for (std::size_t k = 0; k < count; ++k) made->items[k] = expr(*e.args[k + 1]);
        made->count = static_cast<std::int32_t>(count);
        return made;
      }
      case kOpRealByMask: return operands(node<Node>(realByMask), e);
      case kOpIntegerByMask: return operands(node<Node>(integerByMask), e);
      case kOpDateByMask: return operands(node<Node>(dateByMask), e);
      case kOpParameter: return operands(node<Node>(parameter), e);
      default: return node<Node>(invalid);
    }
  }

  const Node *queryOf(const Expr &e) {
    const Query &q = *e.query;
    DeclaredTopic *material = materials_[static_cast<std::size_t>(q.materialIndex)];
    auto *made = node<QueryNode>(e.kind == kExists ? exists : query);
    made->material = material;
    auto *conditions = arena_->array<ConditionNode>(q.conditions.size());
    for (std::size_t i = 0; i < q.conditions.size(); ++i) {
      const Condition &condition = q.conditions[i];
      conditions[i].field = static_cast<Field *>(material->slot(condition.decl->slot));
      conditions[i].op = static_cast<OperatorType>(condition.op);
      conditions[i].value = expr(*condition.value);
    }
    made->conditions = conditions;
    made->conditionCount = static_cast<std::int32_t>(q.conditions.size());
    std::vector<Field *> fields;
    for (const FieldDecl *decl : q.fieldDecls) fields.push_back(static_cast<Field *>(material->slot(decl->slot)));
    if (q.fieldDecls.empty()) {
      // EXISTIERT reads the fields it compares, or the first one.
      for (const Condition &condition : q.conditions) fields.push_back(static_cast<Field *>(material->slot(condition.decl->slot)));
      if (q.conditions.empty() && !material->decl()->children.empty()) fields.push_back(static_cast<Field *>(material->slot(0)));
    }
    made->fields = arena_->array<Field *>(fields.size());
    std::copy(fields.begin(), fields.end(), made->fields);
    made->fieldCount = static_cast<std::int32_t>(fields.size());
    return made;
  }
  Program *program_;
  Arena *arena_;
  const Module &module_;
  DeclaredTopic *root_;
  const std::vector<DeclaredTopic *> &materials_;
  std::vector<FieldDescriptor *> staticFields_;
  std::vector<Routine *> functions_;  // by FunctionDecl::index
  std::map<std::pair<Source, std::uintptr_t>, const Node *> leaves_;  // the shared nodes of constants, locals, fields
};

// --- Program

Program::Program(const Module &module, DeclaredTopic *root, const std::vector<DeclaredTopic *> &materials) {
  Builder(this, module, root, materials).build();
}

Program::~Program() = default;

void Program::runFlow(RuntimeContext *runtime, const char *flow) const {
  for (const auto &declared : flows_) {
    if (std::strcmp(declared.first, flow) != 0) continue;
    for (const Routine *rule : declared.second) {
      SectionScope section(runtime, rule->section);
      Frame f(runtime, *rule);
      runBlock(rule->body, f);
    }
    return;
  }
}

Value *Program::runFunction(RuntimeContext *runtime, const char *name) const {
  for (const auto &function : functions_) {
    if (function.first->params.empty() && function.first->name == name) {
      return lang::runFunction(runtime, *function.second, nullptr);
    }
  }
  return nullptr;
}

void Program::runFieldCheck(RuntimeContext *runtime, const FieldDecl *decl, Field *field) const {
  for (const auto &check : fieldChecks_) {
    if (check.first == decl) {
      runCheck(runtime, *check.second, field);
      return;
    }
  }
}

}  // namespace lang
}  // namespace quorel
