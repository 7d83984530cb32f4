#include "quorel/lang/program.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "quorel/functions/functions.h"
#include "quorel/lang/builtins.h"
#include "quorel/lang/clauses.h"
#include "quorel/lang/declared_topic.h"
#include "quorel/lang/program_nodes.h"
#include "quorel/model/field.h"
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

namespace quorel {
namespace lang {

namespace {

using F = Functions;

constexpr char kDateMask[] = "TT.MM.JJJJ";

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
  T *node(EvalFn eval, TestFn test = run::truthOf) {
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
        auto *branchOp = op<IfOp>(run::branch);
        branchOp->count = static_cast<std::int32_t>(stmt.exprs.size());
        branchOp->conditions = nodes(stmt.exprs);
        branchOp->blocks = arena_->array<const Op *>(stmt.exprs.size());
        for (std::size_t i = 0; i < stmt.exprs.size(); ++i) branchOp->blocks[i] = block(stmt.blocks[i]);
        if (stmt.blocks.size() > stmt.exprs.size()) branchOp->otherwise = block(stmt.blocks.back());
        return branchOp;
      }
      case kLet: {
        Arg value = arg(*stmt.exprs[0]);
        auto *letOp = op<LetOp>(run::pickLet(value.source));
        letOp->value = value.operand;
        letOp->slot = stmt.slot;
        return letOp;
      }
      case kAssign: {
        auto *setOp = op<LetOp>(run::assign);
        setOp->value.node = expr(*stmt.exprs[0]);
        setOp->slot = stmt.slot;
        return setOp;
      }
      case kSection: {
        auto *sectionOp = op<SectionOp>(run::section);
        sectionOp->name = stmt.section.c_str();
        sectionOp->body = block(stmt.blocks[0]);
        return sectionOp;
      }
      case kForEach: return forEach(stmt);
      case kForRange: {
        auto *loop = op<CountingOp>(run::counting);
        loop->first = expr(*stmt.exprs[0]);
        loop->last = expr(*stmt.exprs[1]);
        return loopOf(loop, stmt);
      }
      case kBreak: return op<Op>(run::leaveLoop);
      case kReport: return report(*stmt.report);
      case kCheck: {
        auto *checkOp = op<CheckOp>(run::checkField);
        checkOp->field = place(*stmt.path);
        checkOp->check = fieldCheck(stmt.path->decl);
        return checkOp;
      }
      case kTry: {
        auto *tryOp = op<TryOp>(run::attempt);
        tryOp->body = block(stmt.blocks[0]);
        tryOp->handler = block(stmt.blocks[1]);
        tryOp->slot = stmt.slot;
        return tryOp;
      }
      case kReturn: {
        auto *returnOp = op<ReturnOp>(run::giveBack);
        returnOp->value = expr(*stmt.exprs[0]);
        return returnOp;
      }
    }
    return op<Op>(run::leaveLoop);  // not reached: every kind is handled above
  }

