// The normal law.
//
// N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume 1, 2nd
// edition (1994), chapter 13.
#include "vexel/distributions/normal.hpp"

#include "functions/distributions/location_scale.hpp"
#include "functions/distributions/normal_tails.hpp"
#include "functions/distributions/precise.hpp"
#include "numerics/normal_functions.hpp"

namespace vexel {

namespace detail {

namespace {

struct StandardNormal {
  static constexpr double mean = 0.0;
  static constexpr double var = 1.0;
  static constexpr double skewness = 0.0;
  static constexpr double kurtosis = 0.0;

  static double pdf(double z) { return std::exp(-0.5 * z * z) / rootTwoPi; }
  static double logpdf(double z) { return -0.5 * z * z - logRootTwoPi; }
  static double cdf(double z) { return nag2::normalLower(z); }
  static double sf(double z) { return nag2::normalLower(-z); }
  static double logcdf(double z) { return logNormalUpper(-z); }
  static double logsf(double z) { return logNormalUpper(z); }
  static double quantile(double p) { return nag2::normalInverse(p); }
  static double isf(double q) { return -nag2::normalInverse(q); }
};

}  // namespace

template <>
struct Formulas<Normal> : LocationScale<Normal, StandardNormal, &Normal::logScale_> {};

}  // namespace detail

Normal::Normal(const Parameters& parameters)
    : parameters_(parameters), logScale_(parameters.sd == 1.0 ? 0.0 : std::log(parameters.sd)) {
  detail::requireFinite(name, "mean", parameters.mean);
  detail::requirePositive(name, "sd", parameters.sd);
}

Normal Normal::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {-detail::infinity, detail::infinity});
  const double center = data.mean();
  return Normal(center, data.deviation(center));
}

VEXEL_CONTINUOUS_LAW(Normal)

}  // namespace vexel
