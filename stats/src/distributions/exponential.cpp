// Exponential distribution with scale b.
//
// Closed forms: Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 1,
// 2nd edition (1994), chapter 19.  Parameters are not checked: an impossible one gives whatever the
// formula gives, most often a NaN.

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"

double STATS_ExponentialProbability_HW(VKernelVector, double x, double b) {
  return -std::expm1(-x / b);
}

double STATS_ExponentialDeviate_HW(VKernelVector kv, double p, double b) {
  if (p < 0.0 || p > 1.0) {
    VexelRaiseError1(kv, "invalid value for the tail probability: %1",
                     STATS_DoubleToVexelFloat_HW(kv, p));
  }
  return -b * std::log1p(-p);
}
