// Rayleigh distribution with scale sigma.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_RayleighProbability_HW(VKernelVector kv, double x, double sigma);

// The quantile at probability p.
double STATS_RayleighDeviate_HW(VKernelVector kv, double p, double sigma);

// One variate.
double STATS_RayleighRandomVariate_HW(VKernelVector kv, double sigma);

inline double STATS_RayleighRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_RayleighRandomVariate_HW(kv, params[0]);
}
