// Inverse Gaussian distribution with mean mu and shape lambda; variates only.
//
// Michael, Schucany and Haas, Generating Random Variates Using Transformations with Multiple Roots,
// The American Statistician 30, 1976.

#include "distributions/inverse_gaussian.hpp"

#include <cmath>

#include "distributions/chi_square.hpp"
#include "kernel/uniform_source.hpp"

// A chi-square variate, then one uniform that chooses between the two roots.
double STATS_InverseGaussianRandomVariate_HW(VKernelVector kv, double mu, double lambda) {
  const double y = STATS_ChiSquareRandomVariate_HW(kv, 1.0);
  const double m = mu * y;
  const double x = (2.0 * lambda + m - std::sqrt(m * m + 4.0 * lambda * m)) * (0.5 * mu / lambda);
  const double u = STATS_VexelRandomStream_HW::NextDouble();
  return u * (mu + x) <= mu ? x : mu * mu / x;
}
