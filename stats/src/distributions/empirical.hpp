// Empirical distribution of a sample: its quantiles, and variates drawn from the sample itself.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// The sample quantile (next value) at u of n points; weights may be null.  Reorders points, and
// weights along with them.
double STATS_EmpiricalDeviate_HW(VKernelVector kv, double u, int n, double* points,
                                 double* weights);

// One variate, by inversion; cost is that of a selection among n points.
double STATS_EmpiricalRandomVariate_HW(VKernelVector kv, int n, double* points, double* weights);

// The next size variates.  Uniforms are drawn by thousands and looked up together, so a sample as
// long as its data costs little more than sorting them, unless equal points are infinite, zeros of
// both signs, or have negative weights: then each variate costs a sort.
//
// orderSeen: the caller keeps the points.  Unweighted ones are then left as one selection for each
// variate leaves them, as long as size times n is at most 2^26.
void STATS_EmpiricalRandomSample_HW(VKernelVector kv, double* result, std::int32_t size, int n,
                                    double* points, double* weights, bool orderSeen);
