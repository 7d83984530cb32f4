#include "quorel/lang/interpreter.h"

#include <functional>
#include <memory>

#include "quorel/model/field.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/classification.h"
#include "quorel/values/string_value.h"

namespace quorel {
namespace lang {

namespace {

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

}  // namespace

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
  program_ = std::make_unique<Program>(module_, root_, materials_);
}

Interpreter::~Interpreter() = default;

void Interpreter::performImpl(RuntimeContext *runtime, const char *flow) {
  if (flow != nullptr) program_->runFlow(runtime, flow);
}

Value *Interpreter::performFunctionImpl(RuntimeContext *runtime, const char *name) {
  Value *result = name != nullptr ? program_->runFunction(runtime, name) : nullptr;
  return result != nullptr ? result : runtime->createInvalidValue();
}

void Interpreter::runFieldCheck(RuntimeContext *runtime, Field *field) {
  // Every topic of this rule set's record type is a DeclaredTopic.
  program_->runFieldCheck(runtime, static_cast<DeclaredTopic *>(field->getParent())->declOf(field), field);
}

}  // namespace lang
}  // namespace quorel
