// Laws of whole numbers.
#pragma once

#include <cmath>

#include "functions/distributions/frame.hpp"
#include "numerics/special/normal_functions.hpp"

namespace vexel::detail {

// The smallest whole number in [low, high] that is reached, high if none below it is; reached(k) is
// false up to some number and true from there on.  Steps that double from the start, then halving.
template <typename Reached>
double smallestReached(Reached reached, double low, double high, double start) {
  double k = std::isnan(start) ? low : std::fmin(std::fmax(std::floor(start), low), high);
  double below = low - 1.0;  // not reached
  double above = high;       // reached
  double step = std::fmax(1.0, std::ldexp(std::fabs(k), -53));
  if (std::isinf(k)) {
    k = low;
  }
  if (reached(k)) {
    above = k;
    while (above > low) {
      k = std::fmax(above - step, low);
      if (!reached(k)) {
        below = k;
        break;
      }
      above = k;
      step *= 2.0;
    }
  } else {
    below = k;
    while (below + step < high) {
      k = below + step;
      if (reached(k)) {
        above = k;
        break;
      }
      below = k;
      step *= 2.0;
    }
  }
  for (;;) {
    const double middle = std::floor(below + 0.5 * (above - below));
    if (!(middle > below && middle < above)) {
      return above;
    }
    (reached(middle) ? above : below) = middle;
  }
}

// The frame's view of the support, and quantiles by search from a start.
template <typename L>
struct WholeNumbers {
  const L& law;

  static double place(double x) { return std::floor(x); }
  bool holds(double k) const { return k == std::floor(k); }

  double quantile(double p) const {
    const Interval ends = law.support();
    return smallestReached([&](double k) { return law.cdf(k) >= p; }, ends.low, ends.high,
                           start(nag2::normalInverse(p)));
  }
  double isf(double q) const {
    const Interval ends = law.support();
    return smallestReached([&](double k) { return law.sf(k) <= q; }, ends.low, ends.high,
                           start(-nag2::normalInverse(q)));
  }

 private:
  // E. A. Cornish and R. A. Fisher, Moments and Cumulants in the Specification of Distributions
  // (1938), to the term of the skewness.
  double start(double z) const {
    const double skewness = law.skewness();
    return law.mean() + law.std() * (z + skewness * (z * z - 1.0) / 6.0) - 0.5;
  }
};

}  // namespace vexel::detail
