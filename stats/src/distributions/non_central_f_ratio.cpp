// Non-central F distribution.
//
// Method  The numerical library. Quantiles by Brent's method from 5.
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 2, 2nd
//         edition (1995), chapter 30.
// Draws   The uniform of the numerator, by inversion, then a chi-square variate.
// Error   Probability below 0.3 at 80 points, quantile below 0.4 at 80 points, in units of 1e-14
//         max(1, condition) (docs/accuracy.md).

#include "distributions/families.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"
#include "rootfinding/given_names.hpp"

double STATS_NonCentralFRatioProbability_HW(VKernelVector kv, double x, double nu1, double nu2,
                                            double delta, double tol) {
  if (x <= 0.0) {
    return 0.0;
  }
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_noncentral_f_probability(x, nu1, nu2, delta, tol, limit, fail);
  });
}

// The search starts at 5.
double STATS_NonCentralFRatioDeviate_HW(VKernelVector kv, double p, double nu1, double nu2,
                                        double delta, double tol) {
  const auto probability = [=](double x) {
    return STATS_NonCentralFRatioProbability_HW(kv, x, nu1, nu2, delta, tol);
  };
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_BrentMethodHybridLeft_HW(kv, p, probability, 0.0, 1.0, 0.0, 5.0, tol, limit);
}

// The numerator, by inversion, is drawn first.
double STATS_NonCentralFRatioRandomVariate_HW(VKernelVector kv, double nu1, double nu2,
                                              double delta) {
  const double x = STATS_NonCentralChiSquareRandomVariate_HW(kv, nu1, delta, 0);
  const double y = STATS_ChiSquareRandomVariate_HW(kv, nu2);
  return x * nu2 / (y * nu1);
}
