#include <sstream>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "quorel/rules/mapping.h"
#include "quorel/rules/plausi_context.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/values/inconvertible_value.h"
#include "quorel/values/invalid_value.h"
#include "model/test_tree.h"
#include "test_support.h"

namespace quorel {
namespace {

// "Aa" and "BB" share the hash code 2112: name-keyed maps keep only the code.
constexpr const char *kCollidingA = "Aa";
constexpr const char *kCollidingB = "BB";

// Hosts compare the type with the named numbers.
static_assert(std::is_same_v<ExceptionType, decltype(PlausiException().getType())>);

TEST(PlausiExceptionTest, OwnsItsMessageAndDefaultsIt) {
  PlausiException defaulted;
  EXPECT_EQ(EXCEPTION_GENERAL, defaulted.getType());
  EXPECT_STREQ("Keine weiteren Angaben.", defaulted.getMessage());
  EXPECT_STREQ("Keine weiteren Angaben.", PlausiException(9, nullptr).getMessage());

  std::string text = "Fehlerhafte Indexangabe.";
  PlausiException original(EXCEPTION_ILLEGAL_ARGUMENT, text.c_str());
  text.assign("overwritten and released");
  text.shrink_to_fit();
  PlausiException copy = original;
  EXPECT_STREQ("Fehlerhafte Indexangabe.", original.getMessage());
  EXPECT_STREQ("Fehlerhafte Indexangabe.", copy.getMessage());
  EXPECT_EQ(9, copy.getType());
}

TEST(PlausiContextTest, StartsWithDefaults) {
  PlausiContext context(nullptr);
  EXPECT_EQ(nullptr, context.getFlow());
  EXPECT_EQ(1, context.getProblemWeightLevel());
  EXPECT_EQ(nullptr, context.getMaterialAccess());
  EXPECT_EQ(nullptr, context.getDataRecord());
  EXPECT_EQ(nullptr, context.getInitParam("nie"));
  EXPECT_EQ(nullptr, context.getExternalFunction("nie"));
  EXPECT_TRUE(context.isOk());
  EXPECT_EQ(0, context.getNumOfProblems());

  std::string flow = "Standard";
  context.setFlow(flow.c_str());
  flow.assign("changed");
  EXPECT_STREQ("Standard", context.getFlow());
}

TEST(PlausiContextTest, LoggerFallsBackToTheSilentDefault) {
  PlausiContext context(nullptr);
  Logger *silent = context.getLogger();
  ASSERT_NE(nullptr, silent);
  EXPECT_EQ(OFF, silent->getLevel());
  std::ostringstream sink;
  Logger host(&sink, OFF);
  context.setLogger(&host);
  EXPECT_EQ(&host, context.getLogger());
  context.setLogger(nullptr);
  EXPECT_EQ(silent, context.getLogger());
}

TEST(PlausiContextTest, OnlyErrorProblemsMakeARunFail) {
  PlausiContext context(nullptr);
  context.createProblem(static_cast<ProblemType>(2), 0);
  context.createProblem(static_cast<ProblemType>(0), -5);
  EXPECT_TRUE(context.isOk());
  EXPECT_EQ(2, context.getNumOfProblems());
  EXPECT_EQ(0, context.getNumOfProblems(PROBLEM_ERROR));
  PlausiProblem *error = context.createProblem(PROBLEM_ERROR, 99);
  EXPECT_FALSE(context.isOk());
  EXPECT_EQ(1, context.getNumOfProblems(PROBLEM_ERROR));
  EXPECT_EQ(1, context.getNumOfProblems(static_cast<ProblemType>(2)));
  EXPECT_EQ(error, context.getProblem(2));
  EXPECT_EQ(99, error->getWeight());
}

void fillEverything(PlausiProblem *p, const char *text, FieldDescriptor *field) {
  p->setId(text);
  p->setShortDescription(text);
  p->setLongDescription(text);
  p->setCorrectionInfo(text);
  p->setReferenceTopic(text);
  p->setException(text);
  p->setFieldDisplayName(text);
  p->setFieldMask(text);
  p->setFieldValueSpace(text);
  p->setReferenceField(field);
  p->setReferenceFieldIndices(2, 4, 7);
  p->addAccessedField(field);
  p->addAccessedField(field);
  p->addPlausiSection(text);
  p->addPlausiSection(nullptr);
  p->setInfoType(static_cast<ProblemInfoType>(3));
  p->setFieldType(FieldTypeDate);
  p->setFieldLength(12);
}

TEST(PlausiContextTest, AResetContextGivesWhatAFreshOneGives) {
  StandaloneRoot root;
  FieldDescriptor *field = root.name;
  // Records that the context keeps and hands on, never reads.
  int record1 = 0;
  int record2 = 0;
  PlausiContext context(reinterpret_cast<DataRecord *>(&record1));
  context.setFlow("Pruefung");
  context.setProblemWeightLevel(3);
  for (int i = 0; i < 3; ++i) {
    fillEverything(context.createProblem(PROBLEM_ERROR, 5), "eine recht lange Meldung, die Speicher braucht", field);
  }
  context.reset(reinterpret_cast<DataRecord *>(&record2));
  EXPECT_EQ(0, context.getNumOfProblems());
  EXPECT_TRUE(context.isOk());
  EXPECT_EQ(reinterpret_cast<DataRecord *>(&record2), context.getDataRecord());
  EXPECT_STREQ("Pruefung", context.getFlow());
  EXPECT_EQ(3, context.getProblemWeightLevel());

  // A problem made in a former one's place reads as a new one, then as a
  // new one filled alike; the places after it stay unseen.
  PlausiProblem fresh(static_cast<ProblemType>(2), 1);
  PlausiProblem *renewed = context.createProblem(static_cast<ProblemType>(2), 1);
  EXPECT_EQ(describeProblem(fresh), describeProblem(*renewed));
  fresh.addPlausiSection("kurz");
  renewed->addPlausiSection("kurz");
  fresh.setId("A");
  renewed->setId("A");
  EXPECT_EQ(describeProblem(fresh), describeProblem(*renewed));
  EXPECT_EQ(1, context.getNumOfProblems());
  EXPECT_EQ(0, context.getNumOfProblems(PROBLEM_ERROR));
  PlausiProblem *second = context.createProblem(PROBLEM_ERROR, 2);
  fillEverything(second, "x", nullptr);
  PlausiProblem expected(PROBLEM_ERROR, 2);
  fillEverything(&expected, "x", nullptr);
  EXPECT_EQ(describeProblem(expected), describeProblem(*second));
  EXPECT_EQ(2, context.getNumOfProblems());
  EXPECT_EQ(1, context.getNumOfProblems(PROBLEM_ERROR));
  // Beyond the problems kept, new ones are made.
  context.createProblem(PROBLEM_ERROR, 0);
  context.createProblem(PROBLEM_ERROR, 0);
  EXPECT_EQ(4, context.getNumOfProblems());
  EXPECT_EQ(describeProblem(PlausiProblem(PROBLEM_ERROR, 0)), describeProblem(*context.getProblem(3)));
}

TEST(PlausiProblemTest, TextsAreCopiedAndNullChangesNothing) {
  PlausiProblem problem(PROBLEM_ERROR, 3);
  EXPECT_EQ(nullptr, problem.getId());
  EXPECT_FALSE(problem.isExceptionOccured());
  std::string id = "P-1";
  problem.setId(id.c_str());
  id.assign("xxx");
  problem.setId(nullptr);
  EXPECT_STREQ("P-1", problem.getId());
  problem.setException("");
  EXPECT_TRUE(problem.isExceptionOccured());
  problem.addAccessedField(nullptr);
  EXPECT_EQ(0, problem.getNumOfAccessedFields());
  problem.addPlausiSection(nullptr);
  EXPECT_STREQ("Unbekannter Plausi-Abschnitt", problem.getPlausiSection(0));
  EXPECT_EQ(FieldTypeText, problem.getFieldType());
  EXPECT_EQ(0, problem.getFieldLength());
}

TEST(PlausiProblemTest, ReferenceIndicesEndInMinusOne) {
  PlausiProblem problem(PROBLEM_ERROR, 3);
  problem.setReferenceFieldIndices(2, 4, 7);
  const std::int32_t *indices = problem.getReferenceFieldIndices();
  ASSERT_NE(nullptr, indices);
  EXPECT_EQ(4, indices[0]);
  EXPECT_EQ(7, indices[1]);
  EXPECT_EQ(-1, indices[2]);
  problem.setReferenceFieldIndices(0);
  EXPECT_EQ(nullptr, problem.getReferenceFieldIndices());
}

Value *externalA(RuntimeContext *, ...) { return nullptr; }
Value *externalB(RuntimeContext *, ...) { return nullptr; }

TEST(NameKeyedMapsTest, CollidingNamesShareOneEntry) {
  PlausiContext context(nullptr);
  InvalidValue first, second;
  context.setInitParam(kCollidingA, &first);
  context.setInitParam(kCollidingB, &second);
  EXPECT_EQ(&second, context.getInitParam(kCollidingA));
  EXPECT_EQ(&second, context.getInitParam(kCollidingB));

  context.setExternalFunction(kCollidingA, externalA);
  context.setExternalFunction(kCollidingB, externalB);
  EXPECT_EQ(&externalB, context.getExternalFunction(kCollidingA));

  Mapping mapping;
  EXPECT_EQ(nullptr, mapping.get("Root.Name"));
  mapping.put(kCollidingA, "erste");
  mapping.put(kCollidingB, "zweite");
  EXPECT_STREQ("zweite", mapping.get(kCollidingA));
}

TEST(InitParamsTest, ClearDeletesTheValuesAndEmpties) {
  InitParams params;
  params.clear();
  EXPECT_EQ(nullptr, params.get("Jahr"));
  params.set("Jahr", new InvalidValue());
  params.set("Grund", new InconvertibleValue("x"));
  params.clear();  // the sanitizer build reports a leak if this deletes nothing
  EXPECT_EQ(nullptr, params.get("Jahr"));
  EXPECT_EQ(nullptr, params.get("Grund"));
}

}  // namespace
}  // namespace quorel
