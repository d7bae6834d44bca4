// Negative binomial distribution: failures before success number n.
//
// Method  A beta probability. Quantiles by integer search.
// Source  Johnson, Kemp and Kotz, Univariate Discrete Distributions, 3rd edition (2005), chapter 5.
// Draws   One uniform, by inversion.
// Error   That of the beta distribution, not measured itself; a quantile that takes more than 100
//         steps raises.

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/searched_sample.hpp"
#include "rootfinding/given_names.hpp"

double STATS_NegativeBinomialProbability_HW(VKernelVector kv, double x, double n, double p) {
  return STATS_BetaProbability_HW(kv, p, n, std::floor(x) + 1.0);
}

namespace {

auto distributionFunction(VKernelVector kv, double n, double p) {
  return [=](double x) { return STATS_NegativeBinomialProbability_HW(kv, x, n, p); };
}

// The search starts at the whole part of n: n below 1 raises, and so may a start far below the
// answer.  Its limit is 100 steps whatever the host sets.
std::int32_t search(VKernelVector kv, double u, double n, STATS_RealFunction_HW F) {
  return STATS_DiscreteInterpolationHybridLeft_HW(kv, u, F, 0.0, 1.0, 0,
                                                  STATS_DoubleToInteger_HW(n), 100);
}

}  // namespace

std::int32_t STATS_NegativeBinomialDeviate_HW(VKernelVector kv, double u, double n, double p) {
  const auto F = distributionFunction(kv, n, p);
  return search(kv, u, n, F);
}

// By inversion; one uniform per variate.
double STATS_NegativeBinomialRandomVariate_HW(VKernelVector kv, double n, double p) {
  return STATS_NegativeBinomialDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), n, p);
}

void STATS_NegativeBinomialRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                           double n, double p) {
  STATS_VexelRandomStream_HW uniforms;
  vexel::kernels::classic::fillBySearch(
      uniforms, data, size, distributionFunction(kv, n, p),
      [=](double u, STATS_RealFunction_HW F) { return search(kv, u, n, F); });
}
