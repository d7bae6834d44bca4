// Entry points of the discrete distributions.
//
// Poisson and binomial tails are sums of point probabilities where those are few, incomplete gamma
// and beta functions elsewhere.  Hypergeometric tails are
// sums of point probabilities away from the mode, in the direction in which they fall.

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>

#include "numerics/interface/deviance.hpp"
#include "numerics/interface/domain_check.hpp"
#include "numerics/interface/incomplete_functions.hpp"

using namespace nag2;

namespace {

struct Outcome {
  double le;
  double gt;
  double eq;
};

constexpr Outcome belowSupport{0.0, 1.0, 0.0};
constexpr Outcome aboveSupport{1.0, 0.0, 0.0};

void store(DomainCheck check, Outcome value, double* le, double* gt, double* eq) {
  *le = check.clamped(value.le);
  *gt = check.clamped(value.gt);
  *eq = check.clamped(value.eq);
}

// 1 + r(1) + r(1) r(2) + ..., for ratios that fall; the sum ends where a ratio is not positive.
template <typename Ratio>
double sumOfProducts(Ratio ratio) {
  double sum = 1.0;
  double term = 1.0;
  for (double j = 1.0; j < 1e4; j += 1.0) {
    term *= ratio(j);
    if (!(term > 1e-17 * sum)) {
      break;
    }
    sum += term;
  }
  return sum;
}

// Most of a law's probability below and above k: the sums are short there.
constexpr double shortMean = 100.0;
constexpr double shortTrials = 1000.0;
// A directly summed tail up to here leaves its complement enough digits.
constexpr double mostOfAll = 0.7;

Outcome poisson(double lambda, int64_t count) {
  const auto k = static_cast<double>(count);
  if (lambda == 0.0) {
    return {1.0, 0.0, count == 0 ? 1.0 : 0.0};
  }
  const double eq = poissonWeight(k, lambda);
  if (lambda <= shortMean && k <= 2.0 * shortMean) {
    if (k >= lambda) {
      const double gt = eq * (lambda / (k + 1.0)) *
                        sumOfProducts([=](double j) { return lambda / (k + 1.0 + j); });
      return {1.0 - gt, gt, eq};
    }
    const double le = eq * sumOfProducts([=](double j) { return (k - j + 1.0) / lambda; });
    if (le < mostOfAll) {
      return {le, 1.0 - le, eq};
    }
  }
  return {gammaUpper(k + 1.0, lambda), gammaLower(k + 1.0, lambda), eq};
}

Outcome binomial(int64_t n, double p, int64_t count) {
  if (count == n) {
    return {1.0, 0.0, std::pow(p, static_cast<double>(n))};
  }
  const auto k = static_cast<double>(count);
  const auto rest = static_cast<double>(n - count);
  const UnitPoint at{p, 1.0L - p};
  const double eq = binomialWeight(k, rest, at.x, at.y);
  const double trials = k + rest;
  if (trials <= shortTrials && p > 0.0 && p < 1.0) {
    const double mean = trials * p;
    if (k >= mean) {
      const auto odds = static_cast<double>(at.x / at.y);
      const double gt = eq * (rest / (k + 1.0)) * odds * sumOfProducts([=](double j) {
                          return odds * ((rest - j) / (k + 1.0 + j));
                        });
      if (gt < mostOfAll) {
        return {1.0 - gt, gt, eq};
      }
    } else {
      const auto odds = static_cast<double>(at.y / at.x);
      const double le =
          eq * sumOfProducts([=](double j) { return odds * ((k - j + 1.0) / (rest + j)); });
      if (le < mostOfAll) {
        return {le, 1.0 - le, eq};
      }
    }
  }
  return {betaUpper(k + 1.0, rest, at), betaLower(k + 1.0, rest, at), eq};
}

// The table of a draw: k marked in the draw of l, m marked among n.
struct Table {
  double k;      // marked, drawn
  double bare;   // marked, not drawn: m - k
  double plain;  // unmarked, drawn: l - k
  double rest;   // unmarked, not drawn: n - l - m + k
};

// Quotient of three binomial probabilities with success probability l / n.
double pointProbability(const Table& t) {
  const long double drawn = static_cast<long double>(t.k) + t.plain;
  const long double left = static_cast<long double>(t.bare) + t.rest;
  const long double n = drawn + left;
  if (n == 0.0L) {
    return 1.0;
  }
  const long double x = drawn / n;
  const long double y = left / n;
  return binomialWeight(t.k, t.bare, x, y) * binomialWeight(t.plain, t.rest, x, y) /
         binomialWeight(static_cast<double>(drawn), static_cast<double>(left), x, y);
}

// Sum of the point probabilities at k, k - 1, ... relative to the one at k; a NaN where they are
// too many, which takes a standard deviation of some ten million.
double fallingSum(Table t) {
  double sum = 1.0;
  double term = 1.0;
  constexpr int most = 100'000'000;
  for (int i = 0; t.k > 0.0 && t.rest > 0.0 && term > 1e-17 * sum; ++i) {
    if (i == most) {
      return NAN;
    }
    term *= (t.k / (t.bare + 1.0)) * (t.rest / (t.plain + 1.0));
    sum += term;
    t = {t.k - 1.0, t.bare + 1.0, t.plain + 1.0, t.rest - 1.0};
  }
  return sum;
}

Outcome hypergeometric(const Table& t) {
  const double eq = pointProbability(t);
  // On the lower side of the mean the lower tail is summed, above it the upper one, which is the
  // lower one of the mirrored table.
  const bool lowerSide = t.k * t.rest <= t.bare * t.plain;
  if (lowerSide) {
    const double le = eq * fallingSum(t);  // clamped where it is stored
    return {le, 1.0 - le, eq};
  }
  if (t.bare == 0.0 || t.plain == 0.0) {
    return {1.0, 0.0, eq};
  }
  const Table next{t.bare - 1.0, t.k + 1.0, t.rest + 1.0, t.plain - 1.0};
  const double gt = pointProbability({next.k, next.bare, next.plain, next.rest}) * fallingSum(next);
  return {1.0 - gt, gt, eq};
}

}  // namespace

