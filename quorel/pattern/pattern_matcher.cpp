#include "quorel/pattern/pattern_matcher.h"

#include <cstddef>

#include "quorel/pattern/deep_call.h"
#include "quorel/pattern/nfa_node.h"
#include "quorel/pattern/pattern.h"
#include "quorel/pattern/stack_guard.h"

PatternMatcher::PatternMatcher(Pattern *pattern, const char *input)
    : pattern_(pattern),
      groupCount_(pattern->getGroupCount()),
      nonCapturingCount_(-pattern->getNonCapturingCounter()) {
  setInput(input);
  auto size = static_cast<std::size_t>(groupCount_ + nonCapturingCount_);
  // Starts and ends of the capturing groups begin at 0; the nodes write every
  // other entry before they read it.
  starts_.assign(size, 0);
  ends_.assign(size, 0);
  loopCounts_.assign(size, 0);
  loopPositions_.assign(size, 0);
  loopSavedCounts_.assign(size, 0);
}

std::int32_t PatternMatcher::read(const std::vector<std::int32_t> &array, std::int32_t gi) const {
  std::int32_t slot = gi + nonCapturingCount_;
  if (gi >= groupCount_ || slot < 0) return -1;
  return array[static_cast<std::size_t>(slot)];
}

void PatternMatcher::write(std::vector<std::int32_t> *array, std::int32_t gi, std::int32_t value) {
  std::int32_t slot = gi + nonCapturingCount_;
  if (gi >= groupCount_ || slot < 0) return;
  (*array)[static_cast<std::size_t>(slot)] = value;
}

void PatternMatcher::reset() {
  lastMatchEnd_ = 0;
  resetGroups();
}

void PatternMatcher::resetGroups() {
  lastMatchEnd_ = 0;
  // The starts and ends of the capturing groups, which lie above the
  // non-capturing ones, and the loop counts of all.
  for (std::size_t slot = 0; slot < loopCounts_.size(); ++slot) {
    if (slot >= static_cast<std::size_t>(nonCapturingCount_)) {
      starts_[slot] = -1;
      ends_[slot] = -1;
    }
    loopCounts_[slot] = -1;
  }
}

bool PatternMatcher::mayGoOn(const void *frame) {
  if (stopped()) return false;
  if (reinterpret_cast<std::uintptr_t>(frame) < stackLimit_) {
    stackExhausted_ = true;
    return false;
  }
  return spendSteps(1);
}

bool PatternMatcher::spendSteps(std::int64_t steps) {
  if (stepLimit_ != 0) {
    steps_ += steps;
    if (steps_ > stepLimit_) outOfSteps_ = true;
  }
  return !stopped();
}

bool PatternMatcher::runFrom(std::uintptr_t stackLimit) {
  resetGroups();
  stackLimit_ = stackLimit;
  stackExhausted_ = false;
  std::int32_t end = pattern_->getHead()->match(input_, this, 0);
  return end == inputLength() && !stopped();
}

bool PatternMatcher::matches() {
  mode_ = MatchWhole;
  stepLimit_ = Pattern::getStepLimit();
  steps_ = 0;
  outOfSteps_ = false;
  bool matched = runFrom(pattern_stack::lowestFrameAddress());
  if (!stackExhausted_) return matched;
  // Too deep for this thread: once more on a stack sized by the input and the
  // pattern, as the path may visit each node once per input byte and each
  // node of a deeply nested pattern once. The steps of the first run count
  // against the limit.
  std::size_t size = kPrivateStackPerStep * (static_cast<std::size_t>(length_) + pattern_->getNodeCount() + 1);
  if (size > kMaxPrivateStack) size = kMaxPrivateStack;
  pattern_stack::callOnPrivateStack(size, [&](std::uintptr_t lowest) { matched = runFrom(lowest); });
  return matched;
}
