#include "quorel/lang/checker.h"

#include <cstdlib>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "quorel/lang/builtins.h"
#include "quorel/lang/clauses.h"
#include "quorel/lang/encoding.h"
#include "quorel/lang/parser.h"
#include "quorel/masks/util.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/values/number_value.h"
#include "quorel/values/sequence_range.h"
#include "quorel/values/string_value.h"

namespace quorel {
namespace lang {

namespace {

// The flow of a module that declares none.
constexpr char kDefaultFlow[] = "Pruefung";

// Names in messages are UTF-8; the tree holds Windows-1252.
std::string q(const std::string &name) { return "'" + windows1252ToUtf8(name) + "'"; }

// What an expression is known to be before the run.
enum StaticKind { kKindUnknown, kKindText, kKindNumber, kKindTruth, kKindDate, kKindRange, kKindNone };

const char *kindName(StaticKind kind) {
  switch (kind) {
    case kKindText: return "a text";
    case kKindNumber: return "a number";
    case kKindTruth: return "a truth value";
    case kKindDate: return "a date";
    case kKindRange: return "a range";
    case kKindNone: return "no value";
    default: return "a value";
  }
}

StaticKind kindOfField(FieldType type) {
  switch (type) {
    case FieldTypeBool: return kKindTruth;
    case FieldTypeDate: return kKindDate;
    default: return kKindUnknown;  // masked numbers arrive as text, text may hold anything
  }
}

// What a path names.
enum Shape { kShapeScalar, kShapeFieldArray, kShapeGroup, kShapeTopicArray, kShapeValue };

// A name in scope: a local value, or a reference to a group or field.
struct Binding {
  bool isRef = false;
  std::int32_t slot = -1;
  const FieldDecl *decl = nullptr;  // refs
  bool elementOfArray = false;      // refs: the decl is an array, the ref one element
};

// Tries a sample conversion under the mask; the library's own message when
// it refuses the mask itself (not the sample).
std::string maskFault(FieldType type, const std::string &mask) {
  try {
    switch (type) {
      case FieldTypeInteger: Util::stringToInteger("0", mask.c_str()); break;
      case FieldTypeReal: Util::stringToReal("0", mask.c_str()); break;
      case FieldTypeDate: {
        std::tm date{};
        date.tm_mday = 1;
        date.tm_year = 100;
        char text[Util::kDateTextSize];
        Util::dateToString(text, &date, mask.c_str());
        break;
      }
      default: Util::stringToString("", mask.c_str()); break;
    }
  } catch (const PlausiException &e) {
    if (e.getType() != EXCEPTION_CONVERSION) return windows1252ToUtf8(e.getMessage());
  }
  return std::string();
}

class Checker {
 public:
  Checker(Module *module, Diagnostics *diagnostics) : module_(module), diagnostics_(diagnostics) {}

  void run() {
    if (module_->name.empty()) return;  // the parser reported it
    if (module_->record == nullptr) {
      error(module_->pos, "the module declares no record type (SATZ)");
    } else {
      declareFields(module_->record.get(), module_->record.get(), module_->record->name);
    }
    declareMaterials();
    declareCodes(module_->codes);
    declareExternals();
    declareFunctions();
    declareRules();
    declareFieldChecks();
    declareFlows();
    for (RuleDecl &rule : module_->rules) body(&rule.body, &rule.locals, &rule.refs, nullptr);
    for (auto &function : module_->functions) {
      current_ = function.get();
      scopes_.emplace_back();
      for (const std::string &param : function->params) {
        if (scopes_.back().count(param) != 0) error(function->pos, "the parameter " + q(param) + " is named twice");
        scopes_.back()[param] = Binding{false, function->locals++, nullptr};
      }
      body(&function->body, &function->locals, &function->refs, nullptr);
      scopes_.pop_back();
      current_ = nullptr;
    }
    for (FieldCheckDecl &check : module_->fieldChecks) {
      if (check.field->decl == nullptr) continue;
      Binding bound{true, check.refs++, check.field->decl, check.field->decl->isArray()};
      body(&check.body, &check.locals, &check.refs, &bound, check.bound);
    }
    findRecursion();
  }

 private:
  void error(Position pos, const std::string &message) { diagnostics_->error(pos, message); }

  // --- declarations

