// The cost of the run spine as generated rule code meets it: opening
// sections, making values under them, reading fields of a record and
// comparing values, per simulated rule.

#include <benchmark/benchmark.h>

#include "quorel/functions/functions.h"
#include "quorel/model/field.h"
#include "quorel/model/simple_data_record.h"
#include "quorel/model/topic.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/rules/plausi.h"
#include "quorel/rules/plausi_context.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/value.h"

namespace {

using namespace quorel;

class NoRules : public Plausi {
 protected:
  Value *performFunctionImpl(RuntimeContext *runtime, const char *) override { return runtime->createNilValue(); }
  void performImpl(RuntimeContext *, const char *) override {}
};

class Person : public Topic {
 public:
  Person() : Topic(new TypeDescriptor(nullptr, nullptr, "Antrag", nullptr, FieldTypeTopic, nullptr, 0), nullptr) {
    name = add("Name", FieldTypeText);
    alter = add("Alter", FieldTypeInteger);
  }
  ~Person() override { delete getTypeDescriptor(); }
  Topic *createElement() override { return nullptr; }

  Field *name;
  Field *alter;

 private:
  Field *add(const char *fieldName, FieldType type) {
    auto *field = new Field(new TypeDescriptor(getTypeDescriptor(), nullptr, fieldName, nullptr, type, nullptr, 0), this);
    setField(fieldName, field);
    return field;
  }
};

// One rule: a section, two field reads, a comparison, a text function.
void BM_Rule(benchmark::State &state) {
  Person person;
  SimpleDataRecord record;
  record.setValue("Antrag.Name", "M\xFCller");
  record.setValue("Antrag.Alter", 17);
  NoRules plausi;
  PlausiContext context(&record);
  RuntimeContext runtime(&context, &plausi);
  Value *adult = runtime.createNumberValue(18.0);
  for (auto _ : state) {
    runtime.startNewSection("Regel", false);
    Value *age = person.alter->get(&runtime);
    Value *young = Functions::lt(&runtime, age, adult);
    Value *upper = Functions::GROSSBUCHSTABEN(&runtime, person.name->get(&runtime));
    benchmark::DoNotOptimize(young->asBool());
    benchmark::DoNotOptimize(upper->asString());
    runtime.leaveCurrentSection();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Rule);

// Parsing a German number text and comparing it, as a record field is used.
void BM_NumberFromText(benchmark::State &state) {
  NoRules plausi;
  PlausiContext context(nullptr);
  RuntimeContext runtime(&context, &plausi);
  Value *limit = runtime.createNumberValue(1000.0);
  for (auto _ : state) {
    runtime.startNewSection("Regel", false);
    Value *amount = runtime.createNumberValue("1.234,56");
    benchmark::DoNotOptimize(amount->gt(limit));
    runtime.leaveCurrentSection();
  }
}
BENCHMARK(BM_NumberFromText);

}  // namespace
