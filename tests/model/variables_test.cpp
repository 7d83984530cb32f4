#include <sstream>

#include <gtest/gtest.h>

#include "model/test_tree.h"
#include "quorel/model/feature_field.h"
#include "quorel/model/local_variable.h"
#include "quorel/values/date_value.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

class VariablesTest : public ::testing::Test {
 protected:
  RuntimeContext *rt() { return &runtime_; }
  PlausiSection *section() { return runtime_.getCurrentSection(); }

  StandaloneRoot root_;
  LoggingRecord record_;
  NoRules plausi_;
  PlausiContext context_{&record_};
  RuntimeContext runtime_{&context_, &plausi_};
};

TEST_F(VariablesTest, EmptyFieldReadsAsInvalidAndIsNoted) {
  Value *value = root_.name->get(rt());
  EXPECT_FALSE(value->isValid());
  EXPECT_FALSE(value->isNil());
  ASSERT_EQ(1, section()->getNumOfAccessedFields());
  EXPECT_EQ(root_.name, section()->getAccessedField(0));
  EXPECT_EQ((std::vector<std::string>{"getSubDataRecord", "isEmpty"}), record_.calls);
}

TEST_F(VariablesTest, TypeAndMaskChooseTheRecordsGetter) {
  record_.setValue("Root.Alter", 42);
  record_.setValue("Root.AlterText", "0042");
  record_.setValue("Root.Flag", "WAHR");
  record_.setValue("Root.Datum", "01.02.2020");
  record_.calls.clear();
  EXPECT_EQ(42, root_.alter->get(rt())->asInteger());
  EXPECT_EQ("getInteger", record_.calls.back());
  // A mask, even an empty one, means the record holds text.
  Value *text = root_.alterText->get(rt());
  EXPECT_EQ("getString", record_.calls.back());
  EXPECT_STREQ("0042", text->asString());
  EXPECT_EQ(STRING_LEVEL, root_.flag->get(rt())->getOperatorLevel());
  Value *date = root_.datum->get(rt());
  EXPECT_EQ(DATE_LEVEL, date->getOperatorLevel());
  EXPECT_EQ(nullptr, static_cast<DateValue *>(date)->getMask());
  // Two reads give two objects.
  EXPECT_NE(root_.alter->get(rt()), root_.alter->get(rt()));
}

TEST_F(VariablesTest, AWrongTypeBecomesInconvertibleOnlyWhenTheRecordFails) {
  record_.setValue("Root.Alter", "abc");  // getInteger of this text fails inside the read
  Value *value = root_.alter->get(rt());
  EXPECT_TRUE(value->isNil());
  EXPECT_FALSE(value->isValid());
  PlausiException e = thrownBy([&] { value->asString(); });
  EXPECT_EQ(0, std::string(e.getMessage()).find("Dieser Wert ist nicht verf\xFC" "gbar: "));
  // Masked text numbers stay lazy: the failure comes where the value is used.
  record_.setValue("Root.AlterText", "abc");
  Value *lazy = root_.alterText->get(rt());
  EXPECT_TRUE(lazy->isValid());
  EXPECT_EQ(EXCEPTION_CONVERSION, thrownBy([&] { lazy->asReal(); }).getType());
}

TEST_F(VariablesTest, DebugLinesShowTheHierarchyAndTheOutcome) {
  std::ostringstream out;
  {
    Logger logger(&out, DEBUG);
    context_.setLogger(&logger);
    record_.setValue("Root.Name", "x");
    root_.name->get(rt());
    root_.flag->get(rt());
    record_.setValue("Root.Alter", "abc");
    root_.alter->get(rt());
    context_.setLogger(nullptr);
  }
  std::string log = out.str();
  EXPECT_NE(std::string::npos, log.find("\nDEBUG: Field::get(Root.Name) => value = \"x\""));
  EXPECT_NE(std::string::npos, log.find("\nDEBUG: Field::get(Root.Flag) => empty"));
  EXPECT_NE(std::string::npos, log.find("\nDEBUG: Field::get(Root.Alter) => wrongType (Exception: "));
}

TEST_F(VariablesTest, WritesFollowTheFieldTypeAndIgnoreNil) {
  root_.alter->set(rt(), rt()->createNumberValue(5.0));
  root_.alter->set(rt(), rt()->createNilValue());
  root_.alter->set(rt(), rt()->createInconvertibleValue("x"));
  EXPECT_EQ(5, record_.getInteger(root_.alter));
  root_.alter->set(rt(), root_.name->get(rt()));  // the empty field empties the target
  EXPECT_TRUE(record_.isEmpty(root_.alter));
  root_.datum->set(rt(), rt()->createDateValue("2020-02-01", "JJJJ-MM-TT"));
  EXPECT_STREQ("01.02.2020", record_.getString(root_.datum));  // the field's own mask
  // A field whose own mask is not the default one.
  TypeDescriptor isoType(root_.getTypeDescriptor(), nullptr, "Iso", nullptr, FieldTypeDate, "JJJJ-MM-TT", 0);
  Field iso(&isoType, &root_);
  iso.set(rt(), rt()->createDateValue("03.04.2021", "TT.MM.JJJJ"));
  EXPECT_STREQ("2021-04-03", record_.getString(&iso));
  root_.name->set(rt(), rt()->createNumberValue(1.5));
  EXPECT_STREQ("1,5", record_.getString(root_.name));
  // A value that cannot become the field's type leaves the record unchanged.
  EXPECT_EQ(EXCEPTION_CONVERSION,
            thrownBy([&] { root_.datum->set(rt(), rt()->createNumberValue(1.0)); }).getType());
  EXPECT_STREQ("01.02.2020", record_.getString(root_.datum));
}

