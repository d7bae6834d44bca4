// What the incomplete gamma and beta functions share: continued fractions and the uniform
// expansion.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "numerics/special/normal_functions.hpp"

namespace nag2 {

inline constexpr double epsilon = std::numeric_limits<double>::epsilon();
inline constexpr double nan = std::numeric_limits<double>::quiet_NaN();
// Enough for every finite argument that the branches let through; a guard, not a working limit.
inline constexpr int maxTerms = 200000;

// The value of a continued fraction b0 + a1 / (b1 + a2 / (b2 + ...)) by the recurrence of its
// convergents, which needs no division a step; part(n, &a, &b) fills the n-th pair.  A NaN where it
// has not converged.
template <typename Part>
double continuedFraction(double b0, Part part) {
  double top = b0;
  double lastTop = 1.0;
  double bottom = 1.0;
  double lastBottom = 0.0;
  for (int n = 1; n < maxTerms; ++n) {
    double a = 0.0;
    double b = 0.0;
    part(static_cast<double>(n), &a, &b);
    const double nextTop = b * top + a * lastTop;
    const double nextBottom = b * bottom + a * lastBottom;
    lastTop = top;
    lastBottom = bottom;
    top = nextTop;
    bottom = nextBottom;
    const double cross = top * lastBottom;
    if (std::fabs(cross - lastTop * bottom) <= epsilon * std::fabs(cross)) {
      return top / bottom;
    }
    const double size = std::max(std::fabs(top), std::fabs(bottom));
    if (!std::isfinite(cross)) {
      break;
    }
    if (size > 1e100 || size < 1e-100) {
      const double scale = 1.0 / size;
      if (!std::isfinite(scale)) {
        return nan;
      }
      top *= scale;
      bottom *= scale;
      lastTop *= scale;
      lastBottom *= scale;
    }
  }
  return nan;
}

struct Tails {
  double lower;
  double upper;
};

// From this gamma shape, and this smaller one of the beta parameters, two terms of the uniform
// expansion are enough: what they leave out is less than a change of x by 2e-15 of itself makes.
inline constexpr double hugeShape = 1e6;
inline constexpr double hugeParameter = 1e7;

// Tails at u standard deviations above the mean; exponent is the deviance there, half the square of
// the signed root z, and skew is what 1/z - 1/u goes to at the mean:
// Phi(z) + phi(z) (1/z - 1/u).
inline Tails uniformTails(long double u, long double exponent, long double skew) {
  constexpr long double peakOfNormal = 0.39894228040143267794L;
  const long double z = std::copysign(std::sqrt(2.0L * exponent), u);
  // Nearer to the mean the difference would lose its digits.
  const long double excess = std::fabs(z) > 1e-6L ? 1.0L / z - 1.0L / u : skew;
  const auto correction = static_cast<double>(peakOfNormal * std::exp(-exponent) * excess);
  return {std::min(std::max(0.0, normalLower(z) + correction), 1.0),
          std::min(std::max(0.0, normalLower(-z) - correction), 1.0)};
}

}  // namespace nag2
