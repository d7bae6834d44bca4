// The logarithm of the gamma function and its derivatives, for positive arguments.
#pragma once

#include <math.h>

#include <cmath>

namespace vexel::detail {

// lgamma without its global variable.
inline double logGamma(double x) {
  int sign = 0;
  return ::lgamma_r(x, &sign);
}

// log(x) - digamma(x) > 0 without cancellation: from x = 12 on the asymptotic series, its next term
// below 1e-17; below, the recurrence.
inline double logMinusDigamma(double x) {
  double shift = 0.0;
  double z = x;
  for (; z < 12.0; z += 1.0) {
    shift += 1.0 / z;
  }
  const double r = 1.0 / (z * z);
  const double series =
      0.5 / z + r * (1.0 / 12 - r * (1.0 / 120 - r * (1.0 / 252 - r * (1.0 / 240 - r / 132))));
  return z == x ? series : series + shift - std::log(z / x);
}

inline double digamma(double x) { return std::log(x) - logMinusDigamma(x); }

inline double trigamma(double x) {
  double sum = 0.0;
  double z = x;
  for (; z < 12.0; z += 1.0) {
    sum += 1.0 / (z * z);
  }
  const double r = 1.0 / (z * z);
  return sum + 1.0 / z + 0.5 * r +
         r / z * (1.0 / 6 - r * (1.0 / 30 - r * (1.0 / 42 - r * (1.0 / 30 - r * (5.0 / 66)))));
}

}  // namespace vexel::detail
