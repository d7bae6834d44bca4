// The Poisson law.
//
// Method  P(X <= k) is the upper tail, at the mean, of the gamma law of shape k + 1. Quantiles are
//         searched on it.
// Source  N. L. Johnson, A. W. Kemp and S. Kotz, Univariate Discrete Distributions, 3rd edition
//         (2005), chapter 4.
// Draws   One uniform up to a mean of 100, by inversion; then pairs of uniforms until one is
//         accepted (kernels/variates/discrete.hpp).
// Error   Below 0.07 of 1e-14 max(1, condition) over 348 points of all methods
//         (docs/functions/accuracy.md).
#include "functions/distributions/precise.hpp"
#include "functions/distributions/whole_numbers.hpp"
#include "numerics/laws/gamma_law.hpp"
#include "vexel/distributions/discrete.hpp"

namespace vexel {

namespace detail {

// P(X <= k) is the upper tail, at the mean, of the gamma law of shape k + 1.
template <>
struct Formulas<Poisson> : WholeNumbers<Poisson> {
  double m() const { return law.parameters_.mean; }

  Interval support() const { return {0.0, m() == 0.0 ? 0.0 : infinity}; }
  double pmf(double k) const { return k == 0.0 ? std::exp(-m()) : nag2::GammaLaw(k).weight(m()); }
  double logpmf(double k) const { return k == 0.0 ? -m() : nag2::GammaLaw(k).logWeight(m()); }
  double cdf(double k) const { return nag2::GammaLaw(k + 1.0).upper(m()); }
  double sf(double k) const { return nag2::GammaLaw(k + 1.0).lower(m()); }
  double logcdf(double k) const { return nag2::GammaLaw(k + 1.0).logTail(m(), nag2::Tail::upper); }
  double logsf(double k) const { return nag2::GammaLaw(k + 1.0).logTail(m(), nag2::Tail::lower); }

  double mean() const { return m(); }
  double var() const { return m(); }
  double skewness() const { return m() == 0.0 ? nan : 1.0 / std::sqrt(m()); }
  double kurtosis() const { return m() == 0.0 ? nan : 1.0 / m(); }
};

}  // namespace detail

Poisson::Poisson(const Parameters& parameters) : parameters_(parameters) {
  detail::requireNotNegative(name, "mean", parameters.mean);
}

Poisson Poisson::fit(Data x, const FitOptions& options) {
  return Poisson(detail::observe(name, x, options, {0.0, detail::infinity}, true).mean());
}

VEXEL_DISCRETE_LAW(Poisson)

}  // namespace vexel
