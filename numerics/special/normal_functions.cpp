// The standard normal tail and quantile.

#include "numerics/special/normal_functions.hpp"

#include <cmath>
#include <limits>

#include "kernels/normal.hpp"

namespace nag2 {

double normalLower(double x) {
  constexpr double kRootHalf = 0.70710678118654752440;
  constexpr double kRootHalfRest = -4.8336466567264567e-17;  // of the root of 1/2
  const double t = -x * kRootHalf;
  if (!(t > 1.0) || t > 30.0) {
    return 0.5 * std::erfc(t);
  }
  // What the product's rounding takes from t, times the slope of log erfc there.
  const double rest = std::fma(-x, kRootHalf, -t) - x * kRootHalfRest;
  return 0.5 * std::erfc(t) * (1.0 - 2.0 * t * rest);
}

double normalLower(long double x) {
  const auto nearest = static_cast<double>(x);
  const auto rest = static_cast<double>(x - nearest);
  const double p = normalLower(nearest);
  return nearest < -1.0 && std::isfinite(rest) ? p * (1.0 - nearest * rest) : p;
}

double normalInverse(double p) {
  if (p <= 0.0 || p >= 1.0) {
    return p <= 0.0 ? -std::numeric_limits<double>::infinity()
                    : std::numeric_limits<double>::infinity();
  }
  return vexel::kernels::normalQuantile(p);
}

}  // namespace nag2
