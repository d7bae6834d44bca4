// Non-central t distribution with nu degrees of freedom and noncentrality delta; no quantiles.
//
// Method  The numerical library.
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 2, 2nd
//         edition (1995), chapter 31.
// Draws   A normal variate, then a chi-square variate.
// Error   Probability below 0.07 at 60 points, in units of 1e-14 max(1, condition)
//         (docs/accuracy.md).

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"

double STATS_NonCentralStudentTProbability_HW(VKernelVector kv, double x, double nu, double delta,
                                              double tol) {
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_noncentral_t_probability(x, nu, delta, tol, limit, fail);
  });
}

// A normal variate, then a chi-square variate.
double STATS_NonCentralStudentTRandomVariate_HW(VKernelVector kv, double nu, double delta) {
  const double z = STATS_NormalRandomVariate_HW(kv, delta, 1.0);
  const double w = STATS_ChiSquareRandomVariate_HW(kv, nu);
  return z / std::sqrt(w / nu);
}
