// Geometric distribution: failures before the first success of probability p.

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"
#include "kernel/uniform_source.hpp"

// 1 - (1 - p)^(floor(x) + 1); from p = 1 on, and for p = 0, the logarithm is of no use.
double STATS_GeometricProbability_HW(VKernelVector, double x, double p) {
  const double trials = std::floor(x) + 1.0;
  return p < 1.0 && p != 0.0 ? -std::expm1(trials * std::log1p(-p))
                             : 1.0 - std::pow(1.0 - p, trials);
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
