// The Antrag rule module, loaded through PlausiLoader as a host loads it,
// checking 100 000 records held in memory with the flow "Pruefung": records
// per second of one core's time for the whole run, problems included, and
// the allocations per record once the run is warm. Beside it the same rules
// as the rule file examples/rules/antrag.qr, interpreted, and compiled by
// quorel-compile into a module of their own. The records are 10 000
// distinct applications of the kind apps/generate_records.py writes, each
// checked ten times, so that they stay beyond the caches without holding
// 100 000 records at once.

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <quorel/quorel.h>

#include "allocation_count.h"
#include "quorel/lang/rule_set.h"
#include "side_by_side.h"

namespace {

using namespace quorel;

constexpr int kDistinctRecords = 10000;
constexpr int kPasses = 10;

struct Place {
  const char *plz;
  const char *ort;
};
const Place kPlaces[] = {{"10115", "Berlin"}, {"20095", "Hamburg"}, {"80331", "M\xFCnchen"}, {"8001", "Bremen"}};

// The material Gemeinden in memory, queried by postcode.
class Gemeinden : public MaterialAccess {
 public:
  Gemeinden() {
    for (const Place &place : kPlaces) {
      auto record = std::make_unique<SimpleDataRecord>();
      record->setValue("Gemeinden.PLZ", place.plz);
      record->setValue("Gemeinden.Ort", place.ort);
      byPostcode_[place.plz] = std::move(record);
    }
  }
  bool isMaterialAvailable(MaterialDescriptor *) override { return true; }
  bool containsValues(MaterialDescriptor *, RecordFilter *, FieldSet *, ValueSet *) override { return false; }
  void readRecords(DataRecordSet *result, MaterialDescriptor *, RecordFilter *filter, FieldSet *) override {
    if (filter->getNumOfConditions() != 1) return;
    auto found = byPostcode_.find(filter->getCondition(0)->getComparativeValue()->asString());
    if (found != byPostcode_.end()) result->addDataRecord(found->second.get());
  }

