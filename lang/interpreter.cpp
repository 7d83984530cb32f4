#include "quorel/lang/interpreter.h"

#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "quorel/functions/functions.h"
#include "quorel/lang/builtins.h"
#include "quorel/lang/clauses.h"
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
#include "quorel/values/classification.h"
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

namespace {

using F = Functions;

constexpr char kDateMask[] = "TT.MM.JJJJ";

// The library's field check registry calls plain functions: this one finds
// the interpreter through the root topic of the field.
Value *checkField(RuntimeContext *runtime, Field *field) {
  // Registered only for fields of an interpreter's record type, whose root
  // knows the interpreter.
  static_cast<Interpreter *>(rootOf(field)->owner())->runFieldCheck(runtime, field);
  return runtime->createNilValue();
}

void registerCodes(const std::vector<std::unique_ptr<CodeDecl>> &codes, Classification *parent,
                   const std::function<void(Classification *, const CodeDecl &)> &registerOne) {
  for (const auto &code : codes) {
    StringValue text(code->code.c_str());
    auto *classification = new Classification(&text, code->text.c_str());
    if (parent != nullptr) parent->addClassification(classification);
    registerCodes(code->children, classification, registerOne);
    registerOne(classification, *code);
  }
}

// The size of the dimension of array after indices: the declared one, or
// the record's for a size of 0.
std::int32_t sizeOf(RuntimeContext *runtime, FieldDescriptor *array, std::int32_t declared, std::int32_t *indices) {
  return declared != 0 ? declared : runtime->getDataRecord()->getSize(array, indices);
}

}  // namespace

// The locals of one rule, function or field check while it runs: on the
// stack for the usual few, on the heap beyond.
struct Interpreter::Frame {
  static constexpr std::int32_t kInline = 8;

