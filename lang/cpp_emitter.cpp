#include "quorel/lang/cpp_emitter.h"

#include <cstdio>
#include <map>
#include <set>
#include <vector>

#include "quorel/lang/builtins.h"
#include "quorel/lang/clauses.h"
#include "quorel/lang/encoding.h"

namespace quorel {
namespace lang {

namespace {

// A C++ string literal of Windows-1252 text; bytes above 0x7F as hex
// escapes split from what follows.
std::string literal(const std::string &text) {
  std::string out = "\"";
  bool afterHex = false;
  for (char c : text) {
    auto byte = static_cast<unsigned char>(c);
    bool hexDigit = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    if (afterHex && hexDigit) out += "\" \"";
    afterHex = false;
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (c == '\n') {
      out += "\\n";
    } else if (c == '\t') {
      out += "\\t";
    } else if (byte < 0x20 || byte >= 0x7F || c == '?') {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02X", byte);
      out += hex;
      afterHex = true;
    } else {
      out += c;
    }
  }
  return out + "\"";
}

std::string number(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", value);
  std::string out = text;
  if (out.find_first_of(".e") == std::string::npos) out += ".0";
  return out;
}

// A C++ name for a rule-file name (umlauts spelt out, anything else '_').
std::string identifier(const std::string &name) {
  static const std::pair<unsigned char, const char *> kSpelt[] = {
      {0xE4, "ae"}, {0xF6, "oe"}, {0xFC, "ue"}, {0xC4, "Ae"}, {0xD6, "Oe"}, {0xDC, "Ue"}, {0xDF, "ss"}};
  std::string out;
  for (char c : name) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_') {
      out += c;
      continue;
    }
    const char *spelt = "_";
    for (const auto &letter : kSpelt) {
      if (letter.first == static_cast<unsigned char>(c)) spelt = letter.second;
    }
    out += spelt;
  }
  return out;
}

const char *fieldTypeName(FieldType type) {
  switch (type) {
    case FieldTypeText: return "FieldTypeText";
    case FieldTypeBool: return "FieldTypeBool";
    case FieldTypeInteger: return "FieldTypeInteger";
    case FieldTypeReal: return "FieldTypeReal";
    case FieldTypeDate: return "FieldTypeDate";
    case FieldTypeFree: return "FieldTypeFree";
    default: return "FieldTypeTopic";
  }
}

const char *intervalName(std::int32_t type) {
  static const char *const kNames[] = {"INCLUDE_BOTH", "INCLUDE_FIRST", "INCLUDE_LAST", "INCLUDE_NONE"};
  return kNames[type & 3];
}

const char *operatorName(std::int32_t op) {
  static const char *const kNames[] = {"OPERATOR_EQUAL", "OPERATOR_NOT_EQUAL", "OPERATOR_GREATER",
                                       "OPERATOR_GREATER_EQUAL", "OPERATOR_LESS", "OPERATOR_LESS_EQUAL"};
  return kNames[op >= 0 && op < 6 ? op : 0];
}

// The helpers a generated module may need, each written into it only when
// it is used: the few steps of a run that are more than one library call.
struct Helper {
  const char *name;
  const char *text;
};
constexpr Helper kHelpers[] = {
    {"keep", R"(// A variable keeps its value beyond the section it was made in: a value
// from a section inside the variable's own is copied into the latter.
Value *keep(RuntimeContext *rt, Value *value, PlausiSection *home) {
  if (home == rt->getCurrentSection()) return value;
  std::unique_ptr<Value> copy(value->copy());
  home->addLocalObject(copy.get());
  return copy.release();
}
)"},
    {"sizeOf", R"(// The size of the dimension after indices: the declared one, else the record's.
std::int32_t sizeOf(RuntimeContext *rt, FieldDescriptor *array, std::int32_t declared, std::int32_t *indices) {
  return declared != 0 ? declared : rt->getDataRecord()->getSize(array, indices);
}
)"},
    {"newProblem", R"(// A new problem with its id and its reference field's declaration.
PlausiProblem *newProblem(RuntimeContext *rt, std::int32_t type, std::int32_t weight, const char *id,
                          FieldDescriptor *field) {
  PlausiProblem *problem = rt->createProblem(static_cast<ProblemType>(type), weight);
  problem->setId(id);
  if (field != nullptr) {
    problem->setReferenceField(field);
    TypeDescriptor *declared = field->getTypeDescriptor();
    problem->setFieldDisplayName(declared->getFieldNameDisplay());
    problem->setFieldType(declared->getFieldType());
    problem->setFieldMask(declared->getMask());
  }
  return problem;
}
)"},
    {"externalFunction", R"(// The host's function of that name; a run without it fails.
ExternalFunction externalFunction(RuntimeContext *rt, const char *name) {
  ExternalFunction function = rt->getExternalFunction(name);
  if (function == nullptr) {
    std::string message = std::string("Die externe Funktion ") + name + " ist nicht vorhanden.";
    throw PlausiException(EXCEPTION_GENERAL, message.c_str());
  }
  return function;
}

Value *orInvalid(RuntimeContext *rt, Value *value) { return value != nullptr ? value : rt->createInvalidValue(); }
)"},
};

class Emitter {
 public:
  Emitter(const RuleSet &rules, const std::string &source) : m_(rules.module()), source_(source) {}

