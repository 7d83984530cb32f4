#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "model/test_tree.h"
#include "quorel/model/field.h"
#include "quorel/rules/mapping.h"
#include "quorel/values/classification.h"
#include "quorel/values/string_value.h"
#include "test_support.h"

namespace quorel {
namespace {

std::vector<std::string> checked;

Value *recordCheck(RuntimeContext *runtime, Field *field) {
  checked.push_back(field->getHierarchyText());
  return runtime->createNilValue();
}

// A rule set that registers one of everything.
class RegisteringRules : public NoRules {
 public:
  RegisteringRules() {
    setRootTopic(new RootTopic());
    setMapping(new Mapping());
    setMapping(new Mapping());  // the first one is replaced, and still released
    StringValue a("A"), b("B");
    registerClassification(new Classification(&a, "Alpha"), "A", "Alpha");
    registerClassification(new Classification(&b, "Beta"), "B", nullptr);
    // Aa and BB share a hash code: the second replaces the first.
    StringValue aa("Aa"), bb("BB");
    registerClassification(new Classification(&aa, "erste"), "Aa", "erste");
    registerClassification(new Classification(&bb, "zweite"), "BB", "zweite");
    setFieldCheckProc("Root.Liste", recordCheck);
    setFieldCheckProc("Root.Name", recordCheck);
    customers = new Mapping();
    setMappingForMaterial("Kunden", customers);
    setMappingForMaterial("Kunden", customers);  // the same again: owned once
    setMapping(getMapping());
  }

  using Plausi::getMapping;
  using Plausi::getMappingForMaterial;

  Mapping *customers;
};

TEST(RegistriesTest, ClassificationsByCodeAndValue) {
  RegisteringRules rules;
  EXPECT_STREQ("A", rules.getClassificationByCode("A")->asString());
  EXPECT_STREQ("A", rules.getClassificationByValue("Alpha")->asString());
  EXPECT_STREQ("B", rules.getClassificationByCode("B")->asString());
  Value *unknown = rules.getClassificationByValue("Beta");
  EXPECT_FALSE(unknown->isValid());
  EXPECT_EQ(unknown, rules.getClassificationByCode("nie"));
  EXPECT_STREQ("BB", rules.getClassificationByCode("Aa")->asString());
  // The replaced classification still answers by its value text.
  EXPECT_STREQ("Aa", rules.getClassificationByValue("erste")->asString());
  EXPECT_EQ(nullptr, rules.getMaterial("Kunden"));
}

TEST(RegistriesTest, MappingsForMaterialsByName) {
  RegisteringRules rules;
  EXPECT_EQ(rules.customers, rules.getMappingForMaterial("Kunden"));
  EXPECT_EQ(nullptr, rules.getMappingForMaterial("Lieferanten"));
  EXPECT_NE(nullptr, rules.getMapping());
}

TEST(RegistriesTest, FieldChecksAreFoundByTheTypeHierarchy) {
  RegisteringRules rules;
  SimpleDataRecord record;
  PlausiContext context(&record);
  checked.clear();
  rules.performFieldCheck("Liste[3]", &context);
  rules.performFieldCheck("Liste[5]", &context);
  rules.performFieldCheck("Name", &context);
  EXPECT_EQ((std::vector<std::string>{"Root.Liste[3]", "Root.Liste[5]", "Root.Name"}), checked);
  expectFailure([&] { rules.performFieldCheck("Adresse.Strasse", &context); }, EXCEPTION_NO_FIELD_CHECK,
                "Root.Adresse.Strasse");
  expectFailure([&] { rules.performFieldCheck("Gibts.Nicht", &context); }, EXCEPTION_NO_SUCH_FIELD, "Gibts");

  NoRules empty;
  expectFailure([&] { empty.performFieldCheck("Name", &context); }, EXCEPTION_NO_SUCH_FIELD, "Name");
}

}  // namespace
}  // namespace quorel
