// The law of the Kolmogorov-Smirnov statistic, from the middle to the far tail.
//
// Far out, both sides are hardly ever beyond d together: the tail is twice Smirnov's one-sided one,
// a sum of positive terms, less a small correction.  In the middle the probability to stay between
// both sides is computed by the recursion for a Poisson process (after J. Pomeranz, 1974, Exact
// cumulative distribution of the Kolmogorov-Smirnov statistic for small samples, Algorithm 487),
// whose terms are positive too.  Where that would take too long the correction serves there as
// well; it is the part of the expansion by Chang Li-Chien (1956), On the exact distribution of the
// statistics of A. N. Kolmogorov and their asymptotic expansion, that is not one-sided.
#include "functions/hypothesis/kolmogorov.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "kernels/watch.hpp"
#include "numerics/interface/deviance.hpp"

namespace vexel {

namespace {

// P(D+ >= d), Smirnov (1944) and Birnbaum and Tingey (1951): the sum of binomial probabilities with
// a mean that moves along.
double oneSided(std::size_t n, double d) {
  constexpr std::size_t mostTerms = 20'000'000;
  const auto size = static_cast<double>(n);
  if (n > mostTerms) {
    // Maag and Dicaire (1971), On Kolmogorov-Smirnov type one-sample statistics; off by less than
    // 1e-8 of the result for n beyond the limit and probabilities above 1e-300.
    const double z = (6 * size * d + 1) * (6 * size * d + 1) / (18 * size);
    return std::exp(-z) * (1 - (2 * z * z - 4 * z - 1) / (18 * size));
  }
  double sum = 0;
  const auto last = static_cast<std::size_t>(std::floor(size * (1 - d)));
  for (std::size_t j = 0; j <= last; ++j) {
    if (j % 65536 == 0) {
      kernels::poll(static_cast<double>(j) / static_cast<double>(last + 1));
    }
    const auto k = static_cast<double>(j);
    const double p = d + k / size;
    const double q = (size - k) / size - d;
    if (q > 0) {
      sum += d / p * nag2::binomialWeight(k, size - k, p, q);
    }
  }
  return std::min(sum, 1.0);
}

// The terms k >= 2 of the expansion of P(D_n >= x / sqrt(n)).
double bothSided(std::size_t n, double x) {
  const auto size = static_cast<double>(n);
  double sum = 0;
  for (int i = 2; i < 200; ++i) {
    const double k2 = static_cast<double>(i) * i;
    const double odd = i % 2 == 0 ? 0 : 1;
    const double f1 = k2 - odd;
    const double f2 = 5 * k2 + 22 - 15 * odd;
    const double y = k2 * x * x;
    const double term = std::exp(-2 * y) * (1 - 2 * k2 * x / (3 * std::sqrt(size)) -
                                            (f1 - 4 * (f1 + 3) * y + 8 * y * y) / (18 * size) +
                                            k2 * x / (27 * size * std::sqrt(size)) *
                                                (f2 / 5 - 4 * (f2 + 45) * y / 15 + 8 * y * y));
    sum += i % 2 == 0 ? -term : term;
    if (2 * y > 745) {
      break;
    }
  }
  return 2 * sum;
}

// P(D_n < d): a Poisson process with n expected points stays within n d of its mean all the way,
// given that it has n points at the end.
double within(std::size_t n, double d) {
  constexpr int mostSteps = 40;  // of the process between two times; more have probability 1e-48
  const auto size = static_cast<double>(n);
  const double a = size * d;
  const auto width = static_cast<std::size_t>(2 * a) + 4;
  std::vector<double> now(width);
  std::vector<double> next(width);
  // Allowed counts are low .. high; now[k - low] is the probability of k.
  double low = 0;
  double high = std::floor(a);
  now[0] = 1;
  double time = 0;
  const auto count = [&] { return static_cast<std::size_t>(high - low) + 1; };
  const auto walk = [&](double until) {
    const double mean = until - time;
    time = until;
    if (!(mean > 0)) {
      return;
    }
    double weight[mostSteps];
    int steps = 0;
    for (double w = std::exp(-mean); steps < mostSteps && w > 1e-30; w *= mean / ++steps) {
      weight[steps] = w;
    }
    for (std::size_t k = 0; k < count(); ++k) {
      double sum = 0;
      for (std::size_t s = 0; s <= k && s < static_cast<std::size_t>(steps); ++s) {
        sum += weight[s] * now[k - s];
      }
      next[k] = sum;
    }
    now.swap(next);
  };
  for (std::size_t events = 0; low < size; ++events) {
    if (events % 256 == 0) {
      kernels::poll(time / size);
    }
    // In units where the process has one point each: the lower side passes low at low + a, the
    // upper one reaches high + 1 at high + 1 - a.
    const double drops = low + a;
    const double opens = high + 1 - a;
    if (std::min(drops, opens) >= size) {
      break;
    }
    if (opens <= drops) {
      walk(opens);
      high += 1;
      now[count() - 1] = 0;
    } else {
      walk(drops);
      std::move(now.begin() + 1, now.begin() + static_cast<std::ptrdiff_t>(count()), now.begin());
      now[count() - 1] = 0;
      low += 1;
    }
  }
  walk(size);
  if (low > size || high < size) {
    return 0;
  }
  // Divided by the probability of n points, n^n exp(-n) / n!.
  return now[static_cast<std::size_t>(size - low)] / nag2::poissonWeight(size, size);
}

}  // namespace

double kolmogorovTail(std::size_t n, double d) {
  // n d^2 beyond which both sides together are a correction, with an error below 1e-11 of the
  // result up to 1000 points and 5e-9 beyond.
  const double rareBoth = n > 1000 ? 2.2 : 4;
  constexpr std::size_t manyPoints = 4000;
  const auto size = static_cast<double>(n);
  if (std::isnan(d) || n == 0) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (2 * size * d <= 1) {
    return 1;
  }
  if (d >= 1) {
    return 0;
  }
  const double spread = size * d * d;
  const bool apart = d >= 0.5;  // both sides cannot be that far out
  if (apart || spread > 6) {
    return std::min(1.0, 2 * oneSided(n, d));
  }
  if (n > manyPoints || (n > 100 && spread > rareBoth)) {
    return std::clamp(2 * oneSided(n, d) + bothSided(n, std::sqrt(spread)), 0.0, 1.0);
  }
  return std::clamp(1 - within(n, d), 0.0, 1.0);
}

}  // namespace vexel
