// Non-central t distribution: (Z + delta) / sqrt(chi-square(nu) / nu).
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).  tol is the relative accuracy at which the series may stop.
double STATS_NonCentralStudentTProbability_HW(VKernelVector kv, double x, double nu, double delta,
                                              double tol);

// One variate.
double STATS_NonCentralStudentTRandomVariate_HW(VKernelVector kv, double nu, double delta);

inline double STATS_NonCentralStudentTRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_NonCentralStudentTRandomVariate_HW(kv, params[0], params[1]);
}
