#include "quorel/functions/calendar.h"

#include <limits>

namespace quorel {
namespace calendar {

namespace {

std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
  std::int64_t q = a / b;
  return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

}  // namespace

bool isLeapYear(std::int64_t year) { return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0); }

int daysInMonth(std::int64_t year, int month) {
  switch (month) {
    case 3: case 5: case 8: case 10: return 30;
    case 1: return isLeapYear(year) ? 29 : 28;
    default: return 31;
  }
}

// The era-based algorithm: 400-year eras of 146097 days, years starting in
// March so that the leap day ends a year.
std::int64_t daysFromCivil(std::int64_t year, std::int64_t month, std::int64_t day) {
  year += floorDiv(month, 12);
  std::int64_t m = month - floorDiv(month, 12) * 12 + 1;  // 1..12
  std::int64_t y = m <= 2 ? year - 1 : year;
  std::int64_t era = floorDiv(y, 400);
  std::int64_t yoe = y - era * 400;
  std::int64_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + day - 1;
  std::int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

void civilFromDays(std::int64_t days, std::int64_t *year, int *month, int *day) {
  days += 719468;
  std::int64_t era = floorDiv(days, 146097);
  std::int64_t doe = days - era * 146097;
  std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  std::int64_t mp = (5 * doy + 2) / 153;
  *day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  int m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);  // 1..12
  *month = m - 1;
  *year = yoe + era * 400 + (m <= 2 ? 1 : 0);
}

int weekday(std::int64_t days) {
  // 1970-01-01 was a Thursday.
  return static_cast<int>(days - floorDiv(days + 4, 7) * 7 + 4);
}

std::int64_t secondsOf(const std::tm &date) {
  std::int64_t days = daysFromCivil(std::int64_t{date.tm_year} + 1900, date.tm_mon, date.tm_mday);
  return days * 86400 + std::int64_t{date.tm_hour} * 3600 + std::int64_t{date.tm_min} * 60 + date.tm_sec;
}

void setYear(std::tm *date, std::int64_t yearsSince1900) {
  constexpr std::int64_t kMax = std::numeric_limits<int>::max();
  constexpr std::int64_t kMin = std::numeric_limits<int>::min();
  date->tm_year = static_cast<int>(yearsSince1900 > kMax ? kMax : yearsSince1900 < kMin ? kMin : yearsSince1900);
}

}  // namespace calendar
}  // namespace quorel
