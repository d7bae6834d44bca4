// The geometric law of the failures before the first success.
//
// Method  Closed forms in log(1 - p); quantiles by a search that begins at the quotient of
//         logarithms.
// Source  N. L. Johnson, A. W. Kemp and S. Kotz, Univariate Discrete Distributions, 3rd edition
//         (2005), chapter 5.
// Draws   The whole part of one exponential variate.
// Error   Below 0.02 of 1e-14 max(1, condition) over 360 points of all methods
//         (docs/functions/accuracy.md).
#include "functions/distributions/precise.hpp"
#include "functions/distributions/whole_numbers.hpp"
#include "vexel/distributions/discrete.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<Geometric> : WholeNumbers<Geometric> {
  double p() const { return law.parameters_.p; }
  double logFail() const { return law.logFail_; }

  Interval support() const { return {0.0, p() == 1.0 ? 0.0 : infinity}; }
  double pmf(double k) const { return k == 0.0 ? p() : p() * std::exp(k * logFail()); }
  double logpmf(double k) const { return k == 0.0 ? law.logP_ : law.logP_ + k * logFail(); }
  double cdf(double k) const { return -std::expm1((k + 1.0) * logFail()); }
  double sf(double k) const { return std::exp((k + 1.0) * logFail()); }
  double logcdf(double k) const { return logOneMinusExp(-(k + 1.0) * logFail()); }
  double logsf(double k) const { return (k + 1.0) * logFail(); }
  double quantile(double u) const {
    return smallestReached([&](double k) { return law.cdf(k) >= u; }, 0.0, support().high,
                           std::ceil(std::log1p(-u) / logFail()) - 1.0);
  }
  double isf(double u) const {
    return smallestReached([&](double k) { return law.sf(k) <= u; }, 0.0, support().high,
                           std::ceil(std::log(u) / logFail()) - 1.0);
  }

  double mean() const { return (1.0 - p()) / p(); }
  double var() const { return (1.0 - p()) / p() / p(); }
  double skewness() const { return p() == 1.0 ? nan : (2.0 - p()) / std::sqrt(1.0 - p()); }
  double kurtosis() const { return p() == 1.0 ? nan : 6.0 + p() * (p() / (1.0 - p())); }
};

}  // namespace detail

Geometric::Geometric(const Parameters& parameters)
    : parameters_(parameters), logP_(std::log(parameters.p)), logFail_(std::log1p(-parameters.p)) {
  if (!(parameters.p > 0.0 && parameters.p <= 1.0)) {
    detail::refuse(name, "p", "in (0, 1]", parameters.p);
  }
}

Geometric Geometric::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {0.0, detail::infinity}, true);
  return Geometric(1.0 / (1.0 + data.mean()));
}

VEXEL_DISCRETE_LAW(Geometric)

}  // namespace vexel
