#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/functions/functions.h"
#include "quorel/rules/module_support.h"
#include "quorel/values/interval_range.h"
#include "quorel/values/iterator_iterator.h"
#include "quorel/values/number_value.h"
#include "quorel/values/range_series.h"
#include "quorel/values/sequence_range.h"
#include "quorel/values/single_value_iterator.h"
#include "quorel/values/value_keeper.h"
#include "quorel/values/value_set.h"
#include "test_support.h"

// Blocks of memory in use by the whole program, so that a test can see
// whether something it did left memory behind.
namespace {
std::atomic<long> liveBlocks{0};
}  // namespace

void *operator new(std::size_t size) {
  void *block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++liveBlocks;
  return block;
}

void operator delete(void *block) noexcept {
  if (block == nullptr) return;
  --liveBlocks;
  std::free(block);
}

void operator delete(void *block, std::size_t) noexcept { operator delete(block); }

namespace quorel {
namespace {

class RangesTest : public ::testing::Test {
 protected:
  RuntimeContext *rt() { return &run_.runtime; }
  Value *n(double d) { return rt()->createNumberValue(d); }
  Value *text(const char *t) { return rt()->createStringValue(t); }
  Value *seq(double a, double b, double c) { return rt()->createSequenceRange(n(a), n(b), n(c)); }

  std::vector<std::string> walk(Value *range) {
    std::vector<std::string> texts;
    std::unique_ptr<ValueIterator> it(range->asRange());
    while (it->hasNext()) texts.push_back(it->next()->asString());
    return texts;
  }

