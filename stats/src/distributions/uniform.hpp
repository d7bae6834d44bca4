// Continuous uniform distribution on (a, b).
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_UniformProbability_HW(VKernelVector kv, double x, double a, double b);

// The quantile at probability p.
double STATS_UniformDeviate_HW(VKernelVector kv, double p, double a, double b);

// One variate.
double STATS_UniformRandomVariate_HW(VKernelVector kv, double a, double b);

inline double STATS_UniformRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_UniformRandomVariate_HW(kv, params[0], params[1]);
}
