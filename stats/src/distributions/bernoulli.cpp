// Bernoulli distribution: 1 with probability p.
//
// Method  The two probabilities themselves; Probability is P(X = x), not cumulative.
// Source  The definition.
// Draws   One uniform: its small values give 1, where the quantile's give 0.
// Error   Not measured: one rounding, of 1 - p.

#include "distributions/families.hpp"
#include "kernel/uniform_source.hpp"

double STATS_BernoulliProbability_HW(VKernelVector, std::int32_t x, double p) {
  if (x == 0) {
    return 1.0 - p;
  }
  return x == 1 ? p : 0.0;
}

std::int32_t STATS_BernoulliDeviate_HW(VKernelVector, double u, double p) {
  return 1.0 - p >= u ? 0 : 1;
}

// 1 for a uniform up to p: the uniform's small values give 1, where the quantile's give 0.
double STATS_BernoulliRandomVariate_HW(VKernelVector, double p) {
  return p >= STATS_VexelRandomStream_HW::NextDouble() ? 1.0 : 0.0;
}