  std::string run() {
    name_ = identifier(m_.name);
    if (m_.record != nullptr) nameGroups(m_.record.get(), "Record_" + identifier(m_.record->name));
    for (const MaterialDecl &material : m_.materials) {
      nameGroups(material.root.get(), "Material_" + identifier(material.root->name));
    }
    std::string out;
    out += "// The rule module \"" + windows1252ToUtf8(m_.name) + "\", generated by quorel-compile from " + source_ +
           ".\n// Edit the rule file, not this file.\n\n";
    out += "#include <cstdint>\n#include <cstring>\n#include <memory>\n#include <string>\n\n#include <quorel/quorel.h>\n\n";
    out += "namespace {\n\nusing namespace quorel;\nusing F = Functions;\n";
    std::string classes;
    for (const FieldDecl *group : groupOrder_) classes += topicClass(group);
    classes += rulesClass();
    for (const Helper &helper : kHelpers) {
      if (used_.count(helper.name) != 0) out += std::string("\n") + helper.text;
    }
    // The field checks are registered in the constructor, before their
    // definitions: declared first.
    out += "\nclass Rules;\n" + checkDeclarations_ + "\n";
    out += classes;
    out += "\n}  // namespace\n\nQUOREL_MODULE(" + name_ + ", Rules);\n";
    return out;
  }

 private:
  // --- the record type

  void nameGroups(const FieldDecl *group, const std::string &className) {
    std::string unique = className;
    for (int n = 2; !classes_.insert(unique).second; ++n) unique = className + "_" + std::to_string(n);
    classOf_[group] = unique;
    std::set<std::string> used;
    for (const auto &child : group->children) {
      // Members end in '_', so that no name of the file meets a C++ keyword
      // or a method of the topic.
      std::string member = identifier(child->name) + "_";
      if (!used.insert(member).second) member += std::to_string(child->slot) + "_";
      used.insert(member);
      memberOf_[child.get()] = member;
      if (child->isGroup()) nameGroups(child.get(), unique + "_" + identifier(child->name));
    }
    groupOrder_.push_back(group);  // after its children, whose classes it names
  }

  std::string memberType(const FieldDecl *decl) {
    if (decl->isGroup()) return decl->isArray() ? "TopicArray" : classOf_[decl];
    return decl->isArray() ? "FieldArray" : "Field";
  }

  static std::string dimensions(const FieldDecl *decl) {
    std::string out = "{";
    for (std::size_t i = 0; i < decl->dims.size(); ++i) out += (i ? ", " : "") + std::to_string(decl->dims[i]);
    return out + "}";
  }

  std::string topicClass(const FieldDecl *group) {
    const std::string &cls = classOf_[group];
    bool isRoot = group == m_.record.get();
    std::string out = "class " + cls + " : public ModuleTopic {\n public:\n";
    out += "  " + cls + "(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {\n";
    for (const auto &child : group->children) {
      const std::string display = literal(child->display);
      const std::string mask = child->hasMask ? literal(child->mask) : "nullptr";
      std::string make;
      if (child->isGroup()) {
        make = child->isArray() ? "topicArray<" + classOf_[child.get()] + ">(" + literal(child->name) + ", " + display +
                                      ", " + dimensions(child.get()) + ")"
                                : "topic<" + classOf_[child.get()] + ">(" + literal(child->name) + ", " + display + ")";
      } else if (child->isArray()) {
        make = "fieldArray(" + literal(child->name) + ", " + display + ", " + fieldTypeName(child->type) + ", " + mask +
               ", " + dimensions(child.get()) + ")";
      } else {
        make = "field(" + literal(child->name) + ", " + display + ", " + fieldTypeName(child->type) + ", " + mask + ")";
      }
      out += "    " + memberOf_[child.get()] + " = " + make + ";\n";
    }
    out += "  }\n";
    out += "  Topic *createElement() override { return new " + cls + "(getTypeDescriptor(), getParent()); }\n\n";
    for (const auto &child : group->children) {
      out += "  " + memberType(child.get()) + " *" + memberOf_[child.get()] + ";\n";
    }
    if (isRoot) out += "  Rules *rules = nullptr;  // the rule set, for its field checks\n";
    out += "};\n\n";
    return out;
  }

  // --- the rule set

