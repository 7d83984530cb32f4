// Running rule texts in tests: read (failing the test on any mistake), run
// on a record given as cells, and the problems as one text to compare.

#ifndef QUOREL_TESTS_LANG_LANG_TEST_SUPPORT_H_
#define QUOREL_TESTS_LANG_LANG_TEST_SUPPORT_H_

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorel/quorel.h>

#include "quorel/lang/rule_set.h"

namespace quorel {
namespace lang {
namespace testing {

using Cells = std::vector<std::pair<std::string, std::string>>;

// The rule set of text, or null after a failed expectation that shows the
// diagnostics.
inline std::shared_ptr<const RuleSet> readOk(const std::string &text) {
  Diagnostics diagnostics;
  std::shared_ptr<const RuleSet> rules = readRuleText(text, "test.qr", &diagnostics);
  EXPECT_NE(rules, nullptr) << diagnostics.format();
  return rules;
}

// The diagnostics of a faulty text, as format() gives them.
inline std::string mistakes(const std::string &text) {
  Diagnostics diagnostics;
  std::shared_ptr<const RuleSet> rules = readRuleText(text, "test.qr", &diagnostics);
  EXPECT_EQ(rules, nullptr);
  return diagnostics.format();
}

// One line per problem: "ID type weight: text | details | field | read a, b | trail s1 < s2".
inline std::string describe(const PlausiContext &context) {
  std::string out;
  for (std::int32_t i = 0; i < context.getNumOfProblems(); ++i) {
    const PlausiProblem &p = *context.getProblem(i);
    auto text = [](const char *t) { return std::string(t != nullptr ? t : "-"); };
    out += text(p.getId()) + " " + std::to_string(p.getType()) + " " + std::to_string(p.getWeight()) + ": " +
           text(p.getShortDescription()) + " | " + text(p.getLongDescription()) + " | " +
           (p.getReferenceField() != nullptr ? p.getReferenceField()->getHierarchyText() : "-") + " | read";
    for (std::int32_t f = 0; f < p.getNumOfAccessedFields(); ++f) {
      out += (f == 0 ? " " : ", ") + p.getAccessedField(f)->getHierarchyText();
    }
    out += " | trail";
    for (std::int32_t s = 0; s < p.getNumOfPlausiSections(); ++s) out += (s == 0 ? " " : " < ") + text(p.getPlausiSection(s));
    out += "\n";
  }
  return out;
}

// Fills a record: a cell "R.A" sets a field, "R.Kinder#" a size.
inline void fill(SimpleDataRecord *record, const Cells &cells) {
  for (const auto &cell : cells) {
    if (!cell.first.empty() && cell.first.back() == '#') {
      record->setSize(cell.first.substr(0, cell.first.size() - 1).c_str(), std::stoi(cell.second));
    } else {
      record->setValue(cell.first.c_str(), cell.second.c_str());
    }
  }
}

// Runs the flow of plausi on a record of cells: the problems, or
// "Ausnahme TYPE: MESSAGE" after them when the run failed.
inline std::string run(Plausi *plausi, const Cells &cells, const char *flow = "Pruefung",
                       MaterialAccess *materials = nullptr, std::int32_t weightLevel = 1) {
  SimpleDataRecord record;
  fill(&record, cells);
  PlausiContext context(&record);
  context.setFlow(flow);
  context.setProblemWeightLevel(weightLevel);
  if (materials != nullptr) context.setMaterialAccess(materials);
  std::string failure;
  try {
    plausi->perform(&context);
  } catch (const PlausiException &e) {
    failure = "Ausnahme " + std::to_string(e.getType()) + ": " + e.getMessage() + "\n";
  }
  return describe(context) + failure;
}

// Reads text and runs it once.
inline std::string runText(const std::string &text, const Cells &cells, const char *flow = "Pruefung") {
  std::shared_ptr<const RuleSet> rules = readOk(text);
  if (rules == nullptr) return "not read";
  std::unique_ptr<Plausi> plausi = rules->createPlausi();
  return run(plausi.get(), cells, flow);
}

}  // namespace testing
}  // namespace lang
}  // namespace quorel

#endif  // QUOREL_TESTS_LANG_LANG_TEST_SUPPORT_H_
