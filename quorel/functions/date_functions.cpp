// The date functions of the language. Calendar arithmetic is computed, not
// walked day by day, so that any count finishes at once; the results are
// those of the step-by-step rules of the language, on the Gregorian calendar
// and without regard to time zones or daylight saving.

#include <algorithm>
#include <climits>
#include <cstring>

#include "quorel/functions/calendar.h"
#include "quorel/functions/functions.h"
#include "quorel/masks/util.h"
#include "quorel/platform/clock.h"
#include "quorel/rules/plausi_exception.h"
#include "quorel/rules/runtime_context.h"
#include "quorel/values/date_value.h"
#include "quorel/values/value.h"

namespace quorel {

namespace {

constexpr char kDefaultMask[] = "TT.MM.JJJJ";
// Text of a date element: a few digits.
constexpr int kElementTextSize = 64;

// The unit's letter if it is one of allowed, else the failure of type 9.
char checkUnit(Value *unit, const char *allowed, const char *message) {
  if (unit->isNil() || !unit->isValid()) throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, message);
  const char *text = unit->asString();
  if (text[0] == '\0' || text[1] != '\0' || std::strchr(allowed, text[0]) == nullptr) {
    throw PlausiException(EXCEPTION_ILLEGAL_ARGUMENT, message);
  }
  return text[0];
}

std::int64_t yearOf(const std::tm &date) { return std::int64_t{date.tm_year} + 1900; }

std::int64_t dayNumber(const std::tm &date) {
  return calendar::daysFromCivil(yearOf(date), date.tm_mon, date.tm_mday);
}

void setDayNumber(std::tm *date, std::int64_t days) {
  std::int64_t year;
  calendar::civilFromDays(days, &year, &date->tm_mon, &date->tm_mday);
  calendar::setYear(date, year - 1900);
}

void limitDay(std::tm *date) {
  int last = calendar::daysInMonth(yearOf(*date), date->tm_mon);
  if (date->tm_mday > last) date->tm_mday = last;
}

bool isWorkingDay(std::int64_t days) {
  int day = calendar::weekday(days);
  return day >= 1 && day <= 5;
}

// The day reached after count working days; the start day does not count.
std::int64_t shiftWorkingDays(std::int64_t days, std::int64_t count) {
  std::int64_t step = count > 0 ? 1 : -1;
  std::int64_t left = count > 0 ? count : -count;
  // Seven days always hold five working days.
  std::int64_t weeks = (left - 1) / 5;
  days += step * 7 * weeks;
  left -= 5 * weeks;
  while (left > 0) {
    days += step;
    if (isWorkingDay(days)) --left;
  }
  return days;
}

// Days are stepped one at a time: forward, only a day past the end of its
// month moves to the 1st of the next; back, only a day that becomes exactly
// 0 moves to the last of the previous. Once the day lies within its month
// that is the calendar, which is computed; before that (a day 0 from a mask
// without a day, or a day beyond the month's end) the steps stay in the
// month as far as they reach.
void shiftDays(std::tm *date, std::int64_t count) {
  std::int64_t day = date->tm_mday;
  std::int64_t last = calendar::daysInMonth(yearOf(*date), date->tm_mon);
  if (count > 0) {
    if (day + count <= last) {
      date->tm_mday = static_cast<int>(day + count);
      return;
    }
    // The steps that lead to the 1st of the next month.
    count -= std::max<std::int64_t>(last - day, 0) + 1;
    setDayNumber(date, calendar::daysFromCivil(yearOf(*date), std::int64_t{date->tm_mon} + 1, 1) + count);
  } else if (count < 0) {
    if (day <= 0 || day + count >= 1) {
      // Below 1 the day never becomes 0 again, however far it goes.
      date->tm_mday = static_cast<int>(std::max<std::int64_t>(day + count, INT_MIN));
      return;
    }
    // The steps that lead to the last day of the previous month.
    count += day;
    setDayNumber(date, calendar::daysFromCivil(yearOf(*date), date->tm_mon, 0) + count);
  }
}

void shift(std::tm *date, std::int64_t count, char unit) {
  switch (unit) {
    case 'J':
      calendar::setYear(date, std::int64_t{date->tm_year} + count);
      limitDay(date);
      break;
    case 'M': {
      std::int64_t months = std::int64_t{date->tm_mon} + count;
      std::int64_t carry = months >= 0 ? months / 12 : -((11 - months) / 12);
      calendar::setYear(date, std::int64_t{date->tm_year} + carry);
      date->tm_mon = static_cast<int>(months - carry * 12);
      limitDay(date);
      break;
    }
    case 'A':
      if (count != 0) setDayNumber(date, shiftWorkingDays(dayNumber(*date), count));
      break;
    default:  // 'T', and 'W' already counted in days
      shiftDays(date, count);
      break;
  }
}

// The number of whole years from `from` to `to`, counted as shifting `from`
// year by year (the day limited, and kept once limited) while the shifted
// date does not pass `to`.
std::int64_t wholeYears(const std::tm &from, const std::tm &to) {
  std::int64_t candidate = yearOf(to) - yearOf(from);
  if (candidate <= 0) return 0;
  std::tm shifted = from;
  calendar::setYear(&shifted, std::int64_t{from.tm_year} + candidate);
  // The smallest month length met on the way limits the day.
  int limit = calendar::daysInMonth(yearOf(from) + 1, from.tm_mon);
  if (candidate >= 2) limit = std::min(limit, calendar::daysInMonth(yearOf(from) + 2, from.tm_mon));
  if (shifted.tm_mday > limit) shifted.tm_mday = limit;
  return Util::compareDate(&to, &shifted) >= 0 ? candidate : candidate - 1;
}

Value *elementText(RuntimeContext *runtime, Value *date, const char *mask) {
  char text[kElementTextSize];
  Util::dateToString(text, date->asDate(), mask);
  return runtime->createStringValue(text);
}

}  // namespace

