// Rounding, division, addition and comparison of decimals.
//
// Results are correctly rounded because each operation rounds once, in roundDecimal, a number that
// is exact or has at least one digit more than are kept and a sticky rest: a flag that something
// not zero was cut off, which is all that a tie can depend on.

#include "values/decimal.hpp"

#include <algorithm>

namespace vexel {

namespace {

BigInteger powerOfTen(std::uint64_t k) {
  BigInteger p;
  mpz_ui_pow_ui(p.get(), 10, k);
  return p;
}

// The exponent of the leading digit.
std::int64_t leadingExponent(const Decimal& d) {
  return d.exponent + decimalDigits(d.mantissa.get()) - 1;
}

}  // namespace

// Of |z|; 1 for zero.  Exact, for a digit too many would make roundDecimal cut one too many.
std::int64_t decimalDigits(mpz_srcptr z) {
  // sizeinbase is exact or one too large.
  const std::size_t upper = mpz_sizeinbase(z, 10);
  if (upper == 1) {
    return 1;
  }
  // Of numbers below 2^64, which most are, without making a power of ten.
  if (mpz_size(z) == 1) {
    std::uint64_t v = mpz_getlimbn(z, 0);
    std::int64_t n = 0;
    for (; v != 0; v /= 10) {
      ++n;
    }
    return n;
  }
  const bool tooLarge = mpz_cmpabs(z, powerOfTen(upper - 1).get()) < 0;
  return static_cast<std::int64_t>(upper) - (tooLarge ? 1 : 0);
}

void scaleByTen(mpz_ptr z, std::uint64_t k) {
  if (k != 0) {
    mpz_mul(z, z, powerOfTen(k).get());
  }
}

// To nearest, ties to even, like the machine's own arithmetic.  A carry out of the leading digit
// leaves one digit more than asked for, a zero.
void roundDecimal(Decimal& d, std::int64_t digits, bool sticky) {
  const std::int64_t excess = decimalDigits(d.mantissa.get()) - digits;
  if (excess <= 0) {
    return;
  }
  const BigInteger unit = powerOfTen(static_cast<std::uint64_t>(excess));
  BigInteger rest;
  const int sign = mpz_sgn(d.mantissa.get());
  mpz_tdiv_qr(d.mantissa.get(), rest.get(), d.mantissa.get(), unit.get());
  mpz_mul_2exp(rest.get(), rest.get(), 1);
  // Twice the rest against the unit says on which side of the tie it lies.  sticky breaks a tie
  // upward, in magnitude: what was cut off before is not in the rest.
  const int half = mpz_cmpabs(rest.get(), unit.get());
  if (half > 0 || (half == 0 && (sticky || mpz_odd_p(d.mantissa.get()) != 0))) {
    sign < 0 ? mpz_sub_ui(d.mantissa.get(), d.mantissa.get(), 1)
             : mpz_add_ui(d.mantissa.get(), d.mantissa.get(), 1);
  }
  d.exponent += excess;
}

Decimal divideToDecimal(mpz_srcptr numerator, mpz_srcptr denominator, std::int64_t digits) {
  // Scaled so that the quotient has digits + 1 or digits + 2 digits.
  const std::int64_t shift =
      digits + 2 - (decimalDigits(numerator) - decimalDigits(denominator) + 1);
  BigInteger n;
  BigInteger d;
  BigInteger rest;
  mpz_set(n.get(), numerator);
  mpz_set(d.get(), denominator);
  scaleByTen(shift >= 0 ? n.get() : d.get(), static_cast<std::uint64_t>(std::abs(shift)));
  Decimal q;
  mpz_tdiv_qr(q.mantissa.get(), rest.get(), n.get(), d.get());
  q.exponent = -shift;
  roundDecimal(q, digits, mpz_sgn(rest.get()) != 0);
  return q;
}

// The exact sum is rounded unless the terms are so far apart that it would be mostly zeros:
// 1e100000 + 1 must not take 100000 digits.
Decimal addDecimals(const Decimal& x, const Decimal& y, std::int64_t digits) {
  if (mpz_sgn(x.mantissa.get()) == 0 || mpz_sgn(y.mantissa.get()) == 0) {
    Decimal sum = mpz_sgn(x.mantissa.get()) == 0 ? y : x;
    roundDecimal(sum, digits);
    return sum;
  }
  const bool swapped = leadingExponent(x) < leadingExponent(y);
  const Decimal& a = swapped ? y : x;
  const Decimal& b = swapped ? x : y;
  Decimal sum = a;
  // A small term far below the last digit kept only decides ties and cancelled borrows: it counts
  // as one unit of the lowest place of a widened large term.
  const std::int64_t widening =
      std::max<std::int64_t>(0, digits + 3 - decimalDigits(a.mantissa.get()));
  if (leadingExponent(b) < a.exponent - widening) {
    scaleByTen(sum.mantissa.get(), static_cast<std::uint64_t>(widening) + 1);
    sum.exponent -= widening + 1;
    mpz_sgn(b.mantissa.get()) > 0 ? mpz_add_ui(sum.mantissa.get(), sum.mantissa.get(), 1)
                                  : mpz_sub_ui(sum.mantissa.get(), sum.mantissa.get(), 1);
  } else if (a.exponent >= b.exponent) {
    scaleByTen(sum.mantissa.get(), static_cast<std::uint64_t>(a.exponent - b.exponent));
    sum.exponent = b.exponent;
    mpz_add(sum.mantissa.get(), sum.mantissa.get(), b.mantissa.get());
  } else {
    BigInteger scaled = b.mantissa;
    scaleByTen(scaled.get(), static_cast<std::uint64_t>(b.exponent - a.exponent));
    mpz_add(sum.mantissa.get(), sum.mantissa.get(), scaled.get());
  }
  roundDecimal(sum, digits);
  return sum;
}

int compareDecimals(const Decimal& a, const Decimal& b) {
  const int signA = mpz_sgn(a.mantissa.get());
  const int signB = mpz_sgn(b.mantissa.get());
  if (signA != signB || signA == 0) {
    return signA - signB;
  }
  const std::int64_t leadA = leadingExponent(a);
  const std::int64_t leadB = leadingExponent(b);
  // Most pairs are decided here, without a multiplication; and what is left has exponents no
  // further apart than the numbers are long, so that scaling is cheap.
  if (leadA != leadB) {
    return leadA > leadB ? signA : -signA;
  }
  BigInteger x = a.mantissa;
  BigInteger y = b.mantissa;
  const std::int64_t gap = a.exponent - b.exponent;
  scaleByTen(gap >= 0 ? x.get() : y.get(), static_cast<std::uint64_t>(std::abs(gap)));
  return mpz_cmp(x.get(), y.get());
}

}  // namespace vexel
