// A host for the Umfrage module, written from the guides alone: load it,
// fill a SimpleDataRecord by hierarchy texts, run a flow, read the problems.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/quorel.h"

namespace quorel {
namespace {

class UmfrageModuleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    plausi_ = loader_.loadPlausi(QUOREL_UMFRAGE_MODULE, "Umfrage");
    // A field the record holds nothing under is empty: Name stays so here.
    record_.setValue("Umfrage.Alter", std::int32_t{34});
    record_.setValue("Umfrage.Einkommen", "2.345,67");
    record_.setValue("Umfrage.Datum", "03.05.2024");
    record_.setValue("Umfrage.PLZ", "53111");
    for (int i = 0; i < 3; ++i) {
      std::string answer = "Umfrage.Antworten[" + std::to_string(i) + "]";
      record_.setValue((answer + ".Frage").c_str(), "Zufrieden?");
      record_.setValue((answer + ".Note").c_str(), std::int32_t{i + 1});
    }
  }
  void TearDown() override { loader_.unloadPlausi(plausi_, "Umfrage"); }

  // The ids of the problems of one run of flow at the weight level.
  std::vector<std::string> run(const char *flow, std::int32_t level = 1) {
    context_.reset(new PlausiContext(&record_));
    context_->setFlow(flow);
    context_->setProblemWeightLevel(level);
    plausi_->perform(context_.get());
    std::vector<std::string> ids;
    for (std::int32_t i = 0; i < context_->getNumOfProblems(); ++i) ids.push_back(context_->getProblem(i)->getId());
    return ids;
  }

  PlausiLoader loader_;
  Plausi *plausi_ = nullptr;
  SimpleDataRecord record_;
  std::unique_ptr<PlausiContext> context_;
};

using Ids = std::vector<std::string>;

TEST_F(UmfrageModuleTest, DeclaresItsFlowsAndFields) {
  EXPECT_TRUE(plausi_->isKnownFlow("Pruefung"));
  EXPECT_TRUE(plausi_->isKnownFlow("Antworten"));
  EXPECT_FALSE(plausi_->isKnownFlow("Standard"));
  Topic *root = plausi_->getRootTopic();
  ASSERT_NE(nullptr, root);
  PlausiContext context(&record_);
  RuntimeContext runtime(&context, plausi_);
  FieldDescriptor *einkommen = root->getField(&runtime, "Einkommen");
  EXPECT_STREQ("######.##0", einkommen->getTypeDescriptor()->getMask());
  EXPECT_EQ(FieldTypeReal, einkommen->getTypeDescriptor()->getFieldType());
  EXPECT_EQ(3, root->getField(&runtime, "Antworten")->getDimension()[0]);
}

TEST_F(UmfrageModuleTest, ACorrectQuestionnaireHasNoProblems) {
  record_.setValue("Umfrage.Name", "Berger");
  EXPECT_EQ(Ids{}, run("Pruefung"));
  EXPECT_TRUE(context_->isOk());
}

TEST_F(UmfrageModuleTest, EveryRuleReportsItsFault) {
  record_.setValue("Umfrage.Alter", std::int32_t{12});
  record_.setValue("Umfrage.Einkommen", "2345,678");
  record_.setValue("Umfrage.Datum", "31.04.2024");
  record_.setValue("Umfrage.PLZ", "5311");
  record_.setValue("Umfrage.Antworten[2].Note", std::int32_t{7});
  EXPECT_EQ((Ids{"UMF-01", "UMF-02", "UMF-03", "UMF-04", "UMF-05", "UMF-06"}), run("Pruefung"));
  EXPECT_FALSE(context_->isOk());

  PlausiProblem *einkommen = context_->getProblem(2);
  EXPECT_STREQ("Die maximale Anzahl der Nachkommastellen wurde \xFC" "berschritten.",
               einkommen->getLongDescription());
  EXPECT_STREQ("######.##0", einkommen->getFieldMask());
  EXPECT_STREQ("Regel Einkommen", einkommen->getPlausiSection(0));

  PlausiProblem *plz = context_->getProblem(4);
  EXPECT_EQ(2, plz->getType());
  EXPECT_EQ(1, plz->getWeight());

  PlausiProblem *note = context_->getProblem(5);
  EXPECT_EQ("Umfrage.Antworten[2].Note", note->getReferenceField()->getHierarchyText());
  ASSERT_NE(nullptr, note->getReferenceFieldIndices());
  EXPECT_EQ(2, note->getReferenceFieldIndices()[0]);
  EXPECT_EQ(-1, note->getReferenceFieldIndices()[1]);
  ASSERT_EQ(1, note->getNumOfAccessedFields());
  EXPECT_EQ(note->getReferenceField(), note->getAccessedField(0));
  ASSERT_EQ(3, note->getNumOfPlausiSections());
  EXPECT_STREQ("Antwort", note->getPlausiSection(0));
  EXPECT_STREQ("Regel Antworten", note->getPlausiSection(1));
  EXPECT_STREQ("Plausi", note->getPlausiSection(2));

  // The module applies the weight level: the hint of weight 1 goes at 2.
  EXPECT_EQ((Ids{"UMF-01", "UMF-02", "UMF-03", "UMF-04", "UMF-06"}), run("Pruefung", 2));
  // The other flow runs only the answers.
  EXPECT_EQ(Ids{"UMF-06"}, run("Antworten"));
}

// A masked real field is read as text: a host that hands a double has it
// written with all its binary digits, which a two-decimal mask refuses.
TEST_F(UmfrageModuleTest, AMaskedRealGivenAsNumberFailsItsMask) {
  record_.setValue("Umfrage.Name", "Berger");
  record_.setValue("Umfrage.Einkommen", 2345.67);
  ASSERT_EQ(Ids{"UMF-03"}, run("Pruefung"));
  EXPECT_STREQ("Die maximale Anzahl der Nachkommastellen wurde \xFC" "berschritten.",
               context_->getProblem(0)->getLongDescription());
  record_.setValue("Umfrage.Einkommen", "2345,67");
  EXPECT_EQ(Ids{}, run("Pruefung"));
}

}  // namespace
}  // namespace quorel
