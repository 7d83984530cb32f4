// The calling thread's thread pointer: an address that no other living
// thread has, read in one instruction where the platform keeps it in a
// register, and 0 elsewhere. It lets a library that dlopen may load late find
// per-thread state without a call into the dynamic loader.

#ifndef QUOREL_PLATFORM_THREAD_POINTER_H_
#define QUOREL_PLATFORM_THREAD_POINTER_H_

#include <cstdint>

namespace quorel {
namespace platform {

#if defined(__x86_64__) && defined(__linux__)
constexpr bool kHasThreadPointer = true;

inline std::uintptr_t threadPointer() {
  std::uintptr_t pointer;
  asm("mov %%fs:0, %0" : "=r"(pointer));
  return pointer;
}
#else
constexpr bool kHasThreadPointer = false;

inline std::uintptr_t threadPointer() { return 0; }
#endif

}  // namespace platform
}  // namespace quorel

#endif  // QUOREL_PLATFORM_THREAD_POINTER_H_
