// Non-central beta distribution.
//
// Method  The numerical library. Quantiles by Brent's method on [0, 1].
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 2, 2nd
//         edition (1995), chapter 30.
// Draws   A non-central chi-square variate - a sum of squares up to 100 degrees of freedom, then by
//         inversion -, then a chi-square variate.
// Error   Probability below 0.09 at 80 points, quantile below 0.3 at 80 points, in units of 1e-14
//         max(1, condition) (docs/accuracy.md).

#include "distributions/families.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"
#include "rootfinding/given_names.hpp"

double STATS_NonCentralBetaProbability_HW(VKernelVector kv, double x, double nu1, double nu2,
                                          double delta, double tol) {
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_noncentral_beta_probability(x, nu1, nu2, delta, tol, limit, fail);
  });
}

double STATS_NonCentralBetaDeviate_HW(VKernelVector kv, double p, double nu1, double nu2,
                                      double delta, double tol) {
  const auto probability = [=](double x) {
    return STATS_NonCentralBetaProbability_HW(kv, x, nu1, nu2, delta, tol);
  };
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_BrentMethod_HW(kv, p, probability, 0.0, 1.0, tol, limit);
}

// The non-central variate first: a sum of squares up to 100 degrees of freedom, then by inversion.
double STATS_NonCentralBetaRandomVariate_HW(VKernelVector kv, double nu1, double nu2,
                                            double delta) {
  const int bySquares = nu1 <= 50.0 ? 1 : 0;
  const double x = STATS_NonCentralChiSquareRandomVariate_HW(kv, 2.0 * nu1, delta, bySquares);
  const double y = STATS_ChiSquareRandomVariate_HW(kv, 2.0 * nu2);
  return x / (y + x);
}
