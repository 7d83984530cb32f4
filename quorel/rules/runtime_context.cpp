#include "quorel/rules/runtime_context.h"

#include <cstdarg>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "quorel/material/material.h"
#include "quorel/material/material_value.h"
#include "quorel/model/array_value_iterator.h"
#include "quorel/rules/classification_ressource.h"
#include "quorel/rules/inline_list.h"
#include "quorel/values/bool_value.h"
#include "quorel/values/date_value.h"
#include "quorel/values/inconvertible_value.h"
#include "quorel/values/invalid_value.h"
#include "quorel/values/nil_value.h"
#include "quorel/values/number_value.h"
#include "quorel/values/object_pool.h"
#include "quorel/values/range_series.h"
#include "quorel/values/sequence_range.h"
#include "quorel/values/string_value.h"
#include "quorel/values/value_iterator.h"
#include "quorel/values/value_keeper.h"

namespace quorel {

namespace {

// A trace line "<indentation><arrow><name>", two blanks of indentation for
// each open section. Built only when the logger takes trace lines.
void traceSection(Logger *logger, std::int32_t openSections, const char *arrow, const char *name) {
  if (!logger->isTraceOn()) return;
  std::ostream &line = logger->trace();
  for (std::int32_t i = 0; i < openSections; ++i) line << "  ";
  line << arrow << name;
}

// A section without a name shows none; a null text would spoil the stream.
const char *traceName(const char *name) { return name != nullptr ? name : ""; }

}  // namespace

RuntimeContext::RuntimeContext(PlausiContext *context, ClassificationRessource *classifications)
    : context_(context), classifications_(classifications) {
  startNewSection("Plausi", false);
}

RuntimeContext::~RuntimeContext() {
  if (current_ != nullptr) leaveCurrentSection();
  // Sections left open by an exception: release the inner ones first, as
  // leaving them in order would.
  while (current_ != nullptr) {
    std::unique_ptr<PlausiSection> section(current_);
    current_ = section->getParent();
  }
}

Value *RuntimeContext::getClassificationByCode(const char *code) {
  return classifications_->getClassificationByCode(code);
}

Value *RuntimeContext::getClassificationByValue(const char *value) {
  return classifications_->getClassificationByValue(value);
}

void RuntimeContext::startNewSection(const char *name, bool checkProc) {
  traceSection(getLogger(), depth_, "--> ", traceName(name));
  current_ = new PlausiSection(name, current_, checkProc, ++sectionsOpened_);
  ++depth_;
}

void RuntimeContext::leaveCurrentSection() {
  std::unique_ptr<PlausiSection> section(current_);
  current_ = section->getParent();
  --depth_;
  traceSection(getLogger(), depth_, "<-- ", traceName(section->getName()));
}

void RuntimeContext::setSectionInfosToProblem(PlausiProblem *problem) {
  PlausiSection *innermost = getCurrentSection();
  if (innermost == nullptr) return;
  // Each field once, in the order first read. A section reads a few fields
  // as a rule: those are compared one by one; a set finds repeats among
  // many, as a loop's section may read.
  constexpr std::int32_t kFewFields = 16;
  std::int32_t count = innermost->getNumOfAccessedFields();
  std::int32_t first = problem->getNumOfAccessedFields();
  // Made only for many fields: most problems come from sections of a few.
  std::optional<std::unordered_set<FieldDescriptor *, std::hash<FieldDescriptor *>,
                                   std::equal_to<FieldDescriptor *>, PoolAllocator<FieldDescriptor *>>>
      added;
  if (count > kFewFields) added.emplace();
  for (std::int32_t i = 0; i < count; ++i) {
    FieldDescriptor *field = innermost->getAccessedField(i);
    if (field == nullptr) continue;
    bool repeated = false;
    if (!added) {
      for (std::int32_t j = first; j < problem->getNumOfAccessedFields() && !repeated; ++j) {
        repeated = problem->getAccessedField(j) == field;
      }
    } else {
      repeated = !added->insert(field).second;
    }
    if (!repeated) problem->addAccessedField(field);
  }
  for (PlausiSection *s = innermost; s != nullptr; s = s->getParent()) {
    problem->addPlausiSection(s->getName(), s->getNameLength());
  }
}

Value *RuntimeContext::createValue(Value *source) { return own(source->copy()); }

Value *RuntimeContext::createNilValue() { return own(new NilValue()); }

Value *RuntimeContext::createInvalidValue() { return own(new InvalidValue()); }

Value *RuntimeContext::createInconvertibleValue(const char *message) {
  return own(new InconvertibleValue(message));
}

ValueIterator *RuntimeContext::createIterator(Value *value) {
  ValueIterator *walk = own(value->asRange());
  // Asked of every value, not of ranges alone: a classification or a
  // material value hands out the walk of the range behind it.
  walk->keepDeliveredIn(own(new ValueKeeper()));
  return walk;
}

ArrayValueIterator *RuntimeContext::createIterator(FieldArray *array) {
  return own(new FieldArrayValueIterator(this, array));
}

ArrayValueIterator *RuntimeContext::createIterator(LocalArray *array) {
  return own(new LocalArrayValueIterator(this, array));
}

Value *RuntimeContext::createStringValue(const char *text) { return own(new StringValue(text)); }

Value *RuntimeContext::createStringValue(std::string text) { return own(new StringValue(std::move(text))); }

Value *RuntimeContext::createStringValue(const char *text, const unsigned char (&byteMap)[256]) {
  return own(new StringValue(text, byteMap));
}

Value *RuntimeContext::createBoolValue(bool flag) { return own(new BoolValue(flag)); }

Value *RuntimeContext::createNumberValue(double number) { return own(new NumberValue(number)); }

Value *RuntimeContext::createNumberValue(const char *text) { return own(new NumberValue(text)); }

Value *RuntimeContext::createDateValue(const std::tm *date, const char *mask) {
  return own(new DateValue(date, mask));
}

Value *RuntimeContext::createDateValue(const char *text, const char *mask) {
  return own(new DateValue(text, mask));
}

Value *RuntimeContext::createSequenceRange(Value *first, Value *second, Value *last) {
  return own(new SequenceRange(first, second, last));
}

Value *RuntimeContext::createIntervalRange(Value *first, Value *last, IntervalType type) {
  return own(new IntervalRange(first, last, type));
}

Value *RuntimeContext::createRangeSeries(std::int32_t count, ...) {
  auto series = std::make_unique<RangeSeries>();
  va_list args;
  va_start(args, count);
  std::vector<Value *> members;
  for (std::int32_t i = 0; i < count; ++i) members.push_back(va_arg(args, Value *));
  va_end(args);
  for (Value *member : members) series->addRange(member);
  return own(series.release());
}

Value *RuntimeContext::createMaterial(MaterialDescriptor *material, std::int32_t conditions,
                                      std::int32_t fields, ...) {
  struct Condition {
    Field *field;
    OperatorType op;
    Value *value;
  };
  // Read the arguments first: copying a comparative value may throw. A query
  // has a few of each, which these lists hold in themselves.
  InlineList<Condition, 4> triples;
  InlineList<Field *, 4> wanted;
  va_list args;
  va_start(args, fields);
  for (std::int32_t i = 0; i < conditions; ++i) {
    Field *field = va_arg(args, Field *);
    auto op = static_cast<OperatorType>(va_arg(args, int));
    triples.push_back({field, op, va_arg(args, Value *)});
  }
  for (std::int32_t i = 0; i < fields; ++i) wanted.push_back(va_arg(args, Field *));
  va_end(args);

  // Each in one block with the count that the Material's copies share.
  auto filter = std::allocate_shared<RecordFilter>(PoolAllocator<RecordFilter>());
  for (std::size_t i = 0; i < triples.size(); ++i) {
    filter->addCondition(new FilterCondition(triples[i].field, triples[i].op, triples[i].value));
  }
  auto fieldSet = std::allocate_shared<FieldSet>(PoolAllocator<FieldSet>());
  for (std::size_t i = 0; i < wanted.size(); ++i) fieldSet->addField(wanted[i]);
  return own(new Material(this, material, std::move(filter), std::move(fieldSet)));
}

Value *RuntimeContext::createMaterialValue(Field *field, DataRecord *record) {
  return own(new MaterialValue(this, field, record));
}

}  // namespace quorel
