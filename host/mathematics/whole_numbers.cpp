#include "mathematics/whole_numbers.hpp"

#include <algorithm>
#include <cmath>

#include "mathematics/algebra.hpp"
#include "mathematics/elementary.hpp"
#include "mathematics/elementwise.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

bool isSymbol(ALGEB x) { return is(x, Tag::name) || isExpression(x); }

ALGEB applicationOf(State& state, const char* function, ALGEB a, ALGEB b) {
  const ALGEB args[] = {a, b};
  return newApplication(state, name(state, function), args);
}

void checkBits(State& state, double bits) {
  if (bits > static_cast<double>(kMaxIntegerBits)) {
    raise(state, "integer too large");
  }
}

// A finite float as the fraction that its decimal is; other numbers as they are.
ALGEB exactOf(State& state, ALGEB x) {
  if (!isFloat(x)) {
    return x;
  }
  BigInteger mantissa;
  std::int64_t exponent = 0;
  decimalOf(x, mantissa, exponent);
  constexpr std::int64_t kMostPlaces = 20'000;
  if (std::abs(exponent) > kMostPlaces) {
    raise(state, "too large or too small a number, received: %1", x);
  }
  const ALGEB power = integerPower(state, immediate(10), immediate(exponent));
  return multiply(state, newInteger(state, mantissa.get()), power);
}

// Of integers, k not negative.
ALGEB integerBinomial(State& state, ALGEB n, ALGEB k) {
  if (sign(n) >= 0) {
    if (compare(state, k, n) > 0) {
      return immediate(0);
    }
    const ALGEB other = subtract(state, n, k);
    k = compare(state, other, k) < 0 ? other : k;
  }
  std::int64_t small = 0;
  if (!fitsInt64(k, &small)) {
    raise(state, "integer too large");
  }
  // No factor (n - i) / (i + 1) is larger than e |n| / k + e.
  const double magnitude = std::abs(toDouble(state, n));
  const double count = static_cast<double>(std::max<std::int64_t>(small, 1));
  checkBits(state, count * std::log2(M_E * (magnitude / count + 1)));
  BigInteger result;
  mpz_bin_ui(result.get(), IntegerView(n).get(), static_cast<unsigned long>(small));
  return newInteger(state, result.get());
}

// Factors that are multiplied one by one.
constexpr std::int64_t kMostFactors = 10'000;

// n (n - 1) ... (n - k + 1) / k! of any number n.
ALGEB fallingQuotient(State& state, ALGEB n, std::int64_t k) {
  RunningProduct result(state, immediate(1));
  for (std::int64_t i = 0; i < k; ++i) {
    lookAtInterrupt();
    result.multiply(divide(state, subtract(state, n, immediate(i)), immediate(i + 1)));
  }
  return result.value();
}

// 1 / ((n + 1) B(k + 1, n - k + 1))
ALGEB binomialByBeta(State& state, ALGEB n, ALGEB k) {
  constexpr double kLargest = 1e6;
  if (!(std::abs(toDouble(state, n)) <= kLargest) || !(std::abs(toDouble(state, k)) <= kLargest)) {
    raise(state,
          "binomial of numbers beyond 1000000 takes a whole k of at most 10000, received: %1",
          applicationOf(state, "binomial", n, k));
  }
  const int digits = state.digits();
  constexpr int kSpareDigits = 20;
  const mpfr_prec_t bits = bitsForDigits(state, std::min(2 * digits + kSpareDigits, kMaxDigits));
  RealNumber top(bits);
  RealNumber left(bits);
  RealNumber right(bits);
  toMpfr(state, top.get(), n);
  toMpfr(state, left.get(), k);
  mpfr_sub(right.get(), top.get(), left.get(), MPFR_RNDN);
  for (mpfr_ptr x : {top.get(), left.get(), right.get()}) {
    mpfr_add_ui(x, x, 1, MPFR_RNDN);
  }
  mpfr_beta(right.get(), left.get(), right.get(), MPFR_RNDN);
  mpfr_mul(top.get(), top.get(), right.get(), MPFR_RNDN);
  mpfr_ui_div(top.get(), 1, top.get(), MPFR_RNDN);
  return fromMpfr(state, top.get(), digits);
}

}  // namespace

