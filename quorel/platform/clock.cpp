#include "quorel/platform/clock.h"

#include <chrono>

namespace quorel {
namespace platform {

std::tm toLocalTime(std::time_t seconds) {
  std::tm result{};
  localtime_r(&seconds, &result);
  return result;
}

LocalTime currentLocalTime() {
  using std::chrono::system_clock;
  auto now = system_clock::now();
  auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
  LocalTime result;
  result.calendar = toLocalTime(system_clock::to_time_t(now));
  result.milliseconds = static_cast<std::int32_t>(millis % 1000);
  return result;
}

std::int64_t currentCalendarSeconds() { return static_cast<std::int64_t>(std::time(nullptr)); }

}  // namespace platform
}  // namespace quorel
