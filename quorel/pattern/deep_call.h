// Runs a function on a stack of its own, reserved large and committed only
// as it is used, for recursions deeper than a thread's stack allows. The
// calling thread waits for it; no thread is started.

#ifndef QUOREL_PATTERN_DEEP_CALL_H_
#define QUOREL_PATTERN_DEEP_CALL_H_

#include <cstddef>
#include <cstdint>
#include <functional>

namespace pattern_stack {

// Calls body on a private stack with size bytes of room, passing the lowest
// address that its frames may use (a margin stays free beyond it). Gives false,
// without calling body, when no such stack can be had. body must not throw:
// an exception cannot travel from the private stack back to the caller's.
bool callOnPrivateStack(std::size_t size, const std::function<void(std::uintptr_t lowest)> &body);

}  // namespace pattern_stack

#endif  // QUOREL_PATTERN_DEEP_CALL_H_
