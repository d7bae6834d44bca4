// The Bernoulli law.
//
// Method  The two probabilities themselves.
// Source  The definition.
// Draws   One, below p 2^64 or not.
// Error   Below 0.02 of 1e-14 max(1, condition) over 276 points of all methods
//         (docs/functions/accuracy.md).
#include "functions/distributions/whole_numbers.hpp"
#include "vexel/distributions/discrete.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<Bernoulli> : WholeNumbers<Bernoulli> {
  double p() const { return law.parameters_.p; }

  // Where one value has no probability, the other one is the support.
  Interval support() const { return {p() == 1.0 ? 1.0 : 0.0, p() == 0.0 ? 0.0 : 1.0}; }
  double pmf(double k) const { return k == 0.0 ? 1.0 - p() : p(); }
  double logpmf(double k) const { return k == 0.0 ? std::log1p(-p()) : std::log(p()); }
  // The only place between the ends is 0.
  double cdf(double) const { return 1.0 - p(); }
  double sf(double) const { return p(); }
  double logcdf(double) const { return std::log1p(-p()); }
  double logsf(double) const { return std::log(p()); }
  double quantile(double u) const { return law.cdf(0.0) >= u ? 0.0 : 1.0; }
  double isf(double u) const { return law.sf(0.0) <= u ? 0.0 : 1.0; }

  double mean() const { return p(); }
  double var() const { return p() * (1.0 - p()); }
  double skewness() const { return var() == 0.0 ? nan : (1.0 - 2.0 * p()) / std::sqrt(var()); }
  double kurtosis() const { return var() == 0.0 ? nan : 1.0 / var() - 6.0; }
};

}  // namespace detail

Bernoulli::Bernoulli(const Parameters& parameters) : parameters_(parameters) {
  detail::requireProbability(name, "p", parameters.p);
}

Bernoulli Bernoulli::fit(Data x, const FitOptions& options) {
  return Bernoulli(detail::observe(name, x, options, {0.0, 1.0}, true).mean());
}

VEXEL_DISCRETE_LAW(Bernoulli)

}  // namespace vexel
