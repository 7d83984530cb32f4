// Many mixed rules, as a rule generator emits a large rule set, beside the
// same rules written by hand on a plain struct, in one run: 50 and 200
// rules over 32 fields of a record, five kinds in turn (a number in a range,
// a text of a format, two dates in order, a name of some length, a number
// above a limit), filing problems on most records. The ratio lines give
// how many times longer the rules take than by hand.

#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "quorel/functions/functions.h"
#include "quorel/model/field.h"
#include "quorel/model/simple_data_record.h"
#include "quorel/model/topic.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/rules/plausi.h"
#include "quorel/rules/plausi_context.h"
#include "quorel/rules/plausi_problem.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/value.h"
#include "side_by_side.h"

namespace {

using namespace quorel;
using F = Functions;

constexpr int kFieldsPerKind = 8;
constexpr int kKinds = 5;
constexpr int kRecords = 1000;

// The texts of one record, as the host reads them: amounts in German form,
// codes, dates under TT.MM.JJJJ and names; some empty, some faulty.
struct Texts {
  std::string amount[kFieldsPerKind];
  std::string code[kFieldsPerKind];
  std::string date[kFieldsPerKind];
  std::string name[kFieldsPerKind];
};

std::vector<Texts> makeTexts() {
  std::mt19937 random(11);
  auto below = [&random](int n) { return std::uniform_int_distribution<int>(0, n - 1)(random); };
  const char *names[] = {"Meier", "Li", "", "Schulz", "Ot", "Hoffmann"};
  std::vector<Texts> all(kRecords);
  char text[48];
  for (Texts &t : all) {
    for (int i = 0; i < kFieldsPerKind; ++i) {
      std::snprintf(text, sizeof text, "%d,%02d", below(7000), below(100));
      t.amount[i] = below(20) == 0 ? "12a" : text;
      std::snprintf(text, sizeof text, "%c%c%03d", 'A' + below(26), below(10) == 0 ? '7' : 'A' + below(26), below(1000));
      t.code[i] = text;
      std::snprintf(text, sizeof text, "%02d.%02d.%04d", 1 + below(28), 1 + below(12), 1990 + below(30));
      t.date[i] = below(25) == 0 ? "" : text;
      t.name[i] = names[below(6)];
    }
  }
  return all;
}

// The rule set as generated code declares it: a record type Satz with the
// fields Betrag1..8, Code1..8, Datum1..8 and Name1..8.
class Satz : public Topic {
 public:
  Satz() : Topic(new TypeDescriptor(nullptr, nullptr, "Satz", nullptr, FieldTypeTopic, nullptr, 0), nullptr) {
    for (int i = 0; i < kFieldsPerKind; ++i) {
      amount[i] = field("Betrag", i, FieldTypeReal, nullptr);
      code[i] = field("Code", i, FieldTypeText, nullptr);
      date[i] = field("Datum", i, FieldTypeDate, "TT.MM.JJJJ");
      name[i] = field("Name", i, FieldTypeText, nullptr);
    }
  }
  ~Satz() override { delete getTypeDescriptor(); }
  Topic *createElement() override { return nullptr; }

  Field *amount[kFieldsPerKind];
  Field *code[kFieldsPerKind];
  Field *date[kFieldsPerKind];
  Field *name[kFieldsPerKind];

