// Poisson distribution with mean lambda.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// P(X <= x).
double STATS_PoissonProbability_HW(VKernelVector kv, double x, double lambda);

// The quantile at probability u.
std::int32_t STATS_PoissonDeviate_HW(VKernelVector kv, double u, double lambda);

// One variate.
double STATS_PoissonRandomVariate_HW(VKernelVector kv, double lambda);

// The next n variates.
void STATS_PoissonRandomSample_HW(VKernelVector kv, double* data, std::int32_t n, double lambda);

inline double STATS_PoissonRandomVariate_HW(VKernelVector kv, const double* params) {
  return STATS_PoissonRandomVariate_HW(kv, params[0]);
}

inline void STATS_PoissonRandomSample_HW(VKernelVector kv, double* data, std::int32_t size,
                                         const double* params) {
  STATS_PoissonRandomSample_HW(kv, data, size, params[0]);
}
