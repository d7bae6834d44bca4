// Gamma distribution with scale b and shape c, from the numerical library.

#include "distributions/families.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

double STATS_GammaProbability_HW(VKernelVector kv, double x, double b, double c) {
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_gamma_probability(STATS_LowerTail_HW(), x, c, b, fail);
  });
}

double STATS_GammaDeviate_HW(VKernelVector kv, double p, double b, double c) {
  return STATS_CallNag_HW(kv,
                          [&](NagError* fail) { return nag2_gamma_quantile(p, c, b, 0.0, fail); });
}

double STATS_GammaRandomVariate_HW(VKernelVector, double b, double c) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::Gamma(c)(uniforms, b);
}
