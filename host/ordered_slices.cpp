#include "quorel/host/ordered_slices.h"

#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace quorel {
namespace host {
namespace {

// The shared state of one run. Slices are numbered from 0 in stream order;
// slice n lives in slot n % slots.
class Run {
 public:
  Run(std::size_t slots, const OrderedSlices::Steps &steps) : steps_(steps), done_(slots, false) {}

  // What each thread does until the stream has ended or the run stopped.
  void loop(std::size_t thread) {
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
      changed_.wait(lock, [this] { return ended_ || stopped_ || (!filling_ && filled_ - handed_ < done_.size()); });
      if (ended_ || stopped_) return;
      std::size_t slot = filled_++ % done_.size();
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
    for (std::size_t slot; !stopped_ && handed_ < filled_ && done_[slot = handed_ % done_.size()];) {
      lock->unlock();
      bool goOn = steps_.handOn(slot);
      lock->lock();
      done_[slot] = false;
      ++handed_;
      stopped_ = !goOn;
    }
    handing_ = false;
    // A slot is free again, or the run stopped.
    changed_.notify_all();
  }

  const OrderedSlices::Steps &steps_;
  std::mutex mutex_;
  std::condition_variable changed_;
  // Guarded by mutex_.
  std::vector<bool> done_;  // per slot: worked on, not yet handed on
  std::size_t filled_ = 0;  // slices whose filling began
  std::size_t handed_ = 0;  // slices handed on
  bool filling_ = false, handing_ = false, ended_ = false, stopped_ = false;
};

}  // namespace

bool OrderedSlices::run(std::size_t threads, std::size_t slots, const Steps &steps) {
  Run run(slots, steps);
  std::vector<std::thread> others;
  for (std::size_t thread = 1; thread < threads; ++thread) others.emplace_back([&run, thread] { run.loop(thread); });
  run.loop(0);
  for (std::thread &other : others) other.join();
  return !run.stopped();
}

}  // namespace host
}  // namespace quorel
