// Means of powers of differences, from which central moments are made.
#pragma once

#include <vector>

#include "functions/data/sample.hpp"
#include "kernels/double_double.hpp"

namespace vexel {

// What a sample says of (x - center)^k, in units of 2^exponent to the same power.
struct PowerMeans {
  bool defined = false;  // false: every moment is NaN
  Sample::Presence found = {};
  kernels::DoubleDouble weight = {};             // n
  std::vector<kernels::DoubleDouble> mean = {};  // of k = 0, 1, ..., order
  int exponent = 0;
  double center = 0.0;  // in units of 2^exponent

  // The mean of x, in units of 2^exponent.
  kernels::DoubleDouble meanOfAll() const { return kernels::DoubleDouble(center) + mean[1]; }
  // The moment about the mean, k <= order, in the same units.
  kernels::DoubleDouble central(int k) const;
  // x * 2^(k exponent), rounded.
  double inUnits(kernels::DoubleDouble x, int k) const;
};

// About a center so near to the mean that central() loses nothing; order <= 64.  Up to order 2 the
// result is good to 2^-100, beyond to a few units of the last place of the mean of |x - mean|^k.
// One read of the data, or two where a sample of them deceives about the mean, or more where powers
// overflow or vanish.
PowerMeans powerMeans(Sample& sample, int order);

// About a given center.
PowerMeans powerMeans(Sample& sample, int order, double center);

// Of defined means up to order 3 and 4; NaN where the points are all equal, or too few.
double skewnessOf(const PowerMeans& means, bool bias);
double kurtosisOf(const PowerMeans& means, bool bias);

}  // namespace vexel
