// The gamma law.
//
// Method  The incomplete gamma function of numerics/laws/gamma_law.hpp. Fits solve the likelihood's
//         equations.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         1, 2nd edition (1994), chapter 17.
// Draws   Normals and uniforms in turn until a cube is accepted (Marsaglia and Tsang); of a shape
//         below 1 one uniform more (kernels/variates/continuous.hpp).
// Error   Below 0.04 of 1e-14 max(1, condition) over 367 points of all methods
//         (docs/functions/accuracy.md).
#include "vexel/distributions/gamma.hpp"

#include <utility>

#include "functions/distributions/frame.hpp"
#include "functions/distributions/gamma_functions.hpp"
#include "functions/distributions/maximize.hpp"
#include "functions/distributions/precise.hpp"
#include "numerics/laws/gamma_law.hpp"
#include "numerics/special/special.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<Gamma> {
  const Gamma& law;

  double shape() const { return law.parameters_.shape; }
  double scale() const { return law.parameters_.scale; }
  const nag2::GammaLaw& standard() const { return law.gamma_.get<nag2::GammaLaw>(); }
  double t(double x) const { return x / scale(); }

  Interval support() const { return {0.0, infinity}; }
  double pdf(double x) const {
    if (x == 0.0) {
      return shape() < 1.0 ? infinity : shape() > 1.0 ? 0.0 : 1.0 / scale();
    }
    return standard().density(t(x)) / scale();
  }
  double logpdf(double x) const {
    if (x == 0.0) {
      return shape() < 1.0 ? infinity : shape() > 1.0 ? -infinity : -law.logScale_;
    }
    return standard().logDensity(t(x)) - law.logScale_;
  }
  double cdf(double x) const { return nearZero(x) ? start(x) : standard().lower(t(x)); }
  double sf(double x) const {
    if (!nearZero(x)) {
      return standard().upper(t(x));
    }
    const double below = start(x);
    return below < 0.5 ? 1.0 - below : -std::expm1(logStart(x));
  }
  double logcdf(double x) const {
    return nearZero(x) ? logStart(x) : standard().logTail(t(x), nag2::Tail::lower);
  }
  double logsf(double x) const {
    return nearZero(x) ? logOneMinusExp(-logStart(x)) : standard().logTail(t(x), nag2::Tail::upper);
  }
  double quantile(double p) const {
    const double at = standard().quantile(p, nag2::Tail::lower);
    return at > least ? scale() * at : startQuantile(p, std::log(p));
  }
  double isf(double q) const {
    const double at = standard().quantile(q, nag2::Tail::upper);
    return at > least ? scale() * at : startQuantile(1.0 - q, std::log1p(-q));
  }

  double mean() const { return shape() * scale(); }
  double var() const { return shape() * scale() * scale(); }
  double skewness() const { return 2.0 / std::sqrt(shape()); }
  double kurtosis() const { return 6.0 / shape(); }

 private:
  // Where t has no digits left the lower tail is that at least times a power.
  static constexpr double least = 1e-290;
  bool nearZero(double x) const { return t(x) < least; }
  double startRatio(double x) const { return x / (scale() * least); }
  double start(double x) const {
    return standard().lower(least) * std::pow(startRatio(x), shape());
  }
  double logStart(double x) const {
    return standard().logTail(least, nag2::Tail::lower) + shape() * std::log(startRatio(x));
  }
  double startQuantile(double p, double logP) const {
    const double quotient = p / standard().lower(least);
    const double logQuotient = logP - standard().logTail(least, nag2::Tail::lower);
    return quotient < 0.5 && quotient > 1e-290
               ? scaledPower(scale() * least, quotient, 1.0 / shape())
               : scaledExp(scale() * least, logQuotient / shape());
  }
};

}  // namespace detail

Gamma::Gamma(const Parameters& parameters)
    : parameters_(parameters), logScale_(std::log(parameters.scale)) {
  detail::requirePositive(name, "shape", parameters.shape);
  detail::requirePositive(name, "scale", parameters.scale);
  gamma_.set(nag2::GammaLaw(parameters.shape));
}

// The shape solves log(shape) - digamma(shape) = log(mean) - mean(log x); the start is T. P.
// Minka's (Estimating a gamma distribution, 2002).
Gamma Gamma::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {detail::leastPositive, detail::infinity});
  const double center = data.mean();
  // t - log(1 + t) of t = x / mean - 1: all terms are positive.
  const double gap = data.mean([=](double value) {
    const double t = (value - center) / center;
    return std::fabs(t) < 0.4 ? nag2::minusLog1pmx(t) : t - std::log(value / center);
  });
  if (!(gap > 0.0)) {
    detail::refuseEqual(name, center);
  }
  const auto equation = [=](double shape) {
    return std::pair(gap - detail::logMinusDigamma(shape), detail::trigamma(shape) - 1.0 / shape);
  };
  const double start =
      (3.0 - gap + std::sqrt((gap - 3.0) * (gap - 3.0) + 24.0 * gap)) / (12.0 * gap);
  const double shape = detail::increasingRoot(equation, 0.0, 4.0 * start, start);
  return Gamma(shape, center / shape);
}

VEXEL_CONTINUOUS_LAW(Gamma)

}  // namespace vexel
