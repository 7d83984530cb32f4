// The list a section keeps its values in: entries inside the list and
// beyond it read, and erase, as one sequence.

#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/rules/inline_list.h"

namespace quorel {
namespace {

TEST(InlineListTest, ErasesAcrossTheInlinePartLikeAVector) {
  for (std::size_t count : {1, 3, 4, 5, 9}) {
    for (std::size_t gone = 0; gone < count; ++gone) {
      InlineList<int, 4> list;
      std::vector<int> expected;
      for (std::size_t i = 0; i < count; ++i) {
        list.push_back(static_cast<int>(i * 10));
        expected.push_back(static_cast<int>(i * 10));
      }
      list.erase(gone);
      expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(gone));
      list.push_back(-1);
      expected.push_back(-1);
      ASSERT_EQ(expected.size(), list.size());
      for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(expected[i], list[i]) << count << " " << gone;
    }
  }
}

}  // namespace
}  // namespace quorel
