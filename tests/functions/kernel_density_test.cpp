// Kernel densities against the direct sums that define them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <random>
#include <stdexcept>
#include <vexel/hypothesis.hpp>
#include <vexel/kernel_density.hpp>
#include <vexel/random.hpp>

namespace {

namespace vx = vexel;
using Doubles = std::vector<double>;

constexpr vx::DensityKernel kKernels[] = {
    vx::DensityKernel::gaussian, vx::DensityKernel::epanechnikov, vx::DensityKernel::rectangular,
    vx::DensityKernel::triangular, vx::DensityKernel::biweight};

// The textbook forms, stretched to standard deviation 1.
double kernel(vx::DensityKernel k, double u) {
  const double c[] = {0, std::sqrt(5.0), std::sqrt(3.0), std::sqrt(6.0), std::sqrt(7.0)};
  const double v = k == vx::DensityKernel::gaussian ? 0 : std::abs(u) / c[static_cast<int>(k)];
  switch (k) {
    case vx::DensityKernel::gaussian:
      return std::exp(-u * u / 2) / std::sqrt(2 * std::numbers::pi);
    case vx::DensityKernel::epanechnikov:
      return v > 1 ? 0 : 0.75 * (1 - v * v) / c[1];
    case vx::DensityKernel::rectangular:
      return v > 1 ? 0 : 0.5 / c[2];
    case vx::DensityKernel::triangular:
      return v > 1 ? 0 : (1 - v) / c[3];
    default:
      return v > 1 ? 0 : 15.0 / 16 * std::pow(1 - v * v, 2) / c[4];
  }
}

double directSum(const Doubles& x, const Doubles& w, double h, vx::DensityKernel k, double t) {
  double sum = 0, total = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    sum += w[i] * kernel(k, (t - x[i]) / h) / h;
    total += w[i];
  }
  return sum / total;
}

Doubles normals(std::size_t n) { return vx::Random(5).normal(n); }

TEST(KernelDensity, ValuesAreDirectSums) {
  for (const std::size_t n : {1, 7, 200, 20000}) {
    const Doubles x = normals(n);
    Doubles w(n);
    for (std::size_t i = 0; i < n; ++i) {
      w[i] = static_cast<double>(i % 4);
    }
    w[0] = 1;
    for (const auto k : kKernels) {
      for (const double h : {0.02, 0.3, 20.0}) {
        const auto d = vx::kde(x, {.weights = w, .bandwidth = h, .kernel = k, .points = 700});
        // Few points are summed directly; many are shared out to a grid of h/64.  A jump of the
        // kernel is then off by what lies in a cell.
        const double peak = 1 / h;
        const double tolerance = n < 1000                              ? 1e-14
                                 : k == vx::DensityKernel::rectangular ? 3e-3
                                                                       : 2e-5;
        for (std::size_t i = 0; i < d.x().size(); i += 23) {
          const double wanted = directSum(x, w, h, k, d.x()[i]);
          EXPECT_NEAR(d.y()[i], wanted, tolerance * peak)
              << n << ", h " << h << ", kernel " << static_cast<int>(k);
          EXPECT_NEAR(d(d.x()[i]), wanted, 1e-12 * (wanted + 1e-3 * peak));
        }
      }
    }
  }
}

TEST(KernelDensity, CdfIsTheIntegralAndSamplesFollowIt) {
  const Doubles x = {0, 1, 1.5, 7};
  const Doubles w = {1, 2, 0, 1};
  for (const auto k : kKernels) {
    const auto d = vx::kde(x, {.weights = w, .bandwidth = 0.7, .kernel = k});
    double area = 0;
    for (double t = -8; t < 12; t += 0x1p-10) {
      area += d(t + 0x1p-11) * 0x1p-10;
      if (std::fmod(t, 0.5) == 0) {
        EXPECT_NEAR(d.cdf(t + 0x1p-10), area, 5e-4);
      }
    }
    EXPECT_NEAR(area, 1, 5e-4);
    vx::Random rng(3);
    EXPECT_GT(vx::ks_test(d.sample(50000, rng), d).pvalue, 1e-5);
  }
  const auto d = vx::kde(x, {.bandwidth = 1});
  EXPECT_NEAR(d.cdf(-25) / (0.25 * 0.5 * std::erfc(25 / std::numbers::sqrt2)), 1, 1e-9);
  EXPECT_NEAR(d(-25) / (0.25 * kernel(vx::DensityKernel::gaussian, 25)), 1, 1e-9);
  EXPECT_EQ(d.cdf(1000), 1);
}

TEST(KernelDensity, BandwidthsAndBoundsByDefault) {
  const Doubles x = {1, 2, 3, 4, 10};
  const double sd = std::sqrt(12.5), iqr = 2;
  const auto d = vx::kde(x);
  EXPECT_DOUBLE_EQ(d.bandwidth(), 0.9 * std::min(sd, iqr / 1.34) * std::pow(5, -0.2));
  EXPECT_DOUBLE_EQ(vx::kde(x, {.bandwidth = vx::BandwidthRule::scott}).bandwidth() / d.bandwidth(),
                   1.06 / 0.9);
  EXPECT_EQ(d.x().size(), 512);
  EXPECT_EQ(d.x().front(), 1 - 3 * d.bandwidth());
  EXPECT_EQ(d.x().back(), 10 + 3 * d.bandwidth());
  const auto repeated = vx::kde({1, 2, 2, 2, 3}),
             weighted = vx::kde({1, 2, 3}, {.weights = {1, 3, 1}});
  EXPECT_DOUBLE_EQ(repeated.bandwidth(), weighted.bandwidth());
  EXPECT_DOUBLE_EQ(repeated(1.7), weighted(1.7));
  const auto bounded = vx::kde(x, {.points = 3, .bounds = vx::Interval{0, 4}});
  EXPECT_THAT(bounded.x(), testing::ElementsAre(0, 2, 4));
}

TEST(KernelDensity, NothingAndErrors) {
  for (const Doubles& x : {Doubles{}, Doubles{1, std::numeric_limits<double>::quiet_NaN()}}) {
    const auto d = vx::kde(x, {.points = 2});
    EXPECT_TRUE(std::isnan(d.bandwidth()) && std::isnan(d.y()[1]) && std::isnan(d(0)) &&
                std::isnan(d.cdf(0)));
  }
  EXPECT_THROW(vx::kde({2, 2, 2}), std::invalid_argument);
  EXPECT_DOUBLE_EQ(vx::kde({2, 2, 2}, {.bandwidth = 1})(2), 1 / std::sqrt(2 * std::numbers::pi));
  EXPECT_THROW(vx::kde({1, 2}, {.bandwidth = -1.0}), std::invalid_argument);
  EXPECT_THROW(vx::kde({1, 2}, {.points = 1}), std::invalid_argument);
  EXPECT_THROW(vx::kde({1, 2}, {.bounds = vx::Interval{3, 3}}), std::invalid_argument);
  EXPECT_THROW(vx::kde({1, HUGE_VAL}), std::invalid_argument);
}

}  // namespace