  std::string rulesClass() {
    const std::string cls = "Rules";
    std::string out = "class " + cls + " : public Plausi {\n public:\n";
    out += "  " + cls + "() {\n";
    std::string mapping = mappingOf(*m_.record, "mapping", "setMapping(");
    out += mapping;
    out += "    root_ = ModuleTopic::createRoot<" + classOf_[m_.record.get()] + ">(" + literal(m_.record->name) + ", " +
           literal(m_.record->display) + (mapping.empty() ? "" : ", mapping") +
           ");\n    root_->rules = this;\n    setRootTopic(root_);\n";
    for (std::size_t i = 0; i < m_.materials.size(); ++i) {
      const MaterialDecl &material = m_.materials[i];
      std::string var = "material" + std::to_string(i) + "_";
      std::string materialMapping =
          mappingOf(*material.root, "mapping" + std::to_string(i), "setMappingForMaterial(" + literal(material.root->name) + ", ");
      out += materialMapping;
      out += "    " + var + " = ModuleTopic::createRoot<" + classOf_[material.root.get()] + ">(" +
             literal(material.root->name) + ", " + literal(material.root->display) +
             (materialMapping.empty() ? "" : ", mapping" + std::to_string(i)) + ");\n";
      out += "    " + var + "->setMaterialName(" + literal(material.root->name) + ");\n";
      if (material.hasDataset) out += "    " + var + "->setMaterialNameDataset(" + literal(material.dataset) + ");\n";
      out += "    setMaterial(" + literal(material.root->name) + ", " + var + ");\n";
    }
    for (std::size_t i = 0; i < m_.fieldChecks.size(); ++i) {
      out += "    setFieldCheckProc(" + literal(m_.fieldChecks[i].hierarchy) + ", checkField" + std::to_string(i) + ");\n";
    }
    int codeCount = 0;
    out += codes(m_.codes, "nullptr", &codeCount);
    for (std::size_t i = 0; i < m_.constants.size(); ++i) {
      out += "    k_[" + std::to_string(i) + "] = " + constant(*m_.constants[i]) + ";\n";
    }
    out += "  }\n";
    if (!m_.constants.empty()) {
      out += "  ~" + cls + "() override {\n    for (Value *constant : k_) delete constant;\n  }\n";
    }
    out += "\n  const char *const *getFlows() const override {\n";
    out += "    static const char *const kFlows[] = {";
    for (const FlowDecl &flow : m_.flows) out += literal(flow.name) + ", ";
    out += "nullptr};\n    return kFlows;\n  }\n";
    for (std::size_t i = 0; i < m_.fieldChecks.size(); ++i) {
      out += "\n  void runCheck" + std::to_string(i) + "(RuntimeContext *rt, Field *field);";
    }
    out += "\n\n protected:\n  void performImpl(RuntimeContext *rt, const char *flow) override {\n";
    out += "    if (flow == nullptr) return;\n";
    bool first = true;
    for (const FlowDecl &flow : m_.flows) {
      out += std::string(first ? "    if" : "    } else if") + " (std::strcmp(flow, " + literal(flow.name) + ") == 0) {\n";
      for (std::int32_t index : flow.ruleIndices) {
        out += "      " + ruleName(m_.rules[static_cast<std::size_t>(index)]) + "(rt);\n";
      }
      first = false;
    }
    out += "    }\n";
    out += "  }\n\n  Value *performFunctionImpl(RuntimeContext *rt, const char *name) override {\n";
    for (const auto &function : m_.functions) {
      if (!function->params.empty()) continue;
      out += "    if (name != nullptr && std::strcmp(name, " + literal(function->name) + ") == 0) return " +
             functionName(*function) + "(rt);\n";
    }
    out += "    (void)name;\n    return rt->createInvalidValue();\n  }\n\n private:\n";
    std::string bodies;
    for (const auto &function : m_.functions) bodies += functionBody(*function);
    for (const RuleDecl &rule : m_.rules) bodies += ruleBody(rule);
    out += bodies;
    out += "  " + classOf_[m_.record.get()] + " *root_;\n";
    for (std::size_t i = 0; i < m_.materials.size(); ++i) {
      out += "  " + classOf_[m_.materials[i].root.get()] + " *material" + std::to_string(i) + "_;\n";
    }
    if (!m_.constants.empty()) out += "  Value *k_[" + std::to_string(m_.constants.size()) + "];  // the literals, made once\n";
    out += "};\n";
    for (std::size_t i = 0; i < m_.fieldChecks.size(); ++i) out += checkBody(i);
    return out;
  }

  // The statements that make and register the Mapping of root's data-source
  // names as var, before the topic that reads it is built; none when root
  // declares no names.
  static std::string mappingOf(const FieldDecl &root, const std::string &var, const std::string &registration) {
    if (root.columns.empty()) return "";
    std::string out = "    auto *" + var + " = new Mapping();\n    " + registration + var + ");\n";
    for (const auto &column : root.columns) {
      out += "    " + var + "->put(" + literal(column.first) + ", " + literal(column.second) + ");\n";
    }
    return out;
  }

  std::string codes(const std::vector<std::unique_ptr<CodeDecl>> &list, const std::string &parent, int *count) {
    std::string out;
    for (const auto &code : list) {
      std::string var = "code" + std::to_string((*count)++);
      out += "    Classification *" + var + ";\n    {\n      StringValue text(" + literal(code->code) + ");\n      " + var +
             " = new Classification(&text, " + literal(code->text) + ");\n    }\n";
      if (parent != "nullptr") out += "    " + parent + "->addClassification(" + var + ");\n";
      out += codes(code->children, var, count);
      out += "    registerClassification(" + var + ", " + literal(code->code) + ", " + literal(code->text) + ");\n";
    }
    return out;
  }