  // The fields of group, which is root or below it; hierarchy is group's
  // type hierarchy text.
  void declareFields(FieldDecl *group, FieldDecl *root, const std::string &hierarchy) {
    std::set<std::string> names;
    for (std::size_t i = 0; i < group->children.size(); ++i) {
      FieldDecl *child = group->children[i].get();
      child->slot = static_cast<std::int32_t>(i);
      if (!names.insert(child->name).second) {
        error(child->pos, "the field " + q(child->name) + " is declared twice in " + q(group->name));
      }
      if (child->dims.size() > 8) error(child->pos, "an array has at most 8 dimensions");
      if (child->hasMask) {
        std::string fault = maskFault(child->type, child->mask);
        if (!fault.empty()) error(child->pos, "the mask of " + q(child->name) + " is refused: " + fault);
      }
      std::string own = hierarchy + "." + child->name;
      if (child->hasColumn) {
        if (child->column.empty()) error(child->pos, "the name in the data source of " + q(child->name) + " is empty");
        root->columns.emplace_back(own, child->column);
      }
      if (child->isGroup()) declareFields(child, root, own);
    }
  }

  void declareMaterials() {
    std::set<std::string> names;
    for (MaterialDecl &material : module_->materials) {
      if (!names.insert(material.root->name).second) {
        error(material.root->pos, "the material " + q(material.root->name) + " is declared twice");
      }
      if (module_->record != nullptr && material.root->name == module_->record->name) {
        error(material.root->pos, "the material " + q(material.root->name) + " has the record type's name");
      }
      declareFields(material.root.get(), material.root.get(), material.root->name);
    }
  }

  void declareCodes(const std::vector<std::unique_ptr<CodeDecl>> &codes) {
    for (const auto &code : codes) {
      if (!codes_.insert(code->code).second) error(code->pos, "the code " + q(code->code) + " is declared twice");
      if (!codeTexts_.insert(code->text).second) {
        error(code->pos, "the code text " + q(code->text) + " is declared twice");
      }
      declareCodes(code->children);
    }
  }

  void declareExternals() {
    for (const ExternalDecl &external : module_->externals) {
      if (findBuiltin(external.name) != nullptr) {
        error(external.pos, "the external function " + q(external.name) + " has the name of a built-in function");
      }
      if (external.arity < 0 || external.arity > 8) {
        error(external.pos, "an external function takes 0 to 8 arguments");
      }
      if (!externals_.emplace(external.name, &external).second) {
        error(external.pos, "the external function " + q(external.name) + " is declared twice");
      }
    }
  }

  void declareFunctions() {
    for (std::size_t i = 0; i < module_->functions.size(); ++i) {
      FunctionDecl *function = module_->functions[i].get();
      function->index = static_cast<std::int32_t>(i);
      if (findBuiltin(function->name) != nullptr || externals_.count(function->name) != 0) {
        error(function->pos, "the function " + q(function->name) + " has the name of a built-in or external function");
      }
      if (!functions_.emplace(function->name, function).second) {
        error(function->pos, "the function " + q(function->name) + " is declared twice");
      }
    }
  }

  void declareRules() {
    for (std::size_t i = 0; i < module_->rules.size(); ++i) {
      if (!rules_.emplace(module_->rules[i].name, static_cast<std::int32_t>(i)).second) {
        error(module_->rules[i].pos, "the rule " + q(module_->rules[i].name) + " is declared twice");
      }
    }
  }

  void declareFlows() {
    if (module_->flows.empty()) {
      // A module runs its rules in flows; without ABLAUF it has one, which
      // runs every rule in the order of the file.
      FlowDecl all;
      all.pos = module_->pos;
      all.name = kDefaultFlow;
      for (const RuleDecl &rule : module_->rules) {
        all.rules.push_back(rule.name);
        all.rulePos.push_back(rule.pos);
      }
      module_->flows.push_back(std::move(all));
    }
    std::set<std::string> names;
    for (FlowDecl &flow : module_->flows) {
      if (!names.insert(flow.name).second) error(flow.pos, "the flow " + q(flow.name) + " is declared twice");
      for (std::size_t i = 0; i < flow.rules.size(); ++i) {
        auto found = rules_.find(flow.rules[i]);
        if (found == rules_.end()) {
          error(flow.rulePos[i], "unknown rule " + q(flow.rules[i]) + " in the flow " + q(flow.name));
          continue;
        }
        flow.ruleIndices.push_back(found->second);
      }
    }
  }

