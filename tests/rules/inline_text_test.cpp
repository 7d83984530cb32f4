// The text a section keeps its name in: short and long texts, the first
// that no longer fits inside, and no text at all.

#include <string>

#include <gtest/gtest.h>

#include "quorel/rules/inline_text.h"

namespace quorel {
namespace {

TEST(InlineTextTest, KeepsAPrivateCopyInsideOrInThePool) {
  for (std::size_t length : {0, 1, 7, 8, 9, 300}) {
    std::string source(length, 'x');
    InlineText<9> text(source.c_str());
    source.assign(length, 'y');  // the copy is the text's own
    EXPECT_EQ(std::string(length, 'x'), text.get()) << length;
    EXPECT_EQ(length, text.size());
  }
  EXPECT_EQ(nullptr, InlineText<9>(nullptr).get());
  EXPECT_EQ(0u, InlineText<9>(nullptr).size());
}

}  // namespace
}  // namespace quorel
