// x^(1/c) without the error that the rounding of 1/c brings for extreme x.
#pragma once

#include <cmath>

// The remainder of 1/c, which fma gives exactly, times log x is the relative error to mend.  It is
// up to |log x| / c half epsilons: 100 epsilon and more at x = 1e-300.
inline double STATS_InversePower_HW(double x, double c) {
  const double exponent = 1.0 / c;
  const double power = std::pow(x, exponent);
  if (!(x > 0.0) || !(power > 0.0) || !std::isfinite(power) || !std::isfinite(c)) {
    return power;
  }
  const double remainder = std::fma(-exponent, c, 1.0) / c;
  return power + power * (remainder * std::log(x));
}