 private:
  std::map<std::string, std::unique_ptr<SimpleDataRecord>> byPostcode_;
};

std::string date(std::mt19937 *random, int firstYear, int lastYear) {
  char text[16];
  std::snprintf(text, sizeof text, "%02d.%02d.%04d", std::uniform_int_distribution<int>(1, 28)(*random),
                std::uniform_int_distribution<int>(1, 12)(*random),
                std::uniform_int_distribution<int>(firstYear, lastYear)(*random));
  return text;
}

std::string amount(std::mt19937 *random, int low, int high) {
  return std::to_string(std::uniform_int_distribution<int>(low, high)(*random)) + "," +
         std::to_string(std::uniform_int_distribution<int>(10, 99)(*random));
}

std::vector<std::unique_ptr<SimpleDataRecord>> makeRecords() {
  const char *names[] = {"M\xFCller", "Schmidt", "Schneider", "Fischer", "Weber", ""};
  const char *states[] = {"L", "V", "G", "W", "X"};
  std::mt19937 random(7);
  auto pick = [&random](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
  std::vector<std::unique_ptr<SimpleDataRecord>> records;
  for (int i = 0; i < kDistinctRecords; ++i) {
    auto record = std::make_unique<SimpleDataRecord>();
    char number[16];
    std::snprintf(number, sizeof number, "AB-%06d", i);
    const Place &place = kPlaces[pick(4)];
    record->setValue("Antrag.Antragsnummer", number);
    record->setValue("Antrag.Antragsteller.Name", names[pick(6)]);
    record->setValue("Antrag.Antragsteller.Vorname", "Vorname");
    record->setValue("Antrag.Antragsteller.Geburtsdatum", date(&random, 1950, 2010).c_str());
    record->setValue("Antrag.Antragsteller.Familienstand", states[pick(5)]);
    record->setValue("Antrag.Adresse.Strasse", ("Weg " + std::to_string(i)).c_str());
    record->setValue("Antrag.Adresse.PLZ", place.plz);
    record->setValue("Antrag.Adresse.Ort", place.ort);
    record->setSize("Antrag.Kinder", 2);
    record->setValue("Antrag.Kinder[0].Vorname", "Kind");
    record->setValue("Antrag.Kinder[0].Geburtsdatum", date(&random, 2000, 2020).c_str());
    record->setValue("Antrag.Kinder[1].Geburtsdatum", date(&random, 2000, 2020).c_str());
    record->setValue("Antrag.Betrag", amount(&random, 0, 12000).c_str());
    record->setValue("Antrag.Antragsdatum", date(&random, 2023, 2024).c_str());
    record->setSize("Antrag.Einkommen", 2);
    record->setValue("Antrag.Einkommen[0]", amount(&random, 1000, 7000).c_str());
    record->setValue("Antrag.Einkommen[1]", amount(&random, 1000, 7000).c_str());
    records.push_back(std::move(record));
  }
  return records;
}

// Checks the records with rules, kPasses times per iteration.
void checkAll(benchmark::State &state, Plausi *rules) {
  std::vector<std::unique_ptr<SimpleDataRecord>> records = makeRecords();
  Gemeinden gemeinden;
  std::int64_t problems = 0;
  // One context for all records, as a host keeps one per thread.
  PlausiContext context(nullptr);
  context.setFlow("Pruefung");
  context.setMaterialAccess(&gemeinden);
  auto check = [&](SimpleDataRecord *record) {
    context.reset(record);
    rules->perform(&context);
    problems += context.getNumOfProblems();
  };
  for (auto _ : state) {
    for (int pass = 0; pass < kPasses; ++pass) {
      for (const auto &record : records) check(record.get());
    }
  }
  std::int64_t checked = state.iterations() * kPasses * kDistinctRecords;
  state.counters["problems_per_record"] = static_cast<double>(problems) / static_cast<double>(checked);
  // One more pass, untimed, counts the allocations of the warm run.
  bench::AllocationCount allocations;
  for (const auto &record : records) check(record.get());
  state.counters["allocations_per_record"] =
      static_cast<double>(allocations.count()) / static_cast<double>(kDistinctRecords);
  // A rate of the thread's CPU time: records per second of one core.
  state.counters["records_per_second_per_core"] =
      benchmark::Counter(static_cast<double>(checked), benchmark::Counter::kIsRate);
}

void checkModule(benchmark::State &state, const char *library) {
  PlausiLoader loader;
  Plausi *rules = loader.loadPlausi(library, "Antrag");
  checkAll(state, rules);
  loader.unloadPlausi(rules, "Antrag");
}

void BM_AntragModule(benchmark::State &state) { checkModule(state, QUOREL_ANTRAG_MODULE); }
BENCHMARK(BM_AntragModule)->Unit(benchmark::kMillisecond);

#ifdef QUOREL_ANTRAG_RULES
void BM_AntragRuleFile(benchmark::State &state) {
  lang::Diagnostics diagnostics;
  std::unique_ptr<Plausi> rules = lang::loadRuleFile(QUOREL_ANTRAG_RULES, &diagnostics);
  if (rules == nullptr) {
    state.SkipWithError(diagnostics.format().c_str());
    return;
  }
  checkAll(state, rules.get());
}
BENCHMARK(BM_AntragRuleFile)->Unit(benchmark::kMillisecond);

void BM_AntragCompiled(benchmark::State &state) { checkModule(state, QUOREL_ANTRAG_COMPILED); }
BENCHMARK(BM_AntragCompiled)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

int main(int argc, char **argv) {
  return quorel::bench::runSideBySide(argc, argv,
                                      {{"interpreted antrag.qr / C++ module", "BM_AntragRuleFile", "BM_AntragModule"},
                                       {"compiled antrag.qr / C++ module", "BM_AntragCompiled", "BM_AntragModule"}});
}
