#include "quorel/lang/program_nodes.h"

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "quorel/functions/functions.h"
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
#include "quorel/values/range_series.h"
#include "quorel/values/value.h"
#include "quorel/values/value_iterator.h"

namespace quorel {
namespace lang {

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

namespace run {

namespace {

using F = Functions;

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

bool runBlock(const Op *op, Frame &f) {
  for (; op != nullptr; op = op->next) {
    if (!op->run(*op, f)) return false;
  }
  return true;
}

inline FieldDescriptor *resolve(const Place &p, Frame &f) { return p.resolve(p, f); }

// A constant, local or field where a node is needed.
template <Source S>
Value *leafValue(const Node &n, Frame &f) {
  return operand<S>(n.a, f);
}

template <Source S>
bool leafTruth(const Node &n, Frame &f) {
  return operand<S>(n.a, f)->asBool();
}

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

template <Source A>
Value *call1(const Node &n, Frame &f) {
  return static_cast<const Call1Node &>(n).call(f.rt, operand<A>(n.a, f));
}

template <Source A, Source B>
Value *call2(const Node &n, Frame &f) {
  Value *a = operand<A>(n.a, f);
  return static_cast<const Call2Node &>(n).call(f.rt, a, operand<B>(n.b, f));
}

template <Source A>
Value *codeOf(const Node &n, Frame &f) {
  return f.rt->getClassificationByCode(operand<A>(n.a, f)->asString());
}

template <Source A>
Value *fits(const Node &n, Frame &f) {
  const auto &fits = static_cast<const FitsNode &>(n);
  Value *v = operand<A>(n.a, f);
  const char *mask = n.c.node != nullptr ? eval(*n.c.node, f)->asString() : fits.mask;
  return F::isTypeConform(f.rt, v, fits.type, mask);
}

template <Source S>
bool let(const Op &op, Frame &f) {
  const auto &let = static_cast<const LetOp &>(op);
  f.locals[let.slot] = operand<S>(let.value, f);
  f.homes[let.slot] = f.rt->getCurrentSection();
  return true;
}

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

}  // namespace

// --- routines

void runRule(RuntimeContext *rt, const Routine &rule) {
  SectionScope section(rt, rule.section);
  Frame f(rt, rule);
  runBlock(rule.body, f);
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

// --- expressions

// A member of a reference: a the reference's slot, b the member's.
Value *readRefMember(const Node &n, Frame &f) {
  return static_cast<Field *>(static_cast<DeclaredTopic *>(f.refs[n.a.slot])->slot(n.b.slot))->get(f.rt);
}

Value *readPlace(const Node &n, Frame &f) {
  return static_cast<Field *>(resolve(static_cast<const ReadNode &>(n).place, f))->get(f.rt);
}

bool truthOf(const Node &n, Frame &f) { return eval(n, f)->asBool(); }
Value *valueOfTest(const Node &n, Frame &f) { return f.rt->createBoolValue(test(n, f)); }

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

Value *call0(const Node &n, Frame &f) { return static_cast<const Call0Node &>(n).call(f.rt); }

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

Value *codeOfText(const Node &n, Frame &f) { return f.rt->getClassificationByValue(eval(*n.a.node, f)->asString()); }

// ANZAHL(array; indices...): the size of the dimension after the indices.
Value *countOf(const Node &n, Frame &f) {
  const auto &count = static_cast<const CountNode &>(n);
  FieldDescriptor *array = resolve(count.array, f);
  std::int32_t index[9];
  for (std::int32_t k = 0; k < count.count; ++k) index[k] = static_cast<std::int32_t>(eval(*count.items[k], f)->asInteger());
  index[count.count] = -1;
  std::int32_t size = dimensionSize(f.rt, array, count.dims[count.count], count.count == 0 ? nullptr : index);
  return f.rt->createNumberValue(static_cast<double>(size));
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
  ExternalFunction function = hostFunction(rt, call.name->c_str());
  Value *a[8] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
  for (std::int32_t i = 0; i < call.count && i < 8; ++i) a[i] = eval(*call.items[i], f);
  // The count first, then the values; the function reads as many as it is told.
  Value *result = function(rt, static_cast<int>(call.count), a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]);
  return resultOrInvalid(rt, result);
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

bool assign(const Op &op, Frame &f) {
  const auto &set = static_cast<const LetOp &>(op);
  // A value of an inner section would die with it: the variable keeps a
  // copy in the section it was declared in.
  f.locals[set.slot] = keepInSection(f.rt, eval(*set.value.node, f), f.homes[set.slot]);
  return true;
}

bool section(const Op &op, Frame &f) {
  const auto &part = static_cast<const SectionOp &>(op);
  SectionScope scope(f.rt, part.name);
  return runBlock(part.body, f);
}

bool leaveLoop(const Op &, Frame &) { return false; }

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
  std::int32_t count = dimensionSize(f.rt, array, loop.declared, nullptr);
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
  f.result = keepInSection(f.rt, eval(*static_cast<const ReturnOp &>(op).value, f), f.entry);
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
  PlausiProblem *problem = createProblemFor(rt, report.type, report.weight, id, field);
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

// --- the handlers per source

EvalFn pickLeafValue(Source s) {
  return bySource(s, [](auto x) -> EvalFn { return leafValue<decltype(x)::value>; });
}

TestFn pickLeafTruth(Source s) {
  return bySource(s, [](auto x) -> TestFn { return leafTruth<decltype(x)::value>; });
}

TestFn pickNegation(Source a) {
  return bySource(a, [](auto x) -> TestFn { return negation<decltype(x)::value>; });
}

TestFn pickIn(Source a, Source b, bool holds) {
  return bySource(a, [&](auto x) {
    return bySource(b, [&](auto y) -> TestFn {
      constexpr Source first = decltype(x)::value;
      constexpr Source second = decltype(y)::value;
      return holds ? isIn<first, second, true> : isIn<first, second, false>;
    });
  });
}

namespace {

template <BinaryOp op>
TestFn comparison(Source a, Source b) {
  return bySource(a, [b](auto x) {
    return bySource(b, [](auto y) -> TestFn { return compare<op, decltype(x)::value, decltype(y)::value>; });
  });
}

// The value handler E, with its truth or the negation of it.
template <EvalFn E>
ValueAndTruth valueAndTruth(bool holds) {
  if (holds) return {E, truthOfValue<E, true>};
  return {valueOfTest, truthOfValue<E, false>};
}

}  // namespace

TestFn pickCompare(BinaryOp op, Source a, Source b) {
  switch (op) {
    case kEq: return comparison<kEq>(a, b);
    case kNe: return comparison<kNe>(a, b);
    case kGt: return comparison<kGt>(a, b);
    case kGe: return comparison<kGe>(a, b);
    case kLt: return comparison<kLt>(a, b);
    case kLe: return comparison<kLe>(a, b);
    default: return truthOf;
  }
}

TestFn pickHolds(LanguageOp op, Source a, bool holds) {
  return bySource(a, [op, holds](auto x) -> TestFn {
    constexpr Source s = decltype(x)::value;
    if (op == kOpValid) return holds ? run::holds<kOpValid, s, true> : run::holds<kOpValid, s, false>;
    if (op == kOpSet) return holds ? run::holds<kOpSet, s, true> : run::holds<kOpSet, s, false>;
    return holds ? run::holds<kOpUsable, s, true> : run::holds<kOpUsable, s, false>;
  });
}

ValueAndTruth pickCall1(Source a, bool holds) {
  return bySource(a, [holds](auto x) { return valueAndTruth<call1<decltype(x)::value>>(holds); });
}

EvalFn pickCall2(Source a, Source b) {
  return bySource(a, [b](auto x) {
    return bySource(b, [](auto y) -> EvalFn { return call2<decltype(x)::value, decltype(y)::value>; });
  });
}

ValueAndTruth pickCall2(Source a, Source b, bool holds) {
  return bySource(a, [b, holds](auto x) {
    return bySource(b, [holds](auto y) { return valueAndTruth<call2<decltype(x)::value, decltype(y)::value>>(holds); });
  });
}

ValueAndTruth pickFits(Source a, bool holds) {
  return bySource(a, [holds](auto x) { return valueAndTruth<fits<decltype(x)::value>>(holds); });
}

EvalFn pickCodeOf(Source a) {
  return bySource(a, [](auto x) -> EvalFn { return codeOf<decltype(x)::value>; });
}

RunFn pickLet(Source value) {
  return bySource(value, [](auto x) -> RunFn { return let<decltype(x)::value>; });
}

}  // namespace run
}  // namespace lang
}  // namespace quorel