Value *Functions::HEUTE(RuntimeContext *runtime) {
  std::tm today = platform::toLocalTime(std::time(nullptr));
  today.tm_hour = 0;
  today.tm_min = 0;
  today.tm_sec = 0;
  return runtime->createDateValue(&today, nullptr);
}

Value *Functions::JAHR(RuntimeContext *runtime, Value *date) {
  return runtime->createNumberValue(static_cast<double>(yearOf(*date->asDate())));
}

Value *Functions::MONAT(RuntimeContext *runtime, Value *date) {
  return runtime->createNumberValue(date->asDate()->tm_mon + 1.0);
}

Value *Functions::TAG(RuntimeContext *runtime, Value *date) {
  return runtime->createNumberValue(static_cast<double>(date->asDate()->tm_mday));
}

Value *Functions::JAHR_ALS_ZEICHENKETTE(RuntimeContext *runtime, Value *date) {
  return elementText(runtime, date, "JJJJ");
}

Value *Functions::MONAT_ALS_ZEICHENKETTE(RuntimeContext *runtime, Value *date) {
  return elementText(runtime, date, "MM");
}

Value *Functions::TAG_ALS_ZEICHENKETTE(RuntimeContext *runtime, Value *date) {
  return elementText(runtime, date, "TT");
}

Value *Functions::DATUM_VERSCHIEBEN(RuntimeContext *runtime, Value *date, Value *count, Value *unit) {
  char letter = checkUnit(unit, "JMWTA", "Die Einheit der Datumsverschiebung ist ung\xFC" "ltig.");
  std::tm work = *date->asDate();
  // The low 32 bits of the count, as a signed number.
  std::int64_t steps = static_cast<std::int32_t>(static_cast<std::uint32_t>(count->asInteger()));
  if (letter == 'W') steps *= 7;
  shift(&work, steps, letter);
  auto *dateValue = dynamic_cast<DateValue *>(date);
  return runtime->createDateValue(&work, dateValue != nullptr ? dateValue->getMask() : kDefaultMask);
}

Value *Functions::DATUM_DIFFERENZ(RuntimeContext *runtime, Value *first, Value *second, Value *unit) {
  char letter = checkUnit(unit, "JWT", "Die Berechnungseinheit der Datumsdifferenz ist ung\xFC" "ltig.");
  std::tm from = *first->asDate();
  std::tm to = *second->asDate();
  std::int64_t result;
  if (letter == 'J') {
    result = Util::compareDate(&to, &from) >= 0 ? wholeYears(from, to) : -wholeYears(to, from);
  } else {
    result = (calendar::secondsOf(to) - calendar::secondsOf(from)) / 86400;
    if (letter == 'W') result /= 7;
  }
  return runtime->createNumberValue(static_cast<double>(result));
}

}  // namespace quorel
