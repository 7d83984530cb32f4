// Ranges at their ends: which interval types hold their bounds, and a
// sequence's first and last value, rising and falling.

#include <gtest/gtest.h>

#include "quorel/values/interval_range.h"
#include "quorel/values/value.h"
#include "test_support.h"

namespace quorel {
namespace {

class RangeBoundariesTest : public ::testing::Test {
 protected:
  RuntimeContext *rt() { return &run_.runtime; }
  Value *n(double d) { return rt()->createNumberValue(d); }
  Value *text(const char *t) { return rt()->createStringValue(t); }

  TestRun run_;
};

TEST_F(RangeBoundariesTest, EachIntervalTypeHoldsExactlyItsOwnEnds) {
  struct {
    IntervalType type;
    bool first;
    bool last;
  } cases[] = {
      {INCLUDE_BOTH, true, true},
      {INCLUDE_FIRST, true, false},
      {INCLUDE_LAST, false, true},
      {INCLUDE_NONE, false, false},
  };
  for (const auto &c : cases) {
    Value *interval = rt()->createIntervalRange(n(1), n(5), c.type);
    EXPECT_EQ(c.first, interval->contains(n(1))) << interval->asString();
    EXPECT_EQ(c.last, interval->contains(n(5))) << interval->asString();
    EXPECT_TRUE(interval->contains(n(1.5))) << interval->asString();
    EXPECT_FALSE(interval->contains(n(0.5))) << interval->asString();
    EXPECT_FALSE(interval->contains(n(5.5))) << interval->asString();
  }
  // Texts compare as texts: "b" lies between "a" and "c", "c" only with its end.
  Value *letters = rt()->createIntervalRange(text("a"), text("c"), INCLUDE_FIRST);
  EXPECT_TRUE(letters->contains(text("a")));
  EXPECT_TRUE(letters->contains(text("bzz")));
  EXPECT_FALSE(letters->contains(text("c")));
}

TEST_F(RangeBoundariesTest, ASequenceHoldsItsFirstAndItsLastValue) {
  Value *rising = rt()->createSequenceRange(n(1), n(3), n(9));
  EXPECT_TRUE(rising->contains(n(1)));
  EXPECT_TRUE(rising->contains(n(9)));
  EXPECT_FALSE(rising->contains(n(-1)));
  EXPECT_FALSE(rising->contains(n(11)));
  Value *falling = rt()->createSequenceRange(n(9), n(7), n(1));
  EXPECT_TRUE(falling->contains(n(9)));
  EXPECT_TRUE(falling->contains(n(1)));
  EXPECT_FALSE(falling->contains(n(11)));
  EXPECT_FALSE(falling->contains(n(-1)));
  // A last value equal to the second makes a sequence of two.
  Value *two = rt()->createSequenceRange(n(1), n(3), n(3));
  EXPECT_TRUE(two->contains(n(1)));
  EXPECT_TRUE(two->contains(n(3)));
  EXPECT_EQ(4.0, two->asReal());
}

}  // namespace
}  // namespace quorel
