// Error (exponential power) distribution with location a, scale b and shape c.
//
// Method  Quantiles by Newton-Raphson on procedures of the host; there is no probability.
// Source  Evans, Hastings and Peacock, Statistical Distributions, chapter on the error
//         distribution.
// Draws   The uniform of the sign, then a gamma variate, of which a power is taken; shapes 2 and 1
//         are drawn as Laplace and normal variates. A NaN or negative shape gives NaN without a
//         draw.
// Error   Not measured: the tolerance of the search and the error of the procedures.

#include <cmath>
#include <limits>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/uniform_source.hpp"
#include "rootfinding/given_names.hpp"

// The sign's uniform is drawn before the gamma variate.  A NaN or negative shape gives NaN without
// a draw.
double STATS_ErrorRandomVariate_HW(VKernelVector kv, double a, double b, double c) {
  if (c == 2.0) {
    return STATS_LaplaceRandomVariate_HW(kv, a, 2.0 * b);
  }
  if (c == 1.0) {
    return STATS_NormalRandomVariate_HW(kv, a, b);
  }
  if (!(c >= 0.0)) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  if (a == 0.0) {
    const double u = STATS_VexelRandomStream_HW::NextDouble();
    const double h = 0.5 * c;
    const double g = STATS_GammaRandomVariate_HW(kv, 1.0, h);
    const double y = std::pow(g, h) * (std::pow(2.0, h) * b);
    return u > 0.5 ? y : -y;
  }
  return STATS_ErrorRandomVariate_HW(kv, 0.0, b, c) + a;
}

// Starts at a Cauchy-like quantile whose 3.1 stands where pi would: at p = 0 and 1 the start stays
// moderate.
double STATS_ErrorDeviate_HW(VKernelVector kv, double p, STATS_RealFunction_HW F,
                             STATS_RealFunction_HW f, double a, double, double, double tol) {
  const int limit = STATS_IterationLimit_HW(kv);
  const double x0 = std::tan((2.0 * p - 1.0) * 3.1 * 0.5) + a;
  return STATS_NewtonRaphson_HW(kv, p, F, f, x0, 0, 0.0, 0, 0.0, tol, limit);
}
