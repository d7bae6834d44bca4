// Chi-square distribution with nu degrees of freedom.
//
// Method  The numerical library.
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 1, 2nd
//         edition (1994), chapter 18.
// Draws   One gamma variate of scale 2 and shape nu / 2.
// Error   Probability below 0.4 at 70 points, quantile below 0.2 at 70 points, in units of 1e-14
//         max(1, condition) (docs/accuracy.md).

#include "distributions/families.hpp"
#include "kernel/nag_call.hpp"

double STATS_ChiSquareProbability_HW(VKernelVector kv, double x, double nu) {
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_chi_square_probability(STATS_LowerTail_HW(), x, nu, fail);
  });
}

double STATS_ChiSquareDeviate_HW(VKernelVector kv, double p, double nu) {
  return STATS_CallNag_HW(kv,
                          [&](NagError* fail) { return nag2_chi_square_quantile(p, nu, fail); });
}

double STATS_ChiSquareRandomVariate_HW(VKernelVector kv, double nu) {
  return STATS_GammaRandomVariate_HW(kv, 2.0, 0.5 * nu);
}
