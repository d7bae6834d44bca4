// Normal distribution with mean mu and standard deviation sigma; the standard one is the numerical
// library's.

#include "distributions/families.hpp"
#include "kernel/nag_call.hpp"

double STATS_NormalProbability_HW(VKernelVector kv, double x, double mu, double sigma) {
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_normal_probability(STATS_LowerTail_HW(), (x - mu) / sigma, fail);
  });
}

double STATS_NormalDeviate_HW(VKernelVector kv, double p, double mu, double sigma) {
  return STATS_CallNag_HW(
             kv,
             [&](NagError* fail) { return nag2_normal_quantile(STATS_LowerTail_HW(), p, fail); }) *
             sigma +
         mu;
}
