#include "values/dates.hpp"

#include <chrono>
#include <cstdio>

#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

namespace calendar = std::chrono;

constexpr std::int64_t kFirst = -719162;  // 0001-01-01
constexpr std::int64_t kLast = 2932896;   // 9999-12-31

calendar::sys_days dayOf(std::int64_t days) { return calendar::sys_days(calendar::days(days)); }

// Digits of a number of that width, -1 for anything else.
int digitsOf(std::string_view text) {
  int value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') {
      return -1;
    }
    value = 10 * value + (c - '0');
  }
  return value;
}

// The Thursday of a week says which year the week belongs to.
std::int64_t weekOf(std::int64_t days) {
  const calendar::weekday weekday(dayOf(days));
  const std::int64_t thursday = days + 4 - static_cast<std::int64_t>(weekday.iso_encoding());
  return (*datePart(thursday, "yearday") - 1) / 7 + 1;
}

std::int64_t wholeDays(State& state, ALGEB date, ALGEB x) {
  std::int64_t days = 0;
  const ALGEB whole = isReal(x) && isFinite(state, x) ? toInteger(state, x, Rounding::nearest) : x;
  if (!isInteger(whole) || compare(state, whole, x) != 0 || !fitsInt64(whole, &days) ||
      days < -2 * kLast || days > 2 * kLast) {
    raise(state, "%1 goes with a number of whole days, received: %2", date, x);
  }
  return days;
}

}  // namespace

ALGEB newDate(State& state, std::int64_t days) {
  if (days < kFirst || days > kLast) {
    raise(state, "dates are those of the years 1 to 9999");
  }
  const Word payload[] = {static_cast<Word>(days)};
  return state.interned.words(Tag::date, payload, 1);
}

std::optional<std::int64_t> daysOfCalendar(std::int64_t year, std::int64_t month,
                                           std::int64_t day) {
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31) {
    return std::nullopt;
  }
  const calendar::year_month_day date{calendar::year(static_cast<int>(year)),
                                      calendar::month(static_cast<unsigned>(month)),
                                      calendar::day(static_cast<unsigned>(day))};
  if (!date.ok()) {
    return std::nullopt;
  }
  return calendar::sys_days(date).time_since_epoch().count();
}

std::optional<std::int64_t> daysOfText(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
    return std::nullopt;
  }
  return daysOfCalendar(digitsOf(text.substr(0, 4)), digitsOf(text.substr(5, 2)),
                        digitsOf(text.substr(8, 2)));
}

std::string dateText(std::int64_t days) {
  const calendar::year_month_day date(dayOf(days));
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return buffer;
}

std::optional<std::int64_t> datePart(std::int64_t days, std::string_view part) {
  const calendar::year_month_day date(dayOf(days));
  if (part == "year") {
    return static_cast<int>(date.year());
  }
  if (part == "month") {
    return static_cast<unsigned>(date.month());
  }
  if (part == "day") {
    return static_cast<unsigned>(date.day());
  }
  if (part == "weekday") {
    return calendar::weekday(dayOf(days)).iso_encoding();
  }
  if (part == "yearday") {
    const calendar::sys_days first(date.year() / calendar::January / 1);
    return (dayOf(days) - first).count() + 1;
  }
  if (part == "week") {
    return weekOf(days);
  }
  if (part == "days") {
    return days;
  }
  return std::nullopt;
}

ALGEB dateSum(State& state, ALGEB a, ALGEB b) {
  if (isDate(a) && isDate(b)) {
    raise(state, "unable to add %1 and %2", a, b);
  }
  const ALGEB date = isDate(a) ? a : b;
  return newDate(state, daysOf(date) + wholeDays(state, date, isDate(a) ? b : a));
}

ALGEB dateDifference(State& state, ALGEB a, ALGEB b) {
  if (!isDate(a)) {
    raise(state, "unable to subtract %2 from %1", a, b);
  }
  if (isDate(b)) {
    return newInteger(state, daysOf(a) - daysOf(b));
  }
  return newDate(state, daysOf(a) - wholeDays(state, a, b));
}

}  // namespace vexel
