// Hypergeometric distribution: marked items among l drawn from a population of n with m marked.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

#include "kernel/conversions.hpp"

// P(X <= x).
double STATS_HypergeometricProbability_HW(VKernelVector kv, double x, std::int32_t n,
                                          std::int32_t l, std::int32_t m);

// The quantile at probability u.
std::int32_t STATS_HypergeometricDeviate_HW(VKernelVector kv, double u, std::int32_t n,
                                            std::int32_t l, std::int32_t m);

// One variate.
double STATS_HypergeometricRandomVariate_HW(VKernelVector kv, std::int32_t n, std::int32_t l,
                                            std::int32_t m);

// The next size variates.
void STATS_HypergeometricRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                         std::int32_t n, std::int32_t l, std::int32_t m);

inline double STATS_HypergeometricRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_HypergeometricRandomVariate_HW(kv, STATS_DoubleToInteger_HW(params[0]),
                                              STATS_DoubleToInteger_HW(params[1]),
                                              STATS_DoubleToInteger_HW(params[2]));
}

inline void STATS_HypergeometricRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                                const double* params) {
  STATS_HypergeometricRandomSample_HW(kv, data, size, STATS_DoubleToInteger_HW(params[0]),
                                      STATS_DoubleToInteger_HW(params[1]),
                                      STATS_DoubleToInteger_HW(params[2]));
}