  // C++ names of rules and functions: the spelt-out name, made unique with
  // the declaration's place where two names spell the same.
  std::string ruleName(const RuleDecl &rule) { return uniqueName(&rule); }
  std::string functionName(const FunctionDecl &function) { return uniqueName(&function); }

  std::string uniqueName(const void *declaration) {
    if (names_.empty()) {
      std::set<std::string> used;
      auto name = [&](const std::string &base, const void *decl, std::size_t index) {
        std::string candidate = base;
        if (!used.insert(candidate).second) candidate = base + "_" + std::to_string(index);
        used.insert(candidate);
        names_[decl] = candidate;
      };
      for (std::size_t i = 0; i < m_.rules.size(); ++i) name("rule_" + identifier(m_.rules[i].name), &m_.rules[i], i);
      for (std::size_t i = 0; i < m_.functions.size(); ++i) {
        name("fn_" + identifier(m_.functions[i]->name), m_.functions[i].get(), i);
      }
    }
    return names_[declaration];
  }

  std::string constantRef(const Expr &expr) { return "k_[" + std::to_string(expr.constant) + "]"; }

  std::string constant(const Expr &expr) {
    switch (expr.kind) {
      case kNumber: return "new NumberValue(" + number(expr.number) + ")";
      case kText: return "new StringValue(" + literal(expr.text) + ")";
      case kDate: return "new DateValue(" + literal(expr.text) + ", \"TT.MM.JJJJ\")";
      case kTruth: return std::string("new BoolValue(") + (expr.truth ? "true" : "false") + ")";
      case kNil: return "new NilValue()";
      case kInvalid: return "new InvalidValue()";
      case kInconvertible: return "new InconvertibleValue(" + literal(expr.text) + ")";
      case kInterval:
        return "new IntervalRange(" + constantRef(*expr.args[0]) + ", " + constantRef(*expr.args[1]) + ", " +
               intervalName(expr.intervalType) + ")";
      case kSequence:
        return "new SequenceRange(" + constantRef(*expr.args[0]) + ", " + constantRef(*expr.args[1]) + ", " +
               constantRef(*expr.args[2]) + ")";
      case kSeries: {
        std::string out = "new RangeSeries(static_cast<std::int64_t>(" + std::to_string(expr.args.size()) + ")";
        for (const ExprPtr &arg : expr.args) out += ", " + constantRef(*arg);
        return out + ")";
      }
      default: return "new NilValue()";
    }
  }

  // --- bodies

  void begin(std::int32_t locals, std::int32_t refs) {
    code_.clear();
    temp_ = 0;
    depth_ = 2;
    line("PlausiSection *entry = rt->getCurrentSection();");
    std::string unused = "(void)entry;";
    for (std::int32_t i = 0; i < locals; ++i) {
      std::string n = std::to_string(i);
      line("Value *l" + n + " = nullptr;");
      line("PlausiSection *h" + n + " = entry;");
      unused += " (void)l" + n + "; (void)h" + n + ";";
    }
    for (std::int32_t i = 0; i < refs; ++i) line("FieldDescriptor *r" + std::to_string(i) + " = nullptr;");
    line(unused);
  }

  std::string ruleBody(const RuleDecl &rule) {
    std::string head = "  void " + ruleName(rule) + "(RuntimeContext *rt) {\n    SectionScope section(rt, " +
                       literal(rule.section) + ");\n";
    begin(rule.locals, rule.refs);
    block(rule.body);
    return head + code_ + "  }\n\n";
  }

  std::string functionBody(const FunctionDecl &function) {
    std::string head = "  Value *" + functionName(function) + "(RuntimeContext *rt";
    for (std::size_t i = 0; i < function.params.size(); ++i) head += ", Value *p" + std::to_string(i);
    head += ") {\n";
    begin(function.locals, function.refs);
    for (std::size_t i = 0; i < function.params.size(); ++i) line("l" + std::to_string(i) + " = p" + std::to_string(i) + ";");
    block(function.body);
    line("return rt->createInvalidValue();");
    return head + code_ + "  }\n\n";
  }

  std::string checkBody(std::size_t index) {
    const FieldCheckDecl &check = m_.fieldChecks[index];
    const std::string n = std::to_string(index);
    const std::string root = classOf_[m_.record.get()];
    std::string out = "\nvoid Rules::runCheck" + n + "(RuntimeContext *rt, Field *field) {\n";
    out += "  SectionScope section(rt, " + literal(check.section) + ", true);\n";
    begin(check.locals, check.refs);
    line("r0 = field;");
    block(check.body);
    out += code_ + "}\n";
    out += "\nValue *checkField" + n + "(RuntimeContext *rt, Field *field) {\n";
    out += "  FieldDescriptor *top = field;\n  while (top->getParent() != nullptr) top = top->getParent();\n";
    out += "  static_cast<" + root + " *>(top)->rules->runCheck" + n + "(rt, field);\n";
    out += "  return rt->createNilValue();\n}\n";
    checkDeclarations_ += "Value *checkField" + n + "(RuntimeContext *rt, Field *field);\n";
    return out;
  }