  TestRun run_;
};

TEST_F(RangesTest, SequencesAreValidatedInOrder) {
  expectFailure([&] { seq(1, 3, 2); }, EXCEPTION_ILLEGAL_ARGUMENT,
                "Ung\xFC" "ltige Sequenz: Der letzte Wert ist kleiner als der zweite.");
  expectFailure([&] { seq(10, 8, 9); }, EXCEPTION_ILLEGAL_ARGUMENT,
                "Ung\xFC" "ltige Sequenz: Der letzte Wert ist gr\xF6" "sser als der zweite.");
  expectFailure([&] { seq(1, 1, 5); }, EXCEPTION_ILLEGAL_ARGUMENT,
                "Ung\xFC" "ltige Sequenz: Die Schrittweite ist 0.");
  // Texts that differ as texts but not as numbers pass, and cannot be walked.
  Value *same = rt()->createSequenceRange(text("1"), text("1,0"), text("5"));
  expectFailure([&] { delete same->asRange(); }, EXCEPTION_ILLEGAL_ARGUMENT, "Schrittweite der Sequenz ist 0.");
}

TEST_F(RangesTest, SequencesWalkExactlyAndContainWithTolerance) {
  EXPECT_EQ((std::vector<std::string>{"1", "3"}), walk(seq(1, 3, 3)));
  EXPECT_EQ((std::vector<std::string>{"10", "8", "6", "4", "2"}), walk(seq(10, 8, 1)));
  EXPECT_EQ((std::vector<std::string>{"5", "3", "1"}), walk(seq(5, 3, 0)));
  Value *tenths = seq(0.1, 0.2, 0.3);
  EXPECT_EQ(2u, walk(tenths).size());
  EXPECT_TRUE(tenths->contains(n(0.3)));
  Value *odd = seq(1, 3, 10);
  EXPECT_EQ(25, odd->asInteger());
  EXPECT_EQ(25.0, odd->asReal());
  EXPECT_TRUE(odd->contains(n(9)));
  EXPECT_FALSE(odd->contains(n(4)));
  EXPECT_FALSE(odd->contains(n(10)));
  EXPECT_FALSE(odd->contains(n(11)));
  Value *falling = seq(10, 8, 1);
  EXPECT_TRUE(falling->contains(n(2)));
  EXPECT_FALSE(falling->contains(n(1)));
  EXPECT_STREQ("1, 3..10", odd->asString());
  expectFailure([&] { odd->asBool(); }, EXCEPTION_CONVERSION,
                "Eine Sequenz kann nicht in einen boolschen Wert umgewandelt werden.");
  expectFailure([&] { odd->asDate(); }, EXCEPTION_CONVERSION,
                "Eine Reihe kann nicht in einen Datumswert umgewandelt werden.");
  // Each element is a new number that outlives the walk.
  std::unique_ptr<ValueIterator> it(odd->asRange());
  Value *first = it->next();
  Value *second = it->next();
  it.reset();
  EXPECT_NE(first, second);
  EXPECT_EQ(3.0, second->asReal());
}

TEST_F(RangesTest, AWalkWhoseStepIsLostInRoundingEnds) {
  // At 2^53 a step of 1 no longer moves the running value; the walk stops
  // there instead of repeating it forever.
  double big = 9007199254740992.0;
  std::vector<std::string> texts = walk(seq(big - 2, big - 1, big + 100));
  EXPECT_EQ(3u, texts.size());
}

// Makes numbers in a run of its own, where the memory of values that died
// lately is reused: a value that died too early then reads 1000.
void takeFreedMemory() {
  TestRun later;
  for (int i = 0; i < 50; ++i) later.runtime.createNumberValue(1000.0);
}

TEST(RangeWalkTest, ComparingAKeptRangeRunAfterRunLeavesNothingBehind) {
  // A range that outlives runs, as a classification's code or a host's does.
  NumberValue first(1.0), second(2.0), last(100.0), one(1.0);
  SequenceRange kept(&first, &second, &last);
  auto runComparisons = [&] {
    TestRun run;
    for (int i = 0; i < 10; ++i) EXPECT_TRUE(kept.ge(&one));
    EXPECT_EQ(5050, kept.asInteger());
    EXPECT_EQ(100, Functions::MAXIMUM_AUS_REIHE(&run.runtime, &kept)->asInteger());
  };
  runComparisons();  // settles whatever is made once
  long before = liveBlocks;
  runComparisons();
  EXPECT_EQ(before, liveBlocks);
}

TEST(RangeWalkTest, DeliveredNumbersOutliveTheirIteratorWithTheRange) {
  NumberValue first(1.0), second(2.0), last(100.0);
  SequenceRange kept(&first, &second, &last);
  Value *delivered;
  {
    TestRun helper;  // a run that has nothing to do with the walk
    std::unique_ptr<ValueIterator> walk(kept.asRange());
    delivered = walk->next();
  }
  takeFreedMemory();
  EXPECT_STREQ("1", delivered->asString());
}

TEST(RangeWalkTest, NumbersOfAWalkBelongToTheRunThatWalks) {
  TestRun older;
  RuntimeContext *rt = &older.runtime;
  ValueIterator *walk = rt->createIterator(
      rt->createSequenceRange(rt->createNumberValue(1.0), rt->createNumberValue(2.0), rt->createNumberValue(5.0)));
  Value *first;
  {
    TestRun younger;  // a helper run of the host, begun inside the older one
    first = walk->next();
    younger.runtime.createNumberValue(1000.0);
  }
  takeFreedMemory();  // what the younger run held
  EXPECT_STREQ("1", first->asString());
  EXPECT_STREQ("2", walk->next()->asString());
}

TEST(RangeWalkTest, AChainGivesItsKeeperToIteratorsAddedLater) {
  ValueKeeper keeper;
  Value *last;
  {
    IteratorIterator chain;
    chain.keepDeliveredIn(&keeper);
    {
      NumberValue first(1.0), second(2.0), third(3.0);
      SequenceRange gone(&first, &second, &third);
      chain.addIterator(gone.asRange());
    }
    chain.next();
    chain.next();
    last = chain.next();  // the walk, now empty, leaves the chain
  }
  takeFreedMemory();
  EXPECT_STREQ("3", last->asString());
}

TEST(RangeWalkTest, WalksInALoopKeepMemoryFlat) {
  TestRun run;
  RuntimeContext *rt = &run.runtime;
  Value *range =
      rt->createSequenceRange(rt->createNumberValue(1.0), rt->createNumberValue(2.0), rt->createNumberValue(500.0));
  Value *series = rt->createRangeSeries(2, range, rt->createNumberValue(7.0));
  double total = 0.0;
  auto pass = [&] {
    SectionScope body(rt, "Durchlauf");
    ValueIterator *walk = rt->createIterator(series);
    while (walk->hasNext()) total += walk->next()->asReal();
    total += Functions::MAXIMUM_AUS_REIHE(rt, range)->asReal();
    total += range->ge(rt->createNumberValue(1.0)) ? 1.0 : 0.0;
  };
  for (int i = 0; i < 20; ++i) pass();
  long before = liveBlocks;
  for (int i = 0; i < 2000; ++i) pass();
  EXPECT_LT(liveBlocks - before, 100);
  EXPECT_DOUBLE_EQ(2020.0 * (125250.0 + 7.0 + 500.0 + 1.0), total);
}

TEST_F(RangesTest, IntervalsContainButDoNotWalk) {
  Value *last = rt()->createIntervalRange(n(1), n(10), INCLUDE_LAST);
  EXPECT_TRUE(last->contains(n(10)));
  EXPECT_FALSE(last->contains(n(1)));
  Value *none = rt()->createIntervalRange(n(1), n(10), INCLUDE_NONE);
  EXPECT_FALSE(none->contains(n(10)));
  EXPECT_FALSE(none->contains(n(1)));
  EXPECT_TRUE(none->contains(n(5.5)));
  EXPECT_FALSE(rt()->createIntervalRange(n(10), n(1), INCLUDE_BOTH)->contains(n(5)));
  Value *letters = rt()->createIntervalRange(text("b"), text("d"), INCLUDE_BOTH);
  EXPECT_TRUE(letters->contains(text("c")));
  EXPECT_STREQ("1-+10", last->asString());
  EXPECT_STREQ("b++d", letters->asString());
  EXPECT_STREQ("1+-10", rt()->createIntervalRange(n(1), n(10), INCLUDE_FIRST)->asString());
  EXPECT_STREQ("1--10", none->asString());
  const char kNotIterable[] = "Ein Interval kann nicht iteriert werden.";
  expectFailure([&] { last->eq(n(5)); }, EXCEPTION_CONVERSION, kNotIterable);
  EXPECT_FALSE(last->eq(rt()->createInvalidValue()));
  expectFailure([&] { last->asReal(); }, EXCEPTION_CONVERSION,
                "Ein Interval kann nicht in eine Zahl umgewandelt werden.");
  expectFailure([&] { last->asInteger(); }, EXCEPTION_CONVERSION,
                "Ein Interval kann nicht in eine ganze Zahl umgewandelt werden.");
  expectFailure([&] { last->asBool(); }, EXCEPTION_CONVERSION,
                "Ein Interval kann nicht in einen boolschen Wert umgewandelt werden.");
}

TEST_F(RangesTest, ComparisonsGoElementByElement) {
  EXPECT_FALSE(seq(1, 2, 3)->eq(seq(1, 2, 4)));
  EXPECT_FALSE(seq(1, 2, 3)->ne(seq(1, 2, 4)));
  EXPECT_TRUE(seq(1, 2, 3)->eq(seq(1, 2, 3)));
  Value *threes = rt()->createRangeSeries(2, n(3), n(3));
  EXPECT_TRUE(n(3)->eq(threes));
  EXPECT_FALSE(n(3)->eq(seq(3, 4, 4)));
  EXPECT_TRUE(n(5)->gt(seq(1, 2, 4)));  // greater than all elements
  EXPECT_TRUE(seq(1, 2, 3)->ne(seq(4, 5, 6)));
  Value *empty = rt()->createRangeSeries(0);
  EXPECT_TRUE(empty->eq(n(1)));
  EXPECT_TRUE(empty->ne(n(1)));
  EXPECT_TRUE(empty->eq(rt()->createRangeSeries(0)));
  EXPECT_TRUE(empty->lt(text("x")));
  // The range first: every element against the other operand.
  EXPECT_TRUE(seq(1, 2, 4)->lt(n(5)));
  EXPECT_TRUE(seq(1, 2, 4)->le(n(4)));
  EXPECT_FALSE(seq(1, 2, 4)->lt(n(4)));
  EXPECT_TRUE(seq(1, 2, 4)->ge(n(1)));
  EXPECT_FALSE(seq(1, 2, 4)->gt(n(1)));
  EXPECT_TRUE(seq(2, 3, 4)->gt(seq(1, 2, 3)));
  EXPECT_FALSE(seq(2, 3, 4)->gt(seq(1, 2, 2)));  // lengths differ
}

TEST_F(RangesTest, SeriesTextsSumsAndCopies) {
  Value *empty = rt()->createRangeSeries(0);
  EXPECT_STREQ("'lehre Wertebereichs-Reihe'", empty->asString());
  EXPECT_EQ(0, empty->asInteger());
  EXPECT_EQ(0.0, empty->asReal());
  EXPECT_FALSE(empty->asBool());
  EXPECT_FALSE(empty->contains(n(1)));
  Value *series = rt()->createRangeSeries(2, n(1), n(2));
  EXPECT_STREQ("[1][2]", series->asString());
  EXPECT_STREQ("[1][2][3]", rt()->createRangeSeries(1, seq(1, 2, 3))->asString());
  EXPECT_TRUE(rt()->createRangeSeries(2, n(0), n(1))->asBool());
  EXPECT_EQ(6, rt()->createRangeSeries(2, seq(1, 2, 3), n(0))->asInteger());
  EXPECT_TRUE(rt()->createRangeSeries(2, seq(1, 3, 9), n(4))->contains(n(4)));

  RangeSeries source(1, n(1));
  std::unique_ptr<Value> copy(source.copy());
  source.addRange(n(2));
  EXPECT_STREQ("[1]", copy->asString());
  EXPECT_STREQ("[1][2]", source.asString());

  Value *withInterval = rt()->createRangeSeries(2, n(1), rt()->createIntervalRange(n(1), n(2), INCLUDE_BOTH));
  expectFailure([&] { withInterval->asString(); }, EXCEPTION_CONVERSION, "Ein Interval kann nicht iteriert werden.");
}

TEST_F(RangesTest, IteratorChainsLookOnlyAtTheirHead) {
  IteratorIterator none;
  EXPECT_FALSE(none.hasNext());
  expectFailure([&] { none.next(); }, EXCEPTION_ITERATION, "Iterations\xFC" "berlauf.");
  Value *a = n(1);
  Value *b = n(2);
  IteratorIterator two;
  two.addIterator(new SingleValueIterator(a));
  two.addIterator(new SingleValueIterator(b));
  EXPECT_EQ(a, two.next());
  EXPECT_EQ(b, two.next());
  EXPECT_FALSE(two.hasNext());
  IteratorIterator blocked;
  blocked.addIterator(rt()->createRangeSeries(0)->asRange());
  blocked.addIterator(new SingleValueIterator(a));
  EXPECT_FALSE(blocked.hasNext());
  // The same holds inside a series: an empty member ends the walk.
  EXPECT_STREQ("[1]", rt()->createRangeSeries(3, n(1), rt()->createRangeSeries(0), n(2))->asString());
}

TEST_F(RangesTest, ValueSetsHoldCopies) {
  ValueSet set;
  Value *one = n(1);
  set.addValue(one);
  EXPECT_EQ(1, set.getNumOfValues());
  EXPECT_NE(one, set.getValue(0));
  EXPECT_TRUE(set.getValue(0)->eq(one));
}

}  // namespace
}  // namespace quorel
