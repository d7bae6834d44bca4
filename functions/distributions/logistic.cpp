// The logistic law.
//
// Method  Closed forms. Fits solve the likelihood's equations.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 23.
// Draws   Two exponential variates.
// Error   Below 0.03 of 1e-14 max(1, condition) over 432 points of all methods
//         (docs/functions/accuracy.md).
#include <numbers>

#include "functions/distributions/location_scale.hpp"
#include "functions/distributions/maximize.hpp"
#include "vexel/distributions/elementary.hpp"

namespace vexel {

namespace detail {

namespace {

struct StandardLogistic {
  static constexpr double mean = 0.0;
  static constexpr double var = std::numbers::pi * std::numbers::pi / 3.0;
  static constexpr double skewness = 0.0;
  static constexpr double kurtosis = 1.2;

  static double pdf(double z) {
    const double e = std::exp(-std::fabs(z));
    return e / ((1.0 + e) * (1.0 + e));
  }
  static double logpdf(double z) {
    return -std::fabs(z) - 2.0 * std::log1p(std::exp(-std::fabs(z)));
  }
  static double cdf(double z) { return sf(-z); }
  static double sf(double z) {
    const double e = std::exp(-std::fabs(z));
    return (z < 0.0 ? 1.0 : e) / (1.0 + e);
  }
  static double logcdf(double z) { return logsf(-z); }
  static double logsf(double z) { return std::fmin(-z, 0.0) - std::log1p(std::exp(-std::fabs(z))); }
  static double quantile(double p) { return -isf(p); }
  static double isf(double q) {
    return q > 0.25 && q < 0.75 ? std::log1p((1.0 - 2.0 * q) / q) : std::log1p(-q) - std::log(q);
  }
};

}  // namespace

template <>
struct Formulas<Logistic> : LocationScale<Logistic, StandardLogistic, &Logistic::logScale_> {};

}  // namespace detail

Logistic::Logistic(const Parameters& parameters)
    : parameters_(parameters), logScale_(std::log(parameters.scale)) {
  detail::requireFinite(name, "location", parameters.location);
  detail::requirePositive(name, "scale", parameters.scale);
}

Logistic Logistic::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {-detail::infinity, detail::infinity});
  const double center = data.mean();
  const double spread = std::sqrt(data.mean([=](double t) { return (t - center) * (t - center); }));
  if (!(spread > 0.0)) {
    detail::refuseEqual(name, center);
  }
  // In units of the standard deviation: location and log scale.
  const auto likelihood = [&](const std::array<double, 2>& at) {
    detail::Local<2> local;
    const double inverse = std::exp(-at[1]);
    detail::addUp(data, local, [&](double value, auto& gradient, auto& hessian) {
      const double z = ((value - center) / spread - at[0]) * inverse;
      const double t = std::tanh(0.5 * z);      // -(log density)'
      const double bend = 0.5 * (1.0 - t * t);  // -(log density)''
      gradient = {t * inverse, z * t - 1.0};
      hessian = {-bend * inverse * inverse, -(t + z * bend) * inverse, -z * (t + z * bend)};
      return detail::StandardLogistic::logpdf(z) - at[1];
    });
    return local;
  };
  const auto best = detail::maximize<2>(name, likelihood, {0.0, -0.6});
  return Logistic(center + spread * best[0], spread * std::exp(best[1]));
}

VEXEL_CONTINUOUS_LAW(Logistic)

}  // namespace vexel
