// Hypergeometric distribution: marked items among l drawn from n with m marked.
//
// Method  The numerical library. Quantiles by integer search.
// Source  Johnson, Kemp and Kotz, Univariate Discrete Distributions, 3rd edition (2005), chapter 6.
// Draws   One uniform, by inversion.
// Error   Probability below 0.09 at 60 points, in units of 1e-14 max(1, condition); quantiles right
//         at 53 points (docs/accuracy.md).

#include <algorithm>
#include <cmath>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/searched_sample.hpp"
#include "rootfinding/given_names.hpp"

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

namespace {

auto distributionFunction(VKernelVector kv, std::int32_t n, std::int32_t l, std::int32_t m) {
  return [=](double x) { return STATS_HypergeometricProbability_HW(kv, x, n, l, m); };
}

std::int32_t search(VKernelVector kv, double u, std::int32_t l, std::int32_t m,
                    STATS_RealFunction_HW F) {
  if (u >= 1.0) {
    return std::min(l, m);
  }
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_DiscreteInterpolation_HW(kv, u, F, 0, l, limit);
}

}  // namespace

std::int32_t STATS_HypergeometricDeviate_HW(VKernelVector kv, double u, std::int32_t n,
                                            std::int32_t l, std::int32_t m) {
  const auto F = distributionFunction(kv, n, l, m);
  return search(kv, u, l, m, F);
}

// By inversion; one uniform per variate.
double STATS_HypergeometricRandomVariate_HW(VKernelVector kv, std::int32_t n, std::int32_t l,
                                            std::int32_t m) {
  return STATS_HypergeometricDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), n, l, m);
}

void STATS_HypergeometricRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                         std::int32_t n, std::int32_t l, std::int32_t m) {
  STATS_VexelRandomStream_HW uniforms;
  vexel::kernels::classic::fillBySearch(
      uniforms, data, size, distributionFunction(kv, n, l, m),
      [=](double u, STATS_RealFunction_HW F) { return search(kv, u, l, m, F); });
}
