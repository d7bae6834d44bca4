// Moyal distribution with location a and scale b; variates only.
#pragma once

#include <vexelc/vexelc.h>

// One variate.
double STATS_MoyalRandomVariate_HW(VKernelVector kv, double a, double b);

inline double STATS_MoyalRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_MoyalRandomVariate_HW(kv, params[0], params[1]);
}
