// F distribution with nu1 and nu2 degrees of freedom.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_FRatioProbability_HW(VKernelVector kv, double x, double nu1, double nu2);

// The quantile at probability p.
double STATS_FRatioDeviate_HW(VKernelVector kv, double p, double nu1, double nu2);

// One variate.
double STATS_FRatioRandomVariate_HW(VKernelVector kv, double nu1, double nu2);

inline double STATS_FRatioRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_FRatioRandomVariate_HW(kv, params[0], params[1]);
}
