// What a field read makes of a record that fails: a failed conversion becomes
// an inconvertible value, every other failure reaches the rule unchanged. And
// the library's own record, read by a shorter way, reads as a host's does.

#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "model/test_tree.h"
#include "quorel/model/feature_field.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

// A record that fails every read of a value with the given exception.
class FailingRecord : public SimpleDataRecord {
 public:
  FailingRecord(std::int32_t type, const char *message) : type_(type), message_(message) {}

  const char *getString(FieldDescriptor *) override { throw PlausiException(type_, message_); }
  std::int64_t getInteger(FieldDescriptor *) override { throw PlausiException(type_, message_); }
  double getReal(FieldDescriptor *) override { throw PlausiException(type_, message_); }
  bool isEmpty(FieldDescriptor *) override { return false; }

 private:
  std::int32_t type_;
  const char *message_;
};

class FieldReadFailuresTest : public ::testing::Test {
 protected:
  // Reads each kind of field of the root through the record; f gets each read.
  template <typename F>
  void readEach(DataRecord *record, F f) {
    NoRules plausi;
    PlausiContext context(record);
    RuntimeContext runtime(&context, &plausi);
    FeatureField feature(root_.betrag);
    for (Variable *variable : std::initializer_list<Variable *>{root_.name, root_.alter, root_.alterText,
                                                                root_.betrag, root_.datum, &feature}) {
      f(&runtime, variable);
    }
  }

  StandaloneRoot root_;
};

TEST_F(FieldReadFailuresTest, OnlyAFailedConversionBecomesAValue) {
  FailingRecord unreadable(EXCEPTION_CONVERSION, "kaputt");
  readEach(&unreadable, [](RuntimeContext *runtime, Variable *variable) {
    Value *value = variable->get(runtime);
    EXPECT_TRUE(value->isNil());
    EXPECT_FALSE(value->isValid());
    expectFailure([&] { value->asString(); }, EXCEPTION_CONVERSION,
                  "Dieser Wert ist nicht verf\xFC" "gbar: kaputt");
  });

  FailingRecord locked(EXCEPTION_GENERAL, "Satz gesperrt");
  readEach(&locked, [](RuntimeContext *runtime, Variable *variable) {
    expectFailure([&] { variable->get(runtime); }, EXCEPTION_GENERAL, "Satz gesperrt");
  });

  FailingRecord refused(EXCEPTION_ILLEGAL_ACCESS, "kein Zugriff");
  readEach(&refused, [](RuntimeContext *runtime, Variable *variable) {
    expectFailure([&] { variable->get(runtime); }, EXCEPTION_ILLEGAL_ACCESS, "kein Zugriff");
  });
}

}  // namespace
}  // namespace quorel

namespace quorel {
namespace {

// The library's own record, taken for a host's: a subclass that changes
// nothing, which fields read through the general getters.
class HostLikeRecord : public SimpleDataRecord {};

// What a read gave, failures included, as one comparable text.
std::string outcomeOf(Value *value) {
  std::string outcome = value->isNil() ? "nil " : value->isValid() ? "valid " : "invalid ";
  try {
    outcome += value->asString();
  } catch (const PlausiException &e) {
    outcome += "failed: " + std::string(e.getMessage());
  }
  return outcome;
}

TEST(FieldReadWaysTest, TheOwnRecordReadsAsAHostRecordDoes) {
  StandaloneRoot root;
  const char *texts[] = {"12", "12,5", "-3", "abc", "", "01.02.2024", "31.02.2024", "WAHR", "1.23,4", "12,",
                         "+5", "-", "1.234.567,5", "99999999999999999999999999", "1,12345678901234567890123456"};
  for (const char *text : texts) {
    SimpleDataRecord own;
    HostLikeRecord host;
    for (SimpleDataRecord *record : {&own, static_cast<SimpleDataRecord *>(&host)}) {
      for (const char *name : {"Root.Name", "Root.Alter", "Root.AlterText", "Root.Betrag", "Root.Datum",
                               "Root.Adresse.Strasse", "Root.Kinder[1].Vorname"}) {
        record->setValue(name, text);
      }
      record->setValue("Root.Flag", std::int64_t{1});
    }
    NoRules plausi;
    std::ostringstream ownLog;
    std::ostringstream hostLog;
    Logger ownLogger(&ownLog, DEBUG);
    Logger hostLogger(&hostLog, DEBUG);
    PlausiContext ownContext(&own);
    ownContext.setLogger(&ownLogger);
    RuntimeContext ownRuntime(&ownContext, &plausi);
    PlausiContext hostContext(&host);
    hostContext.setLogger(&hostLogger);
    RuntimeContext hostRuntime(&hostContext, &plausi);
    auto *child = static_cast<ChildTopic *>(root.getField(&ownRuntime, "Kinder[1]"));
    auto *strasse = static_cast<Field *>(root.adresse->getField(&ownRuntime, "Strasse"));
    FeatureField feature(root.betrag);
    for (Variable *variable : std::initializer_list<Variable *>{root.name, root.alter, root.alterText, root.betrag,
                                                                root.datum, root.flag, strasse, child->vorname,
                                                                &feature}) {
      EXPECT_EQ(outcomeOf(variable->get(&hostRuntime)), outcomeOf(variable->get(&ownRuntime))) << text;
    }
    // Past the first line, which says when each log started.
    auto lines = [](const std::ostringstream &log) { return log.str().substr(log.str().find('\n')); };
    EXPECT_EQ(lines(hostLog), lines(ownLog)) << text;
    if (std::string(text) == "abc") {
      EXPECT_NE(std::string::npos, ownLog.str().find("wrongType")) << ownLog.str();
    }
  }
}

}  // namespace
}  // namespace quorel
