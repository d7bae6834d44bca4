// The numbers among a call's arguments: of lists, arrays and ranges, and of procedures.

#include <cmath>
#include <cstdint>
#include <string>

#include "builtins/functions/call.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/evaluation.hpp"
#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/frames.hpp"
#include "values/numbers.hpp"

namespace vexel {

namespace {

constexpr std::int64_t kMostOfRange = 100'000'000;

bool isStoredAs(ALGEB x, int type) {
  return isArray(x) && arrayOf(x).sparse == nullptr && arrayOf(x).type == type;
}

template <typename T>
Data viewOf(ALGEB array) {
  return {static_cast<const T*>(arrayOf(array).data),
          static_cast<std::size_t>(arrayOf(array).count)};
}

// What is missing is NaN: undefined, NULL.
double elementValue(State& state, ALGEB x) {
  return x == nullptr || isNull(x) ? NAN : doubleOfValue(state, x);
}

}  // namespace

double doubleOfValue(State& state, ALGEB x) {
  return isReal(x) ? toDouble(state, x) : evaluateHardware(state, x);
}

Data dataOf(State& state, ALGEB x, std::vector<double>& room) {
  if (isStoredAs(x, RTABLE_FLOAT64)) {
    return viewOf<double>(x);
  }
  if (isStoredAs(x, RTABLE_FLOAT32)) {
    return viewOf<float>(x);
  }
  if (isStoredAs(x, RTABLE_INTEGER32)) {
    return viewOf<std::int32_t>(x);
  }
  if (isStoredAs(x, RTABLE_INTEGER64)) {
    return viewOf<std::int64_t>(x);
  }
  if (isArray(x)) {
    const std::int64_t count = arrayOf(x).count;
    room.reserve(static_cast<std::size_t>(count));
    for (std::int64_t i = 0; i < count; ++i) {
      lookAtInterrupt();
      room.push_back(elementValue(state, elementToObject(state, arrayOf(x).type, elementAt(x, i))));
    }
  } else if (isRange(x)) {
    const double from = doubleOfValue(state, operand(x, 1));
    const double to = doubleOfValue(state, operand(x, 2));
    if (!(to - from < static_cast<double>(kMostOfRange))) {
      raise(state, "too long a range, received: %1", x);
    }
    for (std::int64_t i = 0; from + static_cast<double>(i) <= to; ++i) {
      room.push_back(from + static_cast<double>(i));
    }
  } else {
    for (std::size_t i = 1; i <= countOf(x); ++i) {
      lookAtInterrupt();
      room.push_back(elementValue(state, element(state, x, i)));
    }
  }
  return room;
}

double NumericProcedure::operator()(double x) {
  if (hardware_) {
    const double args[] = {0, x};
    try {
      return applyHardware(*state_, procedure_, 1, args);
    } catch (const HostErrorToken&) {
      hardware_ = false;  // what is wrong with it, software says
    }
  }
  const ALGEB argument = newFloat(*state_, x);
  const ALGEB value = apply(*state_, procedure_, std::span<const ALGEB>(&argument, 1));
  return doubleOfValue(*state_, value);
}

void Call::refuseTable(std::string_view parameter) {
  Handles headings(state_);
  for (const ALGEB heading : headingsOf(value(parameter))) {
    headings.push(heading);
  }
  raise(state_,
        signature_.function + " expects a list, an array or a range of numbers as " +
            std::string(parameter) + ", received a table of the columns %1; one of them is t[%2]",
        newList(state_, headings.span()), headings[0]);
}

// The numbers of a list, an array or a range; of an element that is none it tells which.
Data Call::numbersOf(std::string_view parameter, ALGEB x) {
  std::vector<double>& room = converted_.emplace_back();
  try {
    return dataOf(state_, x, room);
  } catch (const HostErrorToken&) {
    const auto at = static_cast<std::int64_t>(room.size());
    if (isRange(x)) {
      throw;
    }
    const ALGEB e = isArray(x) ? elementToObject(state_, arrayOf(x).type, elementAt(x, at))
                               : element(state_, x, static_cast<std::size_t>(at + 1));
    if (isNumber(e) || isExpression(e)) {
      throw;  // what is wrong with it is told
    }
    raise(state_,
          signature_.function + " expects numbers as " + std::string(parameter) +
              ", element %1 is %2",
          newInteger(state_, at + 1), e);
  }
}

Data Call::data(std::string_view parameter) {
  const ALGEB x = value(parameter);
  if (x == nullptr) {
    return {};
  }
  if (isFrame(x) && !headingsOf(x).empty()) {
    refuseTable(parameter);
  }
  if (!isContainer(x) && !isRange(x)) {
    refuse(parameter, "a list, an array or a range of numbers");
  }
  const Data result = numbersOf(parameter, x);
  // An empty array of weights is what "no weights" is to the entry points.
  return parameter == "weights" && result.empty() ? Data() : result;
}

bool Call::isMatrix(std::string_view parameter) const {
  const ALGEB x = value(parameter);
  return x != nullptr && ((isArray(x) && arrayOf(x).dimensions == 2) ||
                          (isList(x) && countOf(x) > 0 && isContainer(element(state_, x, 1))));
}

std::vector<Data> Call::columns(std::string_view parameter) {
  const ALGEB x = value(parameter);
  std::vector<Data> result;
  if (!isMatrix(parameter)) {
    refuse(parameter, "a two-dimensional array or a list of columns");
  }
  if (isList(x)) {
    for (std::size_t i = 1; i <= countOf(x); ++i) {
      if (!isContainer(element(state_, x, i))) {
        refuse(parameter, "a list of columns");
      }
      result.push_back(numbersOf(parameter, element(state_, x, i)));
    }
    return result;
  }
  const ArrayObject& array = arrayOf(x);
  std::vector<double>& room = converted_.emplace_back();
  const Data all = dataOf(state_, x, room);
  room.resize(all.size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    room[i] = all[i];
  }
  const auto rows = static_cast<std::size_t>(array.extent(0));
  const auto count = static_cast<std::size_t>(array.extent(1));
  const bool byColumn = array.order == RTABLE_COLUMN_MAJOR;
  for (std::size_t j = 0; j < count; ++j) {
    result.emplace_back(room.data() + (byColumn ? j * rows : j), rows,
                        byColumn ? 1 : static_cast<std::ptrdiff_t>(count));
  }
  return result;
}

}  // namespace vexel
