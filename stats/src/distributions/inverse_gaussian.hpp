// Inverse Gaussian distribution with mean mu and shape lambda; variates only.
#pragma once

#include <vexelc/vexelc.h>

// One variate.
double STATS_InverseGaussianRandomVariate_HW(VKernelVector kv, double mu, double lambda);

inline double STATS_InverseGaussianRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_InverseGaussianRandomVariate_HW(kv, params[0], params[1]);
}
