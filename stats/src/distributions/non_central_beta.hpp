// Non-central beta distribution of X / (X + Y), X non-central chi-square (2 nu1, delta), Y
// chi-square (2 nu2).
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).  tol is the relative accuracy at which the series may stop.
double STATS_NonCentralBetaProbability_HW(VKernelVector kv, double x, double nu1, double nu2,
                                          double delta, double tol);

// The quantile at probability p.
double STATS_NonCentralBetaDeviate_HW(VKernelVector kv, double p, double nu1, double nu2,
                                      double delta, double tol);

// One variate.
double STATS_NonCentralBetaRandomVariate_HW(VKernelVector kv, double nu1, double nu2, double delta);

inline double STATS_NonCentralBetaRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_NonCentralBetaRandomVariate_HW(kv, params[0], params[1], params[2]);
}
