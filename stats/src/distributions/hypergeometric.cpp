// Hypergeometric distribution (n, l, m), from the numerical library; quantiles by integer search.

#include "distributions/hypergeometric.hpp"

#include <algorithm>
#include <cmath>

#include "distributions/nag_call.hpp"
#include "distributions/probability_adapter.hpp"
#include "distributions/uniform_source.hpp"
#include "rootfinding/discrete_interpolation.hpp"

double STATS_HypergeometricProbability_HW(VKernelVector kv, double x, std::int32_t n,
                                          std::int32_t l, std::int32_t m) {
  if (x < 0.0) {
    return 0.0;
  }
  if (x >= l || x >= m) {
    return 1.0;
  }
  const std::int32_t k = STATS_DoubleToInteger_HW(std::floor(x));
  return STATS_CallNagDiscrete_HW(kv, [&](double* le, double* gt, double* eq, NagError* fail) {
    nag2_hypergeometric(n, l, m, k, le, gt, eq, fail);
  });
}

std::int32_t STATS_HypergeometricDeviate_HW(VKernelVector kv, double u, std::int32_t n,
                                            std::int32_t l, std::int32_t m) {
  if (u >= 1.0) {
    return std::min(l, m);
  }
  STATS_ProbabilityAdapter_HW probability(
      kv, [=](double x) { return STATS_HypergeometricProbability_HW(kv, x, n, l, m); });
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_DiscreteInterpolation_HW(kv, u, probability, 0, l, limit);
}

// By inversion; one uniform per variate.
double STATS_HypergeometricRandomVariate_HW(VKernelVector kv, std::int32_t n, std::int32_t l,
                                            std::int32_t m) {
  return STATS_HypergeometricDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), n, l, m);
}
