// Five-point and moment summaries.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double medianOfSorted(const std::vector<double>& x, std::size_t begin, std::size_t size) {
  return (x[begin + (size - 1) / 2] + x[begin + size / 2]) / 2.0;
}

TEST(FivePointSummary, IsThatOfTheSortedSample) {
  std::mt19937_64 random(5);
  for (std::size_t n = 5; n < 60; ++n) {
    for (int repeat = 0; repeat < 20; ++repeat) {
      std::vector<double> x(n);
      std::generate(x.begin(), x.end(), [&] { return static_cast<double>(random() % 30); });
      std::vector<double> out(5);
      q51748(static_cast<int>(n), x.data(), out.data(), nullptr);
      std::sort(x.begin(), x.end());
      const std::size_t half = (n + 1) / 2;
      EXPECT_THAT(
          out, testing::ElementsAre(x.front(), medianOfSorted(x, 0, half), medianOfSorted(x, 0, n),
                                    medianOfSorted(x, n - half, half), x.back()))
          << n;
    }
  }
}

TEST(FivePointSummary, NeedsFiveElementsAndNumbers) {
  const double x[] = {1.0, 2.0, kNaN, 4.0, 5.0};
  double out[5] = {};
  NagError fail{};
  q51748(4, x, out, &fail);
  EXPECT_EQ(fail.code, NAG2_TOO_FEW_ELEMENTS);
  q51748(5, x, out, nullptr);
  EXPECT_TRUE(std::all_of(out, out + 5, [](double v) { return std::isnan(v); }));
}

struct Summary {
  int code, valid;
  double mean, sd, skewness, kurtosis, minimum, maximum, total;
};

Summary summary(const std::vector<double>& x, const std::vector<double>& w = {}) {
  Summary s{};
  NagError fail{};
  q15220(static_cast<int>(x.size()), x.data(), w.empty() ? nullptr : w.data(), &s.valid, &s.mean,
         &s.sd, &s.skewness, &s.kurtosis, &s.minimum, &s.maximum, &s.total, &fail);
  s.code = fail.code;
  return s;
}

TEST(StatisticSummary, FollowsItsFormulas) {
  // Deviations of (1, 2, 3, 10) from 4: squares add to 50, cubes to 180, fourth powers to 1394.
  const Summary plain = summary({1, 2, 3, 10});
  EXPECT_EQ(plain.valid, 4);
  EXPECT_EQ(plain.mean, 4.0);
  EXPECT_DOUBLE_EQ(plain.sd, std::sqrt(50.0 / 3.0));
  EXPECT_DOUBLE_EQ(plain.skewness, 60.0 / std::pow(50.0 / 3.0, 1.5));
  EXPECT_DOUBLE_EQ(plain.kurtosis, 1394.0 / 3.0 / (2500.0 / 9.0) - 3.0);
  EXPECT_EQ(plain.minimum, 1.0);
  EXPECT_EQ(plain.maximum, 10.0);
  EXPECT_EQ(plain.total, 4.0);

  // Weight 0 takes 100 out; W = 4, D = 4 - 6/4, deviations from 3 are (-2, 0, 2) of weights 1,
  // 2, 1.
  const Summary weighted = summary({1, 3, 5, 100}, {1, 2, 1, 0});
  EXPECT_EQ(weighted.valid, 3);
  EXPECT_EQ(weighted.mean, 3.0);
  EXPECT_DOUBLE_EQ(weighted.sd, std::sqrt(8.0 / 2.5));
  EXPECT_EQ(weighted.skewness, 0.0);
  EXPECT_DOUBLE_EQ(weighted.kurtosis, 32.0 / 2.5 / (3.2 * 3.2) - 3.0);
  EXPECT_EQ(weighted.maximum, 5.0);
  EXPECT_EQ(weighted.total, 4.0);
}

TEST(StatisticSummary, KeepsItsDigitsFarFromZero) {
  const Summary far = summary({1e9 + 1, 1e9 + 2, 1e9 + 3, 1e9 + 10});
  EXPECT_EQ(far.mean, 1e9 + 4);
  EXPECT_DOUBLE_EQ(far.sd, std::sqrt(50.0 / 3.0));
}

// Here the divisor is (4e12 + 2) / W, four of W = 1e12 + 2.
TEST(StatisticSummary, KeepsItsDigitsUnderAnOutweighingElement) {
  const Summary s = summary({0, 1, 2}, {1e12, 1, 1});
  EXPECT_NEAR(s.sd, std::sqrt((5.0 - 9.0 / s.total) / ((4e12 + 2) / s.total)), 1e-15);
}

// Powers of deviations leave the double range long before the statistics do.
TEST(StatisticSummary, DoesNotDependOnScale) {
  const Summary plain = summary({1, 2, 3, 10});
  for (int exponent : {-1074, -1000, -300, 300, 1000, 1019}) {
    SCOPED_TRACE(exponent);
    const double unit = std::ldexp(1.0, exponent);
    const Summary scaled = summary({unit, 2 * unit, 3 * unit, 10 * unit});
    EXPECT_EQ(scaled.sd, plain.sd * unit);
    EXPECT_EQ(scaled.skewness, plain.skewness);
    EXPECT_EQ(scaled.kurtosis, plain.kurtosis);
  }
  EXPECT_EQ(summary({1, 2, HUGE_VAL}).mean, HUGE_VAL);
}

TEST(StatisticSummary, FailuresAndMissingValues) {
  EXPECT_EQ(summary({1, 2}, {1, -1}).code, NAG2_NEGATIVE_WEIGHT);
  EXPECT_EQ(summary({1, 2}, {0, 0}).code, NAG2_ZERO_TOTAL_WEIGHT);
  EXPECT_EQ(summary({1, 2}, {0, 1}).code, NAG2_TOO_FEW_CASES);
  EXPECT_EQ(summary({1}).code, NAG2_TOO_FEW_CASES);
  EXPECT_EQ(summary({1, kNaN}, {0, 0}).code, NAG2_ZERO_TOTAL_WEIGHT);
  EXPECT_EQ(summary({1, kNaN}, {1, 0}).code, NAG2_TOO_FEW_CASES);
  EXPECT_EQ(summary({kNaN}).code, NAG2_TOO_FEW_CASES);
  EXPECT_TRUE(std::isnan(summary({1, kNaN, 3}).minimum));
  EXPECT_TRUE(std::isnan(summary({1, 2, 3}, {1, kNaN, 1}).minimum));
}

}  // namespace
