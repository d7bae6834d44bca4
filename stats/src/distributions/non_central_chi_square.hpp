// Non-central chi-square distribution with nu degrees of freedom and noncentrality delta.
#pragma once

#include <vexelc/vexelc.h>

// P(X <= x).  tol is the relative accuracy at which the series may stop.
double STATS_NonCentralChiSquareProbability_HW(VKernelVector kv, double x, double nu, double delta,
                                               double tol);

// The quantile at probability p.
double STATS_NonCentralChiSquareDeviate_HW(VKernelVector kv, double p, double nu, double delta,
                                           double tol);

// One variate: a sum of squared normals if method is nonzero, else by inversion of one uniform.
// The sum has ceil(nu) terms, so it follows this law only for whole nu; more than 2^31 - 1 terms
// are an error.
double STATS_NonCentralChiSquareRandomVariate_HW(VKernelVector kv, double nu, double delta,
                                                 int method);

// params: nu, delta, method.
double STATS_NonCentralChiSquareRandomVariate_HW(VKernelVector kv, const double* params);
