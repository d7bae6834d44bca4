// Tests of normality, of a law, of counts and of means.
#include <nag2/nag2.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>

#include "functions/data/elements.hpp"
#include "functions/data/sample.hpp"
#include "functions/descriptive/power_means.hpp"
#include "functions/hypothesis/kolmogorov.hpp"
#include "kernels/double_double.hpp"
#include "kernels/running_sum.hpp"
#include "kernels/watch.hpp"
#include "vexel/hypothesis.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kValuesAtATime = 2048;  // of a distribution function
constexpr TestResult kNothing{kNan, kNan};

using kernels::DoubleDouble;

// The present values in ascending order; broken where missing ones make the result NaN.
struct Ordered {
  std::vector<double> values;
  bool broken;

  Ordered(Data x, Missing missing) {
    const std::size_t all = x.size();
    values = sort(x, {.missing = missing == Missing::raise ? missing : Missing::omit});
    broken = missing == Missing::propagate && values.size() < all;
  }
};

// Number, mean and variance (ddof 1) in units of 2^exponent.
struct Summary {
  bool defined = false;
  double n = 0;
  DoubleDouble mean;
  DoubleDouble variance;
  int exponent = 0;

  Summary(Data x, Missing missing) {
    Sample sample("t_test", x, {}, missing);
    const PowerMeans means = powerMeans(sample, 2);
    defined = means.defined;
    if (defined) {
      n = means.weight.high;
      mean = means.meanOfAll();
      variance = means.central(2) * DoubleDouble(n) / DoubleDouble(n - 1);
      exponent = means.exponent;
    }
  }

  void scale(int to) {
    mean = mean.timesTwoTo(exponent - to);
    variance = variance.timesTwoTo(2 * (exponent - to));
    exponent = to;
  }
};

// distance / sqrt(square)
double ratio(DoubleDouble distance, DoubleDouble square) {
  return square.high == 0 ? distance.high / 0.0 : (distance / sqrt(square)).high;
}

TestResult twoSided(double t, double df) {
  if (std::isnan(t) || !(df > 0)) {
    return kNothing;
  }
  if (std::isinf(t)) {
    return {t, 0};
  }
  return {t, nag2_student_t_probability(Nag_TwoTailSignif, t, df, nullptr)};
}

}  // namespace

TestResult shapiro(Data x, const TestOptions& options) {
  constexpr std::size_t most = 5000;  // the approximations to the law of W are made for up to these
  const Ordered sample(x, options.missing);
  const std::size_t n = sample.values.size();
  if (n > most) {
    throw std::length_error(mustBe("x", "at most 5000 values", std::to_string(n)));
  }
  if (sample.broken || n < 3) {
    return kNothing;
  }
  std::vector<double> coefficients(n);
  TestResult result = kNothing;
  NagError fail{};
  q32554(static_cast<int>(n), sample.values.data(), 1, coefficients.data(), &result.statistic,
         &result.pvalue, &fail);
  return fail.code == NAG2_OK ? result : kNothing;
}

TestResult ks_test(Data x, CdfOfMany cdf, const void* law, const TestOptions& options) {
  const Ordered sample(x, options.missing);
  if (sample.broken || sample.values.empty()) {
    return kNothing;
  }
  const auto n = static_cast<double>(sample.values.size());
  double distance = 0;
  std::array<double, kValuesAtATime> found;
  for (std::size_t begin = 0; begin < sample.values.size(); begin += kValuesAtATime) {
    kernels::poll(static_cast<double>(begin) / n);
    const auto values = std::span(sample.values).subspan(begin);
    const auto at = values.first(std::min(kValuesAtATime, values.size()));
    cdf(law, at, std::span(found).first(at.size()));
    for (std::size_t i = 0; i < at.size(); ++i) {
      const double f = found[i];
      if (std::isnan(f)) {
        return kNothing;
      }
      if (f < 0 || f > 1) {
        throw std::domain_error(mustBe("distribution", "probabilities", number(f)));
      }
      const auto k = static_cast<double>(begin + i);
      distance = std::max({distance, (k + 1) / n - f, f - k / n});
    }
  }
  return {distance, kolmogorovTail(sample.values.size(), distance)};
}

