// Calendar arithmetic on the proleptic Gregorian calendar, independent of
// time zones and of the range of time_t. The date functions use it instead
// of walking day by day, so that a shift by millions of days costs no more
// than a shift by one.

#ifndef QUOREL_FUNCTIONS_CALENDAR_H_
#define QUOREL_FUNCTIONS_CALENDAR_H_

#include <cstdint>
#include <ctime>

namespace quorel {
namespace calendar {

bool isLeapYear(std::int64_t year);

// Days of month (0 = January) in year.
int daysInMonth(std::int64_t year, int month);

// Days since 1970-01-01 of a year, month (0 = January, any value: it carries
// into the year) and day (any value: it counts on from the first).
std::int64_t daysFromCivil(std::int64_t year, std::int64_t month, std::int64_t day);

// The date of a day number, into year, month (0-based) and day.
void civilFromDays(std::int64_t days, std::int64_t *year, int *month, int *day);

// 0 = Sunday ... 6 = Saturday.
int weekday(std::int64_t days);

// Seconds since the epoch of the six fields of a tm, read as universal time.
std::int64_t secondsOf(const std::tm &date);

// Stores a year counted from 1900 into tm_year, saturating at the limits of
// int rather than overflowing.
void setYear(std::tm *date, std::int64_t yearsSince1900);

}  // namespace calendar
}  // namespace quorel

#endif  // QUOREL_FUNCTIONS_CALENDAR_H_
