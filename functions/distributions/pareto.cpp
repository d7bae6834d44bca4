// The Pareto law (of the first kind).
//
// Method  Closed forms in log(x / minimum).
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         1, 2nd edition (1994), chapter 20.
// Draws   One exponential variate.
// Error   Below 0.03 of 1e-14 max(1, condition) over 480 points of all methods
//         (docs/functions/accuracy.md).
#include "functions/distributions/frame.hpp"
#include "functions/distributions/precise.hpp"
#include "vexel/distributions/elementary.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<Pareto> {
  const Pareto& law;

  double shape() const { return law.parameters_.shape; }
  double minimum() const { return law.parameters_.minimum; }
  double exponent(double x) const { return shape() * logRatio(x, minimum()); }

  Interval support() const { return {minimum(), infinity}; }
  double pdf(double x) const {
    const double tail = sf(x);
    return tail == 0.0 ? 0.0 : tail * (shape() / x);
  }
  double logpdf(double x) const { return law.logShape_ - std::log(x) - exponent(x); }
  double cdf(double x) const { return -std::expm1(-exponent(x)); }
  double sf(double x) const { return std::exp(-exponent(x)); }
  double logcdf(double x) const { return logOneMinusExp(exponent(x)); }
  double logsf(double x) const { return -exponent(x); }
  double quantile(double p) const { return scaledExp(minimum(), -std::log1p(-p) / shape()); }
  double isf(double q) const { return scaledExp(minimum(), -std::log(q) / shape()); }

  double mean() const {
    const double a = shape();
    return a > 1.0 ? minimum() * (a / (a - 1.0)) : infinity;
  }
  double var() const {
    const double a = shape();
    const double ratio = minimum() / (a - 1.0);
    return a > 2.0 ? ratio * ratio * (a / (a - 2.0)) : infinity;
  }
  double skewness() const {
    const double a = shape();
    return a > 3.0   ? 2.0 * ((a + 1.0) / (a - 3.0)) * std::sqrt((a - 2.0) / a)
           : a > 2.0 ? infinity
                     : nan;
  }
  double kurtosis() const {
    const double a = shape();
    return a > 4.0   ? 6.0 * (a * a * a + a * a - 6.0 * a - 2.0) / (a * (a - 3.0) * (a - 4.0))
           : a > 2.0 ? infinity
                     : nan;
  }
};

}  // namespace detail

Pareto::Pareto(const Parameters& parameters)
    : parameters_(parameters), logShape_(std::log(parameters.shape)) {
  detail::requirePositive(name, "shape", parameters.shape);
  detail::requirePositive(name, "minimum", parameters.minimum);
}

Pareto Pareto::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {detail::leastPositive, detail::infinity});
  data.requireSpread(name);
  const double least = data.min();
  return Pareto(1.0 / data.mean([=](double t) { return detail::logRatio(t, least); }), least);
}

VEXEL_CONTINUOUS_LAW(Pareto)

}  // namespace vexel
