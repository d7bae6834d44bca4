// Decimal arithmetic in 128 bits.
//
// Sizes: mantissas of operands are below 10^17 and at most 17 digits are kept, so a product is
// below 10^34; a term of a sum is scaled by at most 10^19, to below 10^36; a dividend has two
// digits more than the divisor and the digits kept together, 36 at most.  All are below 2^127
// = 1.7e38.

#include "values/small_decimal.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "values/numbers.hpp"

namespace vexel {

namespace {

constexpr int kLargestPower = 38;

constexpr std::array<Int128, kLargestPower + 1> kPowers = [] {
  std::array<Int128, kLargestPower + 1> p{};
  p[0] = 1;
  for (std::size_t i = 1; i < p.size(); ++i) {
    p[i] = p[i - 1] * 10;
  }
  return p;
}();

Int128 power(std::int64_t k) { return kPowers[static_cast<std::size_t>(k)]; }

int digitsOf(Int128 magnitude) {
  int n = 0;
  while (n < kLargestPower && magnitude >= power(n)) {
    ++n;
  }
  return n;
}

// Quotient and remainder by a positive divisor, in 64 bits where they fit: much faster.
Int128 divideBy(Int128 n, Int128 d, Int128& rest) {
  if (n >= 0 && n <= INT64_MAX && d <= INT64_MAX) {
    rest = static_cast<std::int64_t>(n) % static_cast<std::int64_t>(d);
    return static_cast<std::int64_t>(n) / static_cast<std::int64_t>(d);
  }
  rest = n % d;
  return n / d;
}

// m x 10^e rounded; sticky: a non-zero part below the last digit has been cut off.
SmallDecimal rounded(Int128 m, std::int64_t e, int digits, bool sticky) {
  const bool negative = m < 0;
  Int128 magnitude = negative ? -m : m;
  const int excess = digitsOf(magnitude) - digits;
  if (excess > 0) {
    Int128 rest = 0;
    magnitude = divideBy(magnitude, power(excess), rest);
    const Int128 half = power(excess) / 2;
    if (rest > half || (rest == half && (sticky || (magnitude & 1) != 0))) {
      ++magnitude;
    }
    e += excess;
  }
  return {negative ? -magnitude : magnitude, e};
}

}  // namespace

SmallDecimal shortestDecimal(double d) {
  char buffer[32];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, d, std::chars_format::scientific);
  std::int64_t mantissa = 0;
  int fraction = 0;
  const char* p = buffer + (std::signbit(d) ? 1 : 0);
  for (bool afterPoint = false; *p != 'e'; ++p) {
    if (*p == '.') {
      afterPoint = true;
    } else {
      mantissa = 10 * mantissa + (*p - '0');
      fraction += afterPoint ? 1 : 0;
    }
  }
  int exponent = 0;
  std::from_chars(p + (p[1] == '+' ? 2 : 1), end.ptr, exponent);
  exponent -= fraction;
  while (mantissa != 0 && mantissa % 10 == 0) {
    mantissa /= 10;
    ++exponent;
  }
  return {std::signbit(d) ? -mantissa : mantissa, exponent};
}

bool smallDecimalOf(ALGEB x, SmallDecimal& result) {
  if (isImmediate(x)) {
    const std::int64_t i = immediateValue(x);
    result = {i, 0};
    return std::abs(i) < power(kSmallDigits);
  }
  if (!isDoubleFloat(x) || !std::isfinite(doubleOf(x))) {
    return false;
  }
  result = shortestDecimal(doubleOf(x));
  return true;
}

bool addSmall(const SmallDecimal& a, const SmallDecimal& b, int digits, SmallDecimal& sum) {
  const bool aHigher = a.exponent >= b.exponent;
  const SmallDecimal& high = aHigher ? a : b;
  const SmallDecimal& low = aHigher ? b : a;
  const std::int64_t gap = high.exponent - low.exponent;
  if (gap > kLargestPower - kSmallDigits - 2) {
    return false;
  }
  sum = rounded(high.mantissa * power(gap) + low.mantissa, low.exponent, digits, false);
  return true;
}

SmallDecimal multiplySmall(const SmallDecimal& a, const SmallDecimal& b, int digits) {
  return rounded(a.mantissa * b.mantissa, a.exponent + b.exponent, digits, false);
}

SmallDecimal divideSmall(const SmallDecimal& a, const SmallDecimal& b, int digits) {
  const Int128 n = a.mantissa < 0 ? -a.mantissa : a.mantissa;
  const Int128 d = b.mantissa < 0 ? -b.mantissa : b.mantissa;
  // Scaled so that the quotient has at least two digits more than are kept.
  const int scale = std::max(0, digits + 2 + digitsOf(d) - digitsOf(n));
  Int128 rest = 0;
  const Int128 q = divideBy(n * power(scale), d, rest);
  const bool negative = (a.mantissa < 0) != (b.mantissa < 0);
  return rounded(negative ? -q : q, a.exponent - b.exponent - scale, digits, rest != 0);
}

}  // namespace vexel
