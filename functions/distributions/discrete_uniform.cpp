// The uniform law on whole numbers.
//
// Method  Counting.
// Source  The definition.
// Draws   One whole number below the count, without bias.
// Error   Below 0.03 of 1e-14 max(1, condition) over 360 points of all methods
//         (docs/functions/accuracy.md).
#include <numeric>

#include "functions/distributions/precise.hpp"
#include "functions/distributions/whole_numbers.hpp"
#include "vexel/distributions/discrete.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<DiscreteUniform> : WholeNumbers<DiscreteUniform> {
  double a() const { return static_cast<double>(law.parameters_.a); }
  double b() const { return static_cast<double>(law.parameters_.b); }
  double count() const { return static_cast<double>(law.parameters_.b - law.parameters_.a) + 1.0; }

  Interval support() const { return {a(), b()}; }
  double pmf(double) const { return 1.0 / count(); }
  double logpmf(double) const { return -std::log(count()); }
  double cdf(double k) const { return (k - a() + 1.0) / count(); }
  double sf(double k) const { return (b() - k) / count(); }
  double logcdf(double k) const { return logOfTail(cdf(k), sf(k)); }
  double logsf(double k) const { return logOfTail(sf(k), cdf(k)); }
  double quantile(double p) const {
    return smallestReached([&](double k) { return law.cdf(k) >= p; }, a(), b(),
                           a() + std::ceil(p * count()) - 1.0);
  }
  double isf(double q) const {
    return smallestReached([&](double k) { return law.sf(k) <= q; }, a(), b(),
                           b() - std::floor(q * count()));
  }

  double mean() const { return std::midpoint(a(), b()); }
  double var() const { return (b() - a()) * (count() + 1.0) / 12.0; }
  double skewness() const { return count() == 1.0 ? nan : 0.0; }
  double kurtosis() const {
    const double n = count();
    return n == 1.0 ? nan : -1.2 * ((n * n + 1.0) / ((n - 1.0) * (n + 1.0)));
  }
};

}  // namespace detail

DiscreteUniform::DiscreteUniform(const Parameters& parameters) : parameters_(parameters) {
  detail::requireExact(name, "a", parameters.a);
  detail::requireExact(name, "b", parameters.b);
  if (parameters.a > parameters.b) {
    detail::refuse(name, "b", "at least a", static_cast<double>(parameters.b));
  }
}

DiscreteUniform DiscreteUniform::fit(Data x, const FitOptions& options) {
  const detail::Observations data = detail::observe(name, x, options, {-0x1p53, 0x1p53}, true);
  return DiscreteUniform(static_cast<std::int64_t>(data.min()),
                         static_cast<std::int64_t>(data.max()));
}

VEXEL_DISCRETE_LAW(DiscreteUniform)

}  // namespace vexel
