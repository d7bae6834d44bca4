// Integers: the nearest ones of other numbers, division with remainder, common divisors.

#include <cstdint>
#include <cstdlib>

#include "values/decimal.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

// n/d rounded; d > 0.
void divideRounded(mpz_ptr result, mpz_srcptr n, mpz_srcptr d, Rounding r) {
  switch (r) {
    case Rounding::floor:
      mpz_fdiv_q(result, n, d);
      return;
    case Rounding::ceiling:
      mpz_cdiv_q(result, n, d);
      return;
    case Rounding::truncate:
      mpz_tdiv_q(result, n, d);
      return;
    case Rounding::nearest: {
      // (2|n| + d) / 2d, with n's sign
      BigInteger twice;
      BigInteger divisor;
      mpz_abs(twice.get(), n);
      mpz_mul_2exp(twice.get(), twice.get(), 1);
      mpz_add(twice.get(), twice.get(), d);
      mpz_mul_2exp(divisor.get(), d, 1);
      const int s = mpz_sgn(n);
      mpz_fdiv_q(result, twice.get(), divisor.get());
      if (s < 0) {
        mpz_neg(result, result);
      }
      return;
    }
  }
}

}  // namespace

ALGEB toInteger(State& state, ALGEB x, Rounding r) {
  if (isInteger(x) || isSpecial(x)) {
    return x;
  }
  BigInteger n;
  BigInteger d(1);
  if (isRational(x)) {
    mpz_set(n.get(), IntegerView(operand(x, 1)).get());
    mpz_set(d.get(), IntegerView(operand(x, 2)).get());
  } else {
    std::int64_t exponent = 0;
    decimalOf(x, n, exponent);
    constexpr std::int64_t kLargest = static_cast<std::int64_t>(kMaxIntegerBits) * 3 / 10;
    if (exponent > kLargest) {
      raise(state, "integer too large");
    }
    // Far below 1/2 only the sign matters.
    const std::int64_t digits = decimalDigits(n.get());
    if (exponent < -digits - 2) {
      mpz_set_si(n.get(), mpz_sgn(n.get()));
      exponent = -2;
    }
    scaleByTen(exponent >= 0 ? n.get() : d.get(), static_cast<std::uint64_t>(std::abs(exponent)));
  }
  divideRounded(n.get(), n.get(), d.get(), r);
  return newInteger(state, n.get());
}

ALGEB integerQuotient(State& state, ALGEB a, ALGEB b) {
  if (b == immediate(0)) {
    raise(state, "division by zero");
  }
  BigInteger q;
  mpz_fdiv_q(q.get(), IntegerView(a).get(), IntegerView(b).get());
  return newInteger(state, q.get());
}

ALGEB integerRemainder(State& state, ALGEB a, ALGEB b) {
  if (b == immediate(0)) {
    raise(state, "division by zero");
  }
  BigInteger q;
  mpz_fdiv_r(q.get(), IntegerView(a).get(), IntegerView(b).get());
  return newInteger(state, q.get());
}

ALGEB gcd(State& state, ALGEB a, ALGEB b) {
  BigInteger g;
  mpz_gcd(g.get(), IntegerView(a).get(), IntegerView(b).get());
  return newInteger(state, g.get());
}

}  // namespace vexel
