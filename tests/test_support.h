// Helpers shared by the tests of all subsystems.

#ifndef QUOREL_TESTS_TEST_SUPPORT_H_
#define QUOREL_TESTS_TEST_SUPPORT_H_

#include <string>

#include <gtest/gtest.h>

#include "quorel/rules/plausi.h"
#include "quorel/rules/plausi_context.h"
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

}  // namespace quorel

#endif  // QUOREL_TESTS_TEST_SUPPORT_H_
