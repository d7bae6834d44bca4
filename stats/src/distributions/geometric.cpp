// Geometric distribution: failures before the first success of probability p.

#include "distributions/geometric.hpp"

#include <cmath>

#include "distributions/uniform_source.hpp"
#include "kernel/conversions.hpp"

// 1 - (1 - p)^(floor(x) + 1).
double STATS_GeometricProbability_HW(VKernelVector, double x, double p) {
  return -std::expm1((std::floor(x) + 1.0) * std::log1p(-p));
}

// The quotient of the logarithms rounded up to a whole number, less one.
std::int32_t STATS_GeometricDeviate_HW(VKernelVector, double u, double p) {
  if (u == 0.0) {
    return 0;
  }
  return STATS_DoubleToInteger_HW(std::ceil(std::log1p(-u) / std::log1p(-p)) - 1.0);
}

// By inversion; one uniform per variate.
double STATS_GeometricRandomVariate_HW(VKernelVector kv, double p) {
  return STATS_GeometricDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), p);
}
