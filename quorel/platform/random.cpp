#include "quorel/platform/random.h"

#include <atomic>

namespace quorel {
namespace platform {

namespace {

// Unseeded, the sequence starts as if seeded with 1.
std::atomic<std::uint32_t> state{1};

}  // namespace

void seedRandom(std::uint32_t seed) { state.store(seed, std::memory_order_relaxed); }

std::int32_t nextRandom() {
  std::uint32_t current = state.load(std::memory_order_relaxed);
  std::uint32_t next;
  do {
    next = current * 214013u + 2531011u;
  } while (!state.compare_exchange_weak(current, next, std::memory_order_relaxed));
  return static_cast<std::int32_t>((next >> 16) & 0x7FFFu);
}

}  // namespace platform
}  // namespace quorel
