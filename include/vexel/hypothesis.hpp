// Hypothesis tests: a statistic and the probability of one at least as far out.
//
//   auto [statistic, pvalue] = vexel::t_test(x, y);
//   double p = vexel::ks_test(x, vexel::Normal({.mean = 0, .sd = 1})).pvalue;
//
// Nothing to test (too few values, no spread) gives NaN.
#pragma once

#include <algorithm>
#include <concepts>
#include <span>
#include <type_traits>
#include <vexel/data.hpp>
#include <vexel/export.hpp>

namespace vexel {

struct TestResult {
  double statistic;
  double pvalue;
};

struct TestOptions {
  Missing missing = Missing::propagate;
};

// Shapiro-Wilk W of 3 to 5000 values (Royston 1995, algorithm R94).
VEXEL_API TestResult shapiro(Data x, const TestOptions& options = {});

// Kolmogorov-Smirnov: the largest distance between the empirical and a given distribution function,
// two-sided.  The distribution is any object with cdf(double) - one with cdf(Data, span) is asked
// for many at a time - or a function.
using CdfOfMany = void (*)(const void* law, std::span<const double> t, std::span<double> out);
VEXEL_API TestResult ks_test(Data x, CdfOfMany cdf, const void* law,
                             const TestOptions& options = {});
template <typename Law>
concept HasCdf = requires(const Law& law, double t) {
  { law.cdf(t) } -> std::convertible_to<double>;
};
template <HasCdf Law>
TestResult ks_test(Data x, const Law& law, const TestOptions& options = {}) {
  const auto cdf = [](const void* d, std::span<const double> t, std::span<double> out) {
    const Law& given = *static_cast<const Law*>(d);
    if constexpr (requires { given.cdf(Data(t), out); }) {
      given.cdf(Data(t), out);
    } else {
      std::transform(t.begin(), t.end(), out.begin(), [&](double v) { return given.cdf(v); });
    }
  };
  return ks_test(x, cdf, &law, options);
}
template <typename Function>
requires(!HasCdf<Function> && std::is_invocable_r_v<double, const Function&, double>) TestResult
    ks_test(Data x, Function function, const TestOptions& options = {}) {
  const auto cdf = [](const void* f, std::span<const double> t, std::span<double> out) {
    std::transform(t.begin(), t.end(), out.begin(), *static_cast<const Function*>(f));
  };
  return ks_test(x, cdf, &function, options);
}

struct ChiSquareTestOptions {
  double ddof = 0;  // parameters estimated from the data; degrees of freedom are cells - 1 - ddof
  Missing missing = Missing::propagate;
};
// Pearson's statistic of counts; without expected ones all cells are equally likely.
VEXEL_API TestResult chi_square_test(Data observed, Data expected = {},
                                     const ChiSquareTestOptions& options = {});

struct TTestOptions {
  bool equal_var = false;  // two samples: false is Welch's test
  Missing missing = Missing::propagate;
};
// Student's t, two-sided: of one sample against a mean, of two against each other.
VEXEL_API TestResult t_test(Data x, double mean = 0, const TTestOptions& options = {});
VEXEL_API TestResult t_test(Data x, Data y, const TTestOptions& options = {});

}  // namespace vexel
