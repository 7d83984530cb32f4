// Counting heap allocations in a benchmark: how many times the global
// operator new (any form) was called while an AllocationCount lived.
//
// A benchmark program that links allocation_count.cpp replaces the global
// allocation functions with counting ones. They serve the whole process,
// including the library and the rule modules it loads, which allocate
// through operator new alone. Outside an AllocationCount the counting costs
// one relaxed load per allocation.

#ifndef QUOREL_BENCH_ALLOCATION_COUNT_H_
#define QUOREL_BENCH_ALLOCATION_COUNT_H_

#include <cstdint>

namespace quorel {
namespace bench {

// Counts the allocations of every thread from its construction until its
// destruction. Only one may live at a time.
class AllocationCount {
 public:
  AllocationCount();
  ~AllocationCount();
  AllocationCount(const AllocationCount &) = delete;
  AllocationCount &operator=(const AllocationCount &) = delete;

  // The allocations counted so far.
  std::int64_t count() const;
};

}  // namespace bench
}  // namespace quorel

#endif  // QUOREL_BENCH_ALLOCATION_COUNT_H_
