// Geometric distribution: failures before the first success of probability p.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// P(X <= x).
double STATS_GeometricProbability_HW(VKernelVector kv, double x, double p);

// The quantile at probability u.
std::int32_t STATS_GeometricDeviate_HW(VKernelVector kv, double u, double p);

// One variate.
double STATS_GeometricRandomVariate_HW(VKernelVector kv, double p);

inline double STATS_GeometricRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_GeometricRandomVariate_HW(kv, params[0]);
}
