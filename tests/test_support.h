// Helpers shared by the tests of all subsystems.

#ifndef QUOREL_TESTS_TEST_SUPPORT_H_
#define QUOREL_TESTS_TEST_SUPPORT_H_

#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "quorel/rules/plausi.h"
#include "quorel/rules/plausi_context.h"
#include "quorel/rules/plausi_problem.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/model/field.h"
#include "quorel/model/topic.h"
#include "quorel/model/type_descriptor.h"
#include "quorel/rules/runtime_context.h"

namespace quorel {

// Runs f and gives back the PlausiException it threw; fails the test when
// nothing was thrown.
template <typename F>
PlausiException thrownBy(F f) {
  try {
    f();
  } catch (const PlausiException &e) {
    return e;
  }
  ADD_FAILURE() << "nothing was thrown";
  return PlausiException(-1, "nothing was thrown");
}

// Expects f to fail with this type and message.
template <typename F>
void expectFailure(F f, std::int32_t type, const std::string &message) {
  PlausiException e = thrownBy(f);
  EXPECT_EQ(type, e.getType());
  EXPECT_EQ(message, e.getMessage());
}

// A rule set without rules, for tests that need a Plausi to run under.
class NoRules : public Plausi {
 protected:
  Value *performFunctionImpl(RuntimeContext *runtime, const char *) override {
    return runtime->createNilValue();
  }
  void performImpl(RuntimeContext *, const char *) override {}
};

// The record type of a material for tests: a root topic of that name whose
// fields the subclass adds with field(). It owns its TypeDescriptor; the
// fields and theirs belong to the Topic.
class TestMaterialTopic : public Topic {
 public:
  explicit TestMaterialTopic(const char *name)
      : Topic(new TypeDescriptor(nullptr, nullptr, name, nullptr, FieldTypeTopic, nullptr, 0), nullptr) {
    setMaterialName(name);
  }
  ~TestMaterialTopic() override { delete getTypeDescriptor(); }
  Topic *createElement() override { return nullptr; }

 protected:
  Field *field(const char *fieldName, FieldType type, const char *mask = nullptr) {
    auto *added = new Field(new TypeDescriptor(getTypeDescriptor(), nullptr, fieldName, nullptr, type, mask, 0), this);
    setField(fieldName, added);
    return added;
  }
};

// An open run without a record: the root section owns what tests make.
struct TestRun {
  NoRules plausi;
  PlausiContext context{nullptr};
  RuntimeContext runtime{&context, &plausi};
};

// Every reading of a problem, as one text.
inline std::string describeProblem(const PlausiProblem &p) {
  std::ostringstream text;
  auto show = [&text](const char *name, const char *value) {
    text << name << '=' << (value != nullptr ? value : "<null>") << ';';
  };
  text << p.getType() << ';' << p.getWeight() << ';';
  show("id", p.getId());
  show("short", p.getShortDescription());
  show("long", p.getLongDescription());
  show("correction", p.getCorrectionInfo());
  show("topic", p.getReferenceTopic());
  show("exception", p.getException());
  show("display", p.getFieldDisplayName());
  show("mask", p.getFieldMask());
  show("space", p.getFieldValueSpace());
  // Fields by their hierarchy text: the same rules loaded twice have fields
  // of their own.
  auto field = [&text](FieldDescriptor *descriptor) {
    std::string hierarchy = "<none>";
    if (descriptor != nullptr) descriptor->appendHierarchyText(&hierarchy.erase());
    text << ' ' << hierarchy;
  };
  text << p.isExceptionOccured() << ';' << p.getInfoType() << ';' << p.getFieldType() << ';' << p.getFieldLength()
       << ";field";
  field(p.getReferenceField());
  text << ";indices";
  for (const std::int32_t *i = p.getReferenceFieldIndices(); i != nullptr && *i >= 0; ++i) text << ' ' << *i;
  text << ";accessed";
  for (std::int32_t i = 0; i < p.getNumOfAccessedFields(); ++i) field(p.getAccessedField(i));
  text << ";sections";
  for (std::int32_t i = 0; i < p.getNumOfPlausiSections(); ++i) text << ' ' << p.getPlausiSection(i);
  return text.str();
}

}  // namespace quorel

#endif  // QUOREL_TESTS_TEST_SUPPORT_H_
