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
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "kernels/running_sum.hpp"
#include "kernels/vector/convolution.hpp"
#include "kernels/watch.hpp"
#include "numerics/interface/deviance.hpp"

namespace vexel {

namespace {

// P(D+ >= d), Smirnov (1944) and Birnbaum and Tingey (1951): the sum of binomial probabilities with
// a mean that moves along.
//
// The terms vanish at both ends of the sum with all their derivatives, but for what is left of them
// there, so that every 2^k-th of them has 2^-k of the sum as soon as they are close enough together
// (the trapezoidal rule).  Halving the distance shows when; where the ends matter, all terms are
// taken.
class OneSided {
 public:
  OneSided(std::size_t n, double d) : n_(n), d_(d) {}

  double tail() {
    constexpr std::size_t fewTerms = 256;
    constexpr double agreement = 2e-15;
    const auto last = static_cast<std::size_t>(std::floor(static_cast<double>(n_) * (1 - d_)));
    std::size_t step = std::bit_floor(last / fewTerms + 1);
    kernels::RunningSum sum;
    const auto addEvery = [&](std::size_t distance, std::size_t from) {
      for (std::size_t j = from; j <= last; j += distance) {
        sum.add(term(j));
      }
    };
    addEvery(step, 0);
    for (double found = sum.value() * static_cast<double>(step); step > 1;) {
      addEvery(step, step / 2);
      step /= 2;
      const double before = std::exchange(found, sum.value() * static_cast<double>(step));
      if (std::abs(found - before) <= agreement * found) {
        break;
      }
    }
    return std::min(sum.value() * static_cast<double>(step), 1.0);
  }

 private:
  double term(std::size_t j) {
    if (++done_ % 65536 == 0) {
      kernels::poll(std::min(1.0, static_cast<double>(done_) / static_cast<double>(n_)));
    }
    const auto size = static_cast<long double>(n_);
    const auto k = static_cast<long double>(j);
    const long double p = d_ + k / size;
    const long double q = (size - k) / size - d_;
    return q > 0
               ? d_ / static_cast<double>(p) *
                     nag2::binomialWeight(static_cast<double>(j), static_cast<double>(n_ - j), p, q)
               : 0.0;
  }

  std::size_t n_;
  double d_;
  std::size_t done_ = 0;
};

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
//
// In units where the process has one point each, with n d = a + f, a whole and 0 <= f < 1: the
// upper side lets the count j in from the time j - a - f on, the lower one forbids it from
// j + a + f on.  The way from the middle to the end is the one from the start read backwards, so
// half of it is walked, and the two halves meet at n / 2.
class Within {
 public:
  Within(std::size_t n, double d) : n_(n), a_(std::floor(static_cast<double>(n) * d)) {
    f_ = static_cast<double>(n) * d - a_;
    // The counts between the sides in whole blocks, behind zeros for the convolution.
    constexpr std::size_t block = kernels::convolutionBlock;
    const auto counts = static_cast<std::size_t>(2 * a_) + 4;
    width_ = (counts + block - 1) / block * block;
    now_.resize(kMostSteps + width_);
    next_.resize(kMostSteps + width_);
  }

  double probability() {
    walkToTheMiddle();
    // Meeting at k points and n - k.
    const auto size = static_cast<double>(n_);
    double sum = 0;
    for (double k = std::max(low_, size - high_); k <= std::min(high_, size - low_); ++k) {
      sum += at(k) * at(size - k);
    }
    // Divided by the probability of n points, n^n exp(-n) / n!.
    return sum / nag2::poissonWeight(size, size);
  }

 private:
  static constexpr std::size_t kMostSteps = 32;  // of the process between two times
  static constexpr double kNever = 1e-22;        // the probability of more

  // A whole number and f, -f or 0 beyond it, so that differences are exact.
  struct Time {
    double whole = 0;
    double beyond = 0;
  };

  // The probabilities of the numbers of points within some time.
  struct Steps {
    double mean = 0;
    std::size_t count = 0;
    std::array<double, kMostSteps> weights = {};
  };

  double& at(double count) { return now_[kMostSteps + static_cast<std::size_t>(count - low_)]; }

  void walkToTheMiddle() {
    const double middle = static_cast<double>(n_) / 2;
    at(0) = 1;
    high_ = a_;
    for (std::size_t events = 0;; ++events) {
      if (events % 256 == 0) {
        kernels::poll(time_.whole / middle);
      }
      const Time opens = {high_ + 1 - a_, -f_};
      const Time drops = {low_ + a_, f_};
      const bool opensFirst = opens.whole - drops.whole <= 2 * f_;
      const Time next = opensFirst ? opens : drops;
      if (next.whole - middle >= -next.beyond) {
        break;
      }
      walk(next);
      if (opensFirst) {
        high_ += 1;
        at(high_) = 0;
      } else {
        const auto first = now_.begin() + kMostSteps;
        std::move(first + 1, now_.end(), first);
        now_.back() = 0;
        low_ += 1;
      }
    }
    walk({middle, 0});
  }

  void walk(Time until) {
    const double mean = (until.whole - time_.whole) + (until.beyond - time_.beyond);
    time_ = until;
    if (!(mean > 0)) {
      return;
    }
    const Steps& steps = stepsWithin(mean);
    kernels::convolve(now_.data() + kMostSteps, width_, steps.weights.data(), steps.count,
                      next_.data() + kMostSteps);
    now_.swap(next_);
    // What has come to lie beyond the upper side.
    std::fill(now_.begin() + static_cast<std::ptrdiff_t>(kMostSteps + 1) +
                  static_cast<std::ptrdiff_t>(high_ - low_),
              now_.end(), 0.0);
  }

  // The times between events take turns, so the last two are kept.
  const Steps& stepsWithin(double mean) {
    if (mean == recent_[0].mean) {
      return recent_[0];
    }
    std::swap(recent_[0], recent_[1]);
    Steps& steps = recent_[0];
    if (mean != steps.mean) {
      steps.mean = mean;
      steps.count = 0;
      for (double w = std::exp(-mean); steps.count < kMostSteps && w > kNever;) {
        steps.weights[steps.count++] = w;
        w *= mean / static_cast<double>(steps.count);
      }
    }
    return steps;
  }

  std::size_t n_;
  double a_;
  double f_;
  std::size_t width_;
  Time time_;
  double low_ = 0;  // the counts between the sides
  double high_ = 0;
  std::vector<double> now_;  // their probabilities, from low_ on
  std::vector<double> next_;
  std::array<Steps, 2> recent_ = {};
};

}  // namespace

double kolmogorovTail(std::size_t n, double d) {
  // n d^2 beyond which both sides together are a correction, with an error below 1e-11 of the
  // result up to 1000 points and 5e-9 beyond.
  const double rareBoth = n > 1000 ? 2.2 : 4;
  constexpr std::size_t manyPoints = 4000;
  constexpr double surely = 0.03;  // n d^2 below which the tail is 1 but for 1e-17 of many points
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
    return std::min(1.0, 2 * OneSided(n, d).tail());
  }
  if (n > manyPoints && spread < surely) {
    return 1;
  }
  if (n > manyPoints || (n > 100 && spread > rareBoth)) {
    return std::clamp(2 * OneSided(n, d).tail() + bothSided(n, std::sqrt(spread)), 0.0, 1.0);
  }
  return std::clamp(1 - Within(n, d).probability(), 0.0, 1.0);
}

}  // namespace vexel
