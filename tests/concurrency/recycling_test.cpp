// Object memory is recycled per thread; values that change threads, as a
// host hands them on, must not disturb that. Meant for the ThreadSanitizer
// build, which keeps the recycling.

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/quorel.h"

namespace quorel {
namespace {

// Runs of one thread that give their function results to the next thread,
// which deletes them while making its own.
class Echo : public Plausi {
 protected:
  void performImpl(RuntimeContext *, const char *) override {}
  Value *performFunctionImpl(RuntimeContext *runtime, const char *name) override {
    // A section whose values die when it is left, then the result, which
    // dies with the run after performFunction copied it for the caller.
    runtime->startNewSection("Echo", false);
    Functions::GROSSBUCHSTABEN(runtime, runtime->createStringValue(name));
    runtime->leaveCurrentSection();
    return runtime->createStringValue(name);
  }
};

TEST(ConcurrentRunsTest, ValuesChangeThreadsBetweenRecyclingRuns) {
  constexpr int kThreads = 4;
  constexpr int kValues = 2000;
  std::vector<std::vector<std::unique_ptr<Value>>> handed(kThreads);
  std::vector<int> correct(kThreads, 0);
  for (int round = 0; round < 2; ++round) {
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([t, round, &handed, &correct] {
        // What the neighbour made in the first round dies here.
        if (round == 1) handed[(t + kThreads - 1) % kThreads].clear();
        Echo echo;
        PlausiContext context(nullptr);
        for (int i = 0; i < kValues; ++i) {
          std::unique_ptr<Value> result(echo.performFunction(i % 2 ? "ab" : "xy", &context));
          correct[t] += std::string(result->asString()) == (i % 2 ? "ab" : "xy");
          if (round == 0) handed[t].push_back(std::move(result));
        }
      });
    }
    for (std::thread &thread : threads) thread.join();
  }
  for (int count : correct) EXPECT_EQ(2 * kValues, count);
}

}  // namespace
}  // namespace quorel
