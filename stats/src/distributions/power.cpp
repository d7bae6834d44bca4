// Power function distribution on (0, b) with shape c.
//
// Closed forms: Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 1,
// 2nd edition (1994), chapter 20.  Parameters are not checked: an impossible one gives whatever the
// formula gives, most often a NaN.

#include <cmath>

#include "distributions/families.hpp"
#include "distributions/inverse_power.hpp"
#include "kernel/uniform_source.hpp"

double STATS_PowerProbability_HW(VKernelVector, double x, double b, double c) {
  if (x < 0.0) {
    return 0.0;
  }
  if (x > b) {
    return 1.0;
  }
  return std::pow(x / b, c);
}

double STATS_PowerDeviate_HW(VKernelVector, double p, double b, double c) {
  return b * STATS_InversePower_HW(p, c);
}

// By inversion; one uniform per variate.
double STATS_PowerRandomVariate_HW(VKernelVector kv, double b, double c) {
  return STATS_PowerDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), b, c);
}
