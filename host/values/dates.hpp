// Dates: days of the Gregorian calendar, years 1 to 9999.  Equal dates are one object.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "values/kernel_state.hpp"

namespace vexel {

inline bool isDate(ALGEB x) { return is(x, Tag::date); }
// Days since 1970-01-01.  x must be a date.
inline std::int64_t daysOf(ALGEB date) { return static_cast<std::int64_t>(words(date)[1]); }

// Raises beyond the years 1 to 9999.
ALGEB newDate(State& state, std::int64_t days);

// The days of "2024-02-29", and of year, month and day; nothing where there is no such day.
std::optional<std::int64_t> daysOfText(std::string_view text);
std::optional<std::int64_t> daysOfCalendar(std::int64_t year, std::int64_t month, std::int64_t day);
std::string dateText(std::int64_t days);  // 2024-02-29

// The part of that name: year, month, day, weekday (Monday is 1), yearday, week (of ISO 8601),
// days.
std::optional<std::int64_t> datePart(std::int64_t days, std::string_view part);

// Either of a and b is a date: a date and whole days, or the days between two dates.
ALGEB dateSum(State& state, ALGEB a, ALGEB b);
ALGEB dateDifference(State& state, ALGEB a, ALGEB b);

}  // namespace vexel
