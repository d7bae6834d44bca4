// Data that a law is fitted to: values that are there, with their weights.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "functions/data/refusals.hpp"
#include "kernels/watch.hpp"
#include "vexel/distributions/law.hpp"

namespace vexel::detail {

// A sum with the rounding errors carried along (T. Ogita, S. Rump and S. Oishi, Accurate Sum and
// Dot Product, 2005): as if added in twice the working precision.
class Sum {
 public:
  void add(double x) {
    const double next = high_ + x;
    const double part = next - high_;
    low_ += (high_ - (next - part)) + (x - part);
    high_ = next;
  }
  void addProduct(double x, double y) {
    const double product = x * y;
    add(product);
    low_ += std::fma(x, y, -product);
  }
  double value() const { return std::isfinite(high_) ? high_ + low_ : high_; }

 private:
  double high_ = 0.0;
  double low_ = 0.0;
};

// Why a law cannot be fitted to x: std::domain_error.
[[noreturn]] void refuseFit(const char* law, const std::string& why);
[[noreturn]] void refuseEqual(const char* law, double value);  // that all of x are
[[noreturn]] void refuseNoMaximum(const char* law);

void requireWeightsSize(const char* function, const Data& weights, std::size_t size);

// How many values of a law's functions lie between two polls.
inline constexpr std::size_t pollStretch = std::size_t{1} << 17;

inline constexpr double leastPositive = std::numeric_limits<double>::denorm_min();

struct Observations {
  std::vector<double> x;
  std::vector<double> w;  // 1 each where none are given
  double total = 0.0;     // of the weights

  // sum of w f(x), and its share of the total weight.
  template <typename F>
  double sum(F f) const {
    Sum s;
    for (std::size_t begin = 0; begin < x.size(); begin += pollStretch) {
      kernels::poll();
      const std::size_t end = std::min(x.size(), begin + pollStretch);
      for (std::size_t i = begin; i < end; ++i) {
        s.addProduct(w[i], f(x[i]));
      }
    }
    return s.value();
  }
  template <typename F>
  double mean(F f) const {
    return sum(f) / total;
  }
  double mean() const {
    return mean([](double t) { return t; });
  }
  // Root of the mean square of x - center.
  double deviation(double center) const {
    return std::sqrt(mean([=](double t) { return (t - center) * (t - center); }));
  }
  double min() const;
  double max() const;
  void requireSpread(const char* law) const;  // more than one value
  void sortByValue();
  // Of sorted values: where the cumulative weight reaches half, between two values their middle.
  double median() const;
};

// f(value, weight) for each pair that is there and whose weight is not 0; false where a value is
// missing and is to make the result missing.  std::invalid_argument for a missing value that may
// not be, for a negative or infinite weight; std::length_error for weights of another size.
template <typename F>
bool forEachPair(const char* function, const Data& x, const Data& weights, Missing missing, F f) {
  requireWeightsSize(function, weights, x.size());
  bool complete = true;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (i % pollStretch == 0) {
      kernels::poll();
    }
    const double w = weights.given() ? weights[i] : 1.0;
    if (w == 0.0) {
      continue;
    }
    const double value = x[i];
    if (std::isnan(value) || std::isnan(w)) {
      if (missing == Missing::raise) {
        refuseMissing(function, i);
      }
      complete = complete && missing == Missing::omit;
      continue;
    }
    if (w < 0.0 || std::isinf(w)) {
      refuseWeight(function, i, w);
    }
    f(value, w);
  }
  return complete;
}

// What a law is fitted to.  std::invalid_argument where nothing is left or a value is missing that
// is not to be omitted; std::domain_error where a value lies outside the interval, is infinite or,
// of a discrete law, not whole.
Observations observe(const char* law, const Data& x, const FitOptions& options, Interval allowed,
                     bool whole = false);
// The same for what is called `function`, any numbers.
Observations observeAny(const std::string& function, const Data& x, const FitOptions& options);

// Sum of the weights times log(x); 0 of nothing.
template <typename Log>
double sumOfLogs(const Data& x, const LikelihoodOptions& options, Log log) {
  Sum sum;
  const bool complete = forEachPair("log_likelihood", x, options.weights, options.missing,
                                    [&](double value, double w) { sum.addProduct(w, log(value)); });
  return complete ? sum.value() : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace vexel::detail
