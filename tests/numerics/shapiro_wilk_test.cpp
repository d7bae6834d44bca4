// The Shapiro-Wilk test.

#include <gtest/gtest.h>
#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace {

struct Result {
  int code;
  double w, p;
};

Result test(std::vector<double> x) {
  Result r{};
  NagError fail{};
  std::sort(x.begin(), x.end());
  std::vector<double> a(x.size());
  q32554(static_cast<int>(x.size()), x.data(), 1, a.data(), &r.w, &r.p, &fail);
  r.code = fail.code;
  return r;
}

TEST(ShapiroWilk, IsThePublishedAlgorithm) {
  // Samples i^2 + (7 i mod 5); values at 50 digits by tests/reference/shapiro_wilk.py.
  static constexpr struct {
    int n;
    double w, p;
  } kCases[] = {
      {3, 0.94230769230769231, 0.53673712506620051},
      {4, 0.9577910955988542, 0.76500769839159568},
      {5, 0.95062277714310566, 0.7416371691921893},
      {6, 0.94383640609457785, 0.69023715132060355},
      {11, 0.91769295899252668, 0.29989111155225092},
      {12, 0.91534017918957298, 0.24962332275573206},
      {20, 0.90509293537932498, 0.051430020677281149},
      {500, 0.89527645312266677, 5.5407228040242694e-18},
      {5000, 0.89524677681832369, 5.3911691373664088e-50},
  };
  for (const auto& [n, w, p] : kCases) {
    std::vector<double> x;
    for (int i = 1; i <= n; ++i) {
      x.push_back(i * i + 7 * i % 5);
    }
    const Result r = test(x);
    EXPECT_NEAR(r.w, w, 1e-14) << n;
    EXPECT_NEAR(r.p, p, 1e-11 * p) << n;
  }
}

TEST(ShapiroWilk, AgreesWithPrintedResults) {
  // Weights of men in pounds: S. S. Shapiro and M. B. Wilk, 1965, Biometrika 52, section 4.2, have
  // W = 0.79.
  EXPECT_NEAR(test({148, 154, 158, 160, 161, 162, 166, 170, 182, 195, 236}).w, 0.79, 0.005);
}

TEST(ShapiroWilk, DoesNotDependOnPlaceAndScale) {
  const std::vector<double> x = {148, 154, 158, 160, 161, 162, 166, 170, 182, 195, 236};
  const Result reference = test(x);
  for (double scale : {1.0, -1.0, 1e-300, 1e300}) {
    std::vector<double> y = x;
    std::for_each(y.begin(), y.end(), [&](double& v) { v *= scale; });
    EXPECT_NEAR(test(y).w, reference.w, 1e-14) << scale;
  }
  std::vector<double> far = x;
  std::for_each(far.begin(), far.end(), [](double& v) { v += 1e12; });
  EXPECT_NEAR(test(far).p, reference.p, 1e-14);
}

TEST(ShapiroWilk, StaysInItsRangeForThreePoints) {
  // W of (0, t, 1) runs from 3/4 at t = 0 to 1 at t = 1/2; probabilities from 0 to 1.
  EXPECT_NEAR(test({0, 0, 1}).p, 0.0, 1e-14);
  EXPECT_GE(test({0, 0, 1}).p, 0.0);
  EXPECT_NEAR(test({0, 0, 1}).w, 0.75, 1e-15);
  EXPECT_GE(test({1e15, 1e15, 1e15 + 1}).p, 0.0);
  EXPECT_NEAR(test({0, 0.5, 1}).p, 1.0, 1e-7);
  EXPECT_NEAR(test({-1e308, 0, 1e308}).w, 1.0, 1e-15);
}

TEST(ShapiroWilk, CoefficientsCanBeKept) {
  const std::vector<double> x = {1, 2, 4, 8, 16, 32, 64};
  std::vector<double> a(x.size());
  double w[2] = {};
  double p[2] = {};
  q32554(7, x.data(), 1, a.data(), &w[0], &p[0], nullptr);
  q32554(7, x.data(), 0, a.data(), &w[1], &p[1], nullptr);
  EXPECT_EQ(w[0], w[1]);
  EXPECT_EQ(p[0], p[1]);
  EXPECT_NEAR(std::inner_product(a.begin(), a.end(), a.begin(), 0.0), 1.0, 1e-14);
}

TEST(ShapiroWilk, RefusesSamplesItIsNotFor) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(test({1, 2}).code, NAG2_TOO_FEW_ELEMENTS);
  EXPECT_EQ(test(std::vector<double>(5001)).code, NAG2_TOO_MANY_ELEMENTS);
  EXPECT_EQ(test({2, 2, 2, 2}).code, NAG2_ZERO_RANGE);
  EXPECT_EQ(test({1, 2, 3, HUGE_VAL}).code, NAG2_DOMAIN);
  const double unsorted[] = {1, 3, 2};
  const double missing[] = {1, 2, kNaN};
  double a[3];
  double w = 0.0;
  double p = 0.0;
  NagError fail{};
  q32554(3, unsorted, 1, a, &w, &p, &fail);
  EXPECT_EQ(fail.code, NAG2_NOT_SORTED);
  q32554(3, missing, 1, a, &w, &p, &fail);
  EXPECT_EQ(fail.code, NAG2_DOMAIN);
}

}  // namespace