 private:
  Field *field(const char *stem, int i, FieldType type, const char *mask) {
    std::string name = stem + std::to_string(i + 1);
    auto *field = new Field(new TypeDescriptor(getTypeDescriptor(), nullptr, name.c_str(), name.c_str(), type, mask, 0),
                            this);
    setField(name.c_str(), field);
    return field;
  }
};

void fill(const Texts &t, SimpleDataRecord *record) {
  char name[32];
  for (int i = 0; i < kFieldsPerKind; ++i) {
    for (auto [stem, text] : {std::pair<const char *, const std::string *>{"Betrag", &t.amount[i]},
                              {"Code", &t.code[i]}, {"Datum", &t.date[i]}, {"Name", &t.name[i]}}) {
      std::snprintf(name, sizeof name, "Satz.%s%d", stem, i + 1);
      if (!text->empty()) record->setValue(name, text->c_str());
    }
  }
}

// A problem with its texts, field and trail, as generated code files it.
void report(RuntimeContext *rt, const char *id, const char *text, Field *field) {
  PlausiProblem *problem = rt->createProblem(PROBLEM_ERROR, 5);
  problem->setId(id);
  problem->setShortDescription(text);
  problem->setLongDescription("Bitte die Angabe pr\xFC" "fen.");
  problem->setReferenceField(field);
  TypeDescriptor *type = field->getTypeDescriptor();
  problem->setFieldDisplayName(type->getFieldNameDisplay());
  problem->setFieldType(type->getFieldType());
  problem->setFieldMask(type->getMask());
  rt->setSectionInfosToProblem(problem);
}

// The five kinds of rule, each on the i-th field of its kind.
void rangeRule(RuntimeContext *rt, Satz *s, int i) {
  Value *amount = s->amount[i]->get(rt);
  if (!F::isTypeConform(rt, amount, FieldTypeReal, nullptr)->asBool()) {
    report(rt, "R-1", "Der Betrag ist keine Zahl.", s->amount[i]);
  } else if (amount->isValid()) {
    Value *range = rt->createIntervalRange(rt->createNumberValue(0.0), rt->createNumberValue(5000.0), INCLUDE_LAST);
    if (!range->contains(amount)) report(rt, "R-2", "Der Betrag liegt nicht zwischen 0 und 5.000.", s->amount[i]);
  }
}

void formatRule(RuntimeContext *rt, Satz *s, int i) {
  Value *code = s->code[i]->get(rt);
  if (code->isValid() && !F::HAT_FORMAT(rt, rt->createStringValue("[A-Z]{2}[0-9]{3}"), code)->asBool()) {
    report(rt, "F-1", "Der Code hat nicht die Form AA999.", s->code[i]);
  }
}

void orderRule(RuntimeContext *rt, Satz *s, int i) {
  Value *first = s->date[i]->get(rt);
  Value *second = s->date[(i + 1) % kFieldsPerKind]->get(rt);
  if (first->isValid() && second->isValid() && F::gt(rt, first, second)->asBool()) {
    report(rt, "D-1", "Die Daten sind nicht in der Reihenfolge.", s->date[i]);
  }
}

void lengthRule(RuntimeContext *rt, Satz *s, int i) {
  Value *name = s->name[i]->get(rt);
  if (!name->isValid() || F::WERTLAENGE(rt, name)->asInteger() < 3) {
    report(rt, "N-1", "Der Name fehlt oder ist zu kurz.", s->name[i]);
  }
}

void limitRule(RuntimeContext *rt, Satz *s, int i) {
  Value *amount = s->amount[i]->get(rt);
  if (amount->isValid() && F::isTypeConform(rt, amount, FieldTypeReal, nullptr)->asBool() &&
      F::gt(rt, amount, rt->createNumberValue(4000.0))->asBool()) {
    report(rt, "L-1", "Der Betrag liegt \xFC" "ber 4.000.", s->amount[i]);
  }
}

using Rule = void (*)(RuntimeContext *, Satz *, int);
const Rule kRules[kKinds] = {rangeRule, formatRule, orderRule, lengthRule, limitRule};

class MixedRules : public Plausi {
 public:
  explicit MixedRules(int count) {
    for (int r = 0; r < count; ++r) names_.push_back("Regel " + std::to_string(r + 1));
  }

 protected:
  void performImpl(RuntimeContext *rt, const char *) override {
    for (std::size_t r = 0; r < names_.size(); ++r) {
      rt->startNewSection(names_[r].c_str(), false);
      kRules[r % kKinds](rt, &satz_, static_cast<int>(r / kKinds) % kFieldsPerKind);
      rt->leaveCurrentSection();
    }
  }
  Value *performFunctionImpl(RuntimeContext *rt, const char *) override { return rt->createNilValue(); }

