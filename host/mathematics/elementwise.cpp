#include "mathematics/elementwise.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "mathematics/algebra.hpp"
#include "mathematics/whole_numbers.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

// Elements between two looks at the interrupt, which stay in the first cache.
constexpr std::int64_t kBlock = 1024;

bool isIntegerType(int type) { return type >= RTABLE_INTEGER8 && type <= RTABLE_INTEGER64; }

template <typename T, typename To>
const To* converted(const ArrayObject& array, std::int64_t first, std::int64_t n, To* room) {
  const T* const from = static_cast<const T*>(array.data) + first;
  if constexpr (std::is_same_v<T, To>) {
    return from;
  } else {
    std::transform(from, from + n, room, [](T v) { return static_cast<To>(v); });
    return room;
  }
}

template <typename To>
const To* elementsAs(const ArrayObject& array, std::int64_t first, std::int64_t n, To* room) {
  switch (array.type) {
    case RTABLE_INTEGER8:
      return converted<std::int8_t>(array, first, n, room);
    case RTABLE_INTEGER16:
      return converted<std::int16_t>(array, first, n, room);
    case RTABLE_INTEGER32:
      return converted<std::int32_t>(array, first, n, room);
    case RTABLE_INTEGER64:
      return converted<std::int64_t>(array, first, n, room);
    case RTABLE_FLOAT32:
      return converted<float>(array, first, n, room);
    default:
      return converted<double>(array, first, n, room);
  }
}

// An operand of machine numbers: the elements of an array, or one value for all.
template <typename T>
class Elements {
 public:
  Elements(ALGEB x, T single) : array_(isArray(x) ? x : nullptr) { room_.fill(single); }
  const T* block(std::int64_t first, std::int64_t n) {
    return array_ == nullptr ? room_.data()
                             : elementsAs<T>(arrayOf(array_), first, n, room_.data());
  }

 private:
  ALGEB array_;
  std::array<T, kBlock> room_;
};

std::string shapeText(ALGEB x) {
  if (isList(x)) {
    return "a list of " + std::to_string(countOf(x));
  }
  std::string text = "an array of ";
  for (int d = 0; d < arrayOf(x).dimensions; ++d) {
    text += (d > 0 ? " x " : "") + std::to_string(arrayOf(x).extent(d));
  }
  return text;
}

void requireSameShape(State& state, ALGEB a, ALGEB b) {
  bool same = true;
  if (isArray(a) && isArray(b)) {
    same = arrayOf(a).dimensions == arrayOf(b).dimensions;
    for (int d = 0; same && d < arrayOf(a).dimensions; ++d) {
      same = arrayOf(a).extent(d) == arrayOf(b).extent(d);
    }
  } else if (isList(a) && isList(b)) {
    same = countOf(a) == countOf(b);
  } else if (isContainer(a) && isContainer(b)) {
    const ArrayObject& array = arrayOf(isArray(a) ? a : b);
    same = array.dimensions == 1 &&
           array.count == static_cast<std::int64_t>(countOf(isArray(a) ? b : a));
  }
  if (!same) {
    raise(state, "the shapes differ: " + shapeText(a) + " and " + shapeText(b));
  }
}

// b in the order of a, when both are arrays of several dimensions.
ALGEB inOrderOf(State& state, ALGEB a, ALGEB b) {
  if (!isArray(a) || !isArray(b) || arrayOf(a).order == arrayOf(b).order ||
      arrayOf(a).dimensions < 2) {
    return b;
  }
  RTableSettings settings = settingsOf(b);
  settings.order = arrayOf(a).order;
  settings.read_only = 0;
  return copyArray(state, settings, b);
}

// Element i, from 0, of a container as an object; anything else stands for its elements.
ALGEB elementOf(State& state, ALGEB x, std::int64_t i) {
  if (isArray(x)) {
    const ALGEB e = elementToObject(state, arrayOf(x).type, elementAt(x, i));
    return e == nullptr ? state.null : e;
  }
  return isList(x) ? element(state, x, static_cast<std::size_t>(i) + 1) : x;
}

