// Discrete uniform distribution on a, a + 1, ..., b.
//
// Method  Counting.
// Source  The definition.
// Draws   One uniform, by inversion.
// Error   Not measured: one rounded quotient of exact counts.

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"
#include "kernel/uniform_source.hpp"

double STATS_DiscreteUniformProbability_HW(VKernelVector, double x, std::int32_t a,
                                           std::int32_t b) {
  const std::int32_t k = STATS_DoubleToInteger_HW(std::floor(x));
  if (k < a) {
    return 0.0;
  }
  if (k > b) {
    return 1.0;
  }
  return (static_cast<double>(k) - a + 1.0) / (static_cast<double>(b) - a + 1.0);
}

std::int32_t STATS_DiscreteUniformDeviate_HW(VKernelVector, double u, std::int32_t a,
                                             std::int32_t b) {
  if (u == 0.0) {
    return a;
  }
  const double count = static_cast<double>(b) - a + 1.0;
  return STATS_DoubleToInteger_HW(std::ceil(a - 1.0 + u * count));
}

// By inversion; one uniform per variate.
double STATS_DiscreteUniformRandomVariate_HW(VKernelVector kv, std::int32_t a, std::int32_t b) {
  return STATS_DiscreteUniformDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), a, b);
}
