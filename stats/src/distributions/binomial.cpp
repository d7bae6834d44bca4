// Binomial distribution of successes in n trials.
//
// Method  The numerical library. Quantiles by integer search.
// Source  Johnson, Kemp and Kotz, Univariate Discrete Distributions, 3rd edition (2005), chapter 3.
// Draws   One uniform, by inversion; from 101 trials on with more than 10 expected successes and
//         failures a rounded normal, whose distribution function is off by up to 2.1e-2, where p is
//         small and n p just above 10.
// Error   Probability below 0.02 at 80 points, in units of 1e-14 max(1, condition); quantiles right
//         at 58 points (docs/accuracy.md).

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/searched_sample.hpp"
#include "rootfinding/given_names.hpp"

double STATS_BinomialProbability_HW(VKernelVector kv, double x, std::int32_t n, double p) {
  const std::int32_t k = STATS_DoubleToInteger_HW(std::floor(x));
  return STATS_CallNagDiscrete_HW(kv, [&](double* le, double* gt, double* eq, NagError* fail) {
    nag2_binomial(n, p, k, le, gt, eq, fail);
  });
}

namespace {

auto distributionFunction(VKernelVector kv, std::int32_t n, double p) {
  return [=](double x) { return STATS_BinomialProbability_HW(kv, x, n, p); };
}

std::int32_t search(VKernelVector kv, double u, std::int32_t n, STATS_RealFunction_HW F) {
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_DiscreteInterpolation_HW(kv, u, F, 0, n, limit);
}

// From 101 trials on with more than 10 expected successes and failures, variates are rounded
// normals.
bool isRoundedNormal(std::int32_t n, double p) {
  return n * p > 10.0 && n * (1.0 - p) > 10.0 && n >= 101;
}

}  // namespace

std::int32_t STATS_BinomialDeviate_HW(VKernelVector kv, double u, std::int32_t n, double p) {
  const auto F = distributionFunction(kv, n, p);
  return search(kv, u, n, F);
}

// The rounded normal is fast, but its distribution function is off by up to 2.1e-2, where p is
// small and n p just above 10.  Otherwise by inversion of one uniform.
double STATS_BinomialRandomVariate_HW(VKernelVector kv, std::int32_t n, double p) {
  if (isRoundedNormal(n, p)) {
    const double mean = n * p;
    const double z = STATS_NormalRandomVariate_HW(kv, mean, std::sqrt(mean * (1.0 - p)));
    const double y = std::floor(z + 0.5);
    if (y <= 0.0) {
      return 0.0;
    }
    return y > n ? n : y;
  }
  return STATS_BinomialDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), n, p);
}

void STATS_BinomialRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                   std::int32_t n, double p) {
  if (isRoundedNormal(n, p)) {
    for (std::int32_t i = 0; i < size; ++i) {
      data[i] = STATS_BinomialRandomVariate_HW(kv, n, p);
    }
    return;
  }
  STATS_VexelRandomStream_HW uniforms;
  vexel::kernels::classic::fillBySearch(
      uniforms, data, size, distributionFunction(kv, n, p),
      [=](double u, STATS_RealFunction_HW F) { return search(kv, u, n, F); });
}
