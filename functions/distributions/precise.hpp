// Elementary functions that keep their digits, and logarithms of tails.
#pragma once

#include <cmath>
#include <limits>
#include <numbers>

namespace vexel::detail {

inline constexpr double logTwo = std::numbers::ln2;
inline constexpr double rootTwoPi = 2.50662827463100050242;
inline constexpr double logRootTwoPi = 0.91893853320467274178;

// log(1 - exp(-t)) for t > 0 (M. Maechler, Accurately Computing log(1 - exp(-|a|)), 2012); logT is
// log t where the caller knows it better than t, which may underflow.
inline double logOneMinusExp(double t) {
  return t < logTwo ? std::log(-std::expm1(-t)) : std::log1p(-std::exp(-t));
}
inline double logOneMinusExp(double t, double logT) {
  // (1 - exp(-t)) / t is 1 to half an ulp below 1e-16.
  return t < logTwo ? logT + (t > 1e-16 ? std::log(-std::expm1(-t) / t) : 0.0)
                    : std::log1p(-std::exp(-t));
}

// The logarithm of a tail that does not underflow, from the smaller of it and its complement.
inline double logOfTail(double tail, double complement) {
  return tail <= 0.5 ? std::log(tail) : std::log1p(-complement);
}

// scale times the power, which alone may overflow or underflow.
inline double scaledPower(double scale, double base, double exponent) {
  const double power = std::pow(base, exponent);
  if (std::isnormal(power)) {
    return scale * power;
  }
  const double root = std::pow(base, 0.5 * exponent);
  return scale * root * root;
}
// scale exp(t) likewise.
inline double scaledExp(double scale, double t) {
  const double power = std::exp(t);
  if (std::isnormal(power)) {
    return scale * power;
  }
  const double root = std::exp(0.5 * t);
  return scale * root * root;
}

// log(x / unit) for positive x, without loss near the unit.
inline double logRatio(double x, double unit) {
  if (x > 0.5 * unit && x < 2.0 * unit) {
    return std::log1p((x - unit) / unit);
  }
  const double quotient = x / unit;
  return std::isnormal(quotient) ? std::log(quotient) : std::log(x) - std::log(unit);
}

}  // namespace vexel::detail
