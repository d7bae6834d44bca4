// The hypergeometric law.
//
// Method  Point probabilities without cancellation, tails as sums of them
//         (numerics/laws/hypergeometric_law.hpp); quantiles are searched on the tails.
// Source  N. L. Johnson, A. W. Kemp and S. Kotz, Univariate Discrete Distributions, 3rd edition
//         (2005), chapter 6.
// Draws   One uniform up to a variance of 100, by inversion from the mode; then pairs of uniforms
//         until one is accepted (kernels/variates/discrete.hpp).
// Error   Below 0.08 of 1e-14 max(1, condition) over 351 points of all methods
//         (docs/functions/accuracy.md).
#include <algorithm>

#include "functions/data/text.hpp"
#include "functions/distributions/precise.hpp"
#include "functions/distributions/whole_numbers.hpp"
#include "numerics/laws/hypergeometric_law.hpp"
#include "vexel/distributions/discrete.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<Hypergeometric> : WholeNumbers<Hypergeometric> {
  double population() const { return static_cast<double>(law.parameters_.population); }
  double marked() const { return static_cast<double>(law.parameters_.marked); }
  double drawn() const { return static_cast<double>(law.parameters_.drawn); }

  Interval support() const {
    return {std::fmax(0.0, drawn() - (population() - marked())), std::fmin(marked(), drawn())};
  }
  double pmf(double k) const { return table().probability(k); }
  double logpmf(double k) const { return table().logProbability(k); }
  double cdf(double k) const { return table().tail(k, nag2::Tail::lower); }
  double sf(double k) const { return table().tail(k, nag2::Tail::upper); }
  double logcdf(double k) const { return table().logTail(k, nag2::Tail::lower); }
  double logsf(double k) const { return table().logTail(k, nag2::Tail::upper); }

  double mean() const { return population() == 0.0 ? 0.0 : drawn() * (marked() / population()); }
  double var() const {
    const double n = population();
    return n <= 1.0 ? 0.0
                    : drawn() * (marked() / n) * ((n - marked()) / n) * ((n - drawn()) / (n - 1.0));
  }
  double skewness() const {
    const double n = population();
    const double v = var();
    return v == 0.0   ? nan
           : n <= 2.0 ? 0.0
                      : (n - 2.0 * marked()) / n * ((n - 2.0 * drawn()) / (n - 2.0)) / std::sqrt(v);
  }
  double kurtosis() const;

 private:
  nag2::HypergeometricLaw table() const { return {population(), marked(), drawn()}; }
};

double Formulas<Hypergeometric>::kurtosis() const {
  const double v = var();
  const double n = population();
  if (v == 0.0 || n < 4.0) {  // of 3 or less it is a Bernoulli law
    return v == 0.0 ? nan : 1.0 / v - 6.0;
  }
  const double a = marked() / n * ((n - marked()) / n);
  const double b = drawn() / n * ((n - drawn()) / n);
  const double top =
      (n - 1.0) / n * ((n + 1.0) / n - 6.0 * (a + b)) + 6.0 * a * b * (5.0 - 6.0 / n);
  return top / (a * b * ((n - 2.0) / n) * (n - 3.0));
}

}  // namespace detail

Hypergeometric::Hypergeometric(const Parameters& parameters) : parameters_(parameters) {
  const auto& [population, marked, drawn] = parameters;
  detail::requireExact(name, "population", population);
  detail::requireNotNegative(name, "population", static_cast<double>(population));
  detail::requireBetween(name, "marked", marked, 0, population);
  detail::requireBetween(name, "drawn", drawn, 0, population);
}

// The likelihood is log-concave in the marked ones: the smallest number from which on one more does
// not raise it.
Hypergeometric Hypergeometric::fit(Data x, const FitOptions& options) {
  const auto& [population, drawn, weights, missing] = options;
  const Hypergeometric sizes(population, 0, drawn);  // checks them
  const detail::Observations data = detail::observe(
      name, x, {.weights = weights, .missing = missing}, {0.0, static_cast<double>(drawn)}, true);
  const auto total = static_cast<double>(population);
  const auto n = static_cast<double>(drawn);
  const double low = data.max();
  const double high = total - (n - data.min());
  if (low > high) {
    detail::refuseFit(name, "the values of x must be possible for one number of marked ones, not " +
                                number(data.min()) + " and " + number(low));
  }
  const double best = detail::smallestReached(
      [&](double marked) {
        return data.mean([=](double k) {
          return std::log1p(-(n - k) / (total - marked)) - std::log1p(-k / (marked + 1.0));
        }) <= 0.0;
      },
      low, high, data.mean() / n * total);
  return Hypergeometric(population, static_cast<std::int64_t>(best), drawn);
}

VEXEL_DISCRETE_LAW(Hypergeometric)

}  // namespace vexel
