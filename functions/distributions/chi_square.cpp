// The chi-square law.
//
// Method  X / 2 has the gamma law of shape df / 2 (numerics/laws/gamma_law.hpp). Fits solve the
//         likelihood's equations.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         1, 2nd edition (1994), chapter 18.
// Draws   One gamma variate.
// Error   Below 0.2 of 1e-14 max(1, condition) over 406 points of all methods
//         (docs/functions/accuracy.md).
#include <utility>

#include "functions/distributions/frame.hpp"
#include "functions/distributions/gamma_functions.hpp"
#include "functions/distributions/maximize.hpp"
#include "functions/distributions/precise.hpp"
#include "numerics/laws/gamma_law.hpp"
#include "vexel/distributions/gamma.hpp"

namespace vexel {

namespace detail {

// X / 2 has the gamma law of shape df / 2.
template <>
struct Formulas<ChiSquare> {
  const ChiSquare& law;

  double df() const { return law.parameters_.df; }
  const nag2::GammaLaw& half() const { return law.gamma_.get<nag2::GammaLaw>(); }

  Interval support() const { return {0.0, infinity}; }
  double pdf(double x) const {
    if (x == 0.0) {
      return df() < 2.0 ? infinity : df() > 2.0 ? 0.0 : 0.5;
    }
    return 0.5 * half().density(0.5 * x);
  }
  double logpdf(double x) const {
    if (x == 0.0) {
      return df() < 2.0 ? infinity : df() > 2.0 ? -infinity : -logTwo;
    }
    return half().logDensity(0.5 * x) - logTwo;
  }
  double cdf(double x) const { return half().lower(0.5 * x); }
  double sf(double x) const { return half().upper(0.5 * x); }
  double logcdf(double x) const { return half().logTail(0.5 * x, nag2::Tail::lower); }
  double logsf(double x) const { return half().logTail(0.5 * x, nag2::Tail::upper); }
  double quantile(double p) const { return 2.0 * half().quantile(p, nag2::Tail::lower); }
  double isf(double q) const { return 2.0 * half().quantile(q, nag2::Tail::upper); }

  double mean() const { return df(); }
  double var() const { return 2.0 * df(); }
  double skewness() const { return std::sqrt(8.0 / df()); }
  double kurtosis() const { return 12.0 / df(); }
};

}  // namespace detail

ChiSquare::ChiSquare(const Parameters& parameters) : parameters_(parameters) {
  detail::requirePositive(name, "df", parameters.df);
  gamma_.set(nag2::GammaLaw(0.5 * parameters.df));
}

// digamma(df / 2) = mean(log(x / 2)), and digamma(t) > log(t - 1/2).
ChiSquare ChiSquare::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {detail::leastPositive, detail::infinity});
  const double target = data.mean([](double t) { return std::log(0.5 * t); });
  const auto equation = [=](double half) {
    return std::pair(detail::digamma(half) - target, detail::trigamma(half));
  };
  const double high = std::exp(target) + 0.5;
  return ChiSquare(2.0 * detail::increasingRoot(equation, 0.0, high, 0.9 * high));
}

VEXEL_CONTINUOUS_LAW(ChiSquare)

}  // namespace vexel
