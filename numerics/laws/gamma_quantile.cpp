// Quantiles of the gamma law: a start from the leading term of either tail or from the cube root,
// then steps of third order.
//
// E. B. Wilson and M. M. Hilferty, The Distribution of Chi-Square, PNAS 17 (1931).

#include <algorithm>
#include <limits>

#include "numerics/laws/gamma_law.hpp"
#include "numerics/special/inversion.hpp"
#include "numerics/special/normal_functions.hpp"

namespace nag2 {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double leastPoint = 4e-324;

}  // namespace

double GammaLaw::start(double p, Tail which) const {
  const bool lower = which == Tail::lower;
  const double lowerP = lower ? p : 1.0 - p;
  const double upperP = lower ? 1.0 - p : p;
  if (a_ >= 0.7) {
    const double z = lower ? normalInverse(p) : -normalInverse(p);
    const double c = 1.0 / (9.0 * a_);
    const double root = 1.0 - c + z * std::sqrt(c);
    if (root > 0.4 && z * z < 10.0 * a_ && (a_ >= 1.5 || upperP > 1e-3)) {
      return a_ * (root * root * root);
    }
  }
  // The lower tail's leading term x^a / Gamma(a + 1).
  const double logGamma = a_ < 1.0 ? logGamma1p(a_) : -logWeight(a_) + a_ * std::log(a_) - a_;
  const double logX = ((lowerP > 0.0 ? std::log(lowerP) : -infinity) + logGamma) / a_;
  if (logX < 0.0 || upperP > 0.5) {
    const double x = std::exp(std::max(logX, -745.0));
    return std::max(leastPoint, x * (1.0 + std::min(1.0, x / (a_ + 1.0))));
  }
  // The upper tail's: x^(a - 1) exp(-x) / Gamma(a).
  const double y = -std::log(upperP) - logGamma + std::log(a_);
  double x = std::max(y, 0.5);
  for (int i = 0; i < 2; ++i) {
    x = std::max(0.3, y + (a_ - 1.0) * std::log(x) + std::log1p((a_ - 1.0) / (x + 1.0)));
  }
  return x;
}

double GammaLaw::quantile(double p, Tail which) const {
  if (!(p > 0.0) || p >= 1.0) {
    return std::isnan(p) ? p : (p <= 0.0) == (which == Tail::lower) ? 0.0 : infinity;
  }
  if (std::isinf(a_)) {
    return infinity;
  }
  const double from = start(p, which);
  // The equation of the smaller tail.
  if (p > 0.5) {
    p = 1.0 - p;
    which = which == Tail::lower ? Tail::upper : Tail::lower;
  }
  const double sign = which == Tail::lower ? 1.0 : -1.0;
  const auto at = [&](double x) {
    const double w = weight(x);
    double t = 0.0;
    if (uniform(x)) {
      t = uniformTail(x, which);
    } else if (a_ < 1.0 && x < 1.5 && which == Tail::upper) {
      t = smallUpper(x);
    } else if (w == 0.0) {
      t = (x < a_) == (which == Tail::lower) ? 0.0 : 1.0;
    } else {
      const Part part = direct(x);
      t = w * part.factor;
      t = part.which == which ? t : 1.0 - t;
    }
    return TailSlope{logQuotient(t, p), sign * a_ * w / t, a_ - x};
  };
  return invertTail(at, which == Tail::lower, from, 0.0, infinity);
}

}  // namespace nag2
