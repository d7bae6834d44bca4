// date, date_part, date_text.

#include "builtins/tables/tables.hpp"
#include "mathematics/elementwise.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

constexpr std::string_view kIsoFormat = "%Y-%m-%d";

// Up to that many digits at the front of a text, which lose them; -1 for none.
std::int64_t takeNumber(std::string_view& text, std::size_t most) {
  std::int64_t value = 0;
  std::size_t n = 0;
  for (; n < most && n < text.size() && text[n] >= '0' && text[n] <= '9'; ++n) {
    value = 10 * value + (text[n] - '0');
  }
  text.remove_prefix(n);
  return n == 0 ? -1 : value;
}

// Days of a text in a format of %Y, %m, %d and other characters.
std::optional<std::int64_t> parsed(std::string_view text, std::string_view format) {
  if (format == kIsoFormat) {
    return daysOfText(text);
  }
  std::int64_t year = -1;
  std::int64_t month = -1;
  std::int64_t day = -1;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] == '%' && i + 1 < format.size()) {
      ++i;
      std::int64_t& part = format[i] == 'Y' ? year : format[i] == 'm' ? month : day;
      part = takeNumber(text, format[i] == 'Y' ? 4 : 2);
    } else if (text.empty() || text.front() != format[i]) {
      return std::nullopt;
    } else {
      text.remove_prefix(1);
    }
  }
  return text.empty() ? daysOfCalendar(year, month, day) : std::nullopt;
}

std::string formatted(std::int64_t days, std::string_view format) {
  const std::string iso = dateText(days);
  std::string out;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%' || i + 1 == format.size()) {
      out += format[i];
      continue;
    }
    ++i;
    out += format[i] == 'Y' ? iso.substr(0, 4) : iso.substr(format[i] == 'm' ? 5 : 8, 2);
  }
  return out;
}

std::string formatOf(Call& call) {
  const ALGEB x = call.value("format");
  if (x == nullptr) {
    return std::string(kIsoFormat);
  }
  bool good = is(x, Tag::string);
  for (std::size_t i = 0; good && i < text(x).size(); ++i) {
    if (text(x)[i] == '%') {
      ++i;
      good =
          i < text(x).size() && std::string_view("Ymd").find(text(x)[i]) != std::string_view::npos;
    }
  }
  if (!good) {
    call.refuse("format", "a text of %Y, %m, %d and other characters");
  }
  return std::string(text(x));
}

// f of a value, or of each in a list or array; what is missing stays so.
template <typename F>
ALGEB ofEach(Call& call, ALGEB x, F f) {
  State& state = call.state();
  if (!isContainer(x)) {
    return f(x);
  }
  Handles results(state);
  const std::int64_t n = sizeOfVector(state, x);
  for (std::int64_t i = 0; i < n; ++i) {
    lookAtInterrupt();
    const ALGEB e = elementOfVector(state, x, i);
    results.push(isMissing(state, e) ? state.null : f(e));
  }
  const ALGEB list = newList(state, results.span());
  return isList(x) ? list : columnFrom(state, list, n);
}

// Year, month and day, each a number or one for each date.
struct CalendarParts {
  explicit CalendarParts(Call& c) : call(c), parts{c.value("x"), c.value("month"), c.value("day")} {
    for (const ALGEB part : parts) {
      if (!isContainer(part)) {
        continue;
      }
      const std::int64_t n = sizeOfVector(call.state(), part);
      if (like != nullptr && n != count) {
        call.refuse("month", "as many as there are years and days");
      }
      like = like == nullptr ? part : like;
      count = n;
    }
  }

  ALGEB part(std::size_t k, std::int64_t i) const {
    const ALGEB x = parts[k];
    return isContainer(x) ? elementOfVector(call.state(), x, i) : x;
  }

  ALGEB dateAt(std::int64_t i) const {
    State& state = call.state();
    const ALGEB day[] = {part(0, i), part(1, i), part(2, i)};
    std::int64_t numbers[3] = {};
    for (std::size_t k = 0; k < 3; ++k) {
      if (isMissing(state, day[k])) {
        return state.null;
      }
      const ALGEB whole = isReal(day[k]) && isFinite(state, day[k])
                              ? toInteger(state, day[k], Rounding::nearest)
                              : day[k];
      if (!isInteger(whole) || compare(state, whole, day[k]) != 0 ||
          !fitsInt64(whole, &numbers[k])) {
        raise(state, "date expects whole numbers as year, month and day, received: %1", day[k]);
      }
    }
    if (const auto days = daysOfCalendar(numbers[0], numbers[1], numbers[2])) {
      return newDate(state, *days);
    }
    raise(state, "there is no day %1", newList(state, day));
  }

  Call& call;
  ALGEB parts[3];
  ALGEB like = nullptr;
  std::int64_t count = 0;
};

ALGEB dateOfNumbers(Call& call) {
  State& state = call.state();
  const CalendarParts parts(call);
  if (parts.like == nullptr) {
    return parts.dateAt(0);
  }
  Handles dates(state);
  for (std::int64_t i = 0; i < parts.count; ++i) {
    lookAtInterrupt();
    dates.push(parts.dateAt(i));
  }
  const ALGEB list = newList(state, dates.span());
  return isList(parts.like) ? list : columnFrom(state, list, parts.count);
}

ALGEB date(Call& call) {
  State& state = call.state();
  if (call.given("month") != call.given("day")) {
    call.refuse("x", "a text, days since 1970-01-01, or year, month and day");
  }
  if (call.given("month")) {
    return dateOfNumbers(call);
  }
  const std::string format = formatOf(call);
  return ofEach(call, call.value("x"), [&](ALGEB x) -> ALGEB {
    if (isDate(x)) {
      return x;
    }
    if (is(x, Tag::string)) {
      if (const auto days = parsed(text(x), format)) {
        return newDate(state, *days);
      }
      if (call.given("otherwise")) {
        return call.value("otherwise");
      }
      raise(state, "the text %1 is no date in the form " + format, x);
    }
    std::int64_t days = 0;
    const ALGEB whole = isReal(x) && isFinite(state, x) ? toInteger(state, x, Rounding::floor) : x;
    if (!isInteger(whole) || !fitsInt64(whole, &days)) {
      call.refuse("x", "a text, days since 1970-01-01, or year, month and day");
    }
    return newDate(state, days);
  });
}

std::int64_t daysIn(Call& call, ALGEB x) {
  if (!isDate(x)) {
    call.refuse("d", "a date, or a list or an array of dates");
  }
  return daysOf(x);
}

ALGEB partOfDate(Call& call) {
  State& state = call.state();
  const std::string part = call.word("part");
  if (!datePart(0, part)) {
    call.refuse("part", "one of year, month, day, weekday, yearday, week, days");
  }
  return ofEach(call, call.value("d"),
                [&](ALGEB x) { return newInteger(state, *datePart(daysIn(call, x), part)); });
}

ALGEB textOfDate(Call& call) {
  State& state = call.state();
  const std::string format = formatOf(call);
  return ofEach(call, call.value("d"),
                [&](ALGEB x) { return string(state, formatted(daysIn(call, x), format)); });
}

constexpr FunctionRow kRows[] = {
    {"date", "x, month = none, day = none; format, otherwise", nullptr, nullptr, date},
    {"date_part", "d, part", nullptr, nullptr, partOfDate},
    {"date_text", "d, format = \"%Y-%m-%d\"", nullptr, nullptr, textOfDate},
};

}  // namespace

void defineDateFunctions(State& state) { defineRows(state, kRows); }

}  // namespace vexel
