#include "values/frames.hpp"

#include <algorithm>
#include <limits>

#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

ALGEB newColumn(State& state, int type, std::int64_t rows) {
  const RTableSettings settings{type, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {1, rows};
  return newArray(state, settings, nullptr, bounds);
}

bool isVector(ALGEB x) { return isArray(x) && arrayOf(x).dimensions == 1; }

// The type of array that holds all of the elements, as columnFrom says.
int typeFor(std::span<const ALGEB> elements) {
  bool floats = false;
  bool integers = true;
  std::int64_t small = 0;
  for (const ALGEB e : elements) {
    if (isNull(e) || (isFloat(e) && isDoubleFloat(e))) {
      floats = floats || !isNull(e);
      integers = false;
    } else if (!isInteger(e) || !fitsInt64(e, &small)) {
      return RTABLE_DAG;
    }
  }
  const bool allNull = std::all_of(elements.begin(), elements.end(), isNull);
  return integers ? RTABLE_INTEGER64 : allNull && !floats ? RTABLE_DAG : RTABLE_FLOAT64;
}

ALGEB columnOfList(State& state, std::span<const ALGEB> elements) {
  const int type = typeFor(elements);
  const ALGEB column = newColumn(state, type, static_cast<std::int64_t>(elements.size()));
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const bool missingNumber = type == RTABLE_FLOAT64 && isNull(elements[i]);
    setElementAt(column, static_cast<std::int64_t>(i),
                 objectToElement(state, type, missingNumber ? state.undefined : elements[i]));
  }
  return column;
}

template <typename T>
void gather(ALGEB from, ALGEB to, std::span<const std::int64_t> places, T missing) {
  const auto* const source = static_cast<const T*>(arrayOf(from).data);
  auto* const target = static_cast<T*>(arrayOf(to).data);
  for (std::size_t i = 0; i < places.size(); ++i) {
    target[i] = places[i] < 0 ? missing : source[places[i]];
  }
}

}  // namespace

ALGEB newFrame(State& state, std::int64_t rows) {
  auto frame = std::make_unique<Frame>();
  frame->rows = rows;
  return newForeign(state, Tag::table, std::move(frame));
}

bool isFrame(ALGEB x) {
  return is(x, Tag::table) && dynamic_cast<const Frame*>(foreign(x)) != nullptr;
}

ALGEB headingOf(State& state, ALGEB x) {
  if (is(x, Tag::string) || isInteger(x)) {
    return x;
  }
  if (is(x, Tag::name)) {
    return string(state, text(x));
  }
  if (is(x, Tag::function)) {
    return string(state, machineFunction(x).name);
  }
  raise(state, "expected the name of a column, in quotes where it has a value, received: %1", x);
}

std::vector<ALGEB> headingsOf(ALGEB x) {
  std::vector<ALGEB> headings;
  for (const auto& [heading, column] : frame(x).entries()) {
    headings.push_back(heading);
  }
  return headings;
}

ALGEB findColumn(State& state, ALGEB x, ALGEB heading) {
  return frame(x).find(headingOf(state, heading));
}

ALGEB columnOf(State& state, ALGEB x, ALGEB heading) {
  if (const ALGEB found = findColumn(state, x, heading)) {
    return found;
  }
  std::string known;
  const std::vector<ALGEB> all = headingsOf(x);
  constexpr std::size_t kMost = 30;
  for (std::size_t i = 0; i < all.size() && i < kMost; ++i) {
    known += (i > 0 ? ", " : "") + plainText(state, all[i]);
  }
  raise(state, "the table has no column %1; it has %2", headingOf(state, heading),
        name(state, known + (all.size() > kMost ? ", ..." : "")));
}

ALGEB columnFrom(State& state, ALGEB values, std::int64_t rows) {
  if (isArray(values) && !isVector(values)) {
    raise(state, "a column is a list or an array of one dimension, received: %1", values);
  }
  const bool many = isVector(values) || isList(values);
  const std::int64_t count =
      isArray(values) ? arrayOf(values).count : static_cast<std::int64_t>(countOf(values));
  if (many && count != rows) {
    raise(state, "a table of %1 rows cannot have a column of %2", newInteger(state, rows),
          newInteger(state, count));
  }
  if (isVector(values) && arrayOf(values).lower(0) == 1 && arrayOf(values).sparse == nullptr) {
    return values;
  }
  Handles elements(state);
  for (std::int64_t i = 0; i < rows; ++i) {
    lookAtInterrupt();
    elements.push(isArray(values)  ? cellOf(state, values, i)
                  : isList(values) ? element(state, values, static_cast<std::size_t>(i) + 1)
                                   : values);
  }
  return columnOfList(state, elements.span());
}

void assignColumn(State& state, ALGEB x, ALGEB heading, ALGEB values) {
  const ALGEB key = headingOf(state, heading);
  const bool many = isVector(values) || isList(values);
  if (frame(x).size() == 0 && many) {
    frame(x).rows =
        isArray(values) ? arrayOf(values).count : static_cast<std::int64_t>(countOf(values));
  }
  const ALGEB column = columnFrom(state, values, frame(x).rows);
  frame(x).assign(key, column);
}

ALGEB cellOf(State& state, ALGEB column, std::int64_t i) {
  const ALGEB cell = elementToObject(state, arrayOf(column).type, elementAt(column, i));
  return cell == nullptr ? state.null : cell;
}

bool isMissing(State& state, ALGEB cell) {
  return isNull(cell) || (isFloat(cell) && isUndefined(state, cell));
}

ALGEB takeElements(State& state, ALGEB column, std::span<const std::int64_t> places) {
  const int type = arrayOf(column).type;
  const bool gaps = std::any_of(places.begin(), places.end(), [](auto at) { return at < 0; });
  const auto rows = static_cast<std::int64_t>(places.size());
  if (type == RTABLE_FLOAT64) {
    const ALGEB result = newColumn(state, type, rows);
    gather(column, result, places, std::numeric_limits<double>::quiet_NaN());
    return result;
  }
  if (type == RTABLE_DAG) {
    const ALGEB result = newColumn(state, type, rows);
    gather(column, result, places, state.null);
    return result;
  }
  const ALGEB result = newColumn(state, gaps ? RTABLE_FLOAT64 : type, rows);
  for (std::int64_t i = 0; i < rows; ++i) {
    const std::int64_t at = places[static_cast<std::size_t>(i)];
    if (gaps) {
      const ALGEB cell = at < 0 ? state.undefined : cellOf(state, column, at);
      setElementAt(result, i, objectToElement(state, RTABLE_FLOAT64, cell));
    } else {
      setElementAt(result, i, elementAt(column, at));
    }
  }
  return result;
}

ALGEB takeRows(State& state, ALGEB x, std::span<const std::int64_t> places) {
  const ALGEB result = newFrame(state, static_cast<std::int64_t>(places.size()));
  Handles kept(state);
  kept.push(x);  // the entries are copies
  for (const auto& [heading, column] : frame(x).entries()) {
    lookAtInterrupt();
    frame(result).assign(heading, takeElements(state, column, places));
  }
  return result;
}

}  // namespace vexel
