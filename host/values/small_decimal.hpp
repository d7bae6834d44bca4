// Decimal arithmetic in 128 bits, for the floats that occur most: those of up to 18 digits, which
// the doubles are among.
//
// Same results as decimal.hpp for up to 18 digits, several times faster; where something does not
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

inline constexpr int kSmallDigits = 18;

// The shortest decimal that reads back to a finite double, without trailing zeros.
SmallDecimal shortestDecimal(double d);

// A finite float or an immediate integer whose mantissa is below 10^18; false for anything else.
bool smallDecimalOf(ALGEB x, SmallDecimal& result);

// Results rounded once to at most 18 digits, ties to even; false when operands are too far apart.
// Mantissas of operands are below 10^18.
SmallDecimal roundSmall(const SmallDecimal& a, int digits);
bool addSmall(const SmallDecimal& a, const SmallDecimal& b, int digits, SmallDecimal& sum);
SmallDecimal multiplySmall(const SmallDecimal& a, const SmallDecimal& b, int digits);
inline constexpr int kMostSmallPower = 16;
// a^n for n from 1 to kMostSmallPower; false in the rare cases where the digits kept here do not
// settle how to round.
bool powerSmall(const SmallDecimal& a, int n, int digits, SmallDecimal& power);
SmallDecimal divideSmall(const SmallDecimal& a, const SmallDecimal& b, int digits);  // b not zero

}  // namespace vexel