  void line(const std::string &text) { code_ += std::string(static_cast<std::size_t>(depth_) * 2, ' ') + text + "\n"; }
  void open(const std::string &text) {
    line(text.empty() ? "{" : text + " {");
    ++depth_;
  }
  void close(const std::string &text = "}") {
    --depth_;
    line(text);
  }
  std::string temp(const char *prefix = "v") { return prefix + std::to_string(temp_++); }
  // The name of a helper, which the module will then carry.
  std::string use(const char *helper) {
    used_.insert(helper);
    return helper;
  }

  void block(const Block &body) {
    for (const StmtPtr &stmt : body) statement(*stmt);
  }

  void local(std::int32_t slot, const std::string &value) {
    line("l" + std::to_string(slot) + " = " + value + ";");
    line("h" + std::to_string(slot) + " = rt->getCurrentSection();");
  }

  void sectionOf(const Stmt &stmt) {
    if (stmt.hasSection) line("SectionScope round(rt, " + literal(stmt.section) + ");");
  }

  void statement(const Stmt &stmt) {
    switch (stmt.kind) {
      case kIf: {
        int opened = 0;
        for (std::size_t i = 0; i < stmt.exprs.size(); ++i) {
          if (i > 0) {
            open("else");
            ++opened;
          }
          std::string condition = truth(*stmt.exprs[i]);
          open("if (" + condition + ")");
          block(stmt.blocks[i]);
          close();
        }
        if (stmt.blocks.size() > stmt.exprs.size()) {
          open("else");
          block(stmt.blocks.back());
          close();
        }
        while (opened-- > 0) close();
        break;
      }
      case kLet: local(stmt.slot, value(*stmt.exprs[0])); break;
      case kAssign: {
        std::string v = value(*stmt.exprs[0]);
        std::string n = std::to_string(stmt.slot);
        line("l" + n + " = " + use("keep") + "(rt, " + v + ", h" + n + ");");
        break;
      }
      case kSection:
        open("");
        line("SectionScope inner(rt, " + literal(stmt.section) + ");");
        block(stmt.blocks[0]);
        close();
        break;
      case kForEach: forEach(stmt); break;
      case kForRange: {
        open("");
        std::string first = temp("first"), last = temp("last");
        line("std::int64_t " + first + " = " + value(*stmt.exprs[0]) + "->asInteger();");
        line("std::int64_t " + last + " = " + value(*stmt.exprs[1]) + "->asInteger();");
        std::string i = temp("i");
        open("for (std::int64_t " + i + " = " + first + "; " + i + " <= " + last + "; ++" + i + ")");
        sectionOf(stmt);
        local(stmt.slot, "rt->createNumberValue(static_cast<double>(" + i + "))");
        block(stmt.blocks[0]);
        close();
        close();
        break;
      }
      case kBreak: line("break;"); break;
      case kReport: report(*stmt.report); break;
      case kCheck: {
        std::string field = path(*stmt.path);
        std::size_t index = 0;
        while (index < m_.fieldChecks.size() && m_.fieldChecks[index].field->decl != stmt.path->decl) ++index;
        line("runCheck" + std::to_string(index) + "(rt, static_cast<Field *>(" + field + "));");
        break;
      }
      case kTry: {
        open("");
        std::string message = temp("message"), failed = temp("failed");
        line("std::string " + message + ";");
        line("bool " + failed + " = false;");
        open("try");
        block(stmt.blocks[0]);
        close("} catch (const PlausiException &e) {");
        ++depth_;
        line(failed + " = true;");
        line(message + " = e.getMessage();");
        close();
        open("if (" + failed + ")");
        local(stmt.slot, "rt->createStringValue(std::move(" + message + "))");
        block(stmt.blocks[1]);
        close();
        close();
        break;
      }
      case kReturn: {
        std::string v = value(*stmt.exprs[0]);
        line("return " + use("keep") + "(rt, " + v + ", entry);");
        break;
      }
    }
  }

  void forEach(const Stmt &stmt) {
    const Expr &over = *stmt.exprs[0];
    open("");
    if (stmt.loop == kLoopValues) {
      std::string range = value(over);
      std::string walk = temp("walk");
      line("std::unique_ptr<ValueIterator> " + walk + "(" + range + "->asRange());");
      open("while (" + walk + "->hasNext())");
      sectionOf(stmt);
      local(stmt.slot, walk + "->next()");
      block(stmt.blocks[0]);
      close();
      close();
      return;
    }
    std::string array = path(*over.path);
    std::string count = temp("count");
    line("std::int32_t " + count + " = " + use("sizeOf") + "(rt, " + array + ", " + std::to_string(over.path->decl->dims[0]) + ", nullptr);");
    std::string i = temp("i");
    open("for (std::int32_t " + i + " = 0; " + i + " < " + count + "; ++" + i + ")");
    sectionOf(stmt);
    std::string index = temp("index");
    line("std::int32_t " + index + "[] = {" + i + ", -1};");
    std::string kind = stmt.loop == kLoopTopics ? "TopicArray" : "FieldArray";
    line("r" + std::to_string(stmt.slot) + " = static_cast<" + kind + " *>(" + array + ")->getElement(rt, " + index + ");");
    block(stmt.blocks[0]);
    close();
    close();
  }

