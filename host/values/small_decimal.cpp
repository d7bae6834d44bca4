// Decimal arithmetic in 128 bits.
//
// Sizes: mantissas of operands are below 10^18 and at most 18 digits are kept, so a product is
// below 10^36; a term of a sum is scaled by at most 10^18, to below 10^36; a dividend has two
// digits more than the divisor and the digits kept together, 38 at most; a power is carried with 36
// digits, which are cut off by 19 at most and multiplied by 18.  All are below 2^127 = 1.7e38.

#include "values/small_decimal.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "values/numbers.hpp"

namespace vexel {

namespace {

constexpr int kLargestPower = 38;  // 10^38 is the last power of ten below 2^127

constexpr std::array<Int128, kLargestPower + 1> kPowers = [] {
  std::array<Int128, kLargestPower + 1> p{};
  p[0] = 1;
  for (std::size_t i = 1; i < p.size(); ++i) {
    p[i] = p[i - 1] * 10;
  }
  return p;
}();

Int128 power(std::int64_t k) { return kPowers[static_cast<std::size_t>(k)]; }

// 0 for zero.
int digitsOf(Int128 magnitude) {
  const auto high = static_cast<std::uint64_t>(magnitude >> 64);
  const auto low = static_cast<std::uint64_t>(magnitude);
  const int bits = high != 0 ? 128 - std::countl_zero(high) : 64 - std::countl_zero(low);
  const int n = bits * 1233 >> 12;  // log10(2) = 1233/4096 nearly: right or one too few
  return n + (magnitude >= power(n) ? 1 : 0);
}

// Quotient and remainder by a positive divisor, in 64 bits where they fit: much faster.
Int128 divideBy(Int128 n, Int128 d, Int128& rest) {
  if (n >= 0 && n <= INT64_MAX && d <= INT64_MAX) {
    rest = static_cast<std::int64_t>(n) % static_cast<std::int64_t>(d);
    return static_cast<std::int64_t>(n) / static_cast<std::int64_t>(d);
  }
  const Int128 q = n / d;
  rest = n - q * d;
  return q;
}

// m x 10^e rounded to nearest, ties to even; sticky: a non-zero part below the last digit has been
// cut off, so that what looks like a tie lies above it.  A carry into a new digit leaves 10^digits,
// which is one digit more and right: its value is that of 1 with a higher exponent.
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

// Powers of ten that doubles hold exactly: 5^22 is the last below 2^53.
constexpr std::array<double, 23> kExactPowers = [] {
  std::array<double, 23> p{};
  p[0] = 1;
  for (std::size_t i = 1; i < p.size(); ++i) {
    p[i] = p[i - 1] * 10;
  }
  return p;
}();

// The decimal of up to 15 digits that reads back to a moderate d, if there is one: no two of them
// share a double, so it is the shortest.
bool fifteenDigits(double d, SmallDecimal& result) {
  const double magnitude = std::fabs(d);
  if (!(magnitude > 1e-7 && magnitude < 1e22)) {
    return false;
  }
  int places = 14 - (std::ilogb(magnitude) * 1233 >> 12);
  constexpr double kMost = 1e15;
  auto scaled = [&] {
    return places >= 0 ? magnitude * kExactPowers[static_cast<std::size_t>(places)]
                       : magnitude / kExactPowers[static_cast<std::size_t>(-places)];
  };
  double m = std::nearbyint(scaled());
  if (m >= kMost) {
    --places;
    m = std::nearbyint(scaled());
  }
  // m is exact, and so is the power: the one operation rounds as reading the text would.
  const double back = places >= 0 ? m / kExactPowers[static_cast<std::size_t>(places)]
                                  : m * kExactPowers[static_cast<std::size_t>(-places)];
  if (back != magnitude || m >= kMost) {
    return false;
  }
  auto mantissa = static_cast<std::int64_t>(m);
  int exponent = -places;
  for (; mantissa % 100'000 == 0; mantissa /= 100'000) {
    exponent += 5;
  }
  for (; mantissa % 10 == 0; mantissa /= 10) {
    ++exponent;
  }
  result = {std::signbit(d) ? -mantissa : mantissa, exponent};
  return true;
}

}  // namespace

// The quick way serves most data, which was typed with few digits; the library's shortest text the
// rest, of up to 17.
SmallDecimal shortestDecimal(double d) {
  if (SmallDecimal few; fifteenDigits(d, few)) {
    return few;
  }
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

// The three shapes that a number of few digits has: an integer within its handle, a double, a
// software float with its mantissa within a handle.
bool smallDecimalOf(ALGEB x, SmallDecimal& result) {
  if (isImmediate(x)) {
    const std::int64_t i = immediateValue(x);
    result = {i, 0};
    return std::abs(i) < power(kSmallDigits);
  }
  if (!isFloat(x)) {
    return false;
  }
  if (isDoubleObject(x)) {
    if (!std::isfinite(doubleOf(x))) {
      return false;
    }
    result = shortestDecimal(doubleOf(x));
    return true;
  }
  const DecimalObject& decimal = decimalObject(x);
  if (!isImmediate(decimal.mantissa)) {
    return false;
  }
  result = {immediateValue(decimal.mantissa), decimal.exponent};
  return std::abs(immediateValue(decimal.mantissa)) < power(kSmallDigits);
}

SmallDecimal roundSmall(const SmallDecimal& a, int digits) {
  return rounded(a.mantissa, a.exponent, digits, false);
}

// The higher one is scaled to the lower one's exponent; how far that may go, the head of this file
// says.
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

bool powerSmall(const SmallDecimal& a, int n, int digits, SmallDecimal& result) {
  constexpr int kCarried = 36;
  const bool negative = a.mantissa < 0 && n % 2 != 0;
  const Int128 m = a.mantissa < 0 ? -a.mantissa : a.mantissa;
  const int mDigits = digitsOf(m);
  // |a|^i lies from p to p + error, in units of 10^exponent; error 0 is the power itself.
  Int128 p = m;
  Int128 error = 0;
  std::int64_t exponent = a.exponent;
  for (int i = 1; i < n; ++i) {
    // p * m with as many low digits cut off p beforehand as the product has too many; what they
    // bring is added, and less than one unit of the last place is lost.
    const int cut = std::max(0, digitsOf(p) + mDigits - kCarried);
    Int128 low = 0;
    Int128 rest = 0;
    p = divideBy(p, power(cut), low) * m;
    p += divideBy(low * m, power(cut), rest);
    error = (error * m + power(cut) - 1) / power(cut) + (rest != 0 ? 1 : 0);
    exponent += a.exponent + cut;
  }
  result = rounded(p, exponent, digits, error != 0);
  // Where both ends of the interval round to one number, that is the power rounded.
  if (error != 0) {
    const SmallDecimal high = rounded(p + error, exponent, digits, false);
    if (high.mantissa != result.mantissa || high.exponent != result.exponent) {
      return false;
    }
  }
  result.mantissa = negative ? -result.mantissa : result.mantissa;
  return true;
}

// In magnitudes: the remainder's sign is of no account, only whether there is one.
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
