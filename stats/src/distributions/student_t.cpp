// Student t distribution with nu degrees of freedom, from the numerical library.

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
