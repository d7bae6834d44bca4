// Continuous uniform distribution on (a, b).  Parameters are not checked.

#include "distributions/families.hpp"
#include "kernel/uniform_source.hpp"

double STATS_UniformProbability_HW(VKernelVector, double x, double a, double b) {
  if (x <= a) {
    return 0.0;
  }
  if (x >= b) {
    return 1.0;
  }
  return (x - a) / (b - a);
}

double STATS_UniformDeviate_HW(VKernelVector, double p, double a, double b) {
  return a + (b - a) * p;
}

// By inversion; one uniform per variate.
double STATS_UniformRandomVariate_HW(VKernelVector kv, double a, double b) {
  return STATS_UniformDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), a, b);
}
