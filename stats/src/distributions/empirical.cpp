// Empirical distribution of a sample.

#include "distributions/empirical.hpp"

#include "descriptive/quantiles.hpp"
#include "distributions/uniform_source.hpp"

double STATS_EmpiricalDeviate_HW(VKernelVector, double u, int n, double* points, double* weights) {
  double result = 0.0;
  STATS_Quantile_HW(&result, points, weights, &u, n, 1, STATS_QUANTILE_NEXT_HW);
  return result;
}

double STATS_EmpiricalRandomVariate_HW(VKernelVector kv, int n, double* points, double* weights) {
  return STATS_EmpiricalDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), n, points,
                                   weights);
}
