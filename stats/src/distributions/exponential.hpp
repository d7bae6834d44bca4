// Exponential distribution with scale (mean) b.
#pragma once

#include <vexelc/vexelc.h>

#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

// P(X <= x); a negative x gives the formula's negative value.
double STATS_ExponentialProbability_HW(VKernelVector kv, double x, double b);

// The quantile at probability p.  p < 0 or p > 1 raises.
double STATS_ExponentialDeviate_HW(VKernelVector kv, double p, double b);

// One variate, from the ziggurat, whose law is not exactly exponential.
inline double STATS_ExponentialRandomVariate_HW(VKernelVector, double b) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::exponential(uniforms, b);
}

inline double STATS_ExponentialRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_ExponentialRandomVariate_HW(kv, params[0]);
}
