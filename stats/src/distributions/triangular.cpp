// Triangular distribution on (a, b) with mode c.
//
// Method  Closed forms, rearranged where the mode lies at an end.
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 2, 2nd
//         edition (1995), chapter 26.
// Draws   One uniform, by inversion.
// Error   Probability below 0.02 at 18 points, quantile below 0.02 at 32 points, in units of 1e-14
//         max(1, condition) (tests/reference/data/closed_forms.txt).

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/uniform_source.hpp"

// Right of the mode the area left of c and the rest are added, all terms positive, instead of
// subtracting the upper tail from 1: with the mode at the lower end nothing cancels.
double STATS_TriangularProbability_HW(VKernelVector, double x, double a, double b, double c) {
  if (x < a) {
    return 0.0;
  }
  if (x < c) {
    return (x - a) / (b - a) * ((x - a) / (c - a));
  }
  if (x >= b) {
    return 1.0;
  }
  return ((c - a) + (x - c) * (((b - c) + (b - x)) / (b - c))) / (b - a);
}

// Beyond the mode, b - sqrt((1-p)(b-a)(b-c)); for small p the same distance measured from a, which
// keeps the digits that the difference would cancel when the mode is at a.
double STATS_TriangularDeviate_HW(VKernelVector, double p, double a, double b, double c) {
  if (c - a <= (b - a) * p) {
    const double fromTop = std::sqrt((1.0 - p) * (b - a) * (b - c));
    if (p < 0.5 && b > a && std::isfinite(fromTop)) {
      return a + (b - a) * (((c - a) + p * (b - c)) / ((b - a) + fromTop));
    }
    return b - fromTop;
  }
  return a + std::sqrt((b - a) * p * (c - a));
}

// By inversion; one uniform per variate.
double STATS_TriangularRandomVariate_HW(VKernelVector kv, double a, double b, double c) {
  return STATS_TriangularDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), a, b, c);
}