  void declareFieldChecks() {
    std::set<const FieldDecl *> checked;
    for (FieldCheckDecl &check : module_->fieldChecks) {
      Path *path = check.field.get();
      if (module_->record == nullptr || path->head != module_->record->name) {
        error(path->pos, "a field check names a field of the record type, from " +
                             (module_->record != nullptr ? q(module_->record->name) : std::string("its root")));
        continue;
      }
      const FieldDecl *decl = module_->record.get();
      std::string hierarchy = decl->name;
      bool ok = true;
      for (PathStep &step : path->steps) {
        if (!step.indices.empty()) {
          error(step.pos, "a field check names a field without indices: it checks every element");
          ok = false;
          break;
        }
        std::int32_t index = decl->isGroup() ? decl->find(step.name) : -1;
        if (index < 0) {
          error(step.pos, "unknown field " + q(step.name) + " in " + q(decl->name));
          ok = false;
          break;
        }
        decl = decl->children[static_cast<std::size_t>(index)].get();
        step.decl = decl;
        hierarchy += "." + decl->name;
      }
      if (!ok) continue;
      if (decl->isGroup()) {
        // The library hands the check of a group no field to work on.
        error(path->pos, q(decl->name) + " is a group, and a group has no field check: check its fields");
        continue;
      }
      if (!checked.insert(decl).second) error(path->pos, "the field " + q(hierarchy) + " has a second check");
      path->decl = decl;
      check.hierarchy = hierarchy;
      checks_[decl] = &check;
    }
  }

  // --- bodies

  void body(Block *block, std::int32_t *locals, std::int32_t *refs, const Binding *bound,
            const std::string &boundName = std::string()) {
    locals_ = locals;
    refs_ = refs;
    loops_ = 0;
    scopes_.emplace_back();
    if (bound != nullptr) scopes_.back()[boundName] = *bound;
    statements(block);
    scopes_.pop_back();
  }

  const Binding *lookup(const std::string &name) const {
    for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
      auto found = scope->find(name);
      if (found != scope->end()) return &found->second;
    }
    return nullptr;
  }

  void declareLocal(Stmt *stmt, const std::string &name, Binding binding) {
    if (isKeyword(name)) return;  // reported by the parser
    if (scopes_.back().count(name) != 0) error(stmt->pos, q(name) + " is declared twice in this block");
    if (module_->record != nullptr && name == module_->record->name) {
      error(stmt->pos, q(name) + " is the record type's name");
    }
    scopes_.back()[name] = binding;
  }

  void statements(Block *block) {
    scopes_.emplace_back();
    for (StmtPtr &stmt : *block) statement(stmt.get());
    scopes_.pop_back();
  }

  void statement(Stmt *stmt) {
    switch (stmt->kind) {
      case kIf:
        for (ExprPtr &condition : stmt->exprs) truthValue(condition.get());
        for (Block &block : stmt->blocks) statements(&block);
        break;
      case kLet:
        value(stmt->exprs[0].get());
        stmt->slot = (*locals_)++;
        declareLocal(stmt, stmt->name, Binding{false, stmt->slot, nullptr});
        break;
      case kAssign: {
        value(stmt->exprs[0].get());
        const Binding *target = lookup(stmt->name);
        if (target == nullptr) {
          error(stmt->pos, "unknown variable " + q(stmt->name) + " (declare it with SEI)");
        } else if (target->isRef) {
          error(stmt->pos, q(stmt->name) + " names a field, not a variable");
        } else {
          stmt->slot = target->slot;
        }
        break;
      }
      case kSection: statements(&stmt->blocks[0]); break;
      case kForEach: forEach(stmt); break;
      case kForRange: {
        number(stmt->exprs[0].get());
        number(stmt->exprs[1].get());
        stmt->slot = (*locals_)++;
        scopes_.emplace_back();
        declareLocal(stmt, stmt->name, Binding{false, stmt->slot, nullptr});
        ++loops_;
        statements(&stmt->blocks[0]);
        --loops_;
        scopes_.pop_back();
        break;
      }
      case kBreak:
        if (loops_ == 0) error(stmt->pos, "ABBRECHEN outside a loop");
        break;
      case kReport: report(stmt); break;
      case kCheck: {
        Shape shape = path(stmt->path.get());
        const FieldDecl *decl = stmt->path->decl;
        if (decl == nullptr) break;
        if (shape != kShapeScalar) {
          error(stmt->path->pos, "PRUEFE takes one field (an element, for an array)");
        } else if (checks_.count(decl) == 0) {
          error(stmt->path->pos, "the field " + q(decl->name) + " has no FELDPRUEFUNG");
        }
        break;
      }
      case kTry:
        statements(&stmt->blocks[0]);
        stmt->slot = (*locals_)++;
        scopes_.emplace_back();
        declareLocal(stmt, stmt->name, Binding{false, stmt->slot, nullptr});
        statements(&stmt->blocks[1]);
        scopes_.pop_back();
        break;
      case kReturn:
        if (current_ == nullptr) error(stmt->pos, "ERGEBNIS outside a FUNKTION");
        value(stmt->exprs[0].get());
        break;
    }
  }

