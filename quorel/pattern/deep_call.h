// Runs a function on a stack of its own, reserved large and committed only
// as it is used, for recursions deeper than a thread's stack allows. The
// calling thread waits for it; no thread is started.

#ifndef QUOREL_PATTERN_DEEP_CALL_H_
#define QUOREL_PATTERN_DEEP_CALL_H_

#include <cstddef>
#include <cstdint>
#include <functional>

namespace pattern_stack {

// Calls body on a private stack of size bytes, passing the lowest address
// that its frames may use (the stack's end plus a margin). Gives false,
// without calling body, when no such stack can be had.
bool callOnPrivateStack(std::size_t size, const std::function<void(std::uintptr_t lowest)> &body);

}  // namespace pattern_stack

#endif  // QUOREL_PATTERN_DEEP_CALL_H_
