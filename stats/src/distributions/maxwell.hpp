// Maxwell distribution with scale a; variates only.
#pragma once

#include <vexelc/vexelc.h>

// One variate.
double STATS_MaxwellRandomVariate_HW(VKernelVector kv, double a);

inline double STATS_MaxwellRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_MaxwellRandomVariate_HW(kv, params[0]);
}
