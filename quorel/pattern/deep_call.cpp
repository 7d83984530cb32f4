#include "quorel/pattern/deep_call.h"

#include <sys/mman.h>
#include <ucontext.h>

#include "quorel/pattern/stack_guard.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUOREL_ASAN_FIBERS 1
#endif
#if __has_feature(thread_sanitizer)
#define QUOREL_TSAN_FIBERS 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define QUOREL_ASAN_FIBERS 1
#endif
#if defined(__SANITIZE_THREAD__)
#define QUOREL_TSAN_FIBERS 1
#endif

#ifdef QUOREL_ASAN_FIBERS
#include <sanitizer/common_interface_defs.h>
#endif
#ifdef QUOREL_TSAN_FIBERS
#include <sanitizer/tsan_interface.h>
#endif

namespace pattern_stack {

namespace {

// Tells the sanitizer of the build that the thread moves to another stack
// and back, so that it neither reports the private frames as overflows
// (AddressSanitizer) nor mixes up the two call histories (ThreadSanitizer).
// In other builds every step is empty.
class StackSwitch {
 public:
  // In the caller, just before it moves to stack.
  void leaveCaller(void *stack, std::size_t size) {
#ifdef QUOREL_ASAN_FIBERS
    __sanitizer_start_switch_fiber(&fakeStack_, stack, size);
#endif
#ifdef QUOREL_TSAN_FIBERS
    callerFiber_ = __tsan_get_current_fiber();
    privateFiber_ = __tsan_create_fiber(0);
    __tsan_switch_to_fiber(privateFiber_, 0);
#endif
    (void)stack;
    (void)size;
  }

  // First thing on the private stack.
  void arrive() {
#ifdef QUOREL_ASAN_FIBERS
    __sanitizer_finish_switch_fiber(nullptr, const_cast<const void **>(&callerStack_), &callerStackSize_);
#endif
  }

  // Last thing on the private stack, before it returns to the caller.
  void leavePrivate() {
#ifdef QUOREL_ASAN_FIBERS
    __sanitizer_start_switch_fiber(nullptr, callerStack_, callerStackSize_);
#endif
#ifdef QUOREL_TSAN_FIBERS
    __tsan_switch_to_fiber(callerFiber_, 0);
#endif
  }

  // In the caller, back on its own stack.
  void returned() {
#ifdef QUOREL_ASAN_FIBERS
    __sanitizer_finish_switch_fiber(fakeStack_, nullptr, nullptr);
#endif
#ifdef QUOREL_TSAN_FIBERS
    __tsan_destroy_fiber(privateFiber_);
#endif
  }

 private:
#ifdef QUOREL_ASAN_FIBERS
  void *fakeStack_ = nullptr;
  void *callerStack_ = nullptr;
  std::size_t callerStackSize_ = 0;
#endif
#ifdef QUOREL_TSAN_FIBERS
  void *callerFiber_ = nullptr;
  void *privateFiber_ = nullptr;
#endif
};

struct Call {
  const std::function<void(std::uintptr_t)> *body;
  std::uintptr_t lowest;
  ucontext_t caller;
  StackSwitch stackSwitch;
};

// makecontext passes int arguments only: the pointer travels in two halves.
void enter(unsigned int high, unsigned int low) {
  auto *call = reinterpret_cast<Call *>((static_cast<std::uintptr_t>(high) << 32) | low);
  call->stackSwitch.arrive();
  (*call->body)(call->lowest);
  call->stackSwitch.leavePrivate();
}

}  // namespace

bool callOnPrivateStack(std::size_t size, const std::function<void(std::uintptr_t)> &body) {
  size += kStackMargin;  // beyond the room asked for
  void *stack = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (stack == MAP_FAILED) return false;
  Call call{};
  call.body = &body;
  call.lowest = reinterpret_cast<std::uintptr_t>(stack) + kStackMargin;
  ucontext_t callee;
  getcontext(&callee);
  callee.uc_stack.ss_sp = stack;
  callee.uc_stack.ss_size = size;
  callee.uc_link = &call.caller;
  auto address = reinterpret_cast<std::uintptr_t>(&call);
  makecontext(&callee, reinterpret_cast<void (*)()>(enter), 2, static_cast<unsigned int>(address >> 32),
              static_cast<unsigned int>(address & 0xFFFFFFFFu));
  call.stackSwitch.leaveCaller(stack, size);
  swapcontext(&call.caller, &callee);
  call.stackSwitch.returned();
  munmap(stack, size);
  return true;
}

}  // namespace pattern_stack
