// The non-central chi-square law.
//
// Method  A Poisson mixture of chi-square laws, and its saddle point for large nc
//         (numerics/laws/noncentral_laws.hpp).
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 29.
// Draws   From one degree of freedom on a shifted normal variate, then a gamma variate of the rest;
//         below, a Poisson variate, then a gamma variate.
// Error   Below 0.06 of 1e-14 max(1, condition) over 210 points of all methods
//         (docs/functions/accuracy.md).
#include <numbers>

#include "functions/distributions/poisson_mixture.hpp"
#include "vexel/distributions/gamma.hpp"
#include "vexel/distributions/noncentral.hpp"

namespace vexel {

extern template class Law<ChiSquare>;
extern template class ContinuousLaw<ChiSquare>;

namespace detail {

template <>
struct Formulas<NonCentralChiSquare> : PoissonMixture<Formulas<NonCentralChiSquare>> {
  explicit Formulas(const NonCentralChiSquare& of) : law(of) {}
  const NonCentralChiSquare& law;

  double df() const { return law.parameters_.df; }
  double nc() const { return law.parameters_.nc; }
  ChiSquare central() const { return ChiSquare(df()); }
  nag2::NoncentralChiSquareLaw mixture() const { return {df(), nc()}; }
  static double at(double x) { return x; }
  double growth(double x) const { return 0.5 * (1.0 + x / df()); }
  double leastOf(double share) const { return share * df(); }

  Interval support() const { return {0.0, infinity}; }
  // Beyond all sums the upper tail is exp(-(sqrt(x) - sqrt(nc))^2 / 2) and twice the density, up to
  // powers of x that its logarithm does not feel.
  bool beyond(double x) const { return x > 1e15 * (1.0 + df() + nc()); }
  double pdf(double x) const { return beyond(x) ? 0.0 : PoissonMixture::pdf(x); }
  double logpdf(double x) const {
    return beyond(x) ? logsf(x) - std::numbers::ln2 : PoissonMixture::logpdf(x);
  }
  double cdf(double x) const { return beyond(x) ? 1.0 : PoissonMixture::cdf(x); }
  double sf(double x) const { return beyond(x) ? 0.0 : PoissonMixture::sf(x); }
  double logcdf(double x) const { return beyond(x) ? 0.0 : PoissonMixture::logcdf(x); }
  double logsf(double x) const {
    const double root = std::sqrt(x) - std::sqrt(nc());
    return beyond(x) ? -0.5 * root * root : PoissonMixture::logsf(x);
  }

  double mean() const { return df() + nc(); }
  double var() const { return 2.0 * (df() + 2.0 * nc()); }
  double skewness() const {
    const double half = df() + 2.0 * nc();
    return (df() + 3.0 * nc()) / half * std::sqrt(8.0 / half);
  }
  double kurtosis() const {
    const double half = df() + 2.0 * nc();
    return 12.0 * ((df() + 4.0 * nc()) / half) / half;
  }
};

}  // namespace detail

NonCentralChiSquare::NonCentralChiSquare(const Parameters& parameters) : parameters_(parameters) {
  detail::requirePositive(name, "df", parameters.df);
  detail::requireNotNegative(name, "nc", parameters.nc);
}

VEXEL_CONTINUOUS_LAW(NonCentralChiSquare)

}  // namespace vexel