  // Below the weight level nothing is evaluated; above it everything is
  // evaluated and converted before the problem is made, as the interpreter
  // does.
  void report(const Report &report) {
    open("if (" + std::to_string(report.weight) + " >= rt->getProblemWeightLevel())");
    std::string id = temp("id");
    line("const char *" + id + " = " + value(*report.id) + "->asString();");
    std::string field = report.field != nullptr ? path(*report.field) : "nullptr";
    std::vector<std::string> parts;
    for (const Clause &clause : report.clauses) {
      bool numeric = clauseInfo(clause.kind).numeric();
      std::string part;
      for (std::size_t k = 0; k < clause.values.size() && k < 8; ++k) {
        std::string v = value(*clause.values[k]);
        std::string name = temp(numeric ? "n" : "t");
        if (numeric) {
          line("std::int32_t " + name + " = static_cast<std::int32_t>(" + v + "->asInteger());");
          part += (k ? ", " : "") + name;
        } else {
          line("const char *" + name + " = " + v + "->asString();");
          part = name;
        }
      }
      parts.push_back(part);
    }
    std::string problem = temp("problem");
    line("PlausiProblem *" + problem + " = " + use("newProblem") + "(rt, " + std::to_string(report.type) + ", " +
         std::to_string(report.weight) + ", " + id + ", " + field + ");");
    for (std::size_t c = 0; c < report.clauses.size(); ++c) {
      const Clause &clause = report.clauses[c];
      const std::string &v = parts[c];
      std::string setter = std::string(clauseInfo(clause.kind).setter) + "(";
      if (clause.kind == kClauseInfoType) {
        line(problem + "->" + setter + "static_cast<ProblemInfoType>(" + v + "));");
      } else if (clause.kind == kClauseIndices) {
        std::size_t n = clause.values.size() < 8 ? clause.values.size() : 8;
        line(problem + "->" + setter + std::to_string(n) + ", " + v + ");");
      } else {
        line(problem + "->" + setter + v + ");");
      }
    }
    line("rt->setSectionInfosToProblem(" + problem + ");");
    close();
  }

  // --- expressions: each gives the name of a variable (or an expression
  // without side effects) that holds the result.

  std::string path(const Path &p) {
    if (p.staticId >= 0) {
      std::string out = "root_";
      for (const PathStep &step : p.steps) out += "->" + memberOf_[step.decl];
      return out;
    }
    std::string current = p.base == kBaseRef ? "r" + std::to_string(p.refSlot) : "root_";
    bool typed = p.base == kBaseRecord;
    if (p.base == kBaseRef && p.steps.empty()) return current;
    for (std::size_t s = 0; s < p.steps.size(); ++s) {
      const PathStep &step = p.steps[s];
      if (!step.name.empty()) {
        if (!typed) {
          // current is a group element held as FieldDescriptor: its class is the parent of step.decl.
          current = "static_cast<" + classOf_[parentOf(step.decl)] + " *>(" + current + ")";
        }
        current = current + "->" + memberOf_[step.decl];
        typed = step.decl->isGroup() && !step.decl->isArray();
      }
      if (!step.indices.empty()) {
        std::string index = temp("index");
        std::vector<std::string> values;
        for (const ExprPtr &i : step.indices) values.push_back(value(*i));
        std::string list;
        for (const std::string &v : values) list += "static_cast<std::int32_t>(" + v + "->asInteger()), ";
        line("std::int32_t " + index + "[] = {" + list + "-1};");
        std::string element = temp("element");
        if (step.decl->isGroup()) {
          line(classOf_[step.decl] + " *" + element + " = static_cast<" + classOf_[step.decl] + " *>(" + current +
               "->getElement(rt, " + index + "));");
          typed = true;
        } else {
          line("Field *" + element + " = " + current + "->getElement(rt, " + index + ");");
          typed = false;
        }
        current = element;
      }
    }
    return current;
  }

  const FieldDecl *parentOf(const FieldDecl *decl) {
    if (parents_.empty()) {
      std::vector<const FieldDecl *> work;
      if (m_.record != nullptr) work.push_back(m_.record.get());
      for (const MaterialDecl &material : m_.materials) work.push_back(material.root.get());
      while (!work.empty()) {
        const FieldDecl *group = work.back();
        work.pop_back();
        for (const auto &child : group->children) {
          parents_[child.get()] = group;
          if (child->isGroup()) work.push_back(child.get());
        }
      }
    }
    return parents_[decl];
  }

