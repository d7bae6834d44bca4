// Chi-square distribution with nu degrees of freedom, from the numerical library; variates are
// gamma.

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
