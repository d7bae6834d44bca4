// Elements of arrays as host objects and host objects as elements.

#include <cmath>
#include <cstring>
#include <limits>

#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

[[noreturn]] void refuse(State& state, int type, ALGEB x) {
  raise(state, "unable to store %1 in an array of %2", x, name(state, typeName(type)));
}

// x as a number, through evalf where it is a constant or an expression; digits enough for a double
// to come out right but in one case of a billion.
ALGEB asNumber(State& state, int type, ALGEB x) {
  constexpr int kDigits = 30;
  if (isNumber(x)) {
    return x;
  }
  if (!is(x, Tag::name) && !isExpression(x)) {
    refuse(state, type, x);
  }
  ALGEB value = state.language->evalf(state, x, kDigits);
  if (!isNumber(value)) {
    refuse(state, type, x);
  }
  return value;
}

double asDouble(State& state, int type, ALGEB x) {
  ALGEB value = asNumber(state, type, x);
  if (isComplex(value) && !isZero(imaginaryPart(value))) {
    refuse(state, type, x);
  }
  return toDouble(state, realPart(value));
}

// Integers, and floats that are integers.
std::int64_t asInteger(State& state, int type, ALGEB x, std::int64_t lowest, std::int64_t highest) {
  ALGEB value = x;
  if (isComplex(value) && isZero(imaginaryPart(value))) {
    value = realPart(value);
  }
  if (isFloat(value) && isFinite(state, value) && std::abs(toDouble(state, value)) < 1e19) {
    ALGEB whole = toInteger(state, value, Rounding::truncate);
    value = equal(state, whole, value) ? whole : value;
  }
  std::int64_t i = 0;
  if (!isInteger(value) || !fitsInt64(value, &i) || i < lowest || i > highest) {
    refuse(state, type, x);
  }
  return i;
}

template <typename T>
T asInteger(State& state, int type, ALGEB x) {
  return static_cast<T>(
      asInteger(state, type, x, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
}

}  // namespace

ALGEB elementToObject(State& state, int type, RTableData e) {
  switch (type) {
    case RTABLE_COMPLEX_DAG:
      if (isReal(e.complexdag.re) && isReal(e.complexdag.im)) {
        return newComplex(state, e.complexdag.re, e.complexdag.im);
      }
      return e.complexdag.re == nullptr ? state.null : e.complexdag.re;
    case RTABLE_INTEGER8:
      return immediate(e.int8);
    case RTABLE_INTEGER16:
      return immediate(e.int16);
    case RTABLE_INTEGER32:
      return immediate(e.int32);
    case RTABLE_INTEGER64:
      return newInteger(state, e.int64);
    case RTABLE_FLOAT64:
      return newFloat(state, e.float64);
    case RTABLE_COMPLEX: {
      ALGEB re = newFloat(state, e.complexf64.re);
      return newComplex(state, re, newFloat(state, e.complexf64.im));
    }
    case RTABLE_FLOAT32:
      return newFloat(state, static_cast<double>(e.float32));
    default:
      return e.dag == nullptr ? state.null : e.dag;
  }
}

RTableData objectToElement(State& state, int type, ALGEB x) {
  RTableData e;
  std::memset(&e, 0, sizeof e);
  switch (type) {
    case RTABLE_COMPLEX_DAG: {
      ALGEB value = asNumber(state, type, x);
      e.complexdag = {isComplex(value) ? realPart(value) : x, imaginaryPart(value)};
      break;
    }
    case RTABLE_INTEGER8:
      e.int8 = asInteger<std::int8_t>(state, type, x);
      break;
    case RTABLE_INTEGER16:
      e.int16 = asInteger<std::int16_t>(state, type, x);
      break;
    case RTABLE_INTEGER32:
      e.int32 = asInteger<std::int32_t>(state, type, x);
      break;
    case RTABLE_INTEGER64:
      e.int64 = asInteger<std::int64_t>(state, type, x);
      break;
    case RTABLE_FLOAT64:
      e.float64 = asDouble(state, type, x);
      break;
    case RTABLE_COMPLEX: {
      ALGEB value = asNumber(state, type, x);
      e.complexf64 = {toDouble(state, realPart(value)), toDouble(state, imaginaryPart(value))};
      break;
    }
    case RTABLE_FLOAT32:
      e.float32 = static_cast<float>(asDouble(state, type, x));
      break;
    default:
      e.dag = x;
  }
  return e;
}

}  // namespace vexel