  std::string value(const Expr &expr) {
    if (expr.constant >= 0) return constantRef(expr);
    std::string v = temp();
    switch (expr.kind) {
      case kLocal: return "l" + std::to_string(expr.slot);
      case kPath: {
        std::string field = path(*expr.path);
        line("Value *" + v + " = static_cast<Field *>(" + field + ")->get(rt);");
        return v;
      }
      case kNot:
      case kAnd:
      case kOr:
      case kIn: {
        std::string b = truth(expr);
        line("Value *" + v + " = rt->createBoolValue(" + b + ");");
        return v;
      }
      case kNeg: {
        std::string a = value(*expr.args[0]);
        line("Value *" + v + " = F::neg(rt, " + a + ");");
        return v;
      }
      case kBinary: {
        static const char *const kOps[] = {"eq", "ne", "gt", "ge", "lt", "le", "plus", "minus", "mult", "div", "KONKATENIEREN"};
        std::string a = value(*expr.args[0]);
        std::string b = value(*expr.args[1]);
        line("Value *" + v + " = F::" + kOps[expr.op] + "(rt, " + a + ", " + b + ");");
        return v;
      }
      case kCall: return call(expr, v);
      case kUserCall: {
        std::string args;
        for (const ExprPtr &arg : expr.args) args += ", " + value(*arg);
        line("Value *" + v + " = " + functionName(*expr.function) + "(rt" + args + ");");
        return v;
      }
      case kExternal: {
        std::string function = temp("function");
        line("ExternalFunction " + function + " = " + use("externalFunction") + "(rt, " + literal(expr.text) + ");");
        std::string args;
        for (const ExprPtr &arg : expr.args) args += ", " + value(*arg);
        line("Value *" + v + " = orInvalid(rt, " + function + "(rt, " + std::to_string(expr.args.size()) + args + "));");
        return v;
      }
      case kInterval: {
        std::string a = value(*expr.args[0]);
        std::string b = value(*expr.args[1]);
        line("Value *" + v + " = rt->createIntervalRange(" + a + ", " + b + ", " + intervalName(expr.intervalType) + ");");
        return v;
      }
      case kSequence: {
        std::string a = value(*expr.args[0]);
        std::string b = value(*expr.args[1]);
        std::string c = value(*expr.args[2]);
        line("Value *" + v + " = rt->createSequenceRange(" + a + ", " + b + ", " + c + ");");
        return v;
      }
      case kSeries: {
        std::string series = temp("series");
        line("auto " + series + " = std::make_unique<RangeSeries>();");
        for (const ExprPtr &arg : expr.args) line(series + "->addRange(" + value(*arg) + ");");
        line("rt->getCurrentSection()->addLocalObject(" + series + ".get());");
        line("Value *" + v + " = " + series + ".release();");
        return v;
      }
      case kQuery: return query(expr, v);
      case kExists: {
        std::string found = query(expr, temp());
        std::string walk = temp("walk");
        line("std::unique_ptr<ValueIterator> " + walk + "(" + found + "->asRange());");
        line("Value *" + v + " = rt->createBoolValue(" + walk + "->hasNext());");
        return v;
      }
      default: line("Value *" + v + " = rt->createNilValue();"); return v;
    }
  }

  std::string query(const Expr &expr, const std::string &v) {
    const Query &q = *expr.query;
    const std::string material = "material" + std::to_string(q.materialIndex) + "_";
    std::vector<std::string> values;
    for (const Condition &condition : q.conditions) values.push_back(value(*condition.value));
    std::vector<const FieldDecl *> fields = q.fieldDecls;
    if (fields.empty()) {
      for (const Condition &condition : q.conditions) fields.push_back(condition.decl);
      const FieldDecl *root = m_.materials[static_cast<std::size_t>(q.materialIndex)].root.get();
      if (q.conditions.empty() && !root->children.empty()) fields.push_back(root->children[0].get());
    }
    std::string args;
    for (std::size_t i = 0; i < q.conditions.size(); ++i) {
      args += ", " + material + "->" + memberOf_[q.conditions[i].decl] + ", " + operatorName(q.conditions[i].op) + ", " + values[i];
    }
    for (const FieldDecl *field : fields) args += ", " + material + "->" + memberOf_[field];
    line("Value *" + v + " = rt->createMaterial(" + material + ", " + std::to_string(q.conditions.size()) + ", " +
         std::to_string(fields.size()) + args + ");");
    return v;
  }

  std::string count(const Expr &expr) {
    const Expr &arrayExpr = *expr.args[0];
    std::string array = path(*arrayExpr.path);
    std::string index = temp("index");
    std::string list;
    for (std::size_t k = 1; k < expr.args.size() && k <= 8; ++k) {
      list += "static_cast<std::int32_t>(" + value(*expr.args[k]) + "->asInteger()), ";
    }
    std::size_t n = expr.args.size() - 1;
    if (n > 0) line("std::int32_t " + index + "[] = {" + list + "-1};");
    std::string declared = n < arrayExpr.path->decl->dims.size() ? std::to_string(arrayExpr.path->decl->dims[n]) : "0";
    return use("sizeOf") + "(rt, " + array + ", " + declared + ", " + (n == 0 ? std::string("nullptr") : index) + ")";
  }

