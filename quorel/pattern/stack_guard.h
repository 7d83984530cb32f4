// How deep recursion may go on the calling thread: the lowest frame address
// that still leaves a safety margin above the end of the thread's stack.

#ifndef QUOREL_PATTERN_STACK_GUARD_H_
#define QUOREL_PATTERN_STACK_GUARD_H_

#include <cstdint>

namespace pattern_stack {

// Kept free below the deepest frame of a match, on the thread's stack and on
// a private one; generous so that sanitizer builds, whose frames are several
// times larger, stay safe too.
constexpr std::uintptr_t kStackMargin = 512 * 1024;

// Frames below the returned address must not be entered. The margin leaves
// room for the deepest frame of a node and for the runtime's own needs.
std::uintptr_t lowestFrameAddress();

}  // namespace pattern_stack

#endif  // QUOREL_PATTERN_STACK_GUARD_H_
