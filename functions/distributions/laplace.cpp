// The Laplace law.
//
// Method  Closed forms from the nearer end.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 24.
// Draws   One exponential variate, then one draw for the sign.
// Error   Below 0.03 of 1e-14 max(1, condition) over 423 points of all methods
//         (docs/functions/accuracy.md).
#include "functions/distributions/location_scale.hpp"
#include "functions/distributions/precise.hpp"
#include "vexel/distributions/elementary.hpp"

namespace vexel {

namespace detail {

namespace {

struct StandardLaplace {
  static constexpr double mean = 0.0;
  static constexpr double var = 2.0;
  static constexpr double skewness = 0.0;
  static constexpr double kurtosis = 3.0;

  static double pdf(double z) { return 0.5 * std::exp(-std::fabs(z)); }
  static double logpdf(double z) { return -std::fabs(z) - logTwo; }
  static double cdf(double z) { return sf(-z); }
  static double sf(double z) { return z < 0.0 ? 1.0 - 0.5 * std::exp(z) : 0.5 * std::exp(-z); }
  static double logcdf(double z) { return logsf(-z); }
  static double logsf(double z) { return z < 0.0 ? std::log1p(-0.5 * std::exp(z)) : -z - logTwo; }
  static double quantile(double p) { return -isf(p); }
  static double isf(double q) { return q < 0.5 ? -std::log(2.0 * q) : std::log(2.0 * (1.0 - q)); }
};

}  // namespace

template <>
struct Formulas<Laplace> : LocationScale<Laplace, StandardLaplace, &Laplace::logScale_> {};

}  // namespace detail

Laplace::Laplace(const Parameters& parameters)
    : parameters_(parameters), logScale_(std::log(parameters.scale)) {
  detail::requireFinite(name, "location", parameters.location);
  detail::requirePositive(name, "scale", parameters.scale);
}

Laplace Laplace::fit(Data x, const FitOptions& options) {
  detail::Observations data =
      detail::observe(name, x, options, {-detail::infinity, detail::infinity});
  data.requireSpread(name);
  data.sortByValue();
  const double middle = data.median();
  return Laplace(middle, data.mean([=](double t) { return std::fabs(t - middle); }));
}

VEXEL_CONTINUOUS_LAW(Laplace)

}  // namespace vexel
