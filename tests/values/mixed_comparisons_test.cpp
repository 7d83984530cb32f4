// The comparison table of the language across all value kinds, in both
// operand orders: which comparisons answer true, which false, and which
// throw with which message.

#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "quorel/values/classification.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

// One letter per comparison eq, ne, gt, ge, lt, le: T or F for the answer,
// or the failure: N "Wert ist nicht initialisiert.", J "Konnte nicht in einen
// boolschen Wert umgewandelt werden.", B and Z the refusals of a truth value
// and a number to be a date, 8 any other conversion failure.
struct Row {
  const char *left;
  const char *right;
  const char *expected;
};

std::string outcome(const std::function<bool()> &compare) {
  try {
    return compare() ? "T" : "F";
  } catch (const PlausiException &e) {
    if (e.getType() != EXCEPTION_CONVERSION) return "?";
    std::string message = e.getMessage();
    if (message == "Wert ist nicht initialisiert.") return "N";
    if (message == "Konnte nicht in einen boolschen Wert umgewandelt werden.") return "J";
    if (message == "Ein boolscher Wert kann nicht in einen Datumswert umgewandelt werden.") return "B";
    if (message == "Eine Zahl kann nicht in einen Datumswert umgewandelt werden.") return "Z";
    return "8";
  }
}

class MixedComparisonsTest : public ::testing::Test {
 protected:
  Value *make(const std::string &name) {
    RuntimeContext *rt = &run_.runtime;
    if (name == "nil") return rt->createNilValue();
    if (name == "invalid") return rt->createInvalidValue();
    if (name == "inconvertible") return rt->createInconvertibleValue("kaputt");
    if (name == "true") return rt->createBoolValue(true);
    if (name == "number 1") return rt->createNumberValue(1.0);
    if (name == "date") return rt->createDateValue("01.02.2020", nullptr);
    if (name.rfind("text ", 0) == 0) return rt->createStringValue(name.substr(5).c_str());
    if (name.rfind("class ", 0) == 0) {
      Classification coded(rt->createStringValue(name.substr(6).c_str()), "Bedeutung");
      return rt->createValue(&coded);
    }
    ADD_FAILURE() << "unknown kind " << name;
    return rt->createNilValue();
  }

  std::string compareAll(Value *a, Value *b) {
    return outcome([&] { return a->eq(b); }) + outcome([&] { return a->ne(b); }) +
           outcome([&] { return a->gt(b); }) + outcome([&] { return a->ge(b); }) +
           outcome([&] { return a->lt(b); }) + outcome([&] { return a->le(b); });
  }

  TestRun run_;
};

TEST_F(MixedComparisonsTest, EveryPairOfKindsInBothOrders) {
  const Row rows[] = {
      {"nil", "nil", "FFFFFF"},
      {"text 1", "nil", "NNNNNN"},
      {"nil", "text 1", "NNNNNN"},
      {"true", "nil", "NNFFFF"},
      {"nil", "true", "NNFFFF"},
      {"number 1", "nil", "FTNNNN"},
      {"nil", "number 1", "FTNNNN"},
      {"date", "nil", "FTNNNN"},
      {"nil", "date", "FTNNNN"},
      {"invalid", "nil", "FTFFFF"},
      {"nil", "inconvertible", "FTFFFF"},
      {"invalid", "inconvertible", "TFFFFF"},
      {"inconvertible", "invalid", "TFFFFF"},
      {"invalid", "number 1", "FTFFFF"},
      {"number 1", "invalid", "FTFFFF"},
      {"inconvertible", "date", "FTFFFF"},
      {"text 1", "invalid", "FTFFFF"},
      {"text 10", "text 9", "FTFFTT"},
      {"text 1,0", "text 1", "FTTTFF"},
      {"text 1", "number 1", "TFFTFT"},
      {"number 1", "text 1,0", "TFFTFT"},
      {"text 10", "number 1", "FTTTFF"},
      {"text x", "number 1", "FT8888"},
      {"number 1", "text x", "FT8888"},
      {"text wAhR", "true", "TFFFFF"},
      {"true", "text ja", "JJFFFF"},
      {"true", "number 1", "TFFTFT"},
      {"number 1", "true", "TFFTFT"},
      {"date", "text 01.02.2020", "TFFTFT"},
      {"text 02.02.2020", "date", "FTTTFF"},
      {"date", "text 2020-02-01", "888888"},
      {"date", "number 1", "ZZZZZZ"},
      {"number 1", "date", "ZZZZZZ"},
      {"true", "date", "BBBBBB"},
      {"class 1", "number 1", "TFFTFT"},
      {"number 1", "class 1", "TFFTFT"},
      {"class 1", "text 1,0", "FTFFTT"},
      {"text 1,0", "class 1", "FTTTFF"},
      {"class 1", "class 1", "TFFTFT"},
      {"date", "class 01.02.2020", "TFFTFT"},
      {"class 01.02.2020", "date", "TFFTFT"},
      {"class 1", "nil", "NNNNNN"},
      {"class 1", "invalid", "FTFFFF"},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(row.expected, compareAll(make(row.left), make(row.right)))
        << row.left << " against " << row.right;
  }
}

TEST_F(MixedComparisonsTest, ContainsAsksTheLeftOperandOnly) {
  // A text contains what equals it as text: no level rule.
  EXPECT_FALSE(make("text 1,0")->contains(make("number 1")));
  EXPECT_TRUE(make("number 1")->contains(make("text 1,0")));
  EXPECT_FALSE(make("nil")->contains(make("nil")));
  EXPECT_TRUE(make("invalid")->contains(make("inconvertible")));
}

}  // namespace
}  // namespace quorel