  void forEach(Stmt *stmt) {
    Expr *over = stmt->exprs[0].get();
    scopes_.emplace_back();
    if (over->kind == kPath && !isLocalPath(over->path.get())) {
      Shape shape = path(over->path.get());
      const FieldDecl *decl = over->path->decl;
      if (decl != nullptr && (shape == kShapeTopicArray || shape == kShapeFieldArray)) {
        if (decl->dims.size() != 1) {
          error(over->pos, "FUER JEDES walks an array of one dimension; loop over the indices of " + q(decl->name) +
                               " with FUER i VON 0 BIS ANZAHL(...) - 1");
        }
        stmt->loop = shape == kShapeTopicArray ? kLoopTopics : kLoopFields;
        stmt->slot = (*refs_)++;
        declareLocal(stmt, stmt->name, Binding{true, stmt->slot, decl, true});
      } else if (decl != nullptr) {
        if (shape == kShapeGroup) error(over->pos, "FUER JEDES walks an array or a range, not the group " + q(decl->name));
        stmt->loop = kLoopValues;
        stmt->slot = (*locals_)++;
        declareLocal(stmt, stmt->name, Binding{false, stmt->slot, nullptr});
      }
    } else {
      StaticKind kind = value(over);
      if (kind == kKindNumber || kind == kKindTruth || kind == kKindDate) {
        error(over->pos, "FUER JEDES walks an array or a range, not " + std::string(kindName(kind)));
      }
      stmt->loop = kLoopValues;
      stmt->slot = (*locals_)++;
      declareLocal(stmt, stmt->name, Binding{false, stmt->slot, nullptr});
    }
    ++loops_;
    statements(&stmt->blocks[0]);
    --loops_;
    scopes_.pop_back();
  }

  void report(Stmt *stmt) {
    Report *report = stmt->report.get();
    StaticKind idKind = value(report->id.get());
    if (report->id->kind == kText) {
      auto found = problemIds_.find(report->id->text);
      if (found != problemIds_.end()) {
        error(report->id->pos, "the problem id " + q(report->id->text) + " is used before, in line " +
                                   std::to_string(found->second.line));
      } else {
        problemIds_[report->id->text] = report->id->pos;
      }
    } else if (idKind != kKindUnknown && idKind != kKindText) {
      error(report->id->pos, "a problem id is a text, not " + std::string(kindName(idKind)));
    }
    if (report->weight < 0) error(stmt->pos, "a problem's weight cannot be negative");
    if (report->field != nullptr) path(report->field.get());
    std::set<ReportClause> seen;
    for (Clause &clause : report->clauses) {
      if (!seen.insert(clause.kind).second) error(clause.pos, "this clause is given twice");
      for (ExprPtr &v : clause.values) {
        if (clauseInfo(clause.kind).numeric()) {
          number(v.get());
        } else {
          value(v.get());
        }
      }
    }
  }

  // --- expressions

  bool isLocalPath(const Path *p) const {
    const Binding *binding = lookup(p->head);
    return binding != nullptr && !binding->isRef;
  }

  void truthValue(Expr *expr) {
    StaticKind kind = value(expr);
    if (kind == kKindText || kind == kKindNumber || kind == kKindDate || kind == kKindRange) {
      error(expr->pos, "a condition must be a truth value, not " + std::string(kindName(kind)));
    }
  }

  void number(Expr *expr) {
    StaticKind kind = value(expr);
    bool numericText = false;
    if (expr->kind == kText) {
      NumberValue probe(expr->text.c_str());
      try {
        probe.asReal();
        numericText = true;
      } catch (const PlausiException &) {
      }
    }
    if ((kind == kKindText && !numericText) || kind == kKindDate || kind == kKindTruth || kind == kKindRange) {
      error(expr->pos, "a number is needed here, not " + std::string(kindName(kind)));
    }
  }

  void constant(Expr *expr) {
    expr->constant = static_cast<std::int32_t>(module_->constants.size());
    module_->constants.push_back(expr);
  }

