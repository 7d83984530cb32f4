#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "quorel/quorel.h"
#include "test_support.h"

namespace quorel {
namespace {

class LoaderTest : public ::testing::Test {
 protected:
  void SetUp() override { plausi_ = loader_.loadPlausi(QUOREL_SAMPLE_MODULE, "Sample"); }
  void TearDown() override {
    if (plausi_ != nullptr) loader_.unloadPlausi(plausi_, "Sample");
  }

  PlausiLoader loader_;
  Plausi *plausi_ = nullptr;
};

TEST_F(LoaderTest, FlowReportsProblemsWithTheirTrail) {
  PlausiContext context(nullptr);
  context.setFlow("Pruefung");
  plausi_->perform(&context);
  ASSERT_EQ(2, context.getNumOfProblems());
  EXPECT_FALSE(context.isOk());
  PlausiProblem *error = context.getProblem(0);
  EXPECT_EQ(PROBLEM_ERROR, error->getType());
  EXPECT_STREQ("ADR-001", error->getId());
  ASSERT_EQ(3, error->getNumOfPlausiSections());
  EXPECT_STREQ("Hausnummer", error->getPlausiSection(0));
  EXPECT_STREQ("Adresse", error->getPlausiSection(1));
  EXPECT_STREQ("Plausi", error->getPlausiSection(2));
  EXPECT_STREQ("Anschrift ungepr\xFC" "ft.", context.getProblem(1)->getShortDescription());

  // Runs on one context accumulate their problems.
  plausi_->perform(&context);
  EXPECT_EQ(4, context.getNumOfProblems());
}

TEST_F(LoaderTest, NullFlowRunsNothing) {
  PlausiContext context(nullptr);
  plausi_->perform(&context);
  EXPECT_TRUE(context.isOk());
  EXPECT_EQ(0, context.getNumOfProblems());
}

TEST_F(LoaderTest, ExceptionFromNestedSectionsReachesTheHostUnchanged) {
  PlausiContext context(nullptr);
  context.setFlow("Pruefung");
  plausi_->perform(&context);
  context.setFlow("Abbruch");
  PlausiException e = thrownBy([&] { plausi_->perform(&context); });
  EXPECT_EQ(EXCEPTION_ILLEGAL_ARGUMENT, e.getType());
  EXPECT_STREQ("Regel abgebrochen.", e.getMessage());
  // The problems of the earlier run survive; the values of the broken run
  // were released (the sanitizer build checks for leaks).
  EXPECT_EQ(2, context.getNumOfProblems());
}

TEST_F(LoaderTest, FunctionResultBelongsToTheCaller) {
  PlausiContext context(nullptr);
  std::unique_ptr<Value> result(plausi_->performFunction("Wert", &context));
  ASSERT_NE(nullptr, result);
  EXPECT_STREQ("Dieser Wert ist nicht verf\xFC" "gbar: Hausnummer fehlt",
               thrownBy([&] { result->asString(); }).getMessage());
}

TEST_F(LoaderTest, UnloadThenLoadCallsTheEntryAgain) {
  loader_.unloadPlausi(plausi_, "Sample");
  plausi_ = loader_.loadPlausi(QUOREL_SAMPLE_MODULE, "Sample");
  ASSERT_NE(nullptr, plausi_);
  PlausiContext context(nullptr);
  context.setFlow("Pruefung");
  plausi_->perform(&context);
  EXPECT_EQ(2, context.getNumOfProblems());
}

TEST(PlausiLoaderTest, FailuresCarryTheirNumbers) {
  PlausiLoader loader;
  PlausiException missingFile =
      thrownBy([&] { loader.loadPlausi("/nonexistent/librules.so", "Sample"); });
  EXPECT_EQ(EXCEPTION_LOAD_LIBRARY, missingFile.getType());
  EXPECT_STREQ("/nonexistent/librules.so", missingFile.getMessage());
  // An empty path names no library, not the program that loads.
  EXPECT_EQ(EXCEPTION_LOAD_LIBRARY, thrownBy([&] { loader.loadPlausi("", "Sample"); }).getType());

  // The library loads, but has no entry for this name.
  PlausiException missingEntry =
      thrownBy([&] { loader.loadPlausi(QUOREL_SAMPLE_MODULE, "Andere"); });
  EXPECT_EQ(EXCEPTION_LOAD_ENTRY, missingEntry.getType());
  EXPECT_STREQ("Andere", missingEntry.getMessage());
  // It stays known under that name, still without an unload entry.
  PlausiException noUnload = thrownBy([&] { loader.unloadPlausi(nullptr, "Andere"); });
  EXPECT_EQ(EXCEPTION_UNLOAD_ENTRY, noUnload.getType());

  // A name never loaded finds no library at all; the process is not searched.
  PlausiException unknown = thrownBy([&] { loader.unloadPlausi(nullptr, "Sample"); });
  EXPECT_EQ(EXCEPTION_UNLOAD_ENTRY, unknown.getType());
  EXPECT_STREQ("Sample", unknown.getMessage());
}

}  // namespace
}  // namespace quorel