  Op *forEach(const Stmt &stmt) {
    const Expr &over = *stmt.exprs[0];
    if (stmt.loop == kLoopValues) {
      auto *loop = op<EachValueOp>(run::eachValue);
      loop->range = expr(over);
      return loopOf(loop, stmt);
    }
    auto *loop = op<EachElementOp>(run::eachElement);
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
    auto *reportOp = op<ReportOp>(run::report);
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
      built.resolve = run::fixedPlace;
      built.field = staticFields_[static_cast<std::size_t>(path.staticId)];
      return built;
    }
    if (path.base == kBaseRef) built.ref = path.refSlot;
    if (path.base == kBaseRef && path.steps.empty()) {
      built.resolve = run::refPlace;
      return built;
    }
    if (refMember(path)) {
      built.resolve = run::refMemberPlace;
      built.member = path.steps[0].decl->slot;
      return built;
    }
    built.resolve = run::walkPlace;
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
      Node *made = node<Node>(run::pickLeafValue(built.source), run::pickLeafTruth(built.source));
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
          Node *made = node<Node>(run::readRefMember);
          made->a.slot = e.path->refSlot;
          made->b.slot = e.path->steps[0].decl->slot;
          return made;
        }
        auto *made = node<ReadNode>(run::readPlace);
        made->place = place(*e.path);
        return made;
      }
      case kNot: return polar(*e.args[0], false);
      case kNeg: return operands(node<Node>(run::negative), e);
      case kAnd:
      case kOr: return chain(e);
      case kIn: return in(e, true);
      case kBinary: return binary(e);
      case kCall: return call(e, true);
      case kUserCall: {
        auto *made = list<UserCallNode>(run::userCall, e.args);
        made->function = functions_[static_cast<std::size_t>(e.function->index)];
        return made;
      }
      case kExternal: {
        auto *made = list<ExternalNode>(run::external, e.args);
        made->name = &e.text;
        return made;
      }
      case kInterval: {
        Node *made = operands(node<Node>(run::interval), e);
        made->c.slot = e.intervalType;
        return made;
      }
      case kSequence: return operands(node<Node>(run::sequence), e);
      case kSeries: return list<ListNode>(run::series, e.args);
      case kQuery:
      case kExists: return queryOf(e);
      default: return node<Node>(run::nothing);  // not reached: literals are constants
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
    Node *made = node<Node>(run::valueOfTest);
    made->a = inner.operand;
    made->test = run::pickNegation(inner.source);
    return made;
  }

  const Node *negationOf(const Node *inner) {
    Node *made = node<Node>(run::valueOfTest, run::pickNegation(kFromNode));
    made->a.node = inner;
    return made;
  }

  static void setHandlers(Node *made, run::ValueAndTruth handlers) {
    made->eval = handlers.eval;
    made->test = handlers.test;
  }

  const Node *in(const Expr &e, bool holds) {
    Node *made = node<Node>(run::valueOfTest);
    std::pair<Source, Source> sources = twoArgs(made, e);
    made->test = run::pickIn(sources.first, sources.second, holds);
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
      Node *made = node<Node>(run::valueOfTest, all ? run::both : run::either);
      made->a.node = expr(*parts[0]);
      made->b.node = expr(*parts[1]);
      return made;
    }
    auto *made = node<ListNode>(run::valueOfTest, all ? run::allOf : run::anyOf);
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
    made->eval = run::pickCall2(a, b);
    if (e.op <= kLe) made->test = run::pickCompare(e.op, a, b);
    return made;
  }

  // A call of a built-in; with holds false, NICHT that call.
  const Node *call(const Expr &e, bool holds) {
    const Builtin &b = *e.builtin;
    if (b.op != kOpNone) return languageOp(e, holds);
    if (b.callArray != nullptr) {
      auto *made = node<CallArrayNode>(run::callArray);
      made->call = b.callArray;
      made->array = place(*e.args[0]->path);
      return holds ? made : negationOf(made);
    }
    if (e.args.size() == 1 && b.call1 != nullptr) {
      auto *made = node<Call1Node>(nullptr);
      made->call = b.call1;
      Arg a = arg(*e.args[0]);
      made->a = a.operand;
      setHandlers(made, run::pickCall1(a.source, holds));
      return made;
    }
    if (e.args.size() == 2) {
      auto *made = node<Call2Node>(nullptr);
      made->call = b.call2;
      std::pair<Source, Source> sources = twoArgs(made, e);
      setHandlers(made, run::pickCall2(sources.first, sources.second, holds));
      return made;
    }
    Node *made;
    if (e.args.empty()) {
      auto *none = node<Call0Node>(run::call0);
      none->call = b.call0;
      made = none;
    } else if (e.args.size() == 1) {
      auto *alone = operands(node<Call2Node>(run::call2Alone), e);
      alone->call = b.call2;
      made = alone;
    } else {
      auto *three = operands(node<Call3Node>(run::call3), e);
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
      Node *made = node<Node>(run::valueOfTest);
      Arg a = arg(*e.args[0]);
      made->a = a.operand;
      made->test = run::pickHolds(op, a.source, holds);
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
      setHandlers(made, run::pickFits(a.source, holds));
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
        made->eval = run::pickCodeOf(a.source);
        return made;
      }
      case kOpCodeOfText: return operands(node<Node>(run::codeOfText), e);
      case kOpCount: {
        auto *made = node<CountNode>(run::countOf);
        const Path &path = *e.args[0]->path;
        made->array = place(path);
        made->dims = path.decl->dims.data();
        std::size_t count = std::min<std::size_t>(e.args.size() - 1, 8);  // the checker bounds it
        made->items = arena_->array<const Node *>(count);
        for (std::size_t k = 0; k < count; ++k) made->items[k] = expr(*e.args[k + 1]);
        made->count = static_cast<std::int32_t>(count);
        return made;
      }
      case kOpRealByMask: return operands(node<Node>(run::realByMask), e);
      case kOpIntegerByMask: return operands(node<Node>(run::integerByMask), e);
      case kOpDateByMask: return operands(node<Node>(run::dateByMask), e);
      case kOpParameter: return operands(node<Node>(run::parameter), e);
      default: return node<Node>(run::invalid);
    }
  }

  const Node *queryOf(const Expr &e) {
    const Query &q = *e.query;
    DeclaredTopic *material = materials_[static_cast<std::size_t>(q.materialIndex)];
    auto *made = node<QueryNode>(e.kind == kExists ? run::exists : run::query);
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
      run::runRule(runtime, *rule);
    }
    return;
  }
}

Value *Program::runFunction(RuntimeContext *runtime, const char *name) const {
  for (const auto &function : functions_) {
    if (function.first->params.empty() && function.first->name == name) {
      return run::runFunction(runtime, *function.second, nullptr);
    }
  }
  return nullptr;
}

void Program::runFieldCheck(RuntimeContext *runtime, const FieldDecl *decl, Field *field) const {
  for (const auto &check : fieldChecks_) {
    if (check.first == decl) {
      run::runCheck(runtime, *check.second, field);
      return;
    }
  }
}

}  // namespace lang
}  // namespace quorel
