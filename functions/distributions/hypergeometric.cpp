// The hypergeometric law.
//
// N. L. Johnson, A. W. Kemp and S. Kotz, Univariate Discrete Distributions, 3rd edition (2005),
// chapter 6.
#include <algorithm>

#include "functions/distributions/precise.hpp"
#include "functions/distributions/whole_numbers.hpp"
#include "numerics/beta_law.hpp"
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
  double pmf(double k) const { return std::exp(logpmf(k)); }
  double logpmf(double k) const;
  double cdf(double k) const { return below(k) ? lower(k) : 1.0 - upper(k); }
  double sf(double k) const { return below(k) ? 1.0 - lower(k) : upper(k); }
  double logcdf(double k) const {
    return below(k) ? logpmf(k) + std::log(sum(k, -1.0)) : std::log1p(-upper(k));
  }
  double logsf(double k) const {
    return below(k) ? std::log1p(-lower(k)) : logpmf(k + 1.0) + std::log(sum(k + 1.0, 1.0));
  }

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
  bool below(double k) const {
    return k * (population() - marked() - drawn() + k) <= (marked() - k) * (drawn() - k);
  }
  double lower(double k) const { return std::fmin(1.0, pmf(k) * sum(k, -1.0)); }
  double upper(double k) const { return std::fmin(1.0, pmf(k + 1.0) * sum(k + 1.0, 1.0)); }
  double sum(double k, double step) const;
};

namespace {

// log of x^a y^b C(a + b, a) for x = share / total, y = 1 - x.
double logBinomial(double a, double b, double share, double total) {
  const double rest = total - share;
  if (a == 0.0 || b == 0.0) {
    const double count = a + b;
    const double gone = a == 0.0 ? share : rest;
    return count == 0.0 ? 0.0 : count * std::log1p(-gone / total);
  }
  return nag2::BetaLaw(a, b).logWeight({share / total, rest / total});
}

}  // namespace

// A quotient of three binomial probabilities of success probability drawn / population.
double Formulas<Hypergeometric>::logpmf(double k) const {
  const double n = population();
  const double l = drawn();
  if (l == 0.0 || l == n) {
    return 0.0;
  }
  return logBinomial(k, marked() - k, l, n) + logBinomial(l - k, n - marked() - (l - k), l, n) -
         logBinomial(l, n - l, l, n);
}

// Probabilities from k on in the direction in which they fall, over the one at k.  Products of
// quotients; every so many terms one anew, so that their rounding does not add up.
double Formulas<Hypergeometric>::sum(double k, double step) const {
  const double first = logpmf(k);
  double total = 1.0;
  double term = 1.0;
  for (int i = 1;; ++i) {
    const double plain = drawn() - k;
    const double bare = marked() - k;
    const double rest = population() - marked() - plain;
    term *= step < 0.0 ? (k / (bare + 1.0)) * (rest / (plain + 1.0))
                       : (bare / (k + 1.0)) * (plain / (rest + 1.0));
    k += step;
    if (i % 256 == 0 && term > 0.0) {
      term = std::exp(logpmf(k) - first);
    }
    if (!(term > 1e-17 * total)) {
      return total;
    }
    total += term;
  }
}

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
    detail::refuse(name, "x", "possible for one number of marked ones; a value is", low);
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