  // Checks an expression used as a value and tells what it is known to be.
  StaticKind value(Expr *expr) {
    switch (expr->kind) {
      case kNumber: constant(expr); return kKindNumber;
      case kText: constant(expr); return kKindText;
      case kDate: {
        try {
          std::tm date{};
          Util::stringToDate(&date, expr->text.c_str(), "TT.MM.JJJJ");
        } catch (const PlausiException &e) {
          error(expr->pos, "the date " + expr->text + " is no date: " + windows1252ToUtf8(e.getMessage()));
        }
        constant(expr);
        return kKindDate;
      }
      case kTruth: constant(expr); return kKindTruth;
      case kNil: constant(expr); return kKindNone;
      case kInvalid: constant(expr); return kKindNone;
      case kInconvertible: constant(expr); return kKindNone;
      case kPath: {
        Path *p = expr->path.get();
        const Binding *binding = lookup(p->head);
        if (binding != nullptr && !binding->isRef) {
          if (!p->steps.empty()) error(p->steps[0].pos, q(p->head) + " is a variable and has no fields or indices");
          expr->kind = kLocal;
          expr->slot = binding->slot;
          return kKindUnknown;
        }
        Shape shape = path(p);
        expr->staticField = p->staticId;
        if (p->decl == nullptr) return kKindUnknown;
        if (shape != kShapeScalar) {
          error(p->pos, q(p->decl->name) + " is " +
                            (shape == kShapeGroup ? "a group" : "an array") +
                            (shape == kShapeGroup ? ": name one of its fields" : ": give its indices, or pass it to a function that takes an array"));
        }
        return kindOfField(p->decl->type);
      }
      case kLocal: return kKindUnknown;
      case kNot: truthValue(expr->args[0].get()); return kKindTruth;
      case kNeg: number(expr->args[0].get()); return kKindNumber;
      case kAnd:
      case kOr:
        truthValue(expr->args[0].get());
        truthValue(expr->args[1].get());
        return kKindTruth;
      case kIn: {
        value(expr->args[0].get());
        StaticKind range = value(expr->args[1].get());
        if (range == kKindNumber || range == kKindTruth || range == kKindDate) {
          error(expr->args[1]->pos, "IN needs a range, a series or a query on its right, not " + std::string(kindName(range)));
        }
        return kKindTruth;
      }
      case kBinary: return binary(expr);
      case kCall: return call(expr);
      case kUserCall:
      case kExternal: return kKindUnknown;  // made by call()
      case kInterval: {
        StaticKind first = value(expr->args[0].get());
        StaticKind last = value(expr->args[1].get());
        if (first != kKindUnknown && last != kKindUnknown && first != last && first != kKindNone && last != kKindNone) {
          error(expr->pos, std::string("an interval from ") + kindName(first) + " to " + kindName(last));
        }
        if (isConstant(expr->args[0].get()) && isConstant(expr->args[1].get())) constant(expr);
        return kKindRange;
      }
      case kSequence: {
        for (ExprPtr &arg : expr->args) value(arg.get());
        bool constantBounds = true;
        for (ExprPtr &arg : expr->args) constantBounds = constantBounds && isConstant(arg.get());
        if (constantBounds) {
          if (expr->args[0]->kind == kNumber && expr->args[1]->kind == kNumber && expr->args[2]->kind == kNumber) {
            NumberValue a(expr->args[0]->number), b(expr->args[1]->number), c(expr->args[2]->number);
            try {
              SequenceRange probe(&a, &b, &c);
            } catch (const PlausiException &e) {
              error(expr->pos, "the sequence is refused: " + windows1252ToUtf8(e.getMessage()));
            }
          }
          constant(expr);
        }
        return kKindRange;
      }
      case kSeries: {
        bool constantMembers = true;
        for (ExprPtr &arg : expr->args) {
          value(arg.get());
          constantMembers = constantMembers && isConstant(arg.get());
        }
        if (constantMembers) constant(expr);
        return kKindRange;
      }
      case kQuery:
      case kExists: query(expr); return expr->kind == kExists ? kKindTruth : kKindRange;
    }
    return kKindUnknown;
  }

  static bool isConstant(const Expr *expr) { return expr->constant >= 0; }

  StaticKind binary(Expr *expr) {
    if (expr->op == kConcat) {
      value(expr->args[0].get());
      value(expr->args[1].get());
      return kKindText;
    }
    if (expr->op == kPlus || expr->op == kMinus || expr->op == kMult || expr->op == kDiv) {
      number(expr->args[0].get());
      number(expr->args[1].get());
      return kKindNumber;
    }
    StaticKind left = value(expr->args[0].get());
    StaticKind right = value(expr->args[1].get());
    bool dateAndNumber = (left == kKindDate && right == kKindNumber) || (left == kKindNumber && right == kKindDate);
    if (dateAndNumber) {
      error(expr->pos, std::string("compares ") + kindName(left) + " with " + kindName(right));
    }
    return kKindTruth;
  }

