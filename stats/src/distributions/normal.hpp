// Normal distribution with mean mu and standard deviation sigma.
#pragma once

#include <vexelc/vexelc.h>

#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

// P(X <= x).
double STATS_NormalProbability_HW(VKernelVector kv, double x, double mu, double sigma);

// The quantile at probability p.
double STATS_NormalDeviate_HW(VKernelVector kv, double p, double mu, double sigma);

// One variate, from the ziggurat.
inline double STATS_NormalRandomVariate_HW(VKernelVector, double mu, double sigma) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::normal(uniforms, mu, sigma);
}

inline double STATS_NormalRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_NormalRandomVariate_HW(kv, params[0], params[1]);
}
