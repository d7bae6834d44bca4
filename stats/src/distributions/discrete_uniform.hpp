// Discrete uniform distribution on a, a + 1, ..., b.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

#include "kernel/conversions.hpp"

// P(X <= x).
double STATS_DiscreteUniformProbability_HW(VKernelVector kv, double x, std::int32_t a,
                                           std::int32_t b);

// The quantile at probability u.
std::int32_t STATS_DiscreteUniformDeviate_HW(VKernelVector kv, double u, std::int32_t a,
                                             std::int32_t b);

// One variate.
double STATS_DiscreteUniformRandomVariate_HW(VKernelVector kv, std::int32_t a, std::int32_t b);

inline double STATS_DiscreteUniformRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_DiscreteUniformRandomVariate_HW(kv, STATS_DoubleToInteger_HW(params[0]),
                                               STATS_DoubleToInteger_HW(params[1]));
}
