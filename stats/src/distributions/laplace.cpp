// Laplace distribution with location a and scale b.
//
// Closed forms: Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 2,
// 2nd edition (1995), chapter 24.  Parameters are not checked: an impossible one gives whatever the
// formula gives, most often a NaN.

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/uniform_source.hpp"

double STATS_LaplaceProbability_HW(VKernelVector, double x, double a, double b) {
  if (x >= a) {
    return 1.0 - 0.5 * std::exp(-(x - a) / b);
  }
  return 0.5 * std::exp(-(a - x) / b);
}

double STATS_LaplaceDeviate_HW(VKernelVector, double p, double a, double b) {
  if (p >= 0.5) {
    return a - b * std::log(2.0 * (1.0 - p));
  }
  return a + b * std::log(2.0 * p);
}

// By inversion; one uniform per variate.
double STATS_LaplaceRandomVariate_HW(VKernelVector kv, double a, double b) {
  return STATS_LaplaceDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), a, b);
}
