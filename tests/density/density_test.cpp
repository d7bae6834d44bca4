// Kernel density estimates and their kernels; most of their values are compared with the models.

#include <cmath>
#include <numeric>
#include <vector>

#include "kernel_test.hpp"
#include "kernels/density/kernel_transforms.hpp"

namespace {

using DensityTest = KernelTest;

TEST(KernelTransforms, AreTransformsOfUnitVarianceDensities) {
  for (int code = 0; code <= 4; ++code) {
    SCOPED_TRACE(code);
    const auto transform = vexel::kernels::kernelTransformOfCode(code);
    ASSERT_NE(transform, nullptr);
    EXPECT_EQ(transform(0.0), 1.0);
    // 1 - s^2/2 + O(s^4): the variance is 1.
    EXPECT_NEAR(transform(1e-4), 1.0 - 0.5e-8, 1e-15);
    EXPECT_NEAR(transform(0.05), 1.0 - 0.5 * 0.05 * 0.05, 1e-6);
    EXPECT_LT(std::abs(transform(1e6)), 1e-5);
    EXPECT_EQ(transform(-0.7), transform(0.7));
    EXPECT_TRUE(std::isnan(transform(std::nan(""))));
  }
  EXPECT_EQ(vexel::kernels::kernelTransformOfCode(5), nullptr);
  EXPECT_EQ(vexel::kernels::kernelTransformOfCode(-1), nullptr);
}

TEST(KernelTransforms, SeriesAndClosedFormsMeet) {
  const auto epanechnikov = [](double s) {
    const double x = std::sqrt(5.0) * s;
    return 3.0 * (std::sin(x) - x * std::cos(x)) / (x * x * x);
  };
  const auto biweight = [](double s) {
    const double t = std::sqrt(7.0) * s;
    return 15.0 * ((3.0 - t * t) * std::sin(t) - 3.0 * t * std::cos(t)) / std::pow(t, 5);
  };
  for (double s = 0.3; s < 4.0; s += 0.01) {
    EXPECT_NEAR(vexel::kernels::epanechnikovTransform(s), epanechnikov(s), 1e-14) << s;
    EXPECT_NEAR(vexel::kernels::biweightTransform(s), biweight(s), 3e-13) << s;
  }
}

TEST_F(DensityTest, IsADensityForEveryKernelAndGridLength) {
  std::vector<double> x;
  for (int i = 0; i < 200; ++i) {
    x.push_back(std::sin(i * 1.7) + 0.3 * std::cos(i * 0.9));
  }
  for (int M : {2, 8, 12, 64, 127, 512, 1009}) {
    for (int code = 0; code <= 4; ++code) {
      const auto density = numbers(
          call("STATS_VexelKernelDensity_HW", array(x), none(), code, 0.2, M, false, -2.0, 2.0));
      ASSERT_EQ(density.size(), static_cast<std::size_t>(M));
      EXPECT_NEAR(std::accumulate(density.begin(), density.end(), 0.0) * 4.0 / M, 1.0, 1e-12)
          << M << " points, kernel " << code;
    }
  }
}

// The grid is periodic with period M (b - a)/(M - 1); distances count in steps of (b - a)/M, the
// unit in which the frequencies are laid out.
TEST_F(DensityTest, OneDatumGivesTheKernelItself) {
  constexpr int M = 256;
  const auto density = numbers(
      call("STATS_VexelKernelDensity_HW", array({128.0}), none(), 0, 8.0, M, false, 0.0, 255.0));
  constexpr double step = 255.0 / M;
  for (int j = 80; j < 180; ++j) {
    const double z = (j - 128) * step / 8.0;
    EXPECT_NEAR(density[static_cast<std::size_t>(j)],
                std::exp(-0.5 * z * z) / (8.0 * std::sqrt(2.0 * std::acos(-1.0))), 1e-12);
  }
}

TEST_F(DensityTest, ShapiroWilkLeavesProtectedArraysAlone) {
  const std::vector<double> x = {161, 148, 154, 236, 158, 160, 162, 166, 170, 182, 195};
  const auto kept = readOnlyArray(x);
  const auto result = numbers(call("STATS_VexelShapiroWilk_HW", kept, none(), true));
  EXPECT_NEAR(result.at(0), 0.788814694835387, 1e-14);
  EXPECT_NEAR(result.at(1), 0.006703814056502847, 1e-15);
  EXPECT_EQ(numbers(kept), x);
  EXPECT_EQ(hostError([&] {
              call("STATS_VexelShapiroWilk_HW", readOnlyArray({1, 2, kNaN, 4}), none(), true);
            }),
            "the Shapiro-Wilk test takes no missing or infinite elements");
}

}  // namespace
