// Poisson distribution with mean lambda.
//
// Method  The numerical library. Quantiles by integer search.
// Source  Johnson, Kemp and Kotz, Univariate Discrete Distributions, 3rd edition (2005), chapter 4.
// Draws   One uniform, by inversion.
// Error   Probability below 0.03 at 80 points, in units of 1e-14 max(1, condition); quantiles right
//         at 80 points (docs/accuracy.md).

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/searched_sample.hpp"
#include "rootfinding/given_names.hpp"

// x is truncated, not floored: -0.5 counts as 0.
double STATS_PoissonProbability_HW(VKernelVector kv, double x, double lambda) {
  const std::int32_t k = STATS_DoubleToInteger_HW(x);
  return STATS_CallNagDiscrete_HW(kv, [&](double* le, double* gt, double* eq, NagError* fail) {
    nag2_poisson(lambda, k, le, gt, eq, fail);
  });
}

namespace {

auto distributionFunction(VKernelVector kv, double lambda) {
  return [=](double x) { return STATS_PoissonProbability_HW(kv, x, lambda); };
}

// The search starts at floor(lambda), at least at 1 when that is 0.
std::int32_t search(VKernelVector kv, double u, double lambda, STATS_RealFunction_HW F) {
  const std::int32_t mean = STATS_DoubleToInteger_HW(std::floor(lambda));
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_DiscreteInterpolationHybridLeft_HW(kv, u, F, 0.0, 1.0, 0, mean == 0 ? 1 : mean,
                                                  limit);
}

}  // namespace

std::int32_t STATS_PoissonDeviate_HW(VKernelVector kv, double u, double lambda) {
  const auto F = distributionFunction(kv, lambda);
  return search(kv, u, lambda, F);
}

// By inversion; one uniform per variate.
double STATS_PoissonRandomVariate_HW(VKernelVector kv, double lambda) {
  return STATS_PoissonDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), lambda);
}

void STATS_PoissonRandomSample_HW(VKernelVector kv, double* data, std::int32_t n, double lambda) {
  STATS_VexelRandomStream_HW uniforms;
  vexel::kernels::classic::fillBySearch(
      uniforms, data, n, distributionFunction(kv, lambda),
      [=](double u, STATS_RealFunction_HW F) { return search(kv, u, lambda, F); });
}