TEST_F(VariablesTest, LocalVariableKeepsAPrivateCopy) {
  LocalVariable fresh;
  EXPECT_TRUE(fresh.get(rt())->isNil());
  LocalVariable five(rt()->createNumberValue(5.0));
  five.set(rt(), rt()->createNilValue());
  Value *first = five.get(rt());
  Value *second = five.get(rt());
  EXPECT_NE(first, second);
  EXPECT_EQ(5.0, first->asReal());
  five.set(rt(), rt()->createInvalidValue());
  EXPECT_FALSE(five.get(rt())->isValid());
  // The held value outlives the run that made it.
  LocalVariable kept;
  {
    TestRun other;
    kept.set(&other.runtime, other.runtime.createStringValue("bleibt"));
  }
  EXPECT_STREQ("bleibt", kept.get(rt())->asString());
}

TEST_F(VariablesTest, FeatureFieldReadsNumbersAsTextWithoutANote) {
  record_.setValue("Root.Alter", "12");
  FeatureField feature(root_.alter);
  record_.calls.clear();
  EXPECT_EQ(12.0, feature.get(rt())->asReal());
  EXPECT_EQ("getString", record_.calls.back());
  EXPECT_EQ(0, section()->getNumOfAccessedFields());
  FeatureField text(root_.name);
  EXPECT_FALSE(text.get(rt())->isValid());
  EXPECT_EQ(1, section()->getNumOfAccessedFields());
  feature.set(rt(), rt()->createNumberValue(3.0));
  EXPECT_EQ(3, record_.getInteger(root_.alter));
}

}  // namespace
}  // namespace quorel

namespace quorel {
namespace {

// A record that counts the setters it receives.
class CountingRecord : public SimpleDataRecord {
 public:
  void setString(FieldDescriptor *f, const char *t) override { ++setters; SimpleDataRecord::setString(f, t); }
  void setInteger(FieldDescriptor *f, std::int64_t n) override { ++setters; SimpleDataRecord::setInteger(f, n); }
  void setReal(FieldDescriptor *f, double n) override { ++setters; SimpleDataRecord::setReal(f, n); }
  void setEmpty(FieldDescriptor *f) override { ++setters; SimpleDataRecord::setEmpty(f); }
  DataRecord *getSubDataRecord(FieldDescriptor *f) override {
    parents.push_back(f->getHierarchyText());
    return SimpleDataRecord::getSubDataRecord(f);
  }
  int setters = 0;
  std::vector<std::string> parents;
};

TEST(FieldAccessTest, OneSetterPerWriteAndParentsRootFirst) {
  StandaloneRoot root;
  CountingRecord record;
  NoRules plausi;
  PlausiContext context(&record);
  RuntimeContext runtime(&context, &plausi);
  auto *child = static_cast<ChildTopic *>(root.getField(&runtime, "Kinder[1]"));
  child->vorname->set(&runtime, runtime.createStringValue("Anna"));
  EXPECT_EQ(1, record.setters);
  EXPECT_EQ((std::vector<std::string>{"Root", "Root.Kinder[1]"}), record.parents);
  root.alter->set(&runtime, runtime.createInvalidValue());
  root.alter->set(&runtime, runtime.createNilValue());
  EXPECT_EQ(2, record.setters);
}

TEST(FieldAccessTest, ACheckProcedureListsEveryFieldItsRulesRead) {
  StandaloneRoot root;
  SimpleDataRecord record;
  record.setValue("Root.Name", "Meier");
  NoRules plausi;
  PlausiContext context(&record);
  RuntimeContext runtime(&context, &plausi);
  runtime.startNewSection("Pruefung Name", true);
  runtime.startNewSection("Regel 1", false);
  root.name->get(&runtime);
  root.alter->get(&runtime);
  runtime.leaveCurrentSection();
  runtime.startNewSection("Regel 2", false);
  root.name->get(&runtime);
  root.flag->get(&runtime);
  runtime.leaveCurrentSection();
  PlausiProblem *problem = runtime.createProblem(PROBLEM_ERROR, 1);
  runtime.setSectionInfosToProblem(problem);
  ASSERT_EQ(3, problem->getNumOfAccessedFields());
  EXPECT_EQ(root.name, problem->getAccessedField(0));
  EXPECT_EQ(root.alter, problem->getAccessedField(1));
  EXPECT_EQ(root.flag, problem->getAccessedField(2));
  runtime.leaveCurrentSection();
}

// The debug line, and with it the hierarchy text it needs, is made only at
// debug level.
TEST(FieldAccessTest, NoDebugLineBelowDebugLevel) {
  StandaloneRoot root;
  SimpleDataRecord record;
  record.setValue("Root.Name", "x");
  NoRules plausi;
  std::ostringstream out;
  Logger logger(&out, TRACE);
  PlausiContext context(&record);
  context.setLogger(&logger);
  RuntimeContext runtime(&context, &plausi);
  root.name->get(&runtime);
  EXPECT_EQ(std::string::npos, out.str().find("Field::get"));
}

}  // namespace
}  // namespace quorel
