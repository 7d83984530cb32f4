#include "quorel/rules/runtime_context.h"

#include <string>
#include <unordered_set>

#include "quorel/rules/classification_ressource.h"
#include "quorel/values/bool_value.h"
#include "quorel/values/date_value.h"
#include "quorel/values/inconvertible_value.h"
#include "quorel/values/invalid_value.h"
#include "quorel/values/nil_value.h"
#include "quorel/values/number_value.h"
#include "quorel/values/string_value.h"
#include "quorel/values/value_iterator.h"

namespace quorel {

namespace {

// Two blanks for each open section.
std::string indentation(std::int32_t openSections) {
  return std::string(static_cast<std::size_t>(openSections) * 2, ' ');
}

}  // namespace

RuntimeContext::RuntimeContext(PlausiContext *context, ClassificationRessource *classifications)
    : context_(context), classifications_(classifications) {
  startNewSection("Plausi", false);
}

RuntimeContext::~RuntimeContext() {
  if (!sections_.empty()) leaveCurrentSection();
  // Sections left open by an exception: release the inner ones first, as
  // leaving them in order would.
  while (!sections_.empty()) sections_.pop_back();
}

Value *RuntimeContext::getClassificationByCode(const char *code) {
  return classifications_->getClassificationByCode(code);
}

Value *RuntimeContext::getClassificationByValue(const char *value) {
  return classifications_->getClassificationByValue(value);
}

void RuntimeContext::startNewSection(const char *name, bool checkProc) {
  getLogger()->trace() << indentation(depth()) << "--> " << (name != nullptr ? name : "");
  sections_.push_back(std::make_unique<PlausiSection>(name, getCurrentSection(), checkProc));
}

void RuntimeContext::leaveCurrentSection() {
  std::unique_ptr<PlausiSection> section = std::move(sections_.back());
  sections_.pop_back();
  getLogger()->trace() << indentation(depth()) << "<-- " << section->getName();
}

PlausiSection *RuntimeContext::getCurrentSection() const {
  return sections_.empty() ? nullptr : sections_.back().get();
}

void RuntimeContext::setSectionInfosToProblem(PlausiProblem *problem) {
  PlausiSection *innermost = getCurrentSection();
  if (innermost == nullptr) return;
  std::unordered_set<FieldDescriptor *> added;
  for (std::int32_t i = 0; i < innermost->getNumOfAccessedFields(); ++i) {
    FieldDescriptor *field = innermost->getAccessedField(i);
    if (field != nullptr && added.insert(field).second) problem->addAccessedField(field);
  }
  for (PlausiSection *s = innermost; s != nullptr; s = s->getParent()) {
    problem->addPlausiSection(s->getName());
  }
}

Value *RuntimeContext::createValue(Value *source) { return own(source->copy()); }

Value *RuntimeContext::createNilValue() { return own(new NilValue()); }

Value *RuntimeContext::createInvalidValue() { return own(new InvalidValue()); }

Value *RuntimeContext::createInconvertibleValue(const char *message) {
  return own(new InconvertibleValue(message));
}

ValueIterator *RuntimeContext::createIterator(Value *value) { return own(value->asRange()); }

Value *RuntimeContext::createStringValue(const char *text) { return own(new StringValue(text)); }

Value *RuntimeContext::createBoolValue(bool flag) { return own(new BoolValue(flag)); }

Value *RuntimeContext::createNumberValue(double number) { return own(new NumberValue(number)); }

Value *RuntimeContext::createNumberValue(const char *text) { return own(new NumberValue(text)); }

Value *RuntimeContext::createDateValue(const std::tm *date, const char *mask) {
  return own(new DateValue(date, mask));
}

Value *RuntimeContext::createDateValue(const char *text, const char *mask) {
  return own(new DateValue(text, mask));
}

}  // namespace quorel
