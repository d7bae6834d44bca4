// The binomial law.
//
// Method  P(X <= k) is the upper tail, at p, of the beta law of k + 1 and n - k. Quantiles are
//         searched on it.
// Source  N. L. Johnson, A. W. Kemp and S. Kotz, Univariate Discrete Distributions, 3rd edition
//         (2005), chapter 3.
// Draws   One uniform up to a variance of 100, by inversion from the mode; then pairs of uniforms
//         until one is accepted (kernels/variates/discrete.hpp).
// Error   Below 0.05 of 1e-14 max(1, condition) over 348 points of all methods
//         (docs/functions/accuracy.md).
#include "functions/distributions/precise.hpp"
#include "functions/distributions/whole_numbers.hpp"
#include "numerics/laws/beta_law.hpp"
#include "vexel/distributions/discrete.hpp"

namespace vexel {

namespace detail {

// P(X <= k) is the upper tail, at p, of the beta law of k + 1 and n - k.
template <>
struct Formulas<Binomial> : WholeNumbers<Binomial> {
  double n() const { return static_cast<double>(law.parameters_.n); }
  double p() const { return law.parameters_.p; }
  nag2::UnitPair at() const { return nag2::BetaLaw::at(p()); }

  Interval support() const { return {p() == 1.0 ? n() : 0.0, p() == 0.0 ? 0.0 : n()}; }
  double pmf(double k) const {
    if (k == 0.0 || k == n()) {
      return std::exp(logpmf(k));
    }
    return nag2::BetaLaw(k, n() - k).weight(at());
  }
  double logpmf(double k) const {
    if (k == 0.0) {
      return n() == 0.0 ? 0.0 : n() * std::log1p(-p());
    }
    return k == n() ? n() * std::log(p()) : nag2::BetaLaw(k, n() - k).logWeight(at());
  }
  double cdf(double k) const { return tail(k).tail(at(), nag2::Tail::upper); }
  double sf(double k) const { return tail(k).tail(at(), nag2::Tail::lower); }
  double logcdf(double k) const { return tail(k).logTail(at(), nag2::Tail::upper); }
  double logsf(double k) const { return tail(k).logTail(at(), nag2::Tail::lower); }

  double mean() const { return n() * p(); }
  double var() const { return n() * p() * (1.0 - p()); }
  double skewness() const { return var() == 0.0 ? nan : (1.0 - 2.0 * p()) / std::sqrt(var()); }
  double kurtosis() const { return var() == 0.0 ? nan : (1.0 - 6.0 * p() * (1.0 - p())) / var(); }

 private:
  nag2::BetaLaw tail(double k) const { return nag2::BetaLaw(k + 1.0, n() - k); }
};

}  // namespace detail

Binomial::Binomial(const Parameters& parameters) : parameters_(parameters) {
  detail::requireExact(name, "n", parameters.n);
  detail::requireNotNegative(name, "n", static_cast<double>(parameters.n));
  detail::requireProbability(name, "p", parameters.p);
}

Binomial Binomial::fit(Data x, const FitOptions& options) {
  const auto n = static_cast<double>(Binomial(options.n, 0.5).parameters().n);
  const detail::Observations data = detail::observe(
      name, x, {.weights = options.weights, .missing = options.missing}, {0.0, n}, true);
  return Binomial(options.n, n == 0.0 ? 0.0 : data.mean() / n);
}

VEXEL_DISCRETE_LAW(Binomial)

}  // namespace vexel