 private:
  Satz satz_;
  std::vector<std::string> names_;
};

void BM_Rules(benchmark::State &state) {
  std::vector<Texts> texts = makeTexts();
  std::vector<SimpleDataRecord> records(kRecords);
  for (int k = 0; k < kRecords; ++k) fill(texts[static_cast<std::size_t>(k)], &records[static_cast<std::size_t>(k)]);
  MixedRules rules(static_cast<int>(state.range(0)));
  PlausiContext context(nullptr);
  std::int64_t problems = 0;
  for (auto _ : state) {
    for (SimpleDataRecord &record : records) {
      context.reset(&record);
      rules.perform(&context);
      problems += context.getNumOfProblems();
    }
  }
  state.counters["problems_per_record"] =
      static_cast<double>(problems) / static_cast<double>(state.iterations() * kRecords);
}
BENCHMARK(BM_Rules)->Arg(50)->Arg(200)->Unit(benchmark::kMicrosecond);

// By hand: the same checks on the texts, problems into a reused list.
struct HandProblem {
  const char *id;
  std::string text;
  std::string details;
  std::string field;
  std::string section;
};

// A German amount as the rules read it ("1.234,56"); false when it is none.
bool readAmount(const std::string &text, double *number) {
  double value = 0.0;
  double scale = 0.0;
  bool digits = false;
  for (char c : text) {
    if (c >= '0' && c <= '9') {
      digits = true;
      if (scale == 0.0) {
        value = value * 10.0 + (c - '0');
      } else {
        scale *= 10.0;
        value += (c - '0') / scale;
      }
    } else if (c == ',' && scale == 0.0) {
      scale = 1.0;
    } else if (c != '.') {
      return false;
    }
  }
  *number = value;
  return digits;
}

int dayNumber(const std::string &date) {
  auto two = [&date](int at) { return (date[at] - '0') * 10 + (date[at + 1] - '0'); };
  return ((date[6] - '0') * 1000 + (date[7] - '0') * 100 + two(8)) * 372 + two(3) * 31 + two(0);
}

bool isCode(const std::string &code) {
  if (code.size() != 5) return false;
  for (int k = 0; k < 5; ++k) {
    char c = code[static_cast<std::size_t>(k)];
    if (k < 2 ? !(c >= 'A' && c <= 'Z') : !(c >= '0' && c <= '9')) return false;
  }
  return true;
}

class HandRules {
 public:
  explicit HandRules(int count) {
    for (int r = 0; r < count; ++r) names_.push_back("Regel " + std::to_string(r + 1));
    for (int i = 0; i < kFieldsPerKind; ++i) {
      for (const char *stem : {"Betrag", "Code", "Datum", "Name"}) fields_.push_back(stem + std::to_string(i + 1));
    }
  }

  void check(const Texts &t, std::vector<HandProblem> *problems, std::size_t *count) const {
    *count = 0;
    auto file = [&](const char *id, const char *text, int kind, int i, std::size_t rule) {
      if (*count == problems->size()) problems->emplace_back();
      HandProblem &p = (*problems)[(*count)++];
      p.id = id;
      p.text = text;
      p.details = "Bitte die Angabe pr\xFC" "fen.";
      p.field = fields_[static_cast<std::size_t>(i * 4 + kind)];
      p.section = names_[rule];
    };
    for (std::size_t r = 0; r < names_.size(); ++r) {
      int i = static_cast<int>(r / kKinds) % kFieldsPerKind;
      const std::string &amount = t.amount[i];
      double number;
      switch (r % kKinds) {
        case 0:
          if (!amount.empty() && !readAmount(amount, &number)) {
            file("R-1", "Der Betrag ist keine Zahl.", 0, i, r);
          } else if (!amount.empty() && !(number > 0.0 && number <= 5000.0)) {
            file("R-2", "Der Betrag liegt nicht zwischen 0 und 5.000.", 0, i, r);
          }
          break;
        case 1:
          if (!t.code[i].empty() && !isCode(t.code[i])) file("F-1", "Der Code hat nicht die Form AA999.", 1, i, r);
          break;
        case 2: {
          const std::string &first = t.date[i];
          const std::string &second = t.date[(i + 1) % kFieldsPerKind];
          if (!first.empty() && !second.empty() && dayNumber(first) > dayNumber(second)) {
            file("D-1", "Die Daten sind nicht in der Reihenfolge.", 2, i, r);
          }
          break;
        }
        case 3:
          if (t.name[i].size() < 3) file("N-1", "Der Name fehlt oder ist zu kurz.", 3, i, r);
          break;
        default:
          if (!amount.empty() && readAmount(amount, &number) && number > 4000.0) {
            file("L-1", "Der Betrag liegt \xFC" "ber 4.000.", 0, i, r);
          }
          break;
      }
    }
  }

 private:
  std::vector<std::string> names_;
  std::vector<std::string> fields_;
};

void BM_RulesByHand(benchmark::State &state) {
  std::vector<Texts> texts = makeTexts();
  HandRules rules(static_cast<int>(state.range(0)));
  std::vector<HandProblem> problems;
  std::size_t count = 0;
  std::int64_t filed = 0;
  for (auto _ : state) {
    for (const Texts &t : texts) {
      rules.check(t, &problems, &count);
      filed += static_cast<std::int64_t>(count);
    }
    benchmark::DoNotOptimize(problems.data());
  }
  state.counters["problems_per_record"] =
      static_cast<double>(filed) / static_cast<double>(state.iterations() * kRecords);
}
BENCHMARK(BM_RulesByHand)->Arg(50)->Arg(200)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char **argv) {
  return quorel::bench::runSideBySide(argc, argv,
                                      {{"50 mixed rules", "BM_Rules/50", "BM_RulesByHand/50"},
                                       {"200 mixed rules", "BM_Rules/200", "BM_RulesByHand/200"}});
}
