// Gamma distribution with scale b and shape c.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_GammaProbability_HW(VKernelVector kv, double x, double b, double c);

// The quantile at probability p.
double STATS_GammaDeviate_HW(VKernelVector kv, double p, double b, double c);

// One variate.
double STATS_GammaRandomVariate_HW(VKernelVector kv, double b, double c);

inline double STATS_GammaRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_GammaRandomVariate_HW(kv, params[0], params[1]);
}
