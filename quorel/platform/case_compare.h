// Comparison of texts that ignores the case of the letters A to Z only; every
// other byte, umlauts included, compares by its unsigned value.

#ifndef QUOREL_PLATFORM_CASE_COMPARE_H_
#define QUOREL_PLATFORM_CASE_COMPARE_H_

#include <cstddef>

namespace quorel {
namespace platform {

// Negative, zero or positive as a is below, equal to or above b.
int compareIgnoringCase(const char *a, const char *b);

// The same over the first n bytes at most.
int compareIgnoringCase(const char *a, const char *b, std::size_t n);

}  // namespace platform
}  // namespace quorel

#endif  // QUOREL_PLATFORM_CASE_COMPARE_H_
