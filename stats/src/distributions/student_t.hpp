// Student t distribution with nu degrees of freedom.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_StudentTProbability_HW(VKernelVector kv, double x, double nu);

// The quantile at probability p.
double STATS_StudentTDeviate_HW(VKernelVector kv, double p, double nu);

// One variate.
double STATS_StudentTRandomVariate_HW(VKernelVector kv, double nu);

inline double STATS_StudentTRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_StudentTRandomVariate_HW(kv, params[0]);
}
