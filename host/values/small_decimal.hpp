// Decimal arithmetic in 128 bits, for the floats that occur most: those that are doubles.
//
// Same results as decimal.hpp for up to 17 digits, several times faster; where something does not
// fit, the functions say so and the caller goes the long way.
#pragma once

#include <cstdint>

#include "memory/handle.hpp"

namespace vexel {

__extension__ using Int128 = __int128;

struct SmallDecimal {
  Int128 mantissa = 0;
  std::int64_t exponent = 0;
};

inline constexpr int kSmallDigits = 17;

// The shortest decimal that reads back to a finite double, without trailing zeros.
SmallDecimal shortestDecimal(double d);

// A finite double float or an immediate integer below 10^17; false for anything else.
bool smallDecimalOf(ALGEB x, SmallDecimal& result);

// Results rounded once to at most 17 digits, ties to even; false when operands are too far apart.
// Mantissas of operands are below 10^17.
bool addSmall(const SmallDecimal& a, const SmallDecimal& b, int digits, SmallDecimal& sum);
SmallDecimal multiplySmall(const SmallDecimal& a, const SmallDecimal& b, int digits);
SmallDecimal divideSmall(const SmallDecimal& a, const SmallDecimal& b, int digits);  // b not zero

}  // namespace vexel
