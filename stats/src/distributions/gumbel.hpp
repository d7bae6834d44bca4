// Gumbel distribution of the largest value with location a and scale b.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_GumbelProbability_HW(VKernelVector kv, double x, double a, double b);

// The quantile at probability p.
double STATS_GumbelDeviate_HW(VKernelVector kv, double p, double a, double b);

// One variate.
double STATS_GumbelRandomVariate_HW(VKernelVector kv, double a, double b);

inline double STATS_GumbelRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_GumbelRandomVariate_HW(kv, params[0], params[1]);
}
