#include "quorel/pattern/stack_guard.h"

#include <pthread.h>

namespace pattern_stack {

namespace {

// A thread whose stack has less than twice kStackMargin left keeps half of
// what is left, but never less than kMinMargin: small stacks still hold
// ordinary patterns.
constexpr std::uintptr_t kMinMargin = 64 * 1024;
// Assumed when the thread's stack cannot be asked for.
constexpr std::uintptr_t kFallbackDepth = 4 * 1024 * 1024;

// The low end of the calling thread's stack, asked once per thread: the
// question is costly (for the main thread it reads the process's maps).
std::uintptr_t stackLowEnd(std::uintptr_t current) {
  thread_local std::uintptr_t low = 0;
  if (low == 0) {
    pthread_attr_t attributes;
    void *stackLow = nullptr;
    std::size_t stackSize = 0;
    bool known = pthread_getattr_np(pthread_self(), &attributes) == 0;
    if (known) {
      known = pthread_attr_getstack(&attributes, &stackLow, &stackSize) == 0;
      pthread_attr_destroy(&attributes);
    }
    low = known ? reinterpret_cast<std::uintptr_t>(stackLow) : current - kFallbackDepth;
  }
  return low;
}

}  // namespace

std::uintptr_t lowestFrameAddress() {
  auto current = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  std::uintptr_t low = stackLowEnd(current);
  if (current < low + 2 * kMinMargin) return current;  // no room at all
  std::uintptr_t margin = (current - low) / 2;
  if (margin > kStackMargin) margin = kStackMargin;
  return low + margin;
}

}  // namespace pattern_stack
