// Geometric distribution: failures before the first success of probability p.
//
// Method  Closed forms; the quantile is the quotient of logarithms, rounded up.
// Source  Johnson, Kemp and Kotz, Univariate Discrete Distributions, 3rd edition (2005), chapter 5.
// Draws   One uniform, by inversion. A whole sample rounds down exponential variates instead
//         (irregular_entry_points.cpp).
// Error   Probability below 0.02 at 8 points, in units of 1e-14 max(1, condition)
//         (tests/reference/data/closed_forms.txt).

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"
#include "kernel/uniform_source.hpp"

// 1 - (1 - p)^(floor(x) + 1); from p = 1 on, and for p = 0, the logarithm is of no use.
double STATS_GeometricProbability_HW(VKernelVector, double x, double p) {
  const double trials = std::floor(x) + 1.0;
  return p < 1.0 && p != 0.0 ? -std::expm1(trials * std::log1p(-p))
                             : 1.0 - std::pow(1.0 - p, trials);
}

// The quotient of the logarithms rounded up to a whole number, less one.
std::int32_t STATS_GeometricDeviate_HW(VKernelVector, double u, double p) {
  if (u == 0.0) {
    return 0;
  }
  return STATS_DoubleToInteger_HW(std::ceil(std::log1p(-u) / std::log1p(-p)) - 1.0);
}

// By inversion; one uniform per variate.
double STATS_GeometricRandomVariate_HW(VKernelVector kv, double p) {
  return STATS_GeometricDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), p);
}
