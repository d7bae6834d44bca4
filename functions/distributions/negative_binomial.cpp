// The negative binomial law of the failures before success number n.
//
// Method  P(X <= k) is the lower tail, at p, of the beta law of n and k + 1. Quantiles are searched
//         on it. Fits solve the likelihood's equations.
// Source  N. L. Johnson, A. W. Kemp and S. Kotz, Univariate Discrete Distributions, 3rd edition
//         (2005), chapter 5.
// Draws   A gamma variate, then a Poisson variate with that mean.
// Error   Below 0.1 of 1e-14 max(1, condition) over 354 points of all methods
//         (docs/functions/accuracy.md).
#include <utility>

#include "functions/data/text.hpp"
#include "functions/distributions/gamma_functions.hpp"
#include "functions/distributions/maximize.hpp"
#include "functions/distributions/precise.hpp"
#include "functions/distributions/whole_numbers.hpp"
#include "numerics/laws/beta_law.hpp"
#include "numerics/laws/gamma_law.hpp"
#include "vexel/distributions/discrete.hpp"

namespace vexel {

namespace detail {

// P(X <= k) is the lower tail, at p, of the beta law of n and k + 1.
template <>
struct Formulas<NegativeBinomial> : WholeNumbers<NegativeBinomial> {
  double n() const { return law.parameters_.n; }
  double p() const { return law.parameters_.p; }
  nag2::UnitPair at() const { return nag2::BetaLaw::at(p()); }

  Interval support() const { return {0.0, n() == 0.0 || p() == 1.0 ? 0.0 : infinity}; }
  double pmf(double k) const {
    if (k == 0.0) {
      return std::exp(logpmf(k));
    }
    return nag2::BetaLaw(n(), k).weight(at()) * (n() / (n() + k));
  }
  double logpmf(double k) const {
    if (k == 0.0) {
      return n() * std::log(p());
    }
    return nag2::BetaLaw(n(), k).logWeight(at()) + std::log(n() / (n() + k));
  }
  double cdf(double k) const { return tail(k).tail(at(), nag2::Tail::lower); }
  double sf(double k) const { return tail(k).tail(at(), nag2::Tail::upper); }
  double logcdf(double k) const { return tail(k).logTail(at(), nag2::Tail::lower); }
  double logsf(double k) const { return tail(k).logTail(at(), nag2::Tail::upper); }

  double quantile(double u) const {
    return smallestReached([&](double k) { return law.cdf(k) >= u; }, 0.0, support().high,
                           start(u, nag2::Tail::lower));
  }
  double isf(double u) const {
    return smallestReached([&](double k) { return law.sf(k) <= u; }, 0.0, support().high,
                           start(u, nag2::Tail::upper));
  }

  double mean() const { return n() * ((1.0 - p()) / p()); }
  double var() const { return mean() / p(); }
  double skewness() const {
    return var() == 0.0 ? nan : (2.0 - p()) / std::sqrt(n() * (1.0 - p()));
  }
  double kurtosis() const {
    return var() == 0.0 ? nan : 6.0 / n() + p() / n() * (p() / (1.0 - p()));
  }

 private:
  nag2::BetaLaw tail(double k) const { return nag2::BetaLaw(n(), k + 1.0); }
  // A Poisson variable of a gamma mean: the gamma law of the same mean and variance.
  double start(double u, nag2::Tail which) const {
    const double shape = n() * (1.0 - p());
    return nag2::GammaLaw(shape).quantile(u, which) / p() - 0.5;
  }
};

}  // namespace detail

NegativeBinomial::NegativeBinomial(const Parameters& parameters) : parameters_(parameters) {
  detail::requireNotNegative(name, "n", parameters.n);
  if (!(parameters.p > 0.0 && parameters.p <= 1.0)) {
    detail::refuse(name, "p", "in (0, 1]", parameters.p);
  }
}

// p = n / (n + mean) for each n, and n by the root of the derivative: mean(digamma(n + x)) -
// digamma(n) - log(1 + mean / n), which exists where the variance is greater than the mean
// (R. A. Fisher, The Negative Binomial Distribution, 1941).
NegativeBinomial NegativeBinomial::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {0.0, detail::infinity}, true);
  const double center = data.mean();
  const double deviation = data.deviation(center);
  const double excess = deviation * deviation - center;
  if (!(excess > 0.0)) {
    detail::refuseFit(name, "the variance of x must be greater than its mean, " + number(center) +
                                ", got " + number(deviation * deviation));
  }
  const auto slope = [&](double n) {
    const double own = detail::logMinusDigamma(n);
    // digamma(n + x) - digamma(n) = log(1 + x / n) - difference of log - digamma.
    return data.mean([=](double t) {
      return std::log1p((t - center) / (n + center)) + own - detail::logMinusDigamma(n + t);
    });
  };
  double low = center * center / excess;
  while (low > 0.0 && !(slope(low) > 0.0)) {
    low *= 0.5;
  }
  if (!(low > 0.0)) {  // the variance is out of all proportion to the mean
    detail::refuseNoMaximum(name);
  }
  double high = 2.0 * low;
  while (slope(high) > 0.0) {
    high *= 2.0;
  }
  const double n = detail::increasingRoot(
      [&](double t) { return std::pair(-slope(t), detail::nan); }, low, high, 0.7 * high);
  return NegativeBinomial(n, n / (n + center));
}

VEXEL_DISCRETE_LAW(NegativeBinomial)

}  // namespace vexel
