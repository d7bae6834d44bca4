// Empirical distribution of a sample: its quantiles, and variates drawn from the sample itself.
#pragma once

#include <vexelc/vexelc.h>

// The sample quantile (next value) at u of n points; weights may be null.  Reorders points, and
// weights along with them.
double STATS_EmpiricalDeviate_HW(VKernelVector kv, double u, int n, double* points,
                                 double* weights);

// One variate, by inversion; cost is that of a selection among n points.
double STATS_EmpiricalRandomVariate_HW(VKernelVector kv, int n, double* points, double* weights);
