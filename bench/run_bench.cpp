// The cost of the run spine as generated rule code meets it, beside the same
// rule written by hand on a plain struct, in one run. The rule opens a
// section, reads three fields of a SimpleDataRecord, compares the age with
// lt, upper-cases the name with GROSSBUCHSTABEN and checks the postcode with
// HAT_FORMAT "[0-9]{5}". The same rule without the format check shows the
// spine apart from the pattern engine.

#include <cstdint>
#include <string>

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
#include "side_by_side.h"

namespace {

using namespace quorel;
using F = Functions;

class NoRules : public Plausi {
 protected:
  Value *performFunctionImpl(RuntimeContext *runtime, const char *) override { return runtime->createNilValue(); }
  void performImpl(RuntimeContext *, const char *) override {}
};

// Topics as a rule generator declares them: Antrag with Name, Alter and the
// nested topic Adresse with PLZ.
class GeneratedTopic : public Topic {
 public:
  using Topic::Topic;
  Topic *createElement() override { return nullptr; }

 protected:
  Field *field(const char *name, FieldType type) {
    auto *field = new Field(new TypeDescriptor(getTypeDescriptor(), nullptr, name, nullptr, type, nullptr, 0), this);
    setField(name, field);
    return field;
  }
};

class Adresse : public GeneratedTopic {
 public:
  Adresse(TypeDescriptor *type, FieldDescriptor *parent) : GeneratedTopic(type, parent) {
    plz = field("PLZ", FieldTypeText);
  }
  Field *plz;
};

class Antrag : public GeneratedTopic {
 public:
  Antrag() : GeneratedTopic(new TypeDescriptor(nullptr, nullptr, "Antrag", nullptr, FieldTypeTopic, nullptr, 0), nullptr) {
    name = field("Name", FieldTypeText);
    alter = field("Alter", FieldTypeInteger);
    auto *type = new TypeDescriptor(getTypeDescriptor(), nullptr, "Adresse", nullptr, FieldTypeTopic, nullptr, 0);
    adresse = new Adresse(type, this);
    setField("Adresse", adresse);
  }
  ~Antrag() override { delete getTypeDescriptor(); }

  Field *name;
  Field *alter;
  Adresse *adresse;
};

void BM_Rule(benchmark::State &state, bool withFormat) {
  Antrag antrag;
  SimpleDataRecord record;
  record.setValue("Antrag.Name", "M\xFCller");
  record.setValue("Antrag.Alter", 17);
  record.setValue("Antrag.Adresse.PLZ", "10115");
  NoRules plausi;
  PlausiContext context(&record);
  RuntimeContext runtime(&context, &plausi);
  for (auto _ : state) {
    runtime.startNewSection("Regel Antragsteller", false);
    Value *young = F::lt(&runtime, antrag.alter->get(&runtime), runtime.createNumberValue(18.0));
    Value *upper = F::GROSSBUCHSTABEN(&runtime, antrag.name->get(&runtime));
    Value *plz = antrag.adresse->plz->get(&runtime);
    benchmark::DoNotOptimize(young->asBool());
    benchmark::DoNotOptimize(upper->asString());
    if (withFormat) {
      benchmark::DoNotOptimize(F::HAT_FORMAT(&runtime, runtime.createStringValue("[0-9]{5}"), plz)->asBool());
    } else {
      benchmark::DoNotOptimize(plz);
    }
    runtime.leaveCurrentSection();
  }
}
BENCHMARK_CAPTURE(BM_Rule, whole, true);
BENCHMARK_CAPTURE(BM_Rule, without_format, false);

struct PlainAntrag {
  std::string name;
  std::int64_t alter;
  std::string plz;
};

// The case pairs of the language, as GROSSBUCHSTABEN applies them.
char upperCase(char c) {
  auto byte = static_cast<unsigned char>(c);
  if (byte >= 'a' && byte <= 'z') return static_cast<char>(byte - 'a' + 'A');
  if (byte == 0xE4 || byte == 0xF6 || byte == 0xFC) return static_cast<char>(byte - 0x20);
  return c;
}

bool isPostcode(const std::string &text) {
  if (text.size() != 5) return false;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
  }
  return true;
}

void BM_RuleByHand(benchmark::State &state, bool withFormat) {
  PlainAntrag antrag{"M\xFCller", 17, "10115"};
  for (auto _ : state) {
    benchmark::DoNotOptimize(antrag);
    bool young = antrag.alter < 18;
    std::string upper = antrag.name;
    for (char &c : upper) c = upperCase(c);
    benchmark::DoNotOptimize(young);
    benchmark::DoNotOptimize(upper.data());
    if (withFormat) {
      benchmark::DoNotOptimize(isPostcode(antrag.plz));
    } else {
      benchmark::DoNotOptimize(antrag.plz.data());
    }
  }
}
BENCHMARK_CAPTURE(BM_RuleByHand, whole, true);
BENCHMARK_CAPTURE(BM_RuleByHand, without_format, false);

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

int main(int argc, char **argv) {
  return quorel::bench::runSideBySide(
      argc, argv,
      {{"rule", "BM_Rule/whole", "BM_RuleByHand/whole"},
       {"rule without HAT_FORMAT", "BM_Rule/without_format", "BM_RuleByHand/without_format"}});
}
