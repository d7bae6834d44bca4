// Non-central chi-square distribution with nu degrees of freedom and noncentrality delta.
//
// Method  The numerical library. Quantiles by Brent's method from the mean.
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 2, 2nd
//         edition (1995), chapter 29.
// Draws   Ceil(nu) normals, or one uniform by inversion, as is asked for; the sum follows the law
//         only for whole nu.
// Error   Probability below 0.3 at 80 points, quantile below 0.3 at 80 points, in units of 1e-14
//         max(1, condition) (docs/accuracy.md).

#include <cmath>
#include <cstdint>
#include <limits>

#include "distributions/families.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/uniform_source.hpp"
#include "rootfinding/given_names.hpp"

double STATS_NonCentralChiSquareProbability_HW(VKernelVector kv, double x, double nu, double delta,
                                               double tol) {
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_noncentral_chi_square_probability(x, nu, delta, tol, limit, fail);
  });
}

// The search starts at the mean.
double STATS_NonCentralChiSquareDeviate_HW(VKernelVector kv, double p, double nu, double delta,
                                           double tol) {
  const auto probability = [=](double x) {
    return STATS_NonCentralChiSquareProbability_HW(kv, x, nu, delta, tol);
  };
  const int limit = STATS_IterationLimit_HW(kv);
  return STATS_BrentMethodHybridLeft_HW(kv, p, probability, 0.0, 1.0, 0.0, nu + delta, tol, limit);
}

namespace {

// ceil(nu) squares of normals with mean sqrt(delta / nu); none for nu <= 0.
double sumOfSquares(VKernelVector kv, double nu, double delta) {
  if (nu > std::numeric_limits<std::int32_t>::max()) {
    VexelRaiseError(kv, "too many degrees of freedom for a sum of squares");
  }
  const double mean = std::sqrt(delta / nu);
  double sum = 0.0;
  for (int i = 0; nu > i; ++i) {
    const double z = STATS_NormalRandomVariate_HW(kv, mean, 1.0);
    sum += z * z;
  }
  return sum;
}

}  // namespace

double STATS_NonCentralChiSquareRandomVariate_HW(VKernelVector kv, double nu, double delta,
                                                 int method) {
  if (method != 0) {
    return sumOfSquares(kv, nu, delta);
  }
  const double tol = STATS_HostTolerance_HW(kv);
  const double u = STATS_VexelRandomStream_HW::NextDouble();
  return STATS_NonCentralChiSquareDeviate_HW(kv, u, nu, delta, tol);
}
