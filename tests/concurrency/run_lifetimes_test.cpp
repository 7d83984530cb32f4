// Runs are not bound to a thread: a run may end on another thread than the
// one it began on, runs on one thread may end in any order, and the values a
// walk delivers belong to the walk's own run or range. The same work with the
// thread's object pool bypassed must give the same transcript. Meant for the
// normal build (recycling on) and the ThreadSanitizer build alike.

#include <malloc.h>

#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/quorel.h"
#include "quorel/values/object_pool.h"
#include "test_support.h"

namespace quorel {
namespace {

Value *sequence(RuntimeContext *rt, double first, double second, double last) {
  return rt->createSequenceRange(rt->createNumberValue(first), rt->createNumberValue(second),
                                 rt->createNumberValue(last));
}

// The elements of a walk as text, "1 2 3".
std::string walkText(ValueIterator *walk) {
  std::string text;
  while (walk->hasNext()) text.append(text.empty() ? "" : " ").append(walk->next()->asString());
  return text;
}

TEST(ConcurrentRunsTest, ARunEndedOnAnotherThreadLeavesThisThreadClean) {
  auto context = std::make_unique<PlausiContext>(nullptr);
  NoRules plausi;
  auto run = std::make_unique<RuntimeContext>(context.get(), &plausi);
  sequence(run.get(), 1, 2, 3);
  std::thread([&run] { run.reset(); }).join();

  // Walks outside any run and inside a new one on the first thread.
  NumberValue first(1.0), second(2.0), last(4.0);
  SequenceRange kept(&first, &second, &last);
  std::unique_ptr<ValueIterator> outside(kept.asRange());
  EXPECT_EQ("1 2 3 4", walkText(outside.get()));
  RuntimeContext again(context.get(), &plausi);
  EXPECT_EQ("5 7 9", walkText(again.createIterator(sequence(&again, 5, 7, 9))));
  EXPECT_EQ(4, Functions::MAXIMUM_AUS_REIHE(&again, &kept)->asInteger());
}

TEST(ConcurrentRunsTest, RunsOnOneThreadMayEndInAnyOrder) {
  PlausiContext context(nullptr);
  NoRules plausi;
  auto older = std::make_unique<RuntimeContext>(&context, &plausi);
  auto younger = std::make_unique<RuntimeContext>(&context, &plausi);
  ValueIterator *olderWalk = older->createIterator(sequence(older.get(), 1, 2, 4));
  ValueIterator *youngerWalk = younger->createIterator(sequence(younger.get(), 10, 20, 40));
  EXPECT_STREQ("1", olderWalk->next()->asString());
  Value *fromYounger = youngerWalk->next();
  older.reset();  // out of turn
  EXPECT_EQ("20 30 40", walkText(youngerWalk));
  EXPECT_STREQ("10", fromYounger->asString());
  auto third = std::make_unique<RuntimeContext>(&context, &plausi);
  EXPECT_EQ("3 4", walkText(third->createIterator(sequence(third.get(), 3, 4, 4))));
  younger.reset();
  third.reset();
}

// The host's external function: it walks a sequence the host keeps, with a
// helper run of its own open, and hands back the second element.
SequenceRange *hostSequence = nullptr;

Value *secondOfHostSequence(RuntimeContext *, ...) {
  TestRun helper;
  std::unique_ptr<ValueIterator> walk(hostSequence->asRange());
  walk->next();
  return walk->next();
}

class CallsTheHost : public NoRules {
 public:
  std::string seen;

 protected:
  void performImpl(RuntimeContext *runtime, const char *) override {
    Value *second = runtime->getExternalFunction("Zweites")(runtime);
    for (int i = 0; i < 50; ++i) runtime->createNumberValue(1000.0);
    seen = second->asString();
  }
};

TEST(ConcurrentRunsTest, AnExternalFunctionWalkingAHostSequenceHandsBackLivingValues) {
  NumberValue first(1.0), second(2.0), last(9.0);
  SequenceRange kept(&first, &second, &last);
  hostSequence = &kept;
  CallsTheHost rules;
  PlausiContext context(nullptr);
  context.setExternalFunction("Zweites", &secondOfHostSequence);
  rules.perform(&context);
  EXPECT_EQ("2", rules.seen);
  hostSequence = nullptr;
}

// Work that mixes everything the lifetimes depend on: runs begun on one
// thread and ended on another, runs interleaved on one thread, walks in
// loops, scopes left early, patterns. Gives a transcript of what it saw.
std::string mixedWork(bool bypassPool) {
  std::ostringstream transcript;
  PlausiContext context(nullptr);
  NoRules plausi;
  std::vector<std::unique_ptr<RuntimeContext>> handedOn;
  std::thread worker([&] {
    if (bypassPool) ObjectPool::bypassOnThisThread();
    for (int round = 0; round < 40; ++round) {
      auto outer = std::make_unique<RuntimeContext>(&context, &plausi);
      Value *range = sequence(outer.get(), round, round + 0.5, round + 20);
      ValueIterator *outerWalk = outer->createIterator(range);
      auto inner = std::make_unique<RuntimeContext>(&context, &plausi);
      for (int pass = 0; pass < 25; ++pass) {
        SectionScope body(inner.get(), "Durchlauf");
        {
          SectionScope early(inner.get(), "Frueh");
          SectionScope nested(inner.get(), "Darin");
          early.leave();
          inner->startNewSection("Spaeter", false);
        }
        inner->leaveCurrentSection();
        transcript << walkText(inner->createIterator(sequence(inner.get(), pass, pass + 1, pass + 3))) << '|';
        transcript << Functions::MAXIMUM_AUS_REIHE(inner.get(), range)->asString() << '|';
        transcript << Pattern::matches("[0-9]+(,[0-9])?", outerWalk->next()->asString(), 0) << '\n';
      }
      if (round % 2 == 0) inner.reset();  // out of turn: the younger first
      outer.reset();
      handedOn.push_back(std::move(inner));  // ended on the main thread
    }
  });
  worker.join();
  if (bypassPool) ObjectPool::bypassOnThisThread();
  handedOn.clear();
  RuntimeContext last(&context, &plausi);
  transcript << walkText(last.createIterator(sequence(&last, 1, 2, 3)));
  return transcript.str();
}

TEST(ConcurrentRunsTest, MixedLifetimesGiveWhatTheHeapAloneGives) {
  std::string pooled;
  std::string unpooled;
  std::thread([&] { pooled = mixedWork(false); }).join();
  std::thread([&] { unpooled = mixedWork(true); }).join();
  EXPECT_EQ(unpooled, pooled);
  EXPECT_EQ(0u, pooled.find("0 1 2 3|20|1\n"));

  // Memory stays flat when the same work is done again and again.
  auto heapInUse = [] { return mallinfo2().uordblks; };
  std::size_t before = heapInUse();
  for (int i = 0; i < 5; ++i) {
    std::thread([&] { EXPECT_EQ(pooled, mixedWork(false)); }).join();
  }
  EXPECT_LT(heapInUse(), before + 256 * 1024);
}

}  // namespace
}  // namespace quorel
