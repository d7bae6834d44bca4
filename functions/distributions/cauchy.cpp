// The Cauchy law.
//
// Method  Closed forms: tails are angles, quantiles cotangents from the nearer of the ends and the
//         middle. Fits solve the likelihood's equations.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         1, 2nd edition (1994), chapter 16.
// Draws   One uniform for the angle, one draw for the sign.
// Error   Below 0.04 of 1e-14 max(1, condition) over 480 points of all methods
//         (docs/functions/accuracy.md).
#include <numbers>

#include "functions/data/text.hpp"
#include "functions/distributions/location_scale.hpp"
#include "functions/distributions/maximize.hpp"
#include "functions/distributions/precise.hpp"
#include "vexel/distributions/elementary.hpp"

namespace vexel {

namespace detail {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double logPi = 1.14472988584940017414;

struct StandardCauchy {
  static constexpr double mean = nan;
  static constexpr double var = nan;
  static constexpr double skewness = nan;
  static constexpr double kurtosis = nan;

  static double pdf(double z) { return 1.0 / (pi * (1.0 + z * z)); }
  static double logpdf(double z) {
    return -logPi - (std::fabs(z) < 1e150 ? std::log1p(z * z) : 2.0 * std::log(std::fabs(z)));
  }
  static double cdf(double z) { return sf(-z); }
  // The angle at which the point 1 of the plane's horizontal axis sees what lies above z.
  static double sf(double z) { return std::atan2(1.0, z) / pi; }
  static double logcdf(double z) { return logsf(-z); }
  static double logsf(double z) { return logOfTail(sf(z), sf(-z)); }
  static double quantile(double p) { return -isf(p); }
  static double isf(double q) {
    if (std::fabs(q - 0.5) < 0.25) {
      return std::tan(pi * (0.5 - q));
    }
    return q < 0.5 ? 1.0 / std::tan(pi * q) : -1.0 / std::tan(pi * (1.0 - q));
  }
};

}  // namespace

template <>
struct Formulas<Cauchy> : LocationScale<Cauchy, StandardCauchy, &Cauchy::logScale_> {
  using Base = LocationScale<Cauchy, StandardCauchy, &Cauchy::logScale_>;
  // Beyond it 1 + z^2 is z^2, which may overflow.
  static constexpr double far = 1e150;

  double distance(double x) const { return x - law.parameters().location; }
  double pdf(double x) const {
    const double d = distance(x);
    return std::fabs(z(x)) < far ? Base::pdf(x) : law.parameters().scale / d / (pi * d);
  }
  double logpdf(double x) const {
    return std::fabs(z(x)) < far ? Base::logpdf(x)
                                 : law.logScale_ - logPi - 2.0 * std::log(std::fabs(distance(x)));
  }
  double logcdf(double x) const { return z(x) > -far ? Base::logcdf(x) : logFarTail(x); }
  double logsf(double x) const { return z(x) < far ? Base::logsf(x) : logFarTail(x); }

 private:
  double logFarTail(double x) const {
    return law.logScale_ - logPi - std::log(std::fabs(distance(x)));
  }
};

}  // namespace detail

Cauchy::Cauchy(const Parameters& parameters)
    : parameters_(parameters), logScale_(std::log(parameters.scale)) {
  detail::requireFinite(name, "location", parameters.location);
  detail::requirePositive(name, "scale", parameters.scale);
}

// The likelihood has one maximum (J. B. Copas, On the unimodality of the likelihood for the Cauchy
// distribution, 1975), unless half of the values are one: there it is unbounded.
namespace {

[[noreturn]] void refuseTie(double value) {
  detail::refuseFit(Cauchy::name, "no value of x must make up half of them, as " + number(value));
}

}  // namespace

Cauchy Cauchy::fit(Data x, const FitOptions& options) {
  detail::Observations data =
      detail::observe(name, x, options, {-detail::infinity, detail::infinity});
  data.sortByValue();
  const double middle = data.median();
  detail::Observations deviations = data;
  for (double& value : deviations.x) {
    value = std::fabs(value - middle);
  }
  deviations.sortByValue();
  const double spread = deviations.median();
  if (!(spread > 0.0)) {
    refuseTie(middle);
  }
  double tied = 0.0;
  for (std::size_t i = 0; i < data.x.size(); ++i) {
    tied = (i > 0 && data.x[i] == data.x[i - 1] ? tied : 0.0) + data.w[i];
    if (tied >= 0.5 * data.total) {  // the likelihood has no maximum: the scale goes to 0
      refuseTie(data.x[i]);
    }
  }
  // In units of the spread: location and log scale.
  const auto likelihood = [&](const std::array<double, 2>& at) {
    detail::Local<2> local;
    const double inverse = std::exp(-at[1]);
    detail::addUp(data, local, [&](double value, auto& gradient, auto& hessian) {
      const double z = ((value - middle) / spread - at[0]) * inverse;
      const double r = 1.0 / (1.0 + z * z);
      gradient = {2.0 * z * r * inverse, 2.0 * z * z * r - 1.0};
      const double bend = 2.0 * (1.0 - z * z) * r * r;
      hessian = {-bend * inverse * inverse, -4.0 * z * r * r * inverse, -4.0 * z * z * r * r};
      return -std::log1p(z * z) - at[1];
    });
    return local;
  };
  const auto best = detail::maximize<2>(name, likelihood, {0.0, 0.0});
  return Cauchy(middle + spread * best[0], spread * std::exp(best[1]));
}

VEXEL_CONTINUOUS_LAW(Cauchy)

}  // namespace vexel
