// Logistic distribution with location a and scale b.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_LogisticProbability_HW(VKernelVector kv, double x, double a, double b);

// The quantile at probability p.
double STATS_LogisticDeviate_HW(VKernelVector kv, double p, double a, double b);

// One variate.
double STATS_LogisticRandomVariate_HW(VKernelVector kv, double a, double b);

inline double STATS_LogisticRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_LogisticRandomVariate_HW(kv, params[0], params[1]);
}