  StaticKind call(Expr *expr) {
    const std::string &name = expr->text;
    auto function = functions_.find(name);
    if (function != functions_.end()) {
      expr->kind = kUserCall;
      expr->function = function->second;
      if (expr->args.size() != function->second->params.size()) {
        error(expr->pos, "the function " + q(name) + " takes " + std::to_string(function->second->params.size()) +
                             " argument(s), not " + std::to_string(expr->args.size()));
      }
      for (ExprPtr &arg : expr->args) value(arg.get());
      if (current_ != nullptr) calls_[current_].insert(function->second);
      return kKindUnknown;
    }
    auto external = externals_.find(name);
    if (external != externals_.end()) {
      expr->kind = kExternal;
      if (static_cast<std::int32_t>(expr->args.size()) != external->second->arity) {
        error(expr->pos, "the external function " + q(name) + " takes " + std::to_string(external->second->arity) +
                             " argument(s), not " + std::to_string(expr->args.size()));
      }
      for (ExprPtr &arg : expr->args) value(arg.get());
      return kKindUnknown;
    }
    const Builtin *builtin = findBuiltin(name);
    if (builtin == nullptr) {
      error(expr->pos, "unknown function " + q(name));
      for (ExprPtr &arg : expr->args) {
        if (!(arg->kind == kText && arg->truth)) value(arg.get());
      }
      return kKindUnknown;
    }
    expr->builtin = builtin;
    auto count = static_cast<std::int32_t>(expr->args.size());
    if (count < builtin->minArgs || (builtin->maxArgs >= 0 && count > builtin->maxArgs)) {
      std::string wanted = builtin->minArgs == builtin->maxArgs ? std::to_string(builtin->minArgs)
                           : builtin->maxArgs < 0 ? "at least " + std::to_string(builtin->minArgs)
                                                   : std::to_string(builtin->minArgs) + " to " + std::to_string(builtin->maxArgs);
      error(expr->pos, q(name) + " takes " + wanted + " argument(s), not " + std::to_string(count));
    }
    for (std::size_t i = 0; i < expr->args.size(); ++i) {
      Expr *arg = expr->args[i].get();
      if (arg->kind == kText && arg->truth) {  // a type word, PASST's second argument
        expr->fieldType = arg->fieldType;
        continue;
      }
      if (i == 0 && (builtin->first == kArgArray || builtin->first == kArgFieldArray)) {
        array(arg, builtin);
        continue;
      }
      StaticKind kind = i == 0 || builtin->op != kOpCount ? value(arg) : (number(arg), kKindNumber);
      argumentKind(expr, i, kind);
    }
    if (builtin->op == kOpParameter && count == 1) {
      const Expr *name = expr->args[0].get();
      if (name->kind == kText && !name->truth) {
        module_->parameters.insert(name->text);
      } else {
        module_->computedParameter = true;
      }
    }
    if (builtin->op == kOpCount && !expr->args.empty() && expr->args[0]->kind == kPath) {
      const FieldDecl *decl = expr->args[0]->path->decl;
      if (decl != nullptr && decl->isArray() && expr->args.size() > decl->dims.size()) {
        error(expr->args[1]->pos, "'ANZAHL' of " + q(decl->name) + " takes at most " +
                                      std::to_string(decl->dims.size() - 1) + " index(es)");
      }
    }
    return resultKind(builtin);
  }

  void array(Expr *arg, const Builtin *builtin) {
    Shape shape = arg->kind == kPath && !isLocalPath(arg->path.get()) ? path(arg->path.get()) : kShapeValue;
    if (shape == kShapeValue) {
      value(arg);
      error(arg->pos, q(builtin->name) + " takes an array of the record type as its first argument");
      return;
    }
    if (arg->path->decl == nullptr) return;
    bool ok = shape == kShapeFieldArray || (builtin->first == kArgArray && shape == kShapeTopicArray);
    if (!ok) {
      error(arg->pos, q(builtin->name) + " takes " +
                          (builtin->first == kArgFieldArray ? "an array of fields" : "an array") + ", and " +
                          q(arg->path->decl->name) + " is none");
    }
  }

