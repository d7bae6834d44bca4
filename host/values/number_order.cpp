// Signs and order of numbers of any kinds.

#include <cmath>
#include <compare>

#include "values/decimal.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

int sign(ALGEB x) {
  if (isImmediate(x)) {
    const std::int64_t i = immediateValue(x);
    return i > 0 ? 1 : i < 0 ? -1 : 0;
  }
  if (isDoubleFloat(x)) {
    const double d = doubleOf(x);
    return d > 0 ? 1 : d < 0 ? -1 : 0;
  }
  // Big integers, and rationals and floats by their first operand.
  return mpz_sgn(IntegerView(isInteger(x) ? x : operand(x, 1)).get());
}

bool isZero(ALGEB x) {
  const auto zero = [](ALGEB r) {
    return r == immediate(0) || (isDoubleFloat(r) && doubleOf(r) == 0.0);
  };
  return isComplex(x) ? zero(operand(x, 1)) && zero(operand(x, 2)) : zero(x);
}

namespace {

// A decimal against a rational: the decimal exponents decide when they differ much, otherwise
// m 10^e q is compared with p.
int compareWithExact(const Decimal& d, ALGEB exact) {
  const IntegerView p(numerator(exact));
  const IntegerView q(denominator(exact));
  const int signD = mpz_sgn(d.mantissa.get());
  const int signP = mpz_sgn(p.get());
  if (signD != signP || signD == 0) {
    return signD - signP;
  }
  const std::int64_t leadD = d.exponent + decimalDigits(d.mantissa.get());
  const std::int64_t leadE = decimalDigits(p.get()) - decimalDigits(q.get());
  if (leadD > leadE + 2 || leadD < leadE - 2) {
    return leadD > leadE ? signD : -signD;
  }
  BigInteger left = d.mantissa;
  BigInteger right;
  mpz_set(right.get(), p.get());
  mpz_mul(left.get(), left.get(), q.get());
  scaleByTen(d.exponent >= 0 ? left.get() : right.get(),
             static_cast<std::uint64_t>(std::abs(d.exponent)));
  return mpz_cmp(left.get(), right.get());
}

int compareFinite(State& state, ALGEB a, ALGEB b) {
  if (isImmediate(a) && isImmediate(b)) {
    return immediateValue(a) < immediateValue(b) ? -1 : immediateValue(a) > immediateValue(b);
  }
  if (isFloat(a) && isFloat(b)) {
    return compareDecimals(decimalOfFloat(a), decimalOfFloat(b));
  }
  if (isFloat(a)) {
    return compareWithExact(decimalOfFloat(a), b);
  }
  if (isFloat(b)) {
    return -compareWithExact(decimalOfFloat(b), a);
  }
  if (isInteger(a) && isInteger(b)) {
    return mpz_cmp(IntegerView(a).get(), IntegerView(b).get());
  }
  return sign(subtract(state, a, b));
}

}  // namespace

std::partial_ordering compare(State& state, ALGEB a, ALGEB b) {
  if (isUndefined(state, a) || isUndefined(state, b)) {
    return std::partial_ordering::unordered;
  }
  if (a == b) {
    return std::partial_ordering::equivalent;
  }
  // Distinct doubles have distinct shortest decimals, in the same order; and below
  // 2^53 an integer is the shortest decimal of its double.
  constexpr std::int64_t kExact = std::int64_t{1} << 53;
  const auto asDouble = [](ALGEB x, double& d) {
    const bool small = isImmediate(x) && std::abs(immediateValue(x)) < kExact;
    d = small ? static_cast<double>(immediateValue(x)) : isDoubleFloat(x) ? doubleOf(x) : 0.0;
    return small || isDoubleFloat(x);
  };
  double x = 0;
  double y = 0;
  if (asDouble(a, x) && asDouble(b, y)) {
    return x <=> y;
  }
  if (isSpecial(a) || isSpecial(b)) {
    return (isSpecial(a) ? doubleOf(a) : 0.0) <=> (isSpecial(b) ? doubleOf(b) : 0.0);
  }
  const int c = compareFinite(state, a, b);
  return c < 0   ? std::partial_ordering::less
         : c > 0 ? std::partial_ordering::greater
                 : std::partial_ordering::equivalent;
}

bool equal(State& state, ALGEB a, ALGEB b) {
  if (isComplex(a) || isComplex(b)) {
    return equal(state, realPart(a), realPart(b)) &&
           equal(state, imaginaryPart(a), imaginaryPart(b));
  }
  return compare(state, a, b) == std::partial_ordering::equivalent;
}

}  // namespace vexel