ALGEB factorialOf(State& state, ALGEB x) {
  if (isContainer(x)) {
    return elementwiseFunction(
        state, x, [](double v) { return std::tgamma(v + 1); },
        [&](ALGEB e) { return factorialOf(state, e); });
  }
  if (isFloat(x)) {
    ALGEB next = nullptr;
    {
      const DigitsScope scope(state, std::min(2 * state.digits() + 20, kMaxDigits));
      next = add(state, x, immediate(1));
    }
    return elementaryFloat(state, *elementaryFunction("gamma"), next, state.digits());
  }
  if (!isInteger(x)) {
    if (!isNumber(x) && !isSymbol(x)) {
      raise(state, "expected a number or an expression, received: %1", x);
    }
    return applicationOf(state, "factorial", x);
  }
  if (sign(x) < 0) {
    raise(state, "factorial has no value at %1", x);
  }
  const double n = toDouble(state, x);
  checkBits(state, n * std::log2(n / M_E + 1));
  BigInteger result;
  mpz_fac_ui(result.get(), static_cast<unsigned long>(n));
  return newInteger(state, result.get());
}

ALGEB binomialOf(State& state, ALGEB n, ALGEB k) {
  if (!isReal(n) || !isReal(k)) {
    if ((!isReal(n) && !isSymbol(n)) || (!isReal(k) && !isSymbol(k))) {
      raise(state, "binomial expects real numbers, received: %1", isReal(n) ? k : n);
    }
    return applicationOf(state, "binomial", n, k);
  }
  const bool inFloats = isFloat(n) || isFloat(k);
  if (isSpecial(n) || isSpecial(k)) {
    return state.undefined;
  }
  if (isExact(n) && isRational(k) && isInteger(subtract(state, n, k))) {
    k = subtract(state, n, k);
  }
  const ALGEB whole = toInteger(state, k, Rounding::floor);
  if (compare(state, whole, k) != 0) {
    return inFloats ? binomialByBeta(state, n, k) : applicationOf(state, "binomial", n, k);
  }
  if (sign(whole) < 0) {
    return inFloats ? newFloat(state, 0.0) : immediate(0);
  }
  if (isInteger(n) && !inFloats) {
    return integerBinomial(state, n, whole);
  }
  std::int64_t factors = 0;
  if (!fitsInt64(whole, &factors) || factors > kMostFactors) {
    return binomialByBeta(state, n, k);
  }
  ALGEB result = nullptr;
  {
    const DigitsScope scope(state, std::min(2 * state.digits() + 20, kMaxDigits));
    result = fallingQuotient(state, n, factors);
  }
  return inFloats ? roundToDigits(state, result, state.digits()) : result;
}

double hardwareModulo(double a, double b) {
  const double rest = std::fmod(a, b);
  return rest != 0 && (rest < 0) != (b < 0) ? rest + b : rest;
}

ALGEB moduloOf(State& state, ALGEB a, ALGEB b) {
  if (isContainer(a) || isContainer(b)) {
    return elementwise(state, ArithmeticOp::modulo, a, b);
  }
  if (!isReal(a) || !isReal(b)) {
    if ((!isReal(a) && !isSymbol(a)) || (!isReal(b) && !isSymbol(b))) {
      raise(state, "mod expects real numbers, received: %1 and %2", a, b);
    }
    return applicationOf(state, "mod", a, b);
  }
  if (isSpecial(a) || isSpecial(b) || (isFloat(b) && isZero(b))) {
    return newFloat(state, hardwareModulo(toDouble(state, a), toDouble(state, b)));
  }
  if (isInteger(a) && isInteger(b)) {
    return integerRemainder(state, a, b);
  }
  const ALGEB x = exactOf(state, a);
  const ALGEB y = exactOf(state, b);
  const ALGEB times = toInteger(state, divide(state, x, y), Rounding::floor);
  const ALGEB rest = subtract(state, x, multiply(state, y, times));
  return isFloat(a) || isFloat(b) ? roundToDigits(state, rest, state.digits()) : rest;
}

}  // namespace vexel
