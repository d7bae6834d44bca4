// Student t distribution with nu degrees of freedom.
//
// Method  The numerical library.
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 2, 2nd
//         edition (1995), chapter 28.
// Draws   One uniform, by inversion.
// Error   Probability below 0.08 at 160 points, quantile below 0.09 at 160 points, in units of
//         1e-14 max(1, condition) (docs/accuracy.md).

#include "distributions/families.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/uniform_source.hpp"

double STATS_StudentTProbability_HW(VKernelVector kv, double x, double nu) {
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_student_t_probability(STATS_LowerTail_HW(), x, nu, fail);
  });
}

double STATS_StudentTDeviate_HW(VKernelVector kv, double p, double nu) {
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_student_t_quantile(STATS_LowerTail_HW(), p, nu, fail);
  });
}

// By inversion; one uniform per variate.
double STATS_StudentTRandomVariate_HW(VKernelVector kv, double nu) {
  return STATS_StudentTDeviate_HW(kv, STATS_VexelRandomStream_HW::NextDouble(), nu);
}
