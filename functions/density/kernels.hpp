// The five kernels: densities of standard deviation 1, their distribution functions and variates.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "vexel/kernel_density.hpp"
#include "vexel/random.hpp"

namespace vexel {

// Beyond this distance a normal kernel is below 1e-17 of its middle.
inline constexpr double kFarKernel = 9;

// Beyond this distance a kernel is 0.
inline double kernelReach(DensityKernel kernel) {
  switch (kernel) {
    case DensityKernel::epanechnikov:
      return std::sqrt(5.0);
    case DensityKernel::rectangular:
      return std::numbers::sqrt3;
    case DensityKernel::triangular:
      return std::sqrt(6.0);
    case DensityKernel::biweight:
      return std::sqrt(7.0);
    case DensityKernel::gaussian:
      break;
  }
  return 38.6;
}

inline double kernelDensity(DensityKernel kernel, double u) {
  const double reach = kernelReach(kernel);
  if (kernel == DensityKernel::gaussian) {
    return std::exp(-u * u / 2) * (std::numbers::inv_sqrtpi / std::numbers::sqrt2);
  }
  const double v = std::abs(u) / reach;
  if (!(v <= 1)) {
    return 0;
  }
  const double w = (1 - v) * (1 + v);
  switch (kernel) {
    case DensityKernel::epanechnikov:
      return 0.75 * w / reach;
    case DensityKernel::triangular:
      return (1 - v) / reach;
    case DensityKernel::biweight:
      return 0.9375 * w * w / reach;
    default:
      return 0.5 / reach;
  }
}

// The probability below u.
inline double kernelProbability(DensityKernel kernel, double u) {
  if (kernel == DensityKernel::gaussian) {
    return 0.5 * std::erfc(-u / std::numbers::sqrt2);
  }
  const double reach = kernelReach(kernel);
  const double v = -std::min(std::abs(u) / reach, 1.0);
  const double a = 1 + v;
  double tail = 0.5 * a;
  if (kernel == DensityKernel::epanechnikov) {
    tail = a * a * (2 - v) / 4;
  } else if (kernel == DensityKernel::triangular) {
    tail = a * a / 2;
  } else if (kernel == DensityKernel::biweight) {
    tail = a * a * a * (8 - 9 * v + 3 * v * v) / 16;
  }
  return u <= 0 ? tail : 1 - tail;
}

// The middle one of 2k + 1 uniforms has a beta law: k = 1 gives the Epanechnikov kernel's, k = 2
// the biweight's.
template <std::size_t kCount>
double middleUniform(Random& rng) {
  std::array<double, kCount> u;
  for (double& v : u) {
    v = rng.uniform();
  }
  std::nth_element(u.begin(), u.begin() + kCount / 2, u.end());
  return u[kCount / 2];
}

inline double kernelVariate(DensityKernel kernel, Random& rng) {
  const double reach = kernelReach(kernel);
  switch (kernel) {
    case DensityKernel::epanechnikov:
      return reach * (2 * middleUniform<3>(rng) - 1);
    case DensityKernel::rectangular:
      return reach * (2 * rng.uniform() - 1);
    case DensityKernel::triangular: {
      const double u = rng.uniform();
      return reach * (u + rng.uniform() - 1);
    }
    case DensityKernel::biweight:
      return reach * (2 * middleUniform<5>(rng) - 1);
    case DensityKernel::gaussian:
      break;
  }
  return rng.normal();
}

}  // namespace vexel