  Frame(RuntimeContext *runtime, std::int32_t localCount, std::int32_t refCount)
      : rt(runtime), entry(runtime->getCurrentSection()) {
    if (localCount > kInline || refCount > kInline) {
      heap = std::make_unique<Heap>();
      heap->locals.resize(static_cast<std::size_t>(localCount));
      heap->homes.resize(static_cast<std::size_t>(localCount));
      heap->refs.resize(static_cast<std::size_t>(refCount));
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

// Half the nodes a run visits are constants and locals: those need no call.
inline Value *Interpreter::eval(Frame &f, const Expr &expr) {
  if (expr.constant >= 0) return constants_[static_cast<std::size_t>(expr.constant)].get();
  if (expr.kind == kLocal) return f.locals[expr.slot];
  return evalNode(f, expr);
}

Interpreter::Interpreter(std::shared_ptr<const RuleSet> rules) : rules_(std::move(rules)), module_(rules_->module()) {
  // A mapping is registered before the topic that reads it is built, so
  // that the Plausi owns it whatever fails after.
  Mapping *mapping = newMapping(*module_.record);
  if (mapping != nullptr) setMapping(mapping);
  root_ = DeclaredTopic::createRoot(module_.record.get(), mapping);
  root_->setOwner(this);
  setRootTopic(root_);
  for (const MaterialDecl &material : module_.materials) {
    Mapping *materialMapping = newMapping(*material.root);
    if (materialMapping != nullptr) setMappingForMaterial(material.root->name.c_str(), materialMapping);
    DeclaredTopic *topic = DeclaredTopic::createRoot(material.root.get(), materialMapping);
    topic->setMaterialName(material.root->name.c_str());
    if (material.hasDataset) topic->setMaterialNameDataset(material.dataset.c_str());
    setMaterial(material.root->name.c_str(), topic);
    materials_.push_back(topic);
  }
  for (const FieldCheckDecl &check : module_.fieldChecks) setFieldCheckProc(check.hierarchy.c_str(), checkField);
  registerCodes(module_.codes, nullptr, [this](Classification *classification, const CodeDecl &code) {
    registerClassification(classification, code.code.c_str(), code.text.c_str());
  });
  // Paths without indices from the root lead to one field for good.
  staticFields_.reserve(module_.staticPaths.size());
  for (const Path *path : module_.staticPaths) {
    FieldDescriptor *field = root_;
    for (const PathStep &step : path->steps) field = static_cast<DeclaredTopic *>(field)->slot(step.decl->slot);
    staticFields_.push_back(field);
  }
  constants_.reserve(module_.constants.size());
  for (const Expr *expr : module_.constants) constants_.emplace_back(makeConstant(*expr));
}

Interpreter::~Interpreter() = default;

Value *Interpreter::makeConstant(const Expr &expr) {
  switch (expr.kind) {
    case kNumber: return new NumberValue(expr.number);
    case kText: return new StringValue(expr.text.c_str());
    case kDate: return new DateValue(expr.text.c_str(), kDateMask);
    case kTruth: return new BoolValue(expr.truth);
    case kNil: return new NilValue();
    case kInvalid: return new InvalidValue();
    case kInconvertible: return new InconvertibleValue(expr.text.c_str());
    case kInterval: {
      Value *first = constants_[static_cast<std::size_t>(expr.args[0]->constant)].get();
      Value *last = constants_[static_cast<std::size_t>(expr.args[1]->constant)].get();
      return new IntervalRange(first, last, static_cast<IntervalType>(expr.intervalType));
    }
    case kSequence: {
      Value *a[3];
      for (int i = 0; i < 3; ++i) a[i] = constants_[static_cast<std::size_t>(expr.args[i]->constant)].get();
      return new SequenceRange(a[0], a[1], a[2]);
    }
    case kSeries: {
      auto *series = new RangeSeries();
      for (const ExprPtr &arg : expr.args) series->addRange(constants_[static_cast<std::size_t>(arg->constant)].get());
      return series;
    }
    default: return new NilValue();  // not reached: the checker makes constants of these kinds only
  }
}

// --- runs

void Interpreter::performImpl(RuntimeContext *runtime, const char *flow) {
  if (flow == nullptr) return;
  for (const FlowDecl &declared : module_.flows) {
    if (std::strcmp(declared.name.c_str(), flow) != 0) continue;
    for (std::int32_t index : declared.ruleIndices) runRule(runtime, module_.rules[static_cast<std::size_t>(index)]);
    return;
  }
}

Value *Interpreter::performFunctionImpl(RuntimeContext *runtime, const char *name) {
  if (name != nullptr) {
    for (const auto &function : module_.functions) {
      if (function->params.empty() && function->name == name) return runFunction(runtime, *function, nullptr);
    }
  }
  return runtime->createInvalidValue();
}

void Interpreter::runRule(RuntimeContext *runtime, const RuleDecl &rule) {
  SectionScope section(runtime, rule.section.c_str());
  Frame f(runtime, rule.locals, rule.refs);
  block(f, rule.body);
}

void Interpreter::runFieldCheck(RuntimeContext *runtime, Field *field) {
  // Every topic of this rule set's record type is a DeclaredTopic.
  const FieldDecl *decl = static_cast<DeclaredTopic *>(field->getParent())->declOf(field);
  for (const FieldCheckDecl &check : module_.fieldChecks) {
    if (check.field->decl != decl) continue;
    SectionScope section(runtime, check.section.c_str(), true);
    Frame f(runtime, check.locals, check.refs);
    f.refs[0] = field;
    block(f, check.body);
    return;
  }
}

Value *Interpreter::runFunction(RuntimeContext *runtime, const FunctionDecl &function, Value *const *args) {
  Frame f(runtime, function.locals, function.refs);
  for (std::size_t i = 0; i < function.params.size(); ++i) {
    f.locals[i] = args[i];
    f.homes[i] = f.entry;
  }
  block(f, function.body);
  return f.returned ? f.result : runtime->createInvalidValue();
}

Value *Interpreter::callFunction(Frame &caller, const FunctionDecl &function, Value *const *args) {
  return runFunction(caller.rt, function, args);
}

// --- statements

bool Interpreter::block(Frame &f, const Block &body) {
  for (const StmtPtr &stmt : body) {
    if (!statement(f, *stmt)) return false;
  }
  return true;
}

void Interpreter::assign(Frame &f, std::int32_t slot, Value *value) {
  PlausiSection *home = f.homes[slot];
  if (home != f.rt->getCurrentSection()) {
    // The value would die with the inner section: the variable keeps a
    // copy in the section it was declared in.
    std::unique_ptr<Value> copy(value->copy());
    home->addLocalObject(copy.get());
    value = copy.release();
  }
  f.locals[slot] = value;
}

bool Interpreter::statement(Frame &f, const Stmt &stmt) {
  switch (stmt.kind) {
    case kIf:
      for (std::size_t i = 0; i < stmt.exprs.size(); ++i) {
        if (test(f, *stmt.exprs[i])) return block(f, stmt.blocks[i]);
      }
      if (stmt.blocks.size() > stmt.exprs.size()) return block(f, stmt.blocks.back());
      return true;
    case kLet:
      f.locals[stmt.slot] = eval(f, *stmt.exprs[0]);
      f.homes[stmt.slot] = f.rt->getCurrentSection();
      return true;
    case kAssign: assign(f, stmt.slot, eval(f, *stmt.exprs[0])); return true;
    case kSection: {
      SectionScope section(f.rt, stmt.section.c_str());
      return block(f, stmt.blocks[0]);
    }
    case kForEach: return forEach(f, stmt);
    case kForRange: return forRange(f, stmt);
    case kBreak: return false;
    case kReport: report(f, *stmt.report); return true;
    case kCheck: runFieldCheck(f.rt, static_cast<Field *>(resolve(f, *stmt.path))); return true;
    case kTry: return attempt(f, stmt);
    case kReturn: return giveBack(f, stmt);
  }
  return true;
}

// Kept out of statement(), whose every call would otherwise pay for what a
// handler needs.
bool Interpreter::attempt(Frame &f, const Stmt &stmt) {
  std::string message;
  try {
    return block(f, stmt.blocks[0]);
  } catch (const PlausiException &e) {
    message = e.getMessage();
  }
  f.locals[stmt.slot] = f.rt->createStringValue(std::move(message));
  f.homes[stmt.slot] = f.rt->getCurrentSection();
  return block(f, stmt.blocks[1]);
}

bool Interpreter::giveBack(Frame &f, const Stmt &stmt) {
  Value *result = eval(f, *stmt.exprs[0]);
  if (f.rt->getCurrentSection() != f.entry) {
    std::unique_ptr<Value> copy(result->copy());
    f.entry->addLocalObject(copy.get());
    result = copy.release();
  }
  f.result = result;
  f.returned = true;
  return false;
}

bool Interpreter::forEach(Frame &f, const Stmt &stmt) {
  const Expr &over = *stmt.exprs[0];
  if (stmt.loop == kLoopValues) {
    Value *range = eval(f, over);
    std::unique_ptr<ValueIterator> walk(range->asRange());
    while (walk->hasNext()) {
      std::optional<SectionScope> section;
      if (stmt.hasSection) section.emplace(f.rt, stmt.section.c_str());
      f.locals[stmt.slot] = walk->next();
      f.homes[stmt.slot] = f.rt->getCurrentSection();
      if (!block(f, stmt.blocks[0])) return !f.returned;
    }
    return true;
  }
  FieldDescriptor *array = resolve(f, *over.path);
  std::int32_t count = sizeOf(f.rt, array, over.path->decl->dims[0], nullptr);
  std::int32_t index[] = {0, -1};
  for (std::int32_t i = 0; i < count; ++i) {
    std::optional<SectionScope> section;
    if (stmt.hasSection) section.emplace(f.rt, stmt.section.c_str());
    index[0] = i;
    f.refs[stmt.slot] = stmt.loop == kLoopTopics
                            ? static_cast<FieldDescriptor *>(static_cast<TopicArray *>(array)->getElement(f.rt, index))
                            : static_cast<FieldArray *>(array)->getElement(f.rt, index);
    if (!block(f, stmt.blocks[0])) return !f.returned;
  }
  return true;
}

bool Interpreter::forRange(Frame &f, const Stmt &stmt) {
  std::int64_t first = eval(f, *stmt.exprs[0])->asInteger();
  std::int64_t last = eval(f, *stmt.exprs[1])->asInteger();
  for (std::int64_t i = first; i <= last; ++i) {
    std::optional<SectionScope> section;
    if (stmt.hasSection) section.emplace(f.rt, stmt.section.c_str());
    f.locals[stmt.slot] = f.rt->createNumberValue(static_cast<double>(i));
    f.homes[stmt.slot] = f.rt->getCurrentSection();
    if (!block(f, stmt.blocks[0])) return !f.returned;
  }
  return true;
}

void Interpreter::report(Frame &f, const Report &report) {
  RuntimeContext *rt = f.rt;
  if (report.weight < rt->getProblemWeightLevel()) return;
  // Everything is evaluated and converted before the problem is made, so
  // that a fault on the way leaves no half-filled problem behind.
  struct Part {
    ReportClause kind;
    const char *text;
    std::int32_t numbers[8];
    std::int32_t count;
  };
  const char *id = eval(f, *report.id)->asString();
  FieldDescriptor *field = report.field != nullptr ? resolve(f, *report.field) : nullptr;
  Part parts[kClauseIndices + 1];  // each clause at most once; filled below as far as used
  for (std::size_t c = 0; c < report.clauses.size(); ++c) {
    const Clause &clause = report.clauses[c];
    Part &part = parts[c];
    part.kind = clause.kind;
    part.text = nullptr;
    part.count = 0;
    bool numeric = clauseInfo(clause.kind).numeric();
    for (const ExprPtr &value : clause.values) {
      Value *v = eval(f, *value);
      if (!numeric) {
        part.text = v->asString();
      } else if (part.count < 8) {
        part.numbers[part.count++] = static_cast<std::int32_t>(v->asInteger());
      }
    }
  }
  PlausiProblem *problem = rt->createProblem(static_cast<ProblemType>(report.type), report.weight);
  problem->setId(id);
  if (field != nullptr) {
    problem->setReferenceField(field);
    TypeDescriptor *type = field->getTypeDescriptor();
    problem->setFieldDisplayName(type->getFieldNameDisplay());
    problem->setFieldType(type->getFieldType());
    problem->setFieldMask(type->getMask());
  }
  for (std::size_t c = 0; c < report.clauses.size(); ++c) {
    const Part &part = parts[c];
    const ClauseInfo &info = clauseInfo(part.kind);
    if (!info.numeric()) {
      (problem->*info.setText)(part.text);
    } else if (part.kind == kClauseLength) {
      problem->setFieldLength(part.numbers[0]);
    } else if (part.kind == kClauseInfoType) {
      problem->setInfoType(static_cast<ProblemInfoType>(part.numbers[0]));
    } else {
      const std::int32_t *i = part.numbers;
      problem->setReferenceFieldIndices(part.count, i[0], i[1], i[2], i[3], i[4], i[5], i[6], i[7]);
    }
  }
  rt->setSectionInfosToProblem(problem);
}

// --- expressions

FieldDescriptor *Interpreter::resolve(Frame &f, const Path &path) {
  if (path.staticId >= 0) return staticFields_[static_cast<std::size_t>(path.staticId)];
  FieldDescriptor *field = path.base == kBaseRef ? f.refs[path.refSlot] : root_;
  for (const PathStep &step : path.steps) {
    if (!step.name.empty()) field = static_cast<DeclaredTopic *>(field)->slot(step.decl->slot);
    if (step.indices.empty()) continue;
    std::int32_t index[9];
    std::size_t n = step.indices.size();
    for (std::size_t k = 0; k < n; ++k) index[k] = static_cast<std::int32_t>(eval(f, *step.indices[k])->asInteger());
    index[n] = -1;
    if (step.decl->isGroup()) {
      field = static_cast<TopicArray *>(field)->getElement(f.rt, index);
    } else {
      field = static_cast<FieldArray *>(field)->getElement(f.rt, index);
    }
  }
  return field;
}

// ANZAHL(array; indices...): the size of the dimension after the indices.
std::int32_t Interpreter::countOf(Frame &f, const Expr &call) {
  const Path &path = *call.args[0]->path;
  FieldDescriptor *array = resolve(f, path);
  std::int32_t index[9];
  std::size_t n = 0;
  for (std::size_t k = 1; k < call.args.size() && n < 8; ++k, ++n) {
    index[n] = static_cast<std::int32_t>(eval(f, *call.args[k])->asInteger());
  }
  index[n] = -1;
  return sizeOf(f.rt, array, path.decl->dims[n], n == 0 ? nullptr : index);  // the checker bounds n
}

Value *Interpreter::evalNode(Frame &f, const Expr &expr) {
  RuntimeContext *rt = f.rt;
  switch (expr.kind) {
    case kPath: {
      FieldDescriptor *field = expr.staticField >= 0 ? staticFields_[static_cast<std::size_t>(expr.staticField)]
                                                     : resolve(f, *expr.path);
      return static_cast<Field *>(field)->get(rt);
    }
    case kNot: return rt->createBoolValue(!test(f, *expr.args[0]));
    case kNeg: return F::neg(rt, eval(f, *expr.args[0]));
    case kAnd:
    case kOr:
    case kIn: return rt->createBoolValue(test(f, expr));
    case kBinary: {
      Value *a = eval(f, *expr.args[0]);
      Value *b = eval(f, *expr.args[1]);
      switch (expr.op) {
        case kEq: return F::eq(rt, a, b);
        case kNe: return F::ne(rt, a, b);
        case kGt: return F::gt(rt, a, b);
        case kGe: return F::ge(rt, a, b);
        case kLt: return F::lt(rt, a, b);
        case kLe: return F::le(rt, a, b);
        case kPlus: return F::plus(rt, a, b);
        case kMinus: return F::minus(rt, a, b);
        case kMult: return F::mult(rt, a, b);
        case kDiv: return F::div(rt, a, b);
        case kConcat: return F::KONKATENIEREN(rt, a, b);
      }
      return rt->createInvalidValue();
    }
    case kCall: return call(f, expr);
    case kUserCall: return userCall(f, expr);
    case kExternal: return external(f, expr);
    case kInterval:
      return rt->createIntervalRange(eval(f, *expr.args[0]), eval(f, *expr.args[1]),
                                     static_cast<IntervalType>(expr.intervalType));
    case kSequence: {
      Value *first = eval(f, *expr.args[0]);
      Value *second = eval(f, *expr.args[1]);
      return rt->createSequenceRange(first, second, eval(f, *expr.args[2]));
    }
    case kSeries: return series(f, expr);
    case kQuery: return query(f, expr);
    case kExists: {
      Value *found = query(f, expr);
      std::unique_ptr<ValueIterator> walk(found->asRange());
      return rt->createBoolValue(walk->hasNext());
    }
    default: return rt->createNilValue();  // literals are constants
  }
}

// The rarer kinds of evalNode, apart so that its own calls stay light.
Value *Interpreter::userCall(Frame &f, const Expr &expr) {
  Value *args[16];
  std::unique_ptr<Value *[]> many;
  Value **into = args;
  if (expr.args.size() > 16) {
    many.reset(new Value *[expr.args.size()]);
    into = many.get();
  }
  for (std::size_t i = 0; i < expr.args.size(); ++i) into[i] = eval(f, *expr.args[i]);
  return callFunction(f, *expr.function, into);
}

Value *Interpreter::series(Frame &f, const Expr &expr) {
  auto series = std::make_unique<RangeSeries>();
  for (const ExprPtr &arg : expr.args) series->addRange(eval(f, *arg));
  f.rt->getCurrentSection()->addLocalObject(series.get());
  return series.release();
}

bool Interpreter::test(Frame &f, const Expr &expr) {
  switch (expr.kind) {
    case kNot: return !test(f, *expr.args[0]);
    case kAnd: return test(f, *expr.args[0]) && test(f, *expr.args[1]);
    case kOr: return test(f, *expr.args[0]) || test(f, *expr.args[1]);
    case kIn: {
      Value *element = eval(f, *expr.args[0]);
      return eval(f, *expr.args[1])->contains(element);
    }
    case kBinary: {
      if (expr.op > kLe) break;
      Value *a = eval(f, *expr.args[0]);
      Value *b = eval(f, *expr.args[1]);
      switch (expr.op) {
        case kEq: return a->eq(b);
        case kNe: return a->ne(b);
        case kGt: return a->gt(b);
        case kGe: return a->ge(b);
        case kLt: return a->lt(b);
        default: return a->le(b);
      }
    }
    case kCall:
      if (expr.builtin->op == kOpValid) return eval(f, *expr.args[0])->isValid();
      if (expr.builtin->op == kOpSet) return !eval(f, *expr.args[0])->isNil();
      if (expr.builtin->op == kOpUsable) return eval(f, *expr.args[0])->isUsable();
      break;
    default: break;
  }
  return eval(f, expr)->asBool();
}

Value *Interpreter::call(Frame &f, const Expr &expr) {
  const Builtin &b = *expr.builtin;
  if (b.op != kOpNone) return languageOp(f, expr);
  RuntimeContext *rt = f.rt;
  if (b.callArray != nullptr) return b.callArray(rt, static_cast<FieldArray *>(resolve(f, *expr.args[0]->path)));
  switch (expr.args.size()) {
    case 0: return b.call0(rt);
    case 1:
      if (b.call1 != nullptr) return b.call1(rt, eval(f, *expr.args[0]));
      return b.call2(rt, eval(f, *expr.args[0]), nullptr);  // RUNDEN without digits
    case 2: {
      Value *a = eval(f, *expr.args[0]);
      return b.call2(rt, a, eval(f, *expr.args[1]));
    }
    default: {
      Value *a = eval(f, *expr.args[0]);
      Value *second = eval(f, *expr.args[1]);
      return b.call3(rt, a, second, eval(f, *expr.args[2]));
    }
  }
}

Value *Interpreter::languageOp(Frame &f, const Expr &expr) {
  RuntimeContext *rt = f.rt;
  switch (expr.builtin->op) {
    case kOpValid:
    case kOpSet:
    case kOpUsable: return rt->createBoolValue(test(f, expr));
    case kOpCode: return rt->getClassificationByCode(eval(f, *expr.args[0])->asString());
    case kOpCodeOfText: return rt->getClassificationByValue(eval(f, *expr.args[0])->asString());
    case kOpCount: return rt->createNumberValue(static_cast<double>(countOf(f, expr)));
    case kOpFits: {
      Value *v = eval(f, *expr.args[0]);
      const char *mask = expr.args.size() > 2 ? eval(f, *expr.args[2])->asString() : nullptr;
      return F::isTypeConform(rt, v, expr.fieldType, mask);
    }
    case kOpRealByMask: {
      Value *v = eval(f, *expr.args[0]);
      return rt->createNumberValue(Util::stringToReal(v->asString(), eval(f, *expr.args[1])->asString()));
    }
    case kOpIntegerByMask: {
      Value *v = eval(f, *expr.args[0]);
      return rt->createNumberValue(
          static_cast<double>(Util::stringToInteger(v->asString(), eval(f, *expr.args[1])->asString())));
    }
    case kOpDateByMask: {
      Value *v = eval(f, *expr.args[0]);
      const char *mask = eval(f, *expr.args[1])->asString();
      std::tm date{};
      Util::stringToDate(&date, v->asString(), mask);
      return rt->createDateValue(&date, mask);
    }
    case kOpParameter: {
      Value *param = rt->getInitParam(eval(f, *expr.args[0])->asString());
      return param != nullptr ? param : rt->createNilValue();
    }
    case kOpNone: break;
  }
  return rt->createInvalidValue();
}

Value *Interpreter::external(Frame &f, const Expr &expr) {
  RuntimeContext *rt = f.rt;
  ExternalFunction function = rt->getExternalFunction(expr.text.c_str());
  if (function == nullptr) {
    std::string message = "Die externe Funktion " + expr.text + " ist nicht vorhanden.";
    throw PlausiException(EXCEPTION_GENERAL, message.c_str());
  }
  Value *a[8] = {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
  for (std::size_t i = 0; i < expr.args.size() && i < 8; ++i) a[i] = eval(f, *expr.args[i]);
  // The count first, then the values; the function reads as many as it is told.
  Value *result = function(rt, static_cast<int>(expr.args.size()), a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]);
  return result != nullptr ? result : rt->createInvalidValue();
}

Value *Interpreter::query(Frame &f, const Expr &expr) {
  const Query &q = *expr.query;
  DeclaredTopic *material = materials_[static_cast<std::size_t>(q.materialIndex)];
  auto filter = std::make_unique<RecordFilter>();
  for (const Condition &condition : q.conditions) {
    Value *compared = eval(f, *condition.value);
    auto *field = static_cast<Field *>(material->slot(condition.decl->slot));
    filter->addCondition(new FilterCondition(field, static_cast<OperatorType>(condition.op), compared));
  }
  auto fields = std::make_unique<FieldSet>();
  for (const FieldDecl *decl : q.fieldDecls) fields->addField(static_cast<Field *>(material->slot(decl->slot)));
  if (q.fieldDecls.empty()) {
    // EXISTIERT reads the fields it compares, or the first one.
    for (const Condition &condition : q.conditions) fields->addField(static_cast<Field *>(material->slot(condition.decl->slot)));
    if (q.conditions.empty() && !material->decl()->children.empty()) fields->addField(static_cast<Field *>(material->slot(0)));
  }
  auto result = std::make_unique<Material>(f.rt, material, filter.release(), fields.release());
  f.rt->getCurrentSection()->addLocalObject(result.get());
  return result.release();
}

}  // namespace lang
}  // namespace quorel
