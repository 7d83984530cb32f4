// The local wall-clock time with milliseconds, for log timestamps.

#ifndef QUOREL_PLATFORM_CLOCK_H_
#define QUOREL_PLATFORM_CLOCK_H_

#include <cstdint>
#include <ctime>

namespace quorel {
namespace platform {

struct LocalTime {
  std::tm calendar;
  std::int32_t milliseconds;
};

LocalTime currentLocalTime();

// Calendar time in seconds, as the seed of the random generator wants it.
std::int64_t currentCalendarSeconds();

// Thread-safe conversion of calendar seconds to local broken-down time.
std::tm toLocalTime(std::time_t seconds);

}  // namespace platform
}  // namespace quorel

#endif  // QUOREL_PLATFORM_CLOCK_H_
