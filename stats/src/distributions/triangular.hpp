// Triangular distribution on (a, b) with its mode at c.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).
double STATS_TriangularProbability_HW(VKernelVector kv, double x, double a, double b, double c);

// The quantile at probability p.
double STATS_TriangularDeviate_HW(VKernelVector kv, double p, double a, double b, double c);

// One variate.
double STATS_TriangularRandomVariate_HW(VKernelVector kv, double a, double b, double c);

inline double STATS_TriangularRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_TriangularRandomVariate_HW(kv, params[0], params[1], params[2]);
}