  // Faults of literal arguments that the library would refuse at every run.
  void argumentKind(Expr *call, std::size_t index, StaticKind kind) {
    const std::string name = call->builtin->name;
    Expr *arg = call->args[index].get();
    bool dateFunction = name == "JAHR" || name == "MONAT" || name == "TAG" || name == "JAHR_ALS_ZEICHENKETTE" ||
                        name == "MONAT_ALS_ZEICHENKETTE" || name == "TAG_ALS_ZEICHENKETTE" ||
                        ((name == "DATUM_VERSCHIEBEN" || name == "DATUM_DIFFERENZ") && index == 0) ||
                        (name == "DATUM_DIFFERENZ" && index == 1);
    if (dateFunction && (kind == kKindNumber || kind == kKindTruth || kind == kKindRange)) {
      error(arg->pos, q(name) + " takes a date here, not " + std::string(kindName(kind)));
    }
    if (index == 2 && arg->kind == kText && (name == "DATUM_VERSCHIEBEN" || name == "DATUM_DIFFERENZ")) {
      const char *allowed = name == "DATUM_VERSCHIEBEN" ? "JMWTA" : "JWT";
      if (arg->text.size() != 1 || std::string(allowed).find(arg->text[0]) == std::string::npos) {
        error(arg->pos, "the unit of " + q(name) + " is one of " +
                            std::string(name == "DATUM_VERSCHIEBEN" ? "\"J\", \"M\", \"W\", \"T\", \"A\"" : "\"J\", \"W\", \"T\""));
      }
    }
    bool maskArgument = ((call->builtin->op == kOpFits && index == 2) ||
                         ((call->builtin->op == kOpRealByMask || call->builtin->op == kOpIntegerByMask ||
                           call->builtin->op == kOpDateByMask) && index == 1));
    if (maskArgument && arg->kind == kText) {
      FieldType type = call->builtin->op == kOpFits ? call->fieldType
                       : call->builtin->op == kOpRealByMask ? FieldTypeReal
                       : call->builtin->op == kOpIntegerByMask ? FieldTypeInteger : FieldTypeDate;
      std::string fault = maskFault(type, arg->text);
      if (!fault.empty()) error(arg->pos, "the mask is refused: " + fault);
    }
  }

  static StaticKind resultKind(const Builtin *builtin) {
    switch (builtin->op) {
      case kOpValid:
      case kOpSet:
      case kOpUsable:
      case kOpFits: return kKindTruth;
      case kOpCount:
      case kOpRealByMask:
      case kOpIntegerByMask: return kKindNumber;
      case kOpDateByMask: return kKindDate;
      default: break;
    }
    std::string name = builtin->name;
    if (name == "HAT_FORMAT" || name == "BEGINNT_MIT" || name == "ENDET_AUF" || name == "NUMERISCH") return kKindTruth;
    if (name == "HEUTE" || name == "DATUM_VERSCHIEBEN") return kKindDate;
    if (name == "GROSSBUCHSTABEN" || name == "KLEINBUCHSTABEN" || name == "TEIL" || name == "ERSETZEN" ||
        name == "KONKATENIEREN") {
      return kKindUnknown;  // a field that is not usable comes back as it is
    }
    return kKindUnknown;
  }

  // A query into a material: its fields, its conditions.
  void query(Expr *expr) {
    Query *query = expr->query.get();
    const FieldDecl *root = nullptr;
    for (std::size_t i = 0; i < module_->materials.size(); ++i) {
      if (module_->materials[i].root->name == query->material) {
        root = module_->materials[i].root.get();
        query->materialIndex = static_cast<std::int32_t>(i);
      }
    }
    for (Condition &condition : query->conditions) value(condition.value.get());
    if (root == nullptr) {
      error(query->materialPos, "unknown material " + q(query->material));
      return;
    }
    auto field = [&](const std::string &name, Position pos) -> const FieldDecl * {
      std::int32_t index = root->find(name);
      if (index < 0) {
        error(pos, "unknown field " + q(name) + " in the material " + q(root->name));
        return nullptr;
      }
      const FieldDecl *decl = root->children[static_cast<std::size_t>(index)].get();
      if (decl->isGroup() || decl->isArray()) {
        error(pos, "a query reads and compares plain fields, and " + q(name) + " is none");
        return nullptr;
      }
      return decl;
    };
    for (std::size_t i = 0; i < query->fields.size(); ++i) {
      query->fieldDecls.push_back(field(query->fields[i], query->fieldPos[i]));
    }
    for (Condition &condition : query->conditions) condition.decl = field(condition.field, condition.pos);
  }

