// The log-normal law.
//
// Method  The normal law of the logarithm.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         1, 2nd edition (1994), chapter 14.
// Draws   One normal variate.
// Error   Below 0.03 of 1e-14 max(1, condition) over 389 points of all methods
//         (docs/functions/accuracy.md).
#include "functions/distributions/frame.hpp"
#include "functions/distributions/normal_tails.hpp"
#include "functions/distributions/precise.hpp"
#include "numerics/special/normal_functions.hpp"
#include "vexel/distributions/normal.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<LogNormal> {
  const LogNormal& law;

  double z(double x) const { return (std::log(x) - law.parameters_.mu) / law.parameters_.sigma; }
  double x(double z) const { return std::exp(law.parameters_.mu + law.parameters_.sigma * z); }

  Interval support() const { return {0.0, infinity}; }
  double pdf(double t) const {
    if (t == 0.0) {
      return 0.0;
    }
    const double at = z(t);
    // Where the exponential alone would underflow, the quotient need not.
    return std::fabs(at) < 37.0 ? std::exp(-0.5 * at * at) / (t * law.parameters_.sigma * rootTwoPi)
                                : std::exp(logpdf(t));
  }
  double logpdf(double t) const {
    if (t == 0.0) {
      return -infinity;
    }
    const double at = z(t);
    return -0.5 * at * at - std::log(t) - law.logScale_ - logRootTwoPi;
  }
  double cdf(double t) const { return nag2::normalLower(z(t)); }
  double sf(double t) const { return nag2::normalLower(-z(t)); }
  double logcdf(double t) const { return logNormalUpper(-z(t)); }
  double logsf(double t) const { return logNormalUpper(z(t)); }
  double quantile(double p) const { return x(nag2::normalInverse(p)); }
  double isf(double q) const { return x(-nag2::normalInverse(q)); }

  // exp(sigma^2) - 1.
  double excess() const { return std::expm1(law.parameters_.sigma * law.parameters_.sigma); }
  double mean() const {
    const auto& [mu, sigma] = law.parameters_;
    return std::exp(mu + 0.5 * sigma * sigma);
  }
  double var() const {
    const auto& [mu, sigma] = law.parameters_;
    return excess() * std::exp(2.0 * mu + sigma * sigma);
  }
  double skewness() const { return (excess() + 3.0) * std::sqrt(excess()); }
  double kurtosis() const {
    const double e = excess();
    return e * (16.0 + e * (15.0 + e * (6.0 + e)));
  }
};

}  // namespace detail

LogNormal::LogNormal(const Parameters& parameters)
    : parameters_(parameters), logScale_(std::log(parameters.sigma)) {
  detail::requireFinite(name, "mu", parameters.mu);
  detail::requirePositive(name, "sigma", parameters.sigma);
}

LogNormal LogNormal::fit(Data x, const FitOptions& options) {
  detail::Observations data =
      detail::observe(name, x, options, {detail::leastPositive, detail::infinity});
  data.requireSpread(name);
  for (double& value : data.x) {
    value = std::log(value);
  }
  const double center = data.mean();
  return LogNormal(center, data.deviation(center));
}

VEXEL_CONTINUOUS_LAW(LogNormal)

}  // namespace vexel
