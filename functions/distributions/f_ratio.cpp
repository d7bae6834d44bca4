// The F law of a ratio of variances.
//
// Method  The incomplete beta function, with both the ratio's parts kept apart (FLaw in
//         numerics/laws/beta_law.hpp). Fits solve the likelihood's equations.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 27.
// Draws   Two gamma variates, the numerator's first.
// Error   Below 0.2 of 1e-14 max(1, condition) over 443 points of all methods
//         (docs/functions/accuracy.md).
#include <algorithm>
#include <cmath>

#include "functions/distributions/beta_arrays.hpp"
#include "functions/distributions/frame.hpp"
#include "functions/distributions/gamma_functions.hpp"
#include "functions/distributions/maximize.hpp"
#include "functions/distributions/precise.hpp"
#include "numerics/laws/beta_law.hpp"
#include "vexel/distributions/beta.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<FRatio> {
  const FRatio& law;

  double df1() const { return law.parameters_.df1; }
  double df2() const { return law.parameters_.df2; }
  const nag2::FLaw& f() const { return law.f_.get<nag2::FLaw>(); }

  Interval support() const { return {0.0, infinity}; }
  double pdf(double x) const {
    if (x == 0.0) {
      return df1() < 2.0 ? infinity : df1() > 2.0 ? 0.0 : 1.0;
    }
    return f().density(x);
  }
  double logpdf(double x) const {
    if (x == 0.0) {
      return df1() < 2.0 ? infinity : df1() > 2.0 ? -infinity : 0.0;
    }
    return f().logDensity(x);
  }
  double cdf(double x) const { return f().tail(x, nag2::Tail::lower); }
  double sf(double x) const { return f().tail(x, nag2::Tail::upper); }
  // Arrays: the series of many numbers side by side.
  using In = std::span<const double>;
  void cdf(In x, std::span<double> out) const {
    tails(x, out, nag2::Tail::lower, [&](double t) { return law.cdf(t); });
  }
  void sf(In x, std::span<double> out) const {
    tails(x, out, nag2::Tail::upper, [&](double t) { return law.sf(t); });
  }
  template <typename Plain>
  void tails(In x, std::span<double> out, nag2::Tail which, Plain plain) const {
    betaTails(
        f().beta(), x, out, which,
        [&](double t, nag2::BetaLaw::Parts& parts) { return f().partsAt(t, parts); }, plain);
  }
  double logcdf(double x) const { return f().logTail(x, nag2::Tail::lower); }
  double logsf(double x) const { return f().logTail(x, nag2::Tail::upper); }
  double quantile(double p) const { return f().quantile(p, nag2::Tail::lower); }
  double isf(double q) const { return f().quantile(q, nag2::Tail::upper); }

  double mean() const { return df2() > 2.0 ? df2() / (df2() - 2.0) : infinity; }
  double var() const {
    const double m = mean();
    return df2() > 4.0 ? 2.0 * m * m * ((df1() + df2() - 2.0) / df1() / (df2() - 4.0)) : infinity;
  }
  double skewness() const {
    if (df2() <= 6.0) {
      return df2() > 4.0 ? infinity : nan;
    }
    return (2.0 * df1() + df2() - 2.0) / (df2() - 6.0) *
           std::sqrt(8.0 * ((df2() - 4.0) / df1() / (df1() + df2() - 2.0)));
  }
  double kurtosis() const {
    const double m = df1();
    const double n = df2();
    if (n <= 8.0) {
      return n > 4.0 ? infinity : nan;
    }
    return 12.0 * ((5.0 * n - 22.0) + (n - 4.0) / m * ((n - 2.0) / (m + n - 2.0)) * (n - 2.0)) /
           ((n - 6.0) * (n - 8.0));
  }
};

}  // namespace detail

FRatio::FRatio(const Parameters& parameters) : parameters_(parameters) {
  detail::requirePositive(name, "df1", parameters.df1);
  detail::requirePositive(name, "df2", parameters.df2);
  f_.set(nag2::FLaw(parameters.df1, parameters.df2));
}

// By Newton's steps in the logarithms of half the degrees of freedom h and k: with r = h x / k,
// u = r / (1 + r) and v = 1 - u the log density is h log u + k log v - log x - log B(h, k).
FRatio FRatio::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {detail::leastPositive, detail::infinity});
  const auto likelihood = [&](const std::array<double, 2>& at) {
    const double h = std::exp(at[0]);
    const double k = std::exp(at[1]);
    const double s = h + k;
    const double logBeta = detail::logGamma(h) + detail::logGamma(k) - detail::logGamma(s);
    const double psiH = detail::digamma(s) - detail::digamma(h);
    const double psiK = detail::digamma(s) - detail::digamma(k);
    const double bendH = detail::trigamma(s) - detail::trigamma(h);
    const double bendK = detail::trigamma(s) - detail::trigamma(k);
    const double bend = detail::trigamma(s);
    detail::Local<2> local;
    detail::addUp(data, local, [&](double t, auto& gradient, auto& hessian) {
      const double r = h * (t / k);
      const double u = r / (1.0 + r);
      const double v = 1.0 / (1.0 + r);
      const double logU = -std::log1p(1.0 / r);
      const double logV = -std::log1p(r);
      gradient = {h * (logU + 1.0 + psiH) - s * u, k * (logV + 1.0 + psiK) - s * v};
      hessian = {h * (logU + 1.0 + psiH + v - u + h * bendH) - s * u * v,
                 s * u * v - h * v - k * u + h * k * bend,
                 k * (logV + 1.0 + psiK + u - v + k * bendK) - s * u * v};
      return h * logU + k * logV - std::log(t) - logBeta;
    });
    return local;
  };
  const auto best = detail::maximize<2>(name, likelihood, {1.0, 1.0});
  // So flat there that only rounding has ended the climb.
  if (2.0 * std::exp(std::max(best[0], best[1])) > 1e7) {
    detail::refuseNoMaximum(name);
  }
  return FRatio(2.0 * std::exp(best[0]), 2.0 * std::exp(best[1]));
}

VEXEL_CONTINUOUS_LAW(FRatio)

}  // namespace vexel
