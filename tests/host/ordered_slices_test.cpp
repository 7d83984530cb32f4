#include "quorel/host/ordered_slices.h"

#include <atomic>
#include <cstddef>
#include <mutex>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace quorel {
namespace host {
namespace {

// A stream of the numbers 0 to count - 1 cut into slices of `width`, each
// squared by work and handed on into `out`. Every step checks that the slot
// it is given is in the state that step expects, so a slot refilled before it
// was handed on, or handed on before it was worked on, is caught; and that a
// slot is filled and worked on by its owner alone.
class SquaresRun {
 public:
  SquaresRun(int count, int width, std::size_t threads, std::size_t slotsPerThread)
      : count_(count),
        width_(width),
        threads_(threads),
        perThread_(slotsPerThread),
        states_(threads * slotsPerThread),
        items_(threads * slotsPerThread),
        fillers_(threads * slotsPerThread) {
    for (auto &state : states_) state = kFree;
    steps_.fill = [this](std::size_t slot) { return fill(slot); };
    steps_.work = [this](std::size_t thread, std::size_t slot) { work(thread, slot); };
    steps_.handOn = [this](std::size_t slot) { return handOn(slot); };
  }

  bool run() { return OrderedSlices::run(threads_, perThread_, steps_); }

  // Stops the run when the slice beginning at `item` is handed on.
  void stopAt(int item) { stopAt_ = item; }

  std::vector<long> out;
  std::atomic<int> fills{0}, faults{0};
  std::atomic<std::size_t> mostUnderWay{0};
  std::vector<std::thread::id> workThreads;

 private:
  enum State { kFree, kFilled, kWorked };

  bool fill(std::size_t slot) {
    if (states_[slot].exchange(kFilled) != kFree) ++faults;
    std::size_t underWay = ++underWay_;
    for (std::size_t most = mostUnderWay; underWay > most && !mostUnderWay.compare_exchange_weak(most, underWay);) {
    }
    ++fills;
    fillers_[slot] = std::this_thread::get_id();
    items_[slot].clear();
    for (int i = 0; i < width_ && next_ < count_; ++i) items_[slot].push_back(next_++);
    return next_ < count_;
  }

  void work(std::size_t thread, std::size_t slot) {
    if (states_[slot].exchange(kWorked) != kFilled || slot / perThread_ != thread ||
        fillers_[slot] != std::this_thread::get_id()) {
      ++faults;
    }
    {
      std::lock_guard<std::mutex> lock(mutex_);
      workThreads.push_back(std::this_thread::get_id());
    }
    // Slices take unequal time, so that they finish out of order.
    if (!items_[slot].empty() && items_[slot][0] % 3 == 0) std::this_thread::yield();
    for (long &item : items_[slot]) item *= item;
  }

  bool handOn(std::size_t slot) {
    if (states_[slot].exchange(kFree) != kWorked) ++faults;
    --underWay_;
    bool stop = !items_[slot].empty() && stopAt_ * static_cast<long>(stopAt_) == items_[slot][0];
    out.insert(out.end(), items_[slot].begin(), items_[slot].end());
    return !stop;
  }

  const int count_, width_;
  const std::size_t threads_, perThread_;
  std::vector<std::atomic<State>> states_;
  std::vector<std::vector<long>> items_;
  std::vector<std::thread::id> fillers_;
  OrderedSlices::Steps steps_;
  int next_ = 0;  // filled one at a time
  int stopAt_ = -1;
  std::atomic<std::size_t> underWay_{0};
  std::mutex mutex_;
};

std::vector<long> squares(int count) {
  std::vector<long> result;
  for (long i = 0; i < count; ++i) result.push_back(i * i);
  return result;
}

TEST(OrderedSlicesTest, HandsOnEverySliceOnceInStreamOrder) {
  for (std::size_t threads : {1, 2, 4, 8}) {
    for (std::size_t slots : {1, 3, 8}) {
      SCOPED_TRACE("threads " + std::to_string(threads) + ", slots per thread " + std::to_string(slots));
      SquaresRun run(5003, 7, threads, slots);
      EXPECT_TRUE(run.run());
      EXPECT_EQ(squares(5003), run.out);
      EXPECT_EQ(0, run.faults);
      EXPECT_EQ(715, run.fills);  // the last slice holds 5 items
      EXPECT_LE(run.mostUnderWay, threads * slots);
    }
  }
}

TEST(OrderedSlicesTest, AnEmptyOrShortStreamIsOneSlice) {
  // An empty slice is still worked on and handed on, and nothing is filled
  // after the slice that ended the stream.
  for (int count : {0, 5}) {
    SquaresRun run(count, 7, 2, 4);
    EXPECT_TRUE(run.run());
    EXPECT_EQ(squares(count), run.out);
    EXPECT_EQ(1, run.fills);
    EXPECT_EQ(0, run.faults);
  }
}

TEST(OrderedSlicesTest, OneThreadIsTheCallers) {
  SquaresRun run(100, 10, 1, 2);
  EXPECT_TRUE(run.run());
  EXPECT_EQ(squares(100), run.out);
  for (std::thread::id id : run.workThreads) EXPECT_EQ(std::this_thread::get_id(), id);
}

TEST(OrderedSlicesTest, HandOnStopsTheRun) {
  for (std::size_t threads : {1, 3}) {
    SquaresRun run(10000, 10, threads, 2);
    run.stopAt(500);
    EXPECT_FALSE(run.run());
    // Everything up to the slice that stopped it, and nothing after.
    EXPECT_EQ(squares(510), run.out);
    EXPECT_LE(run.fills, static_cast<int>(51 + 2 * threads));
    EXPECT_EQ(0, run.faults);
  }
}

}  // namespace
}  // namespace host
}  // namespace quorel