extern "C" {

void nag2_poisson(double lambda, int64_t k, double* le, double* gt, double* eq, NagError* fail) {
  DomainCheck check("nag2_poisson", fail);
  *le = *gt = *eq = NAN;
  if (check.nonNegative("the mean lambda", lambda)) {
    store(check, k < 0 ? belowSupport : poisson(lambda, k), le, gt, eq);
  }
}

void nag2_binomial(int64_t n, double p, int64_t k, double* le, double* gt, double* eq,
                   NagError* fail) {
  DomainCheck check("nag2_binomial", fail);
  *le = *gt = *eq = NAN;
  if (check.atLeastZero("the number of trials n", n) &&
      check.probability("the success probability p", p)) {
    store(check, k < 0 ? belowSupport : k > n ? aboveSupport : binomial(n, p, k), le, gt, eq);
  }
}

void nag2_hypergeometric(int64_t n, int64_t l, int64_t m, int64_t k, double* le, double* gt,
                         double* eq, NagError* fail) {
  DomainCheck check("nag2_hypergeometric", fail);
  *le = *gt = *eq = NAN;
  if (!check.atLeastZero("the population n", n) || !check.atLeastZero("the draw l", l) ||
      !check.atMost("the draw l", l, "n", n) || !check.atLeastZero("the marked items m", m) ||
      !check.atMost("the marked items m", m, "n", n)) {
    return;
  }
  const int64_t lowest = std::max<int64_t>(0, l - (n - m));
  const int64_t highest = std::min(l, m);
  const Outcome value =
      k < lowest ? belowSupport
      : k > highest
          ? aboveSupport
          : hypergeometric({static_cast<double>(k), static_cast<double>(m - k),
                            static_cast<double>(l - k), static_cast<double>((n - m) - (l - k))});
  store(check, value, le, gt, eq);
}

}  // extern "C"
