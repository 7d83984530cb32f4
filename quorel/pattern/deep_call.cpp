#include "quorel/pattern/deep_call.h"

#include <sys/mman.h>
#include <ucontext.h>

#if defined(__SANITIZE_ADDRESS__)
#define QUOREL_ASAN_FIBERS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUOREL_ASAN_FIBERS 1
#endif
#endif

#ifdef QUOREL_ASAN_FIBERS
#include <sanitizer/common_interface_defs.h>
#endif

namespace pattern_stack {

namespace {

// Kept free at the end of the private stack, as on the thread's own.
constexpr std::uintptr_t kMargin = 512 * 1024;

struct Call {
  const std::function<void(std::uintptr_t)> *body;
  std::uintptr_t lowest;
  ucontext_t caller;
  void *callerStack;
  std::size_t callerStackSize;
  void *fakeStack;
};

// makecontext passes int arguments only: the pointer travels in two halves.
void enter(unsigned int high, unsigned int low) {
  auto *call = reinterpret_cast<Call *>((static_cast<std::uintptr_t>(high) << 32) | low);
#ifdef QUOREL_ASAN_FIBERS
  __sanitizer_finish_switch_fiber(nullptr, const_cast<const void **>(&call->callerStack), &call->callerStackSize);
#endif
  (*call->body)(call->lowest);
#ifdef QUOREL_ASAN_FIBERS
  __sanitizer_start_switch_fiber(nullptr, call->callerStack, call->callerStackSize);
#endif
}

}  // namespace

bool callOnPrivateStack(std::size_t size, const std::function<void(std::uintptr_t)> &body) {
  void *stack = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (stack == MAP_FAILED) return false;
  Call call{};
  call.body = &body;
  call.lowest = reinterpret_cast<std::uintptr_t>(stack) + kMargin;
  ucontext_t callee;
  getcontext(&callee);
  callee.uc_stack.ss_sp = stack;
  callee.uc_stack.ss_size = size;
  callee.uc_link = &call.caller;
  auto address = reinterpret_cast<std::uintptr_t>(&call);
  makecontext(&callee, reinterpret_cast<void (*)()>(enter), 2, static_cast<unsigned int>(address >> 32),
              static_cast<unsigned int>(address & 0xFFFFFFFFu));
#ifdef QUOREL_ASAN_FIBERS
  __sanitizer_start_switch_fiber(&call.fakeStack, stack, size);
#endif
  swapcontext(&call.caller, &callee);
#ifdef QUOREL_ASAN_FIBERS
  __sanitizer_finish_switch_fiber(call.fakeStack, nullptr, nullptr);
#endif
  munmap(stack, size);
  return true;
}

}  // namespace pattern_stack
