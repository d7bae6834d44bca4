// Quantiles by their definition, and statistics of points that are few, equal, infinite or refused.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>
#include <vexel/descriptive.hpp>
#include <vexel/interruption.hpp>

#include "statistics_points.hpp"

namespace {

using vexel::Correlation;
using vexel::Data;
using vexel::Mean;
using vexel::Missing;
using vexel::QuantileMethod;

// By definition: the positions of Hyndman and Fan in the sorted sample.
double quantileOfSorted(const Vector& sorted, double q, int method) {
  const auto n = static_cast<double>(sorted.size());
  const auto at = [&](double k) {
    return sorted[static_cast<std::size_t>(std::clamp(k, 1.0, n)) - 1];
  };
  const double a[] = {0, 0, 0, 0, 0.5, 0, 1, 1.0 / 3, 3.0 / 8};
  const double b[] = {0, 0, 0, 1, 0.5, 0, 1, 1.0 / 3, 3.0 / 8};
  const double nq = n * q;
  switch (method) {
    case 0:
      return at(std::ceil(nq));
    case 1:
      return nq == std::floor(nq) ? (at(nq) + at(nq + 1)) / 2 : at(std::ceil(nq));
    case 2: {
      const double j = std::floor(nq - 0.5);
      return at(j == nq - 0.5 && std::fmod(j, 2) == 0 ? j : j + 1);
    }
    default: {
      const double h =
          method == 6 ? (n - 1) * q + 1 : nq + a[method] + q * (1 - a[method] - b[method]);
      const double j = std::floor(h);
      const double low = at(j);
      const double high = at(j + 1);
      return low == high || h == j ? low : low + (high - low) * (h - j);
    }
  }
}

// Sizes on either side of the ways that selection goes, shapes that deceive its samples and cells.
TEST(Quantile, IsByDefinitionInEveryMethodAndWay) {
  std::mt19937_64 random(9);
  for (const std::size_t n : {1U, 2U, 7U, 60U, 25000U, 90000U}) {
    for (int shape = 0; shape < 6; ++shape) {
      Vector x(n);
      Vector w(n);
      for (std::size_t i = 0; i < n; ++i) {
        const auto u = static_cast<double>(random() % 1000000) / 1e6;
        const double shapes[] = {u,
                                 std::exp(60 * u),
                                 std::floor(5 * u),
                                 static_cast<double>(i) + u,
                                 -1e300 * u,
                                 u < 0.01   ? kInfinity
                                 : u < 0.02 ? -kInfinity
                                            : u};
        x[i] = shapes[shape];
        w[i] = static_cast<double>(random() % 4);
      }
      w[0] = 1.0;
      Vector repeated;
      for (std::size_t i = 0; i < n; ++i) {
        repeated.insert(repeated.end(), static_cast<std::size_t>(w[i]), x[i]);
      }
      Vector sorted = repeated;
      std::sort(sorted.begin(), sorted.end());
      Vector q = {0.5, 0.0, 1.0, 0.25};
      for (int i = 0; i < 31; ++i) {
        q.push_back(i / 31.0);
      }
      for (const std::size_t some : {std::size_t{1}, std::size_t{3}, q.size()}) {
        for (int method = 0; method < 9; ++method) {
          const auto m = static_cast<QuantileMethod>(method);
          const Data asked(q.data(), some);
          const Vector plain = vexel::quantile(repeated, asked, {.method = m});
          const Vector weighted = vexel::quantile(x, asked, {.weights = w, .method = m});
          for (std::size_t i = 0; i < some; ++i) {
            const double expected = quantileOfSorted(sorted, q[i], method);
            EXPECT_TRUE(plain[i] == weighted[i] || std::isnan(plain[i]))
                << n << " " << shape << " " << method << " " << q[i];
            if (!std::isnan(expected)) {
              expectNear(plain[i], expected, 1e-9, "method " + std::to_string(method));
            }
          }
        }
      }
    }
  }
}

TEST(Quantile, RisesWithQForAnyWeights) {
  std::mt19937_64 random(10);
  std::uniform_real_distribution<double> uniform;
  for (const double scale : {0.01, 1.0, 30.0}) {
    Vector x(40);
    Vector w(40);
    std::generate(x.begin(), x.end(), [&] { return uniform(random); });
    std::generate(w.begin(), w.end(), [&] { return scale * uniform(random); });
    Vector q(2001);
    for (std::size_t i = 0; i < q.size(); ++i) {
      q[i] = static_cast<double>(i) / 2000.0;
    }
    for (int method = 0; method < 9; ++method) {
      const Vector v =
          vexel::quantile(x, q, {.weights = w, .method = static_cast<QuantileMethod>(method)});
      EXPECT_TRUE(std::is_sorted(v.begin(), v.end())) << method << " " << scale;
    }
    const auto [min, low, median, high, max] = vexel::five_number(x, {.weights = w});
    EXPECT_TRUE(min <= low && low <= median && median <= high && high <= max) << scale;
  }
}

TEST(Statistics, OfInfinitePointsAreFiniteWhereTheyMayBe) {
  const Vector x = {-kInfinity, 1, 2, 3, 4, kInfinity};
  EXPECT_EQ(vexel::median(x), 2.5);
  EXPECT_EQ(vexel::quantile(x, 0.0), -kInfinity);
  EXPECT_EQ(vexel::quantile(x, 0.25), 1.25);
  EXPECT_EQ(vexel::trimmed_mean(x, 0.2), 2.5);
  EXPECT_EQ(vexel::winsorized_mean(x, 0.2), 2.5);
  EXPECT_EQ(vexel::median_absolute_deviation(x), 1.5);
  EXPECT_EQ(vexel::mean({1, kInfinity}), kInfinity);
  EXPECT_TRUE(std::isnan(vexel::mean(x)));
  EXPECT_EQ(vexel::mean({1, kInfinity}, {.kind = Mean::harmonic}), 2.0);
  EXPECT_EQ(vexel::mean({0, 1}, {.kind = Mean::geometric}), 0.0);
  EXPECT_TRUE(std::isnan(vexel::mean({-1, 1}, {.kind = Mean::geometric})));
  EXPECT_TRUE(std::isnan(vexel::var({1, kInfinity})));
  EXPECT_EQ(vexel::moment({1, kInfinity}, 2, {.center = 0.0}), kInfinity);
  EXPECT_EQ(vexel::corr({1, 2, 3, 4}, {1, 2, 4, kInfinity}, {.method = Correlation::kendall}), 1.0);
}

TEST(Statistics, OfEqualPointsHaveNoSpread) {
  const Vector x(1001, 0.1);
  EXPECT_EQ(vexel::mean(x), 0.1);
  EXPECT_EQ(vexel::var(x), 0.0);
  EXPECT_EQ(vexel::moment(x, 4), 0.0);
  EXPECT_EQ(vexel::cov(x, x), 0.0);
  EXPECT_EQ(vexel::mean_absolute_deviation(x), 0.0);
  EXPECT_TRUE(std::isnan(vexel::skewness(x)));
  EXPECT_TRUE(std::isnan(vexel::corr(x, x)));
}

TEST(Statistics, OfTwoOrThreePointsDivideByWhatThereIs) {
  EXPECT_TRUE(std::isnan(vexel::var({1})));
  EXPECT_EQ(vexel::var({1}, {.ddof = 0}), 0.0);
  EXPECT_TRUE(std::isnan(vexel::skewness({1, 2}, {.bias = false})));
  EXPECT_TRUE(std::isnan(vexel::kurtosis({1, 2, 4}, {.bias = false})));
  EXPECT_TRUE(std::isnan(vexel::trimmed_mean({1, 2}, 0.5)));
}

TEST(Statistics, RefuseParametersOutOfRange) {
  const Vector x = {1, 2, 3};
  EXPECT_THROW(vexel::quantile(x, 1.5), std::domain_error);
  EXPECT_EQ(vexel::order_statistic(x, {1, 3}).back(), vexel::order_statistic(x, 3));
  EXPECT_THROW(vexel::order_statistic(x, 0), std::domain_error);
  EXPECT_THROW(vexel::order_statistic(x, 4), std::domain_error);
  EXPECT_THROW(vexel::moment(x, -1), std::domain_error);
  EXPECT_THROW(vexel::moment(x, 65), std::domain_error);
  EXPECT_THROW(vexel::trimmed_mean(x, 0.6), std::domain_error);
  EXPECT_THROW(vexel::trimmed_mean(x, kNaN), std::domain_error);
  EXPECT_THROW(vexel::cov(x, {1, 2}), std::length_error);
  EXPECT_TRUE(std::isnan(vexel::quantile(x, kNaN)));
}

TEST(Covariance, OfColumnsIsThatOfPairs) {
  const Vector x = points(100, 11);
  Vector y = points(100, 12);
  const Vector z = points(100, 13);
  y[50] = kNaN;
  const Data columns[] = {x, y, z};
  const auto propagated = vexel::corr(columns);
  EXPECT_EQ(propagated(0, 2), vexel::corr(x, z));
  EXPECT_EQ(propagated(2, 0), propagated(0, 2));
  EXPECT_EQ(propagated(2, 2), 1.0);
  EXPECT_TRUE(std::isnan(propagated(0, 1)) && std::isnan(propagated(1, 1)));
  Vector x99 = x;
  Vector z99 = z;
  x99.erase(x99.begin() + 50);
  z99.erase(z99.begin() + 50);
  expectNear(vexel::cov(columns, {.missing = Missing::omit})(0, 2), vexel::cov(x99, z99), 4 * kUlp,
             "complete rows");
  for (const auto method : {Correlation::pearson, Correlation::spearman, Correlation::kendall}) {
    expectNear(vexel::corr(columns, {.method = method, .missing = Missing::omit})(0, 2),
               vexel::corr(x99, z99, {.method = method}), 4 * kUlp, "complete rows");
  }
}

TEST(Describe, PrintsATable) {
  const Vector x = {1, 2, 3, 4, kNaN, 90};
  const auto d = vexel::describe(x);
  EXPECT_EQ(d.count, 5.0);
  EXPECT_EQ(d.missing, 1U);
  EXPECT_EQ(d.mean, 20.0);
  EXPECT_EQ(d.q1, 2.0);
  EXPECT_EQ(d.std, vexel::std(x, {.missing = Missing::omit}));
  EXPECT_EQ(d.table(),
            "count            5\n"
            "missing          1\n"
            "mean            20\n"
            "std        39.1472\n"
            "min              1\n"
            "q1               2\n"
            "median           3\n"
            "q3               4\n"
            "max             90\n"
            "skewness   1.49694\n"
            "kurtosis  0.245924\n");
}

TEST(Statistics, StopWhenTold) {
  const Vector x(5000000, 1.0);
  int calls = 0;
  vexel::Watch watch([&](double done) {
    EXPECT_TRUE(done >= 0.0 && done <= 1.0);
    return ++calls < 2;
  });
  EXPECT_THROW(vexel::median(x), vexel::Interrupted);
}

}  // namespace
