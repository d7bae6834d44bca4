// Normal distribution with mean mu and standard deviation sigma.
//
// Method  The numerical library.
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 1, 2nd
//         edition (1994), chapter 13.
// Draws   The ziggurat of kernels/classic/ziggurats.hpp (families.hpp has the variate), whose
//         distribution function is off by up to 4.2e-6.
// Error   Probability below 0.02 at 60 points, quantile below 0.04 at 60 points, in units of 1e-14
//         max(1, condition) (docs/accuracy.md).

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
