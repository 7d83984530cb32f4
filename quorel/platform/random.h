// The process-wide random generator: values 0..32767 from a linear
// congruential sequence. Seeding restarts the sequence for every user in the
// process. Safe to call from several threads at once.

#ifndef QUOREL_PLATFORM_RANDOM_H_
#define QUOREL_PLATFORM_RANDOM_H_

#include <cstdint>

namespace quorel {
namespace platform {

constexpr std::int32_t kRandomMax = 32767;

void seedRandom(std::uint32_t seed);

// The next number of the sequence, 0..kRandomMax.
std::int32_t nextRandom();

}  // namespace platform
}  // namespace quorel

#endif  // QUOREL_PLATFORM_RANDOM_H_
