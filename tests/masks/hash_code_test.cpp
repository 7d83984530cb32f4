#include "quorel/masks/util.h"

#include <gtest/gtest.h>

namespace quorel {
namespace {

TEST(HashCodeTest, FollowsSignedBytesAndWraps) {
  EXPECT_EQ(0, Util::getHashCode(static_cast<const char *>(nullptr)));
  EXPECT_EQ(0, Util::getHashCode(""));
  EXPECT_EQ(96354, Util::getHashCode("abc"));
  // Aa and BB collide, which is why every name-keyed map treats them as one key.
  EXPECT_EQ(2112, Util::getHashCode("Aa"));
  EXPECT_EQ(Util::getHashCode("Aa"), Util::getHashCode("BB"));
  // A byte above 0x7F counts negative: a-umlaut adds -28.
  EXPECT_EQ(-28, Util::getHashCode("\xE4"));
  EXPECT_EQ(97 * 31 - 28, Util::getHashCode("a\xE4"));
  // Long texts wrap at 32 bits instead of overflowing.
  EXPECT_EQ(0x7E8773C9, Util::getHashCode("Plausibilit\xE4tspr\xFC" "fung"));
}

}  // namespace
}  // namespace quorel
