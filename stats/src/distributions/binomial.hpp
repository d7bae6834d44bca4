// Binomial distribution: successes in n trials of probability p.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

#include "kernel/conversions.hpp"

// P(X <= x).
double STATS_BinomialProbability_HW(VKernelVector kv, double x, std::int32_t n, double p);

// The quantile at probability u.
std::int32_t STATS_BinomialDeviate_HW(VKernelVector kv, double u, std::int32_t n, double p);

// One variate.
double STATS_BinomialRandomVariate_HW(VKernelVector kv, std::int32_t n, double p);

// The next size variates.
void STATS_BinomialRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                   std::int32_t n, double p);

inline double STATS_BinomialRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_BinomialRandomVariate_HW(kv, STATS_DoubleToInteger_HW(params[0]), params[1]);
}

inline void STATS_BinomialRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                          const double* params) {
  STATS_BinomialRandomSample_HW(kv, data, size, STATS_DoubleToInteger_HW(params[0]), params[1]);
}
