// The Maxwell law: the length of three independent normal variables.
//
// Method  X^2 / (2 scale^2) has the gamma law of shape 3/2.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         1, 2nd edition (1994), chapter 18.
// Draws   One normal variate, then one exponential.
// Error   Below 0.05 of 1e-14 max(1, condition) over 414 points of all methods
//         (docs/functions/accuracy.md).
#include <numbers>

#include "functions/distributions/frame.hpp"
#include "functions/distributions/precise.hpp"
#include "numerics/laws/gamma_law.hpp"
#include "vexel/distributions/normal.hpp"

namespace vexel {

namespace detail {

// x^2 / (2 scale^2) has the gamma law of shape 3/2.
template <>
struct Formulas<Maxwell> {
  const Maxwell& law;

  double scale() const { return law.parameters_.scale; }
  double halfSquare(double x) const {
    const double t = x / scale();
    return 0.5 * t * t;
  }

  static const nag2::GammaLaw& standard() {
    static const nag2::GammaLaw law(1.5);
    return law;
  }

  Interval support() const { return {0.0, infinity}; }
  double pdf(double x) const {
    const double t = x / scale();
    const double e = std::exp(-0.5 * t * t);
    return e == 0.0 ? 0.0 : e * (t * (2.0 / rootTwoPi)) * (t / scale());
  }
  double logpdf(double x) const {
    const double h = halfSquare(x);
    return x == 0.0 || std::isinf(h)
               ? -infinity
               : 2.0 * logRatio(x, scale()) - h - law.logScale_ + (logTwo - logRootTwoPi);
  }
  double cdf(double x) const { return standard().lower(halfSquare(x)); }
  double sf(double x) const { return standard().upper(halfSquare(x)); }
  double logcdf(double x) const {
    const double h = halfSquare(x);
    // t^3 sqrt(2 / pi) / 3 (1 - 3 t^2 / 10 + ...).
    return h < 1e-17 ? 3.0 * logRatio(x, scale()) - std::log(1.5 * rootTwoPi)
                     : standard().logTail(h, nag2::Tail::lower);
  }
  double logsf(double x) const { return standard().logTail(halfSquare(x), nag2::Tail::upper); }
  double quantile(double p) const {
    return scale() * std::sqrt(2.0 * standard().quantile(p, nag2::Tail::lower));
  }
  double isf(double q) const {
    return scale() * std::sqrt(2.0 * standard().quantile(q, nag2::Tail::upper));
  }

  double mean() const { return scale() * (4.0 / rootTwoPi); }
  double var() const { return scale() * scale() * (3.0 - 8.0 / std::numbers::pi); }
  // 2 sqrt(2) (16 - 5 pi) / (3 pi - 8)^(3/2).
  double skewness() const { return 0.485692828049592126; }
  // 4 (40 pi - 3 pi^2 - 96) / (3 pi - 8)^2.
  double kurtosis() const { return 0.108163842816288240; }
};

}  // namespace detail

Maxwell::Maxwell(const Parameters& parameters)
    : parameters_(parameters), logScale_(std::log(parameters.scale)) {
  detail::requirePositive(name, "scale", parameters.scale);
}

Maxwell Maxwell::fit(Data x, const FitOptions& options) {
  const detail::Observations data = detail::observe(name, x, options, {0.0, detail::infinity});
  return Maxwell(data.deviation(0.0) / std::numbers::sqrt3);
}

VEXEL_CONTINUOUS_LAW(Maxwell)

}  // namespace vexel
