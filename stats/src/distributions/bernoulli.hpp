// Bernoulli distribution: 1 with probability p, else 0.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// P(X = x), which is 0 unless x is 0 or 1: not a cumulative probability, in spite of the name.
double STATS_BernoulliProbability_HW(VKernelVector kv, std::int32_t x, double p);

// The quantile at probability u.
std::int32_t STATS_BernoulliDeviate_HW(VKernelVector kv, double u, double p);

// One variate.
double STATS_BernoulliRandomVariate_HW(VKernelVector kv, double p);

inline double STATS_BernoulliRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_BernoulliRandomVariate_HW(kv, params[0]);
}