  std::string call(const Expr &expr, const std::string &v) {
    const Builtin &b = *expr.builtin;
    std::string result;
    switch (b.op) {
      case kOpNone: {
        if (b.callArray != nullptr) {
          result = "F::" + std::string(b.name) + "(rt, static_cast<FieldArray *>(" + path(*expr.args[0]->path) + "))";
          break;
        }
        std::string args;
        for (const ExprPtr &arg : expr.args) args += ", " + value(*arg);
        if (std::string(b.name) == "RUNDEN" && expr.args.size() == 1) args += ", nullptr";
        result = "F::" + std::string(b.name) + "(rt" + args + ")";
        break;
      }
      case kOpValid:
      case kOpSet:
      case kOpUsable: result = "rt->createBoolValue(" + truth(expr) + ")"; break;
      case kOpCode: result = "rt->getClassificationByCode(" + value(*expr.args[0]) + "->asString())"; break;
      case kOpCodeOfText: result = "rt->getClassificationByValue(" + value(*expr.args[0]) + "->asString())"; break;
      case kOpCount: result = "rt->createNumberValue(static_cast<double>(" + count(expr) + "))"; break;
      case kOpFits: {
        std::string a = value(*expr.args[0]);
        std::string mask = expr.args.size() > 2 ? value(*expr.args[2]) + "->asString()" : "nullptr";
        result = "F::isTypeConform(rt, " + a + ", " + fieldTypeName(expr.fieldType) + ", " + mask + ")";
        break;
      }
      case kOpRealByMask:
      case kOpIntegerByMask: {
        std::string a = value(*expr.args[0]);
        std::string text = temp("text");
        line("const char *" + text + " = " + a + "->asString();");
        std::string mask = value(*expr.args[1]);
        result = b.op == kOpRealByMask ? "rt->createNumberValue(Util::stringToReal(" + text + ", " + mask + "->asString()))"
                                       : "rt->createNumberValue(static_cast<double>(Util::stringToInteger(" + text + ", " +
                                             mask + "->asString())))";
        break;
      }
      case kOpDateByMask: {
        std::string a = value(*expr.args[0]);
        std::string mask = temp("mask");
        line("const char *" + mask + " = " + value(*expr.args[1]) + "->asString();");
        std::string date = temp("date");
        line("std::tm " + date + "{};");
        line("Util::stringToDate(&" + date + ", " + a + "->asString(), " + mask + ");");
        result = "rt->createDateValue(&" + date + ", " + mask + ")";
        break;
      }
      case kOpParameter: {
        std::string param = temp("param");
        line("Value *" + param + " = rt->getInitParam(" + value(*expr.args[0]) + "->asString());");
        result = param + " != nullptr ? " + param + " : rt->createNilValue()";
        break;
      }
    }
    line("Value *" + v + " = " + result + ";");
    return v;
  }

  // A bool variable with the truth of expr, evaluated as the interpreter's
  // test does (comparisons without a value of their own, UND and ODER short).
  std::string truth(const Expr &expr) {
    std::string b = temp("b");
    switch (expr.kind) {
      case kNot: {
        std::string a = truth(*expr.args[0]);
        line("bool " + b + " = !" + a + ";");
        return b;
      }
      case kAnd:
      case kOr: {
        std::string a = truth(*expr.args[0]);
        line("bool " + b + " = " + a + ";");
        open(std::string("if (") + (expr.kind == kAnd ? "" : "!") + b + ")");
        std::string second = truth(*expr.args[1]);
        line(b + " = " + second + ";");
        close();
        return b;
      }
      case kIn: {
        std::string element = value(*expr.args[0]);
        std::string range = value(*expr.args[1]);
        line("bool " + b + " = " + range + "->contains(" + element + ");");
        return b;
      }
      case kBinary:
        if (expr.op <= kLe) {
          static const char *const kOps[] = {"eq", "ne", "gt", "ge", "lt", "le"};
          std::string a = value(*expr.args[0]);
          std::string c = value(*expr.args[1]);
          line("bool " + b + " = " + a + "->" + kOps[expr.op] + "(" + c + ");");
          return b;
        }
        break;
      case kCall:
        if (expr.builtin->op == kOpValid || expr.builtin->op == kOpSet || expr.builtin->op == kOpUsable) {
          std::string a = value(*expr.args[0]);
          const char *test = expr.builtin->op == kOpValid ? "->isValid()" : expr.builtin->op == kOpSet ? "->isNil()" : "->isUsable()";
          line("bool " + b + " = " + (expr.builtin->op == kOpSet ? "!" : "") + a + test + ";");
          return b;
        }
        break;
      default: break;
    }
    std::string v = value(expr);
    line("bool " + b + " = " + v + "->asBool();");
    return b;
  }

  const Module &m_;
  std::string source_;
  std::string name_;
  std::set<std::string> used_;
  std::map<const void *, std::string> names_;
  std::set<std::string> classes_;
  std::string checkDeclarations_;
  std::map<const FieldDecl *, std::string> classOf_;
  std::map<const FieldDecl *, std::string> memberOf_;
  std::map<const FieldDecl *, const FieldDecl *> parents_;
  std::vector<const FieldDecl *> groupOrder_;
  std::string code_;
  int temp_ = 0;
  int depth_ = 2;
};

}  // namespace

std::string emitCpp(const RuleSet &rules, const std::string &source) { return Emitter(rules, source).run(); }

}  // namespace lang
}  // namespace quorel
