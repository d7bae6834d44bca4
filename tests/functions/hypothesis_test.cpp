// Tests of hypotheses against references at 60 digits (tests/reference/hypothesis_tests.py).
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>
#include <vexel/hypothesis.hpp>

namespace {

namespace vx = vexel;
using Doubles = std::vector<double>;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

Doubles numbers(const std::string& text) {
  std::istringstream in(text);
  Doubles all;
  for (double v = 0; in >> v;) {
    all.push_back(v);
  }
  return all;
}

// A sample whose distance from the uniform law is d: i/n - x_i for all it can be.
Doubles sampleAt(double n, double d) {
  Doubles x;
  for (double i = 1; i <= n; ++i) {
    x.push_back(std::max(0.0, i / n - d));
  }
  return x;
}

double uniform(double t) { return t; }

vx::TestResult run(const std::string& kind, const std::vector<Doubles>& s) {
  if (kind == "t") {
    return vx::t_test(s[0], s[1][0]);
  }
  if (kind == "chi") {
    return vx::chi_square_test(s[0], s[1]);
  }
  if (kind == "ks") {
    return vx::ks_test(sampleAt(s[0][0], s[0][1]), uniform);
  }
  return vx::t_test(s[0], s[1], {.equal_var = kind == "pooled"});
}

TEST(Hypothesis, PValuesAreRightIntoTheFarTail) {
  std::ifstream file(TEST_DATA_DIR "/hypothesis_tests.txt");
  int rows = 0;
  for (std::string line; std::getline(file, line); ++rows) {
    std::vector<std::string> fields;
    std::istringstream in(line);
    for (std::string field; std::getline(in, field, ';');) {
      fields.push_back(field);
    }
    const double pvalue = numbers(fields.back())[0];
    const double statistic = numbers(fields[fields.size() - 2])[0];
    std::vector<Doubles> samples;
    for (std::size_t i = 1; i + 2 < fields.size(); ++i) {
      samples.push_back(numbers(fields[i]));
    }
    const vx::TestResult r = run(fields[0], samples);
    EXPECT_NEAR(r.statistic, statistic, 4e-15 * std::abs(statistic)) << line;
    // Of ks from n = 100 on a tail is the rest of 1 down to 1e-3, and then has a correction.
    const double tolerance = fields[0] == "ks" && samples[0][0] > 100 ? 1e-11 : 1e-12;
    EXPECT_NEAR(r.pvalue, pvalue, tolerance * pvalue) << line;
  }
  EXPECT_GT(rows, 20);
}

TEST(Hypothesis, KolmogorovTailsOfAllMethodsMeet) {
  for (const double n : {90.0, 128.0, 4096.0, 8192.0}) {
    double before = 1;
    for (double t = 0.3; t < 18.5 && t < 0.9 * std::sqrt(n); t *= 1.04) {
      const double p = vx::ks_test(sampleAt(n, t / std::sqrt(n)), uniform).pvalue;
      EXPECT_LT(p, before * (t > 0.4 ? 1 : 1 + 1e-6)) << n << " at " << t;
      EXPECT_GT(p, 0);
      before = p;
    }
  }
}

TEST(Hypothesis, ShapiroWilkOfPublishedData) {
  // Weights of Royston (1995); statistic and p-value as the algorithm prints them.
  const Doubles weights = {148, 154, 158, 160, 161, 162, 166, 170, 182, 195, 236};
  const auto [w, p] = vx::shapiro(weights);
  EXPECT_NEAR(w, 0.79, 0.005);
  EXPECT_NEAR(p, 0.0070, 0.0005);
  Doubles shifted = weights;
  for (double& v : shifted) {
    v = 1e6 + v * 0x1p-10;
  }
  EXPECT_NEAR(vx::shapiro(shifted).statistic, w, 1e-14);
}

TEST(Hypothesis, NothingToTestIsNan) {
  const Doubles none, one = {3}, flat = {2, 2, 2}, gap = {1, 2, kNan, 4};
  for (const vx::TestResult r :
       {vx::shapiro(one), vx::shapiro(flat), vx::shapiro(gap), vx::t_test(none), vx::t_test(one),
        vx::t_test(flat, 2), vx::t_test(one, none), vx::ks_test(none, uniform),
        vx::ks_test(gap, uniform), vx::t_test(gap, flat), vx::chi_square_test({5, kNan})}) {
    EXPECT_TRUE(std::isnan(r.pvalue));
  }
  EXPECT_EQ(vx::t_test(flat, 1).pvalue, 0);
  EXPECT_EQ(vx::t_test(gap, 0, {.missing = vx::Missing::omit}).pvalue,
            vx::t_test({1, 2, 4}).pvalue);
  EXPECT_EQ(vx::t_test({1e300, 1.7e308, -1e308}).pvalue,
            vx::t_test({1e200, 1.7e208, -1e208}).pvalue);
  // Of data far from 0 compared with their difference.
  EXPECT_EQ(vx::t_test({1e15 + 1, 1e15 + 2, 1e15 + 6}, 1e15 + 1).statistic,
            vx::t_test({1, 2, 6}, 1).statistic);
  EXPECT_EQ(vx::t_test({1e15 + 1, 1e15 + 2, 1e15 + 6}, {1e15 + 4, 1e15 + 5}).statistic,
            vx::t_test({1, 2, 6}, {4, 5}).statistic);
  EXPECT_THROW(vx::shapiro(Doubles(5001)), std::length_error);
  EXPECT_THROW(vx::chi_square_test({1, 2}, {1, 3}), std::invalid_argument);
  EXPECT_THROW(vx::chi_square_test({1, -2}), std::invalid_argument);
  EXPECT_THROW(vx::ks_test(one, [](double) { return 1.5; }), std::domain_error);
}

}  // namespace
