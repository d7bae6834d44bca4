// Fourier transforms of the smoothing kernels of B. W. Silverman, 1986, Density Estimation for
// Statistics and Data Analysis, table 3.1, by integration.
//
// With x = s times the kernel's half width they are spherical Bessel functions: j0(x/2)^2, j0(x),
// 3 j1(x)/x and 15 j2(x)/x^2.  Near 0 the closed forms of the last two are small differences of
// large terms, so their power series stand in there (M. Abramowitz and I. Stegun, 1964, 10.1.2).

#include "kernels/density/kernel_transforms.hpp"

#include <cmath>
#include <cstddef>
#include <iterator>

namespace vexel::kernels {

namespace {

// Half widths of the kernels of unit variance.
constexpr double kRectangularWidth = 1.7320508075688772;  // sqrt 3
constexpr double kEpanechnikovWidth = 2.23606797749979;   // sqrt 5
constexpr double kTriangularWidth = 2.449489742783178;    // sqrt 6
constexpr double kBiweightWidth = 2.6457513110645907;     // sqrt 7

// Below these |x| the series is used; above, the closed forms lose at most a digit.
constexpr double kEpanechnikovSeries = 1.5;
constexpr double kBiweightSeries = 2.0;

// (2 order + 1)!! j_order(x) / x^order, whose terms are (-x^2/2)^k / (k! (2 order + 3)...(2 order +
// 2k + 1)).  Fourteen terms reach 1e-18 for |x| <= 2.
double besselSeries(int order, double x) {
  constexpr int kTerms = 14;
  double term = 1.0;
  double total = 1.0;
  for (int k = 1; k < kTerms; ++k) {
    term *= -0.5 * x * x / (k * (2.0 * order + 2.0 * k + 1.0));
    total += term;
  }
  return total;
}

}  // namespace

double gaussianTransform(double s) { return std::exp(-s * s * 0.5); }

double triangularTransform(double s) {
  if (s == 0.0) {
    return 1.0;
  }
  const double half = s * kTriangularWidth * 0.5;
  const double ratio = std::sin(half) / half;
  return ratio * ratio;
}

double rectangularTransform(double s) {
  if (s == 0.0) {
    return 1.0;
  }
  return std::sin(s * kRectangularWidth) / kRectangularWidth / s;
}

double epanechnikovTransform(double s) {
  const double x = kEpanechnikovWidth * s;
  if (std::abs(x) < kEpanechnikovSeries) {
    return besselSeries(1, x);
  }
  return 3.0 * (std::sin(x) / x - std::cos(x)) / x / x;
}

double biweightTransform(double s) {
  const double t = s * kBiweightWidth;
  if (std::abs(t) < kBiweightSeries) {
    return besselSeries(2, t);
  }
  // Divided step by step: t^5 leaves the double range long before the value does.
  return 15.0 * (3.0 * (std::sin(t) / t - std::cos(t)) / t - std::sin(t)) / t / t / t;
}

KernelTransform kernelTransformOfCode(int code) {
  static constexpr KernelTransform kTransforms[] = {gaussianTransform, triangularTransform,
                                                    rectangularTransform, epanechnikovTransform,
                                                    biweightTransform};
  const auto index = static_cast<std::size_t>(code);
  return index < std::size(kTransforms) ? kTransforms[index] : nullptr;
}

}  // namespace vexel::kernels
