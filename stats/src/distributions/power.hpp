// Power function distribution on (0, b) with shape c.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_PowerProbability_HW(VKernelVector kv, double x, double b, double c);

// The quantile at probability p.
double STATS_PowerDeviate_HW(VKernelVector kv, double p, double b, double c);

// One variate.
double STATS_PowerRandomVariate_HW(VKernelVector kv, double b, double c);

inline double STATS_PowerRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_PowerRandomVariate_HW(kv, params[0], params[1]);
}
