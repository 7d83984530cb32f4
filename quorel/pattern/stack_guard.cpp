#include "quorel/pattern/stack_guard.h"

#include <pthread.h>

namespace pattern_stack {

namespace {

// Kept free below the deepest frame; generous so that sanitizer builds,
// whose frames are several times larger, stay safe too.
constexpr std::uintptr_t kMargin = 512 * 1024;
// Assumed when the thread's stack cannot be asked for.
constexpr std::uintptr_t kFallbackDepth = 4 * 1024 * 1024;

}  // namespace

std::uintptr_t lowestFrameAddress() {
  char here;
  auto current = reinterpret_cast<std::uintptr_t>(&here);
  pthread_attr_t attributes;
  void *stackLow = nullptr;
  std::size_t stackSize = 0;
  bool known = pthread_getattr_np(pthread_self(), &attributes) == 0;
  if (known) {
    known = pthread_attr_getstack(&attributes, &stackLow, &stackSize) == 0;
    pthread_attr_destroy(&attributes);
  }
  std::uintptr_t low = known ? reinterpret_cast<std::uintptr_t>(stackLow) : current - kFallbackDepth;
  if (current < low + kMargin) return current;  // no room at all
  return low + kMargin;
}

}  // namespace pattern_stack
