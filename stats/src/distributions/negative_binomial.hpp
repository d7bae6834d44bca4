// Negative binomial distribution: failures before success number n, each trial of probability p.
// n need not be whole.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// P(X <= x).
double STATS_NegativeBinomialProbability_HW(VKernelVector kv, double x, double n, double p);

// The quantile at probability u.
std::int32_t STATS_NegativeBinomialDeviate_HW(VKernelVector kv, double u, double n, double p);

// One variate.
double STATS_NegativeBinomialRandomVariate_HW(VKernelVector kv, double n, double p);

// The next size variates.
void STATS_NegativeBinomialRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                           double n, double p);

inline double STATS_NegativeBinomialRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_NegativeBinomialRandomVariate_HW(kv, params[0], params[1]);
}

inline void STATS_NegativeBinomialRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                                  const double* params) {
  STATS_NegativeBinomialRandomSample_HW(kv, data, size, params[0], params[1]);
}
