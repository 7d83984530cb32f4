#include "row_slices.h"

#include <algorithm>
#include <exception>

#include "quorel/host/ordered_slices.h"

namespace quorel {
namespace python {

void RowSlices::Rows::check(std::int64_t label, const host::Place &place) {
  std::unique_lock<std::mutex> lock;
  if (logMutex_ != nullptr) lock = std::unique_lock<std::mutex>(*logMutex_);
  checker_->check(record_.get(), &outcome_);
  gather_->addOutcome(label, place, outcome_);
}

RowSlices::RowSlices(std::vector<host::Checker *> checkers, std::mutex *logMutex, ProblemColumns *frame)
    : threads_(checkers.size()), slotsPerThread_(checkers.size() > 1 ? host::OrderedSlices::kSlotsPerThread : 1), frame_(frame) {
  for (std::size_t t = 0; t < checkers.size(); ++t) {
    threads_[t].checker_ = checkers[t];
    threads_[t].logMutex_ = logMutex;
    threads_[t].gather_ = frame;
  }
  if (checkers.size() > 1) {
    for (std::size_t s = 0; s < slots(); ++s) parts_.push_back(std::make_unique<ProblemColumns>());
  }
}

void RowSlices::run(const Fill &fill, const Work &work, std::size_t slices) {
  // The first exception of any step, thrown on once every thread is done.
  std::exception_ptr failure;
  std::mutex failureMutex;
  auto keep = [&] {
    std::lock_guard<std::mutex> lock(failureMutex);
    if (!failure) failure = std::current_exception();
  };
  host::OrderedSlices::Steps steps;
  steps.fill = [&](std::size_t slot) {
    try {
      return fill(slot);
    } catch (...) {
      keep();
      return false;
    }
  };
  steps.work = [&](std::size_t thread, std::size_t slot) {
    Rows &rows = threads_[thread];
    if (!parts_.empty()) rows.gather_ = parts_[slot].get();
    try {
      work(slot, &rows);
    } catch (...) {
      keep();
    }
  };
  steps.handOn = [&](std::size_t slot) {
    try {
      if (!parts_.empty()) frame_->append(parts_[slot].get());
    } catch (...) {
      keep();
    }
    std::lock_guard<std::mutex> lock(failureMutex);
    return !failure;
  };
  // Thread t fills the slots from t * slotsPerThread_ on, so fewer threads
  // leave the later slots idle.
  host::OrderedSlices::run(std::max<std::size_t>(1, std::min(threads_.size(), slices)), slotsPerThread_, steps);
  if (failure) std::rethrow_exception(failure);
}

}  // namespace python
}  // namespace quorel
