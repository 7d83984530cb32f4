#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "model/test_tree.h"
#include "quorel/model/field.h"
#include "quorel/model/topic.h"
#include "quorel/model/type_descriptor.h"
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
    // A replaced registration is released by no one but its registrant.
    replacedMapping_ = std::make_unique<Mapping>();
    setMapping(replacedMapping_.get());
    setMapping(new Mapping());
    StringValue a("A"), b("B");
    registerClassification(new Classification(&a, "Alpha"), "A", "Alpha");
    registerClassification(new Classification(&b, "Beta"), "B", nullptr);
    // Aa and BB share a hash code: the second replaces the first.
    StringValue aa("Aa"), bb("BB");
    replacedClassification_ = std::make_unique<Classification>(&aa, "erste");
    registerClassification(replacedClassification_.get(), "Aa", "erste");
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

 private:
  std::unique_ptr<Mapping> replacedMapping_;
  std::unique_ptr<Classification> replacedClassification_;
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
  EXPECT_EQ(0, rules.getNumOfMaterials());
  EXPECT_EQ(nullptr, rules.getMaterialAt(0));
}

std::vector<std::string> released;

// Notes its release, so that tests see what is released and in which order.
class NotedClassification : public Classification {
 public:
  explicit NotedClassification(const char *name) : Classification(code(), name), name_(name) {}
  ~NotedClassification() override { released.push_back(name_); }

 private:
  static Value *code() {
    static StringValue code("x");
    return &code;
  }
  std::string name_;
};

class NotedTopic : public Topic {
 public:
  explicit NotedTopic(const char *name)
      : Topic(new TypeDescriptor(nullptr, nullptr, name, nullptr, FieldTypeTopic, nullptr, 0), nullptr),
        name_(name) {}
  ~NotedTopic() override { released.push_back(name_); }
  Topic *createElement() override { return nullptr; }

 private:
  std::string name_;
};

// Replaces registrations, registers replaced objects anew under other names
// and registers objects more than once, in an order that is neither that of
// the names' codes nor its reverse. What is replaced and not registered
// again stays with the test, as replaced and kept.
class ReplacingRules : public NoRules {
 public:
  ReplacingRules() {
    registerClassification(new NotedClassification("B"), "B", nullptr);
    auto *movedOn = new NotedClassification("D");
    registerClassification(movedOn, "A", nullptr);
    registerClassification(new NotedClassification("A"), "A", nullptr);
    registerClassification(movedOn, "D", nullptr);
    kept.classification = new NotedClassification("alt");
    registerClassification(kept.classification, "C", "alt");
    registerClassification(new NotedClassification("C"), "C", nullptr);
    auto *twice = new NotedClassification("E");
    registerClassification(twice, "E", nullptr);
    registerClassification(twice, "F", nullptr);

    auto *formerMapping = new Mapping();
    setMapping(formerMapping);
    setMapping(new Mapping());
    setMappingForMaterial("K", formerMapping);
    kept.mapping = new Mapping();
    setMappingForMaterial("L", kept.mapping);
    setMappingForMaterial("L", new Mapping());
    setMappingForMaterial("M", getMapping());

    auto *formerRoot = new NotedTopic("T1");
    setRootTopic(formerRoot);
    auto *root = new NotedTopic("T2");
    setRootTopic(root);
    setMaterial("K", formerRoot);
    kept.topic = new NotedTopic("alt");
    setMaterial("L", kept.topic);
    setMaterial("L", new NotedTopic("T4"));
    setMaterial("R", root);
  }

  struct {
    Classification *classification;
    Mapping *mapping;
    Topic *topic;
  } kept;
};

TEST(RegistriesTest, ReplacedRegistrationsStayTheirRegistrantsAndTheRestIsReleasedOnceInKeyOrder) {
  released.clear();
  std::unique_ptr<ReplacingRules> rules = std::make_unique<ReplacingRules>();
  auto kept = rules->kept;
  // A replaced classification still answers by its value text.
  EXPECT_EQ(kept.classification, rules->getClassificationByValue("alt"));
  // The materials a host is told of: each key once, with what it holds now.
  ASSERT_EQ(3, rules->getNumOfMaterials());
  std::vector<MaterialDescriptor *> listed;
  for (std::int32_t i = -1; i <= 3; ++i) listed.push_back(rules->getMaterialAt(i));
  EXPECT_EQ((std::vector<MaterialDescriptor *>{nullptr, rules->getMaterial("K"), rules->getMaterial("L"),
                                               rules->getMaterial("R"), nullptr}),
            listed);
  rules.reset();
  // Materials by key, then the root topic, then classifications by code.
  EXPECT_EQ((std::vector<std::string>{"T1", "T4", "T2", "A", "B", "C", "D", "E"}), released);
  delete kept.classification;
  delete kept.mapping;
  delete kept.topic->getTypeDescriptor();
  delete kept.topic;
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
