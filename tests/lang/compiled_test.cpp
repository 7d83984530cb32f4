// A rule file compiled to a C++ module registers what the interpreter
// registers for it: every field of the record type and of the materials with
// its names, type, mask, sizes and name in the data source, the flows, the
// field checks and the code lists. The runs of both are compared over
// quorel-check by the differential tests; this compares what a host sees
// before any run.

#include <string>

#include <gtest/gtest.h>

#include <quorel/quorel.h>

#include "lang_test_support.h"

namespace quorel {
namespace lang {
namespace {

std::string text(const char *value) { return value != nullptr ? value : "(null)"; }

// What a host may learn of one field from its descriptor.
std::string describe(FieldDescriptor *field) {
  TypeDescriptor *type = field->getTypeDescriptor();
  std::string out = type->getHierarchyText() + " display=" + text(type->getFieldNameDisplay()) +
                    " type=" + std::to_string(type->getFieldType()) + " mask=" + text(type->getMask()) +
                    " source=" + text(type->getFieldNameDataset()) +
                    " mapped=" + (type->getMapping() != nullptr ? "yes" : "no") + " dims=";
  if (std::int32_t *dims = type->getDimension()) {
    for (; *dims >= 0; ++dims) out += std::to_string(*dims) + " ";
  }
  return out;
}

// What performFieldCheck of path does on an empty record.
std::string fieldCheck(Plausi *plausi, const std::string &path) {
  SimpleDataRecord record;
  PlausiContext context(&record);
  try {
    plausi->performFieldCheck(path.c_str(), &context);
  } catch (const PlausiException &e) {
    return testing::describe(context) + "Ausnahme " + std::to_string(e.getType()) + ": " + e.getMessage();
  }
  return testing::describe(context);
}

// Compares the fields below group in both trees, by their paths below the
// roots; the elements of an array stand for the array.
void compareFields(Plausi *interpreted, Topic *a, Plausi *compiled, Topic *b, const FieldDecl &group,
                   const std::string &prefix, bool record) {
  for (const auto &child : group.children) {
    std::string path = prefix + child->name;
    if (child->isGroup()) {
      for (std::size_t i = 0; i < child->dims.size(); ++i) path += "[0]";
    }
    FieldDescriptor *fieldA = a->getField(nullptr, path.c_str());
    FieldDescriptor *fieldB = b->getField(nullptr, path.c_str());
    EXPECT_EQ(describe(fieldA), describe(fieldB)) << path;
    if (record) {
      EXPECT_EQ(fieldCheck(interpreted, path), fieldCheck(compiled, path)) << path;
    }
    if (child->isGroup()) compareFields(interpreted, a, compiled, b, *child, path + ".", record);
  }
}

TEST(CompiledTest, RegistersWhatTheInterpreterRegisters) {
#if !defined(QUOREL_ZUFALL_RULES) || !defined(QUOREL_ZUFALL_MODULE)
  GTEST_SKIP() << "built without the generated rule module";
#else
  Diagnostics diagnostics;
  std::shared_ptr<const RuleSet> rules = readRuleFile(QUOREL_ZUFALL_RULES, &diagnostics);
  ASSERT_NE(rules, nullptr) << diagnostics.format();
  std::unique_ptr<Plausi> interpreted = rules->createPlausi();
  PlausiLoader loader;
  Plausi *compiled = loader.loadPlausi(QUOREL_ZUFALL_MODULE, rules->name().c_str());
  ASSERT_NE(compiled, nullptr);
  const Module &module = rules->module();

  Topic *rootA = interpreted->getRootTopic();
  Topic *rootB = compiled->getRootTopic();
  EXPECT_EQ(describe(rootA), describe(rootB));
  compareFields(interpreted.get(), rootA, compiled, rootB, *module.record, "", true);

  ASSERT_EQ(interpreted->getNumOfMaterials(), compiled->getNumOfMaterials());
  for (const MaterialDecl &material : module.materials) {
    auto *a = dynamic_cast<Topic *>(interpreted->getMaterial(material.root->name.c_str()));
    auto *b = dynamic_cast<Topic *>(compiled->getMaterial(material.root->name.c_str()));
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_EQ(describe(a), describe(b));
    EXPECT_EQ(text(a->getMaterialName()), text(b->getMaterialName()));
    EXPECT_EQ(text(a->getMaterialNameDataset()), text(b->getMaterialNameDataset()));
    compareFields(interpreted.get(), a, compiled, b, *material.root, "", false);
  }

  const char *const *flowsA = interpreted->getFlows();
  const char *const *flowsB = compiled->getFlows();
  ASSERT_EQ(flowsA == nullptr, flowsB == nullptr);
  for (; flowsA != nullptr && *flowsA != nullptr; ++flowsA, ++flowsB) EXPECT_EQ(text(*flowsA), text(*flowsB));
  if (flowsB != nullptr) {
    EXPECT_EQ(*flowsB, nullptr);
  }

  for (const auto &code : module.codes) {
    Value *a = interpreted->getClassificationByCode(code->code.c_str());
    Value *b = compiled->getClassificationByCode(code->code.c_str());
    EXPECT_EQ(a->isValid(), b->isValid()) << code->code;
    EXPECT_EQ(text(interpreted->getClassificationByValue(code->text.c_str())->asString()),
              text(compiled->getClassificationByValue(code->text.c_str())->asString()));
  }
  loader.unloadPlausi(compiled, rules->name().c_str());
#endif
}

}  // namespace
}  // namespace lang
}  // namespace quorel
