// Non-central F distribution; the numerator is non-central chi-square (nu1, delta).
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).  tol is the relative accuracy at which the series may stop.
double STATS_NonCentralFRatioProbability_HW(VKernelVector kv, double x, double nu1, double nu2,
                                            double delta, double tol);

// The quantile at probability p.
double STATS_NonCentralFRatioDeviate_HW(VKernelVector kv, double p, double nu1, double nu2,
                                        double delta, double tol);

// One variate.
double STATS_NonCentralFRatioRandomVariate_HW(VKernelVector kv, double nu1, double nu2,
                                              double delta);

inline double STATS_NonCentralFRatioRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_NonCentralFRatioRandomVariate_HW(kv, params[0], params[1], params[2]);
}
