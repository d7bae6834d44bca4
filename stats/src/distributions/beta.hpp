// Beta distribution with parameters nu1 and nu2.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_BetaProbability_HW(VKernelVector kv, double x, double nu1, double nu2);

// The quantile at probability p.
double STATS_BetaDeviate_HW(VKernelVector kv, double p, double nu1, double nu2);

// One variate.
double STATS_BetaRandomVariate_HW(VKernelVector kv, double nu1, double nu2);

inline double STATS_BetaRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_BetaRandomVariate_HW(kv, params[0], params[1]);
}
