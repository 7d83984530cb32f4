// An element of an array takes exactly one index per dimension: fewer name a
// part of the array, more name nothing.

#include <initializer_list>

#include <gtest/gtest.h>

#include "model/test_tree.h"
#include "quorel/model/local_array.h"
#include "test_support.h"

namespace quorel {
namespace {

TEST(ElementAccessTest, OneIndexPerDimensionExactly) {
  TestRun run;
  RuntimeContext *rt = &run.runtime;
  StandaloneRoot root;
  LocalArray local(2, 3, 4);
  const char kMessage[] = "Ung\xFC" "ltiger Elementzugriff.";
  std::int32_t none[] = {-1};
  std::int32_t one[] = {1, -1};
  std::int32_t three[] = {1, 1, 1, -1};
  for (const std::int32_t *indices : std::initializer_list<const std::int32_t *>{nullptr, none, one, three}) {
    expectFailure([&] { root.matrix->getElement(rt, indices); }, EXCEPTION_ILLEGAL_ACCESS, kMessage);
    expectFailure([&] { local.getElement(rt, indices); }, EXCEPTION_ILLEGAL_ACCESS, kMessage);
  }
  expectFailure([&] { root.liste->getElement(rt, std::int32_t{0}); }, EXCEPTION_ILLEGAL_ACCESS, kMessage);
  expectFailure([&] { root.liste->getElement(rt, 2, 0, 0); }, EXCEPTION_ILLEGAL_ACCESS, kMessage);
  EXPECT_NE(nullptr, root.matrix->getElement(rt, 2, 1, 1));
  EXPECT_NE(nullptr, root.liste->getElement(rt, 1, 5));  // beyond the end is no fault here
}

}  // namespace
}  // namespace quorel
