#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "quorel/quorel.h"
#include "test_support.h"

namespace quorel {
namespace {

std::string openSections(RuntimeContext *runtime) {
  std::string trail;
  for (PlausiSection *s = runtime->getCurrentSection(); s != nullptr; s = s->getParent()) {
    trail = std::string(s->getName()) + (trail.empty() ? "" : ">") + trail;
  }
  return trail;
}

TEST(SectionScopeTest, LeavesItsSectionAndWhatWasLeftOpenInsideIt) {
  TestRun run;
  {
    SectionScope rule(&run.runtime, "Regel");
    EXPECT_EQ("Plausi>Regel", openSections(&run.runtime));
    {
      SectionScope check(&run.runtime, "Pruefung", true);
      EXPECT_TRUE(run.runtime.getCurrentSection()->isCheckProc());
      // Opened by hand and never left: the enclosing scope takes it along.
      run.runtime.startNewSection("vergessen", false);
      run.runtime.createStringValue("lebt bis zum Ende des Bereichs");
    }
    EXPECT_EQ("Plausi>Regel", openSections(&run.runtime));
    rule.leave();
    EXPECT_EQ("Plausi", openSections(&run.runtime));
    rule.leave();  // a second time changes nothing
  }
  EXPECT_EQ("Plausi", openSections(&run.runtime));
}

TEST(SectionScopeTest, AScopeWhoseSectionWasLeftLeavesNoLaterSection) {
  TestRun run;
  {
    SectionScope rule(&run.runtime, "Regel");
    SectionScope inner(&run.runtime, "Innen");
    rule.leave();  // takes Innen along
    // Opened where Regel and Innen stood, and likely in their memory: the
    // end of inner must leave them alone all the same.
    run.runtime.startNewSection("Spaeter", false);
    run.runtime.startNewSection("Noch", false);
  }
  EXPECT_EQ("Plausi>Spaeter>Noch", openSections(&run.runtime));
  run.runtime.leaveCurrentSection();
  run.runtime.leaveCurrentSection();
}

TEST(SectionScopeTest, ExceptionCaughtInRuleCodeLeavesTheSectionsPaired) {
  TestRun run;
  try {
    SectionScope outer(&run.runtime, "Aussen");
    SectionScope inner(&run.runtime, "Innen");
    run.runtime.createNumberValue(1.0);
    throw PlausiException(EXCEPTION_CONVERSION, "unterwegs");
  } catch (const PlausiException &) {
  }
  EXPECT_EQ("Plausi", openSections(&run.runtime));
}

// A rule set whose flow throws from inside scoped sections, with values in
// each: the scopes leave their sections on the way out, the RuntimeContext
// then only the root. The sanitizer build catches a section left twice or a
// value leaked.
class ThrowingRules : public NoRules {
 protected:
  void performImpl(RuntimeContext *runtime, const char *flow) override {
    SectionScope rule(runtime, "Regel");
    runtime->createStringValue("a");
    SectionScope inner(runtime, "Innen");
    runtime->createStringValue("b");
    if (flow != nullptr) throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, flow);
    PlausiProblem *problem = runtime->createProblem(PROBLEM_ERROR, 1);
    runtime->setSectionInfosToProblem(problem);
  }
};

TEST(SectionScopeTest, ExceptionThroughPerformReachesTheHostUnchanged) {
  ThrowingRules rules;
  PlausiContext context(nullptr);
  rules.perform(&context);
  ASSERT_EQ(1, context.getNumOfProblems());
  ASSERT_EQ(3, context.getProblem(0)->getNumOfPlausiSections());
  EXPECT_STREQ("Innen", context.getProblem(0)->getPlausiSection(0));
  context.setFlow("Abbruch");
  expectFailure([&] { rules.perform(&context); }, EXCEPTION_ILLEGAL_ARGUMENT, "Abbruch");
}

class Antwort : public ModuleTopic {
 public:
  Antwort(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    note = field("Note", "Note", FieldTypeInteger);
  }
  Topic *createElement() override { return new Antwort(getTypeDescriptor(), getParent()); }
  Field *note;
};

class Anschrift : public ModuleTopic {
 public:
  Anschrift(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    ort = field("Ort", "Wohnort", FieldTypeText, "Zz.");
  }
  Topic *createElement() override { return new Anschrift(getTypeDescriptor(), getParent()); }
  Field *ort;
};

class Bogen : public ModuleTopic {
 public:
  Bogen(TypeDescriptor *type, FieldDescriptor *parent) : ModuleTopic(type, parent) {
    betrag = field("Betrag", "Betrag", FieldTypeReal, "###.##0");
    werte = fieldArray("Werte", "Werte", FieldTypeInteger, nullptr, {2, 0});
    anschrift = topic<Anschrift>("Anschrift", "Anschrift");
    antworten = topicArray<Antwort>("Antworten", "Antworten", {3});
  }
  Topic *createElement() override { return new Bogen(getTypeDescriptor(), getParent()); }
  Field *betrag;
  FieldArray *werte;
  Anschrift *anschrift;
  TopicArray *antworten;
};

class BogenRules : public NoRules {
 public:
  explicit BogenRules(Mapping *mapping) {
    setMapping(mapping);
    bogen = ModuleTopic::createRoot<Bogen>("Bogen", "Fragebogen", mapping);
    setRootTopic(bogen);
  }
  Bogen *bogen;
};

TEST(ModuleTopicTest, BuildsEachFieldWithItsTypeBelowTheTopic) {
  auto *mapping = new Mapping();
  mapping->put("Bogen.Anschrift.Ort", "WOHNORT");
  BogenRules rules(mapping);
  EXPECT_EQ(rules.bogen, rules.getRootTopic());

  TypeDescriptor *betrag = rules.bogen->betrag->getTypeDescriptor();
  EXPECT_EQ("Bogen.Betrag", betrag->getHierarchyText());
  EXPECT_STREQ("###.##0", betrag->getMask());
  EXPECT_EQ(FieldTypeReal, betrag->getFieldType());
  EXPECT_EQ(nullptr, betrag->getDimension());

  std::int32_t *werte = rules.bogen->werte->getDimension();
  ASSERT_NE(nullptr, werte);
  EXPECT_EQ(2, werte[0]);
  EXPECT_EQ(0, werte[1]);
  EXPECT_EQ(-1, werte[2]);

  // The mapping of the root type reaches the fields of nested topics.
  TypeDescriptor *ort = rules.bogen->anschrift->ort->getTypeDescriptor();
  EXPECT_STREQ("WOHNORT", ort->getFieldNameDataset());
  EXPECT_STREQ("Wohnort", ort->getFieldNameDisplay());

  // Paths resolve through the topics the helpers registered.
  TestRun run;
  FieldDescriptor *note = rules.bogen->getField(&run.runtime, "Antworten[2].Note");
  EXPECT_EQ("Bogen.Antworten[2].Note", note->getHierarchyText());
  EXPECT_EQ(rules.bogen->anschrift->ort, rules.bogen->getField(&run.runtime, "Anschrift.Ort"));
}

TEST(ModuleTopicTest, ReadsTheRecordThroughTheBuiltFields) {
  BogenRules rules(nullptr);
  SimpleDataRecord record;
  record.setValue("Bogen.Antworten[1].Note", std::int32_t{4});
  record.setValue("Bogen.Betrag", "12,50");
  PlausiContext context(&record);
  RuntimeContext runtime(&context, &rules);
  std::int32_t second[] = {1, -1};
  auto *antwort = static_cast<Antwort *>(rules.bogen->antworten->getElement(&runtime, second));
  EXPECT_EQ(4, antwort->note->get(&runtime)->asInteger());
  EXPECT_STREQ("12,50", rules.bogen->betrag->get(&runtime)->asString());
}

TEST(TypeDescriptorListTest, SizesAsAListEqualTheCountedForm) {
  TypeDescriptor counted(nullptr, nullptr, "M", "M", FieldTypeReal, nullptr, 2, 3, 0);
  TypeDescriptor listed(nullptr, nullptr, "M", "M", FieldTypeReal, nullptr, {3, 0});
  ASSERT_NE(nullptr, listed.getDimension());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(counted.getDimension()[i], listed.getDimension()[i]);
  TypeDescriptor scalar(nullptr, nullptr, "S", "S", FieldTypeText, nullptr, {});
  EXPECT_EQ(nullptr, scalar.getDimension());
}

}  // namespace
}  // namespace quorel
