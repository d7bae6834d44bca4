// Decimal numbers m x 10^e with a big mantissa: the arithmetic behind software floats.
#pragma once

#include <cstdint>

#include "values/numbers.hpp"

namespace vexel {

struct Decimal {
  BigInteger mantissa;
  std::int64_t exponent = 0;
};

// A finite float, exactly.
inline Decimal decimalOfFloat(ALGEB x) {
  Decimal d;
  decimalOf(x, d.mantissa, d.exponent);
  return d;
}

// Digits of |z|; 1 for zero.
std::int64_t decimalDigits(mpz_srcptr z);

// z * 10^k, k >= 0; the caller has checked the size.
void scaleByTen(mpz_ptr z, std::uint64_t k);

// d with at most that many digits, to nearest, ties to even.  sticky tells that a non-zero part
// below the last digit has been cut off (d then has more digits than asked for).
void roundDecimal(Decimal& d, std::int64_t digits, bool sticky = false);

// The quotient of two integers, denominator positive, rounded once.
Decimal divideToDecimal(mpz_srcptr numerator, mpz_srcptr denominator, std::int64_t digits);

// a + b rounded once, whatever their exponents.
Decimal addDecimals(const Decimal& a, const Decimal& b, std::int64_t digits);

// Order of two decimals, exactly: negative, zero, positive.
int compareDecimals(const Decimal& a, const Decimal& b);

}  // namespace vexel
