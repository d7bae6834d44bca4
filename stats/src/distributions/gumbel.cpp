// Gumbel distribution of the largest value, location a and scale b.
//
// Closed forms: Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 2,
// 2nd edition (1995), chapter 22.  Parameters are not checked: an impossible one gives whatever the
// formula gives, most often a NaN.

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/uniform_source.hpp"

double STATS_GumbelProbability_HW(VKernelVector, double x, double a, double b) {
  return std::exp(-std::exp(-(x - a) / b));
}

double STATS_GumbelDeviate_HW(VKernelVector, double p, double a, double b) {
  return a - b * std::log(-std::log(p));
}

// By inversion; one uniform per variate.
double STATS_GumbelRandomVariate_HW(VKernelVector kv, double a, double b) {
  return STATS_GumbelDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), a, b);
}
