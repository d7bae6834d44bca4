// Pareto distribution on x >= a with shape c.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_ParetoProbability_HW(VKernelVector kv, double x, double a, double c);

// The quantile at probability p.
double STATS_ParetoDeviate_HW(VKernelVector kv, double p, double a, double c);

// One variate.
double STATS_ParetoRandomVariate_HW(VKernelVector kv, double a, double c);

inline double STATS_ParetoRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_ParetoRandomVariate_HW(kv, params[0], params[1]);
}
