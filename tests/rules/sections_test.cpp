#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/logging/logger.h"
#include "quorel/rules/plausi.h"
#include "quorel/rules/plausi_context.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/invalid_value.h"
#include "test_support.h"

namespace quorel {
namespace {

// Records its own destruction, so tests can see when a section released it.
class Tracked : public PlausiObject {
 public:
  Tracked(std::vector<std::string> *log, std::string name) : log_(log), name_(std::move(name)) {}
  ~Tracked() override { log_->push_back(name_); }

 private:
  std::vector<std::string> *log_;
  std::string name_;
};

// Stand-ins for descriptors: sections and problems only compare the pointers.
FieldDescriptor *fakeField(int n) {
  static char storage[8];
  return reinterpret_cast<FieldDescriptor *>(&storage[n]);
}

class SectionsTest : public ::testing::Test {
 protected:
  NoRules plausi_;
  PlausiContext context_{nullptr};
};

TEST_F(SectionsTest, ObjectsDieWithTheirSectionOldestFirst) {
  std::vector<std::string> log;
  {
    RuntimeContext runtime(&context_, &plausi_);
    ASSERT_STREQ("Plausi", runtime.getCurrentSection()->getName());
    runtime.getCurrentSection()->addLocalObject(new Tracked(&log, "root"));
    runtime.startNewSection("Regel", false);
    PlausiSection *rule = runtime.getCurrentSection();
    EXPECT_EQ(rule->getParent()->getName(), std::string("Plausi"));
    rule->addLocalObject(new Tracked(&log, "first"));
    rule->addLocalObject(nullptr);
    rule->addLocalObject(new Tracked(&log, "second"));
    runtime.leaveCurrentSection();
    EXPECT_EQ((std::vector<std::string>{"first", "second"}), log);
    EXPECT_STREQ("Plausi", runtime.getCurrentSection()->getName());
  }
  EXPECT_EQ((std::vector<std::string>{"first", "second", "root"}), log);
}

TEST_F(SectionsTest, CreateValueGivesACopyALifeInTheCurrentSection) {
  RuntimeContext runtime(&context_, &plausi_);
  InvalidValue held;  // stands for what a variable stores outside any section
  Value *kept = runtime.createValue(&held);
  EXPECT_NE(&held, kept);
  runtime.startNewSection("Innen", false);
  Value *source = runtime.createInconvertibleValue("x");
  Value *copy = runtime.createValue(source);
  EXPECT_NE(source, copy);
  runtime.leaveCurrentSection();
  // The root's copy survived the inner section (the sanitizer build would
  // report a read of a freed value here).
  EXPECT_STREQ("", kept->asString());
}

TEST_F(SectionsTest, FieldReadsClimbToTheOutermostCheckProcedure) {
  RuntimeContext runtime(&context_, &plausi_);
  PlausiSection *root = runtime.getCurrentSection();
  EXPECT_FALSE(root->isCalledFromCheckProc());

  runtime.startNewSection("A", true);
  PlausiSection *a = runtime.getCurrentSection();
  // A check procedure with none above it keeps its own reads.
  EXPECT_TRUE(a->isCheckProc());
  EXPECT_FALSE(a->isCalledFromCheckProc());
  a->noteFieldAccess(fakeField(0));
  runtime.startNewSection("B", false);
  runtime.startNewSection("C", true);
  runtime.startNewSection("D", false);
  PlausiSection *d = runtime.getCurrentSection();
  EXPECT_TRUE(d->isCalledFromCheckProc());
  d->noteFieldAccess(fakeField(1));
  d->noteFieldAccess(nullptr);
  EXPECT_EQ(0, d->getNumOfAccessedFields());
  ASSERT_EQ(3, a->getNumOfAccessedFields());
  EXPECT_EQ(fakeField(1), a->getAccessedField(1));
  EXPECT_EQ(nullptr, a->getAccessedField(2));
  for (int i = 0; i < 4; ++i) runtime.leaveCurrentSection();

  runtime.startNewSection("Plain", false);
  runtime.getCurrentSection()->noteFieldAccess(fakeField(2));
  EXPECT_EQ(1, runtime.getCurrentSection()->getNumOfAccessedFields());
  runtime.leaveCurrentSection();
}

TEST_F(SectionsTest, ProblemsGetFieldsOnceAndTheTrailInnermostFirst) {
  RuntimeContext runtime(&context_, &plausi_);
  runtime.startNewSection("A", false);
  runtime.startNewSection("B", false);
  PlausiSection *b = runtime.getCurrentSection();
  for (int n : {3, 1, 3, 3, 1, 2}) b->noteFieldAccess(fakeField(n));
  b->noteFieldAccess(nullptr);
  PlausiProblem *problem = runtime.createProblem(PROBLEM_ERROR, 5);
  runtime.setSectionInfosToProblem(problem);
  EXPECT_EQ(7, b->getNumOfAccessedFields());
  ASSERT_EQ(3, problem->getNumOfAccessedFields());
  EXPECT_EQ(fakeField(3), problem->getAccessedField(0));
  EXPECT_EQ(fakeField(1), problem->getAccessedField(1));
  EXPECT_EQ(fakeField(2), problem->getAccessedField(2));
  ASSERT_EQ(3, problem->getNumOfPlausiSections());
  EXPECT_STREQ("B", problem->getPlausiSection(0));
  EXPECT_STREQ("A", problem->getPlausiSection(1));
  EXPECT_STREQ("Plausi", problem->getPlausiSection(2));
  // A second call appends everything again.
  runtime.setSectionInfosToProblem(problem);
  EXPECT_EQ(6, problem->getNumOfAccessedFields());
  EXPECT_EQ(6, problem->getNumOfPlausiSections());
  runtime.leaveCurrentSection();
  runtime.leaveCurrentSection();
}

TEST_F(SectionsTest, FewReadsAndManyFindTheirRepeatsAlike) {
  // The same reads with more and more repeats after them: a section of a
  // loop reads many fields, and repeats are found another way there.
  RuntimeContext runtime(&context_, &plausi_);
  for (int reads : {6, 16, 17, 40}) {
    runtime.startNewSection("Schleife", false);
    for (int i = 0; i < reads; ++i) runtime.getCurrentSection()->noteFieldAccess(fakeField((i * 7) % 5));
    PlausiProblem *problem = runtime.createProblem(PROBLEM_ERROR, 1);
    runtime.setSectionInfosToProblem(problem);
    ASSERT_EQ(5, problem->getNumOfAccessedFields()) << reads;
    for (int k = 0; k < 5; ++k) EXPECT_EQ(fakeField((k * 7) % 5), problem->getAccessedField(k)) << reads;
    runtime.leaveCurrentSection();
  }
}

TEST_F(SectionsTest, ASectionWithoutANameIsUnknownOnTheTrail) {
  std::ostringstream log;
  Logger logger(&log, TRACE);
  context_.setLogger(&logger);
  {
    RuntimeContext runtime(&context_, &plausi_);
    runtime.startNewSection(nullptr, false);
    EXPECT_EQ(nullptr, runtime.getCurrentSection()->getName());
    PlausiProblem *problem = runtime.createProblem(PROBLEM_ERROR, 1);
    runtime.setSectionInfosToProblem(problem);
    ASSERT_EQ(2, problem->getNumOfPlausiSections());
    EXPECT_STREQ("Unbekannter Plausi-Abschnitt", problem->getPlausiSection(0));
    runtime.leaveCurrentSection();
  }
  context_.setLogger(nullptr);
  // The trace goes on past the nameless section.
  EXPECT_TRUE(log.good());
  EXPECT_NE(std::string::npos, log.str().find("TRACE:   --> \nTRACE:   <-- \nTRACE: <-- Plausi"));
}

TEST_F(SectionsTest, ReadsBelowACheckProcedureDoNotReachAProblemFiledThere) {
  RuntimeContext runtime(&context_, &plausi_);
  runtime.startNewSection("Pruefung", true);
  runtime.startNewSection("Regel", false);
  runtime.getCurrentSection()->noteFieldAccess(fakeField(4));
  PlausiProblem *inRule = runtime.createProblem(PROBLEM_ERROR, 1);
  runtime.setSectionInfosToProblem(inRule);
  EXPECT_EQ(0, inRule->getNumOfAccessedFields());
  runtime.leaveCurrentSection();
  PlausiProblem *inCheck = runtime.createProblem(PROBLEM_ERROR, 1);
  runtime.setSectionInfosToProblem(inCheck);
  EXPECT_EQ(1, inCheck->getNumOfAccessedFields());
  runtime.leaveCurrentSection();
}

TEST_F(SectionsTest, OpenSectionsAreReleasedWhenAnExceptionUnwindsTheRun) {
  std::vector<std::string> log;
  try {
    RuntimeContext runtime(&context_, &plausi_);
    runtime.startNewSection("A", false);
    runtime.getCurrentSection()->addLocalObject(new Tracked(&log, "a"));
    runtime.startNewSection("B", false);
    runtime.getCurrentSection()->addLocalObject(new Tracked(&log, "b"));
    throw PlausiException(EXCEPTION_GENERAL, "weg");
  } catch (const PlausiException &e) {
    EXPECT_STREQ("weg", e.getMessage());
  }
  EXPECT_EQ((std::vector<std::string>{"b", "a"}), log);
}

}  // namespace
}  // namespace quorel