// f(element of a, element of b) for all of them: a list of lists, else an array.
template <typename F>
ALGEB combined(State& state, ALGEB a, ALGEB b, F f) {
  const ALGEB shape = isArray(a) ? a : isArray(b) ? b : isList(a) ? a : b;
  if (isList(shape)) {
    Handles results(state);
    for (std::size_t i = 0; i < countOf(shape); ++i) {
      lookAtInterrupt();
      const auto at = static_cast<std::int64_t>(i);
      results.push(f(elementOf(state, a, at), elementOf(state, b, at)));
    }
    return newList(state, results.span());
  }
  const auto isComplexArray = [](ALGEB x) {
    return isArray(x) && arrayOf(x).type == RTABLE_COMPLEX;
  };
  const int type = isComplexArray(a) || isComplexArray(b) ? RTABLE_COMPLEX : RTABLE_DAG;
  const ALGEB result = arrayLike(state, shape, type);
  for (std::int64_t i = 0; i < arrayOf(shape).count; ++i) {
    lookAtInterrupt();
    const ALGEB e = f(elementOf(state, a, i), elementOf(state, b, i));
    setElementAt(result, i, objectToElement(state, type, e));
  }
  return result;
}

ALGEB single(State& state, ArithmeticOp op, ALGEB a, ALGEB b) {
  switch (op) {
    case ArithmeticOp::add:
      return sumOf(state, a, b);
    case ArithmeticOp::subtract:
      return differenceOf(state, a, b);
    case ArithmeticOp::multiply:
      return productOf(state, a, b);
    case ArithmeticOp::divide:
      return quotientOf(state, a, b);
    case ArithmeticOp::modulo:
      return moduloOf(state, a, b);
    default:
      return powerOf(state, a, b);
  }
}

double inHardware(ArithmeticOp op, double x, double y) {
  switch (op) {
    case ArithmeticOp::add:
      return x + y;
    case ArithmeticOp::subtract:
      return x - y;
    case ArithmeticOp::multiply:
      return x * y;
    case ArithmeticOp::divide:
      return x / y;
    case ArithmeticOp::modulo:
      return hardwareModulo(x, y);
    default:
      return std::pow(x, y);
  }
}

template <ArithmeticOp op>
ALGEB doubles(State& state, ALGEB a, ALGEB b) {
  const ALGEB result = arrayLike(state, isArray(a) ? a : b, RTABLE_FLOAT64);
  double* const out = static_cast<double*>(arrayOf(result).data);
  const std::int64_t count = arrayOf(result).count;
  Elements<double> left(a, isArray(a) ? 0 : toDouble(state, a));
  Elements<double> right(b, isArray(b) ? 0 : toDouble(state, b));
  const bool isSquare = op == ArithmeticOp::power && b == immediate(2);
  for (std::int64_t first = 0; first < count; first += kBlock) {
    lookAtInterrupt();
    const std::int64_t n = std::min(kBlock, count - first);
    const double* const x = left.block(first, n);
    const double* const y = isSquare ? x : right.block(first, n);
    for (std::int64_t i = 0; i < n; ++i) {
      out[first + i] = isSquare ? x[i] * y[i] : inHardware(op, x[i], y[i]);
    }
  }
  return result;
}

// The integer result, null when an element does not fit 64 bits.
template <typename Operation>
ALGEB integers(State& state, ALGEB a, ALGEB b, Operation overflows) {
  std::int64_t singleA = 0;
  std::int64_t singleB = 0;
  if ((!isArray(a) && !fitsInt64(a, &singleA)) || (!isArray(b) && !fitsInt64(b, &singleB))) {
    return nullptr;
  }
  const ALGEB result = arrayLike(state, isArray(a) ? a : b, RTABLE_INTEGER64);
  auto* const out = static_cast<std::int64_t*>(arrayOf(result).data);
  const std::int64_t count = arrayOf(result).count;
  Elements<std::int64_t> left(a, singleA);
  Elements<std::int64_t> right(b, singleB);
  for (std::int64_t first = 0; first < count; first += kBlock) {
    lookAtInterrupt();
    const std::int64_t n = std::min(kBlock, count - first);
    const std::int64_t* const x = left.block(first, n);
    const std::int64_t* const y = right.block(first, n);
    bool fits = true;
    for (std::int64_t i = 0; i < n; ++i) {
      fits = !overflows(x[i], y[i], out + first + i) && fits;
    }
    if (!fits) {
      return nullptr;
    }
  }
  return result;
}

// A zero divisor goes the way of what does not fit.
bool moduloFails(std::int64_t a, std::int64_t b, std::int64_t* result) {
  if (b == 0 || b == -1) {
    *result = 0;
    return b == 0;
  }
  *result = a % b;
  *result += *result != 0 && (*result < 0) != (b < 0) ? b : 0;
  return false;
}

