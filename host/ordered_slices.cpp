#include "quorel/host/ordered_slices.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace quorel {
namespace host {
namespace {

// The shared state of one run. Slices are numbered from 0 in stream order;
// a slice under way is found by its number in a ring as long as all slots,
// since each holds a slot of its own.
class Run {
 public:
  Run(std::size_t threads, std::size_t slotsPerThread, const OrderedSlices::Steps &steps)
      : steps_(steps), slotsPerThread_(slotsPerThread), free_(threads), done_(threads * slotsPerThread, false),
        order_(threads * slotsPerThread) {
    for (std::size_t slot = 0; slot < done_.size(); ++slot) free_[slot / slotsPerThread].push_back(slot);
  }

  // What each thread does until the stream has ended or the run stopped.
  void loop(std::size_t thread) {
    std::vector<std::size_t> &free = free_[thread];
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      changed_.wait(lock, [&] { return ended_ || stopped_ || (!filling_ && !free.empty()); });
      if (ended_ || stopped_) return;
      std::size_t slot = free.back();
      free.pop_back();
      order_[filled_++ % order_.size()] = slot;
      filling_ = true;
      lock.unlock();
      bool more = steps_.fill(slot);
      lock.lock();
      filling_ = false;
      ended_ = !more;
      changed_.notify_all();
      lock.unlock();
      steps_.work(thread, slot);
      lock.lock();
      done_[slot] = true;
      handOnDone(&lock);
    }
  }

  bool stopped() const { return stopped_; }

 private:
  // Hands on the slices due that are done, unless another thread is at it:
  // that one sees what was marked done meanwhile before it lets go.
  void handOnDone(std::unique_lock<std::mutex> *lock) {
    if (handing_) return;
    handing_ = true;
    for (std::size_t slot; !stopped_ && handed_ < filled_ && done_[slot = order_[handed_ % order_.size()]];) {
      lock->unlock();
      bool goOn = steps_.handOn(slot);
      lock->lock();
      done_[slot] = false;
      free_[slot / slotsPerThread_].push_back(slot);
      ++handed_;
      stopped_ = !goOn;
    }
    handing_ = false;
    // Slots are free again, or the run stopped.
    changed_.notify_all();
  }

  const OrderedSlices::Steps &steps_;
  const std::size_t slotsPerThread_;
  std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by mutex_.
  std::vector<std::vector<std::size_t>> free_;  // per thread: its slots not under way
  std::vector<bool> done_;                      // per slot: worked on, not yet handed on
  std::vector<std::size_t> order_;              // slice number % size: its slot
  std::size_t filled_ = 0;                      // slices whose filling began
  std::size_t handed_ = 0;                      // slices handed on
  bool filling_ = false, handing_ = false, ended_ = false, stopped_ = false;
};

}  // namespace

bool OrderedSlices::run(std::size_t threads, std::size_t slotsPerThread, const Steps &steps) {
  Run run(threads, slotsPerThread, steps);
  std::vector<std::thread> others;
  for (std::size_t thread = 1; thread < threads; ++thread) others.emplace_back([&run, thread] { run.loop(thread); });
  run.loop(0);
  for (std::thread &other : others) other.join();
  return !run.stopped();
}

}  // namespace host
}  // namespace quorel
