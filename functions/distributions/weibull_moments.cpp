// Central moments of E^h for a standard exponential E, in units of the mean's powers.
#include "functions/distributions/weibull_moments.hpp"

#include <cmath>

namespace vexel::detail {

namespace {

// For h <= 1/2, where differences of gamma functions would cancel: the integral over y = log E of
// expm1(h y), whose density is exp(y - exp(y)), by the trapezoidal rule.  The integrand is analytic
// to a distance of pi / 2 from the axis, so that the step's error is below exp(-2 pi 1.3 / 0.2).
WeibullMoments byIntegral(double h) {
  constexpr double step = 0.2;
  constexpr int first = -210;
  constexpr int last = 27;
  double shift = 0.0;
  for (int i = first; i <= last; ++i) {
    const double y = step * i;
    shift += step * std::exp(y - std::exp(y)) * std::expm1(h * y);
  }
  WeibullMoments m{0.0, 0.0, 0.0};
  for (int i = first; i <= last; ++i) {
    const double y = step * i;
    const double d = (std::expm1(h * y) - shift) / (1.0 + shift);
    const double square = step * std::exp(y - std::exp(y)) * d * d;
    m.second += square;
    m.third += square * d;
    m.fourth += square * d * d;
  }
  return m;
}

}  // namespace

WeibullMoments weibullMoments(double h) {
  if (h <= 0.5) {
    return byIntegral(h);
  }
  const double first = std::tgamma(1.0 + h);
  const double second = std::tgamma(1.0 + 2.0 * h) / (first * first);
  const double third = std::tgamma(1.0 + 3.0 * h) / (first * first * first);
  const double fourth = std::tgamma(1.0 + 4.0 * h) / (first * first * first * first);
  return {second - 1.0, third - 3.0 * second + 2.0, fourth - 4.0 * third + 6.0 * second - 3.0};
}

}  // namespace vexel::detail