TestResult chi_square_test(Data observed, Data expectedCounts,
                           const ChiSquareTestOptions& options) {
  constexpr double agreement = 1e-8;  // of the totals
  const bool given = expectedCounts.given();
  if (given) {
    requireSize("expected", expectedCounts.size(), observed.size());
  }
  kernels::RunningSum total;
  kernels::RunningSum expectedTotal;
  double cells = 0;
  for (std::size_t i = 0; i < observed.size(); ++i) {
    const double o = observed[i];
    const double e = given ? expectedCounts[i] : 1;
    if (isMissing(o) || isMissing(e)) {
      if (options.missing == Missing::raise) {
        refuseMissing("chi_square_test", i);
      }
      if (options.missing == Missing::propagate) {
        return kNothing;
      }
      continue;
    }
    if (o < 0 || e < 0 || std::isinf(o) || std::isinf(e)) {
      throw std::invalid_argument(mustBe(o < 0 || std::isinf(o) ? "observed" : "expected",
                                         "non-negative finite counts",
                                         number(o < 0 || std::isinf(o) ? o : e)));
    }
    total.add(o);
    expectedTotal.add(e);
    cells += 1;
  }
  const double scale = given ? 1 : total.value() / expectedTotal.value();
  if (given && std::abs(total.value() - expectedTotal.value()) >
                   agreement * std::max(total.value(), expectedTotal.value())) {
    throw std::invalid_argument(mustBe("expected",
                                       ("of a total of " + number(total.value())).c_str(),
                                       number(expectedTotal.value())));
  }
  kernels::RunningSum statistic;
  for (std::size_t i = 0; i < observed.size(); ++i) {
    const double o = observed[i];
    const double e = given ? expectedCounts[i] : scale;
    if (!isMissing(o) && !isMissing(e)) {
      statistic.add((o - e) / e * (o - e));
    }
  }
  const double df = cells - 1 - options.ddof;
  const double value = statistic.value();
  if (!(df > 0) || std::isnan(value)) {
    return {cells > 0 ? value : kNan, kNan};
  }
  return {value,
          std::isinf(value) ? 0.0 : nag2_chi_square_probability(Nag_UpperTail, value, df, nullptr)};
}

TestResult t_test(Data x, double mean, const TTestOptions& options) {
  const Summary s(x, options.missing);
  if (!s.defined || s.n < 2) {
    return kNothing;
  }
  const DoubleDouble distance = s.mean - DoubleDouble(std::ldexp(mean, -s.exponent));
  return twoSided(ratio(distance, s.variance / DoubleDouble(s.n)), s.n - 1);
}

// B. L. Welch (1947), The generalization of Student's problem when several different population
// variances are involved, for unequal variances.
TestResult t_test(Data x, Data y, const TTestOptions& options) {
  Summary a(x, options.missing);
  Summary b(y, options.missing);
  if (!a.defined || !b.defined) {
    return kNothing;
  }
  const int exponent = std::max(a.exponent, b.exponent);
  a.scale(exponent);
  b.scale(exponent);
  if (options.equal_var) {
    const DoubleDouble none = 0.0;
    const DoubleDouble squares = (a.n > 1 ? a.variance * DoubleDouble(a.n - 1) : none) +
                                 (b.n > 1 ? b.variance * DoubleDouble(b.n - 1) : none);
    const DoubleDouble df = a.n + b.n - 2;
    const DoubleDouble both = DoubleDouble(a.n + b.n) / (DoubleDouble(a.n) * DoubleDouble(b.n));
    return twoSided(ratio(a.mean - b.mean, squares / df * both), df.high);
  }
  const DoubleDouble ofA = a.variance / DoubleDouble(a.n);
  const DoubleDouble ofB = b.variance / DoubleDouble(b.n);
  const DoubleDouble both = ofA + ofB;
  // In shares of the sum, since squares of variances may leave the range of doubles.
  const double shareA = (ofA / both).high;
  const double shareB = (ofB / both).high;
  const double df = 1 / (shareA * shareA / (a.n - 1) + shareB * shareB / (b.n - 1));
  return twoSided(ratio(a.mean - b.mean, both), both.high == 0 ? a.n + b.n - 2 : df);
}

}  // namespace vexel
