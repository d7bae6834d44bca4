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

// The constants d and s of the generator for shape c; both are left alone when c is 1, where the
// variate is exponential.
void STATS_GammaRandomVariateSetup_HW(VKernelVector kv, double b, double c, double& d, double& s);

// One variate from those constants.  A NaN or negative shape gives NaN without a draw.
double STATS_GammaRandomVariateMain_HW(VKernelVector kv, double b, double c, double d, double s);