  // Resolves a path of the record type (or a reference) and tells its shape.
  Shape path(Path *p) {
    const FieldDecl *decl = nullptr;
    bool elementOnly = false;  // a reference to one element of an array
    const Binding *binding = lookup(p->head);
    if (binding != nullptr && binding->isRef) {
      p->base = kBaseRef;
      p->refSlot = binding->slot;
      decl = binding->decl;
      elementOnly = binding->elementOfArray;
    } else if (binding != nullptr) {
      error(p->pos, q(p->head) + " is a variable, not a field");
      return kShapeValue;
    } else if (module_->record != nullptr && p->head == module_->record->name) {
      p->base = kBaseRecord;
      decl = module_->record.get();
    } else {
      bool material = false;
      for (const MaterialDecl &m : module_->materials) material = material || m.root->name == p->head;
      error(p->pos, material ? q(p->head) + " is a material: read it with LIES ... AUS " + windows1252ToUtf8(p->head)
                             : "unknown name " + q(p->head));
      for (PathStep &step : p->steps) {
        for (ExprPtr &index : step.indices) number(index.get());
      }
      return kShapeValue;
    }
    bool indexed = elementOnly;  // whether the array at decl has its indices
    bool isStatic = p->base == kBaseRecord;
    for (PathStep &step : p->steps) {
      if (!step.name.empty()) {
        if (decl->isArray() && !indexed) {
          error(step.pos, q(decl->name) + " is an array: give its indices before " + q(step.name));
          return kShapeValue;
        }
        std::int32_t index = decl->isGroup() ? decl->find(step.name) : -1;
        if (index < 0) {
          error(step.pos, decl->isGroup() ? "unknown field " + q(step.name) + " in " + q(decl->name)
                                          : q(decl->name) + " is a field and has no field " + q(step.name));
          return kShapeValue;
        }
        decl = decl->children[static_cast<std::size_t>(index)].get();
        indexed = false;
      }
      step.decl = decl;
      if (!step.indices.empty()) {
        isStatic = false;
        for (ExprPtr &index : step.indices) number(index.get());
        if (!decl->isArray() || indexed) {
          error(step.indices[0]->pos, q(decl->name) + " is no array and takes no index");
          return kShapeValue;
        }
        if (step.indices.size() != decl->dims.size()) {
          error(step.indices[0]->pos, q(decl->name) + " has " + std::to_string(decl->dims.size()) +
                                          " dimension(s) and needs as many indices, not " +
                                          std::to_string(step.indices.size()));
          return kShapeValue;
        }
        indexed = true;
      }
    }
    p->decl = decl;
    if (isStatic) {
      p->staticId = static_cast<std::int32_t>(module_->staticPaths.size());
      module_->staticPaths.push_back(p);
    }
    if (decl->isArray() && !indexed) return decl->isGroup() ? kShapeTopicArray : kShapeFieldArray;
    return decl->isGroup() ? kShapeGroup : kShapeScalar;
  }

  // Functions may call each other, but not in a circle: a rule run must end.
  void findRecursion() {
    std::map<const FunctionDecl *, int> state;  // 1 on the way, 2 done
    std::function<bool(const FunctionDecl *)> visit = [&](const FunctionDecl *f) {
      int &s = state[f];
      if (s == 1) return true;
      if (s == 2) return false;
      s = 1;
      for (const FunctionDecl *callee : calls_[f]) {
        if (visit(callee)) {
          state[f] = 2;
          if (!reported_) error(f->pos, "the function " + q(f->name) + " calls itself (through " + q(callee->name) + ")");
          reported_ = true;
          return false;
        }
      }
      s = 2;
      return false;
    };
    for (auto &function : module_->functions) visit(function.get());
  }

  Module *module_;
  Diagnostics *diagnostics_;
  std::set<std::string> codes_;
  std::set<std::string> codeTexts_;
  std::map<std::string, const ExternalDecl *> externals_;
  std::map<std::string, FunctionDecl *> functions_;
  std::map<std::string, std::int32_t> rules_;
  std::map<const FieldDecl *, FieldCheckDecl *> checks_;
  std::map<std::string, Position> problemIds_;
  std::map<const FunctionDecl *, std::set<const FunctionDecl *>> calls_;
  std::vector<std::map<std::string, Binding>> scopes_;
  const FunctionDecl *current_ = nullptr;
  std::int32_t *locals_ = nullptr;
  std::int32_t *refs_ = nullptr;
  int loops_ = 0;
  bool reported_ = false;
};

}  // namespace

std::int32_t FieldDecl::find(const std::string &child) const {
  for (std::size_t i = 0; i < children.size(); ++i) {
    if (children[i]->name == child) return static_cast<std::int32_t>(i);
  }
  return -1;
}

bool Path::hasIndices() const {
  for (const PathStep &step : steps) {
    if (!step.indices.empty()) return true;
  }
  return false;
}

bool check(Module *module, Diagnostics *diagnostics) {
  Checker(module, diagnostics).run();
  return diagnostics->empty();
}

}  // namespace lang
}  // namespace quorel
