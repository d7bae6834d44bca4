// Log-normal distribution: the logarithm is normal with mean mu and deviation sigma.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_LogNormalProbability_HW(VKernelVector kv, double x, double mu, double sigma);

// The quantile at probability p.
double STATS_LogNormalDeviate_HW(VKernelVector kv, double p, double mu, double sigma);

// One variate.
double STATS_LogNormalRandomVariate_HW(VKernelVector kv, double mu, double sigma);

inline double STATS_LogNormalRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_LogNormalRandomVariate_HW(kv, params[0], params[1]);
}
