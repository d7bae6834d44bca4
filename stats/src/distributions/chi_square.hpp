// Chi-square distribution with nu degrees of freedom.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_ChiSquareProbability_HW(VKernelVector kv, double x, double nu);

// The quantile at probability p.
double STATS_ChiSquareDeviate_HW(VKernelVector kv, double p, double nu);

// One variate.
double STATS_ChiSquareRandomVariate_HW(VKernelVector kv, double nu);

inline double STATS_ChiSquareRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_ChiSquareRandomVariate_HW(kv, params[0]);
}
