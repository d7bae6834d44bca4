// The constructor Array(ranges ..., initial values, options ...).

#include <string>
#include <vector>

#include "builtins/builtins.hpp"
#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

struct Request {
  RTableSettings settings{};
  std::vector<V_INT> bounds;
  ALGEB initial = nullptr;
};

V_INT bound(State& s, ALGEB x) {
  std::int64_t i = 0;
  if (!isInteger(x) || !fitsInt64(x, &i)) {
    raise(s, "the bounds of an array are integers, received: %1", x);
  }
  return i;
}

void readOption(State& s, Request& request, ALGEB option) {
  const std::string key = plainText(s, operand(option, 1));
  const std::string value = plainText(s, operand(option, 2));
  if (key == "datatype") {
    for (int code = RTABLE_DAG; code <= RTABLE_FLOAT32; ++code) {
      if (value == typeName(code)) {
        request.settings.data_type = code;
        return;
      }
    }
  } else if (key == "storage" && (value == "rectangular" || value == "sparse")) {
    request.settings.storage = value == "sparse" ? RTABLE_SPARSE : RTABLE_RECTANGULAR;
    return;
  } else if (key == "order" && (value == "column" || value == "row")) {
    request.settings.order = value == "row" ? RTABLE_ROW_MAJOR : RTABLE_COLUMN_MAJOR;
    return;
  }
  raise(s, "invalid option of an array: %1", option);
}

bool nested(State& s, ALGEB list) {
  for (std::size_t i = 1; i <= countOf(list); ++i) {
    if (!isList(element(s, list, i))) {
      return false;
    }
  }
  return countOf(list) > 0;
}

// Bounds 1..n for a list, 1..rows, 1..columns for a list of lists.
void boundsFromValues(State& s, Request& request) {
  request.bounds = {1, static_cast<V_INT>(countOf(request.initial))};
  if (nested(s, request.initial)) {
    const std::size_t columns = countOf(element(s, request.initial, 1));
    for (std::size_t i = 2; i <= countOf(request.initial); ++i) {
      if (countOf(element(s, request.initial, i)) != columns) {
        raise(s, "row %1 has another length than the first row: %2",
              newInteger(s, static_cast<std::int64_t>(i)), element(s, request.initial, i));
      }
    }
    request.bounds.push_back(1);
    request.bounds.push_back(static_cast<V_INT>(columns));
  }
}

// Stores the values of a (nested) list, dimension by dimension.
void fill(State& s, ALGEB array, ALGEB values, int dim, std::vector<V_INT>& index) {
  const ArrayObject& a = arrayOf(array);
  const auto n = static_cast<V_INT>(countOf(values));
  if (!isList(values) || n > a.extent(dim)) {
    raise(s, "initial values do not fit the array: %1", values);
  }
  for (V_INT i = 0; i < n; ++i) {
    lookAtInterrupt();
    index[static_cast<std::size_t>(dim)] = a.lower(dim) + i;
    const ALGEB value = element(s, values, static_cast<std::size_t>(i + 1));
    if (dim + 1 == a.dimensions) {
      arrayAssign(s, array, index, value);
    } else {
      fill(s, array, value, dim + 1, index);
    }
  }
}

ALGEB makeArray(State& s, ALGEB args) {
  Request request;
  request.settings.storage = RTABLE_RECTANGULAR;
  const std::size_t n = isNull(args) ? 0 : argumentCount(args);
  for (std::size_t i = 1; i <= n; ++i) {
    const ALGEB x = argument(s, args, i);
    if (isRange(x)) {
      if (request.bounds.size() / 2 >= RTABLE_MAX_DIMENSIONS) {
        raise(s, "an array has at most 63 dimensions");
      }
      request.bounds.push_back(bound(s, operand(x, 1)));
      request.bounds.push_back(bound(s, operand(x, 2)));
    } else if (isEquation(x)) {
      readOption(s, request, x);
    } else if ((isList(x) || isArray(x)) && request.initial == nullptr) {
      request.initial = x;
    } else {
      raise(s, "invalid argument of an array: %1", x);
    }
  }
  if (request.initial != nullptr && isArray(request.initial)) {
    if (!request.bounds.empty()) {
      raise(s, "an array made from an array has its bounds");
    }
    RTableSettings settings = request.settings;
    settings.num_dimensions = arrayOf(request.initial).dimensions;
    return copyArray(s, settings, request.initial);
  }
  if (request.bounds.empty()) {
    if (request.initial == nullptr) {
      request.bounds = {1, 0};
    } else {
      boundsFromValues(s, request);
    }
  }
  request.settings.num_dimensions = static_cast<std::int32_t>(request.bounds.size() / 2);
  const ALGEB array = newArray(s, request.settings, nullptr, request.bounds.data());
  if (request.initial != nullptr) {
    std::vector<V_INT> index(request.bounds.size() / 2);
    fill(s, array, request.initial, 0, index);
  }
  return array;
}

}  // namespace

void defineArrayFunction(State& state) { defineFunction(state, "Array", makeArray); }

}  // namespace vexel