bool powerOverflows(std::int64_t base, std::int64_t exponent, std::int64_t* result) {
  *result = 1;
  bool overflows = false;
  for (;; exponent /= 2) {
    if (exponent % 2 != 0) {
      overflows = __builtin_mul_overflow(*result, base, result) || overflows;
    }
    if (exponent < 2) {
      return overflows;
    }
    if (__builtin_mul_overflow(base, base, &base)) {
      return true;
    }
  }
}

ALGEB integerArithmetic(State& state, ArithmeticOp op, ALGEB a, ALGEB b) {
  using Int = std::int64_t;
  switch (op) {
    case ArithmeticOp::add:
      return integers(state, a, b,
                      [](Int x, Int y, Int* r) { return __builtin_add_overflow(x, y, r); });
    case ArithmeticOp::subtract:
      return integers(state, a, b,
                      [](Int x, Int y, Int* r) { return __builtin_sub_overflow(x, y, r); });
    case ArithmeticOp::multiply:
      return integers(state, a, b,
                      [](Int x, Int y, Int* r) { return __builtin_mul_overflow(x, y, r); });
    case ArithmeticOp::modulo:
      return integers(state, a, b, moduloFails);
    default:
      return integers(state, a, b, powerOverflows);
  }
}

ALGEB doubleArithmetic(State& state, ArithmeticOp op, ALGEB a, ALGEB b) {
  switch (op) {
    case ArithmeticOp::add:
      return doubles<ArithmeticOp::add>(state, a, b);
    case ArithmeticOp::subtract:
      return doubles<ArithmeticOp::subtract>(state, a, b);
    case ArithmeticOp::multiply:
      return doubles<ArithmeticOp::multiply>(state, a, b);
    case ArithmeticOp::divide:
      return doubles<ArithmeticOp::divide>(state, a, b);
    case ArithmeticOp::modulo:
      return doubles<ArithmeticOp::modulo>(state, a, b);
    default:
      return doubles<ArithmeticOp::power>(state, a, b);
  }
}

bool isMachineOperand(ALGEB x) { return isMachineArray(x) || isReal(x); }

bool isIntegerOperand(ALGEB x) {
  return isArray(x) ? isIntegerType(arrayOf(x).type) : isInteger(x);
}

bool compares(CompareOp op, double x, double y) {
  switch (op) {
    case CompareOp::equal:
      return x == y;
    case CompareOp::unequal:
      return x != y;
    case CompareOp::less:
      return x < y;
    case CompareOp::lessEqual:
      return x <= y;
    case CompareOp::greater:
      return x > y;
    default:
      return x >= y;
  }
}

// Doubles compare these exactly.
bool fitsDoubles(State& state, ALGEB x) {
  if (isArray(x)) {
    return isMachineArray(x) && arrayOf(x).type != RTABLE_INTEGER64;
  }
  return isReal(x) && (isDoubleFloat(x) || (isImmediate(x) && toDouble(state, x) < 0x1p53 &&
                                            toDouble(state, x) > -0x1p53));
}

}  // namespace

bool isMachineArray(ALGEB x) {
  return isArray(x) && arrayOf(x).sparse == nullptr &&
         (isIntegerType(arrayOf(x).type) || arrayOf(x).type == RTABLE_FLOAT64 ||
          arrayOf(x).type == RTABLE_FLOAT32);
}

const double* doublesOf(const ArrayObject& array, std::int64_t first, std::int64_t n,
                        double* room) {
  return elementsAs<double>(array, first, n, room);
}

ALGEB arrayLike(State& state, ALGEB x, int type) {
  const ArrayObject& array = arrayOf(x);
  const RTableSettings settings{type, RTABLE_RECTANGULAR, array.order, array.dimensions, 0};
  // A copy: the bounds lie in an object that the collector owns.
  const std::vector<V_INT> bounds(array.bounds, array.bounds + 2 * array.dimensions);
  return newArray(state, settings, nullptr, bounds.data());
}

ALGEB elementwise(State& state, ArithmeticOp op, ALGEB a, ALGEB b) {
  checkStack(state);
  requireSameShape(state, a, b);
  b = inOrderOf(state, a, b);
  if (isMachineOperand(a) && isMachineOperand(b)) {
    const bool whole = isIntegerOperand(a) && isIntegerOperand(b) && op != ArithmeticOp::divide &&
                       (op != ArithmeticOp::power || (isInteger(b) && sign(b) >= 0));
    if (!whole) {
      return doubleArithmetic(state, op, a, b);
    }
    if (const ALGEB result = integerArithmetic(state, op, a, b)) {
      return result;
    }
  }
  return combined(state, a, b, [&](ALGEB x, ALGEB y) { return single(state, op, x, y); });
}

ALGEB elementwiseWhole(State& state, ALGEB x, bool absolutely) {
  if (!isMachineArray(x) || !isIntegerType(arrayOf(x).type)) {
    return nullptr;
  }
  using Int = std::int64_t;
  const ALGEB result = integers(state, x, immediate(0), [absolutely](Int e, Int, Int* r) {
    *r = e;
    return absolutely && e < 0 && __builtin_sub_overflow(Int{0}, e, r);
  });
  return result != nullptr
             ? result
             : combined(state, x, state.null, [&](ALGEB e, ALGEB) { return absolute(state, e); });
}

ALGEB elementwiseComparison(State& state, CompareOp op, ALGEB a, ALGEB b) {
  checkStack(state);
  requireSameShape(state, a, b);
  b = inOrderOf(state, a, b);
  if (fitsDoubles(state, a) && fitsDoubles(state, b)) {
    const ALGEB result = arrayLike(state, isArray(a) ? a : b, RTABLE_DAG);
    ALGEB* const out = static_cast<ALGEB*>(arrayOf(result).data);
    const std::int64_t count = arrayOf(result).count;
    Elements<double> left(a, isArray(a) ? 0 : toDouble(state, a));
    Elements<double> right(b, isArray(b) ? 0 : toDouble(state, b));
    for (std::int64_t first = 0; first < count; first += kBlock) {
      lookAtInterrupt();
      const std::int64_t n = std::min(kBlock, count - first);
      const double* const x = left.block(first, n);
      const double* const y = right.block(first, n);
      for (std::int64_t i = 0; i < n; ++i) {
        out[first + i] = boolean(state, compares(op, x[i], y[i]));
      }
    }
    return result;
  }
  return combined(state, a, b, [&](ALGEB x, ALGEB y) {
    if (isContainer(x) || isContainer(y)) {
      return elementwiseComparison(state, op, x, y);
    }
    const auto result = comparison(state, op, x, y);
    if (!result) {
      raise(state, "unable to determine the truth of a relation between %1 and %2", x, y);
    }
    return boolean(state, *result);
  });
}

ALGEB maskOf(State& state, ALGEB x) {
  const bool between = isEquation(x) && (isContainer(operand(x, 1)) || isContainer(operand(x, 2)));
  return between ? elementwiseComparison(state, CompareOp::equal, operand(x, 1), operand(x, 2)) : x;
}

ALGEB elementwiseLogic(State& state, bool isAnd, ALGEB a, ALGEB b) {
  checkStack(state);
  requireSameShape(state, a, b);
  b = inOrderOf(state, a, b);
  return combined(state, a, b, [&](ALGEB x, ALGEB y) {
    if (isContainer(x) || isContainer(y)) {
      return elementwiseLogic(state, isAnd, x, y);
    }
    const bool p = truth(state, x);
    const bool q = truth(state, y);
    return boolean(state, isAnd ? p && q : p || q);
  });
}

ALGEB elementwiseNot(State& state, ALGEB x) {
  checkStack(state);
  return combined(state, x, state.null, [&](ALGEB e, ALGEB) {
    return isContainer(e) ? elementwiseNot(state, e) : boolean(state, !truth(state, e));
  });
}

ALGEB elementwiseFunction(State& state, ALGEB x, double (*hardware)(double),
                          const std::function<ALGEB(ALGEB)>& f) {
  checkStack(state);
  if (!isMachineArray(x)) {
    return combined(state, x, state.null, [&](ALGEB e, ALGEB) {
      return isContainer(e) ? elementwiseFunction(state, e, hardware, f) : f(e);
    });
  }
  const ALGEB result = arrayLike(state, x, RTABLE_FLOAT64);
  double* const out = static_cast<double*>(arrayOf(result).data);
  const std::int64_t count = arrayOf(result).count;
  Elements<double> elements(x, 0);
  for (std::int64_t first = 0; first < count; first += kBlock) {
    lookAtInterrupt();
    const std::int64_t n = std::min(kBlock, count - first);
    const double* const from = elements.block(first, n);
    for (std::int64_t i = 0; i < n; ++i) {
      out[first + i] = hardware(from[i]);
    }
  }
  return result;
}

}  // namespace vexel
