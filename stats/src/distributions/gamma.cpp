// Gamma distribution with scale b and shape c, from the numerical library.
//
// Variates: Marsaglia and Tsang, A Simple Method for Generating Gamma Variables, ACM Transactions
// on Mathematical Software 26, 2000; shapes below 1 by the power of one more uniform.

#include "distributions/gamma.hpp"

#include <cmath>
#include <limits>

#include "distributions/exponential.hpp"
#include "distributions/nag_call.hpp"
#include "distributions/normal.hpp"
#include "kernel/uniform_source.hpp"

double STATS_GammaProbability_HW(VKernelVector kv, double x, double b, double c) {
  return STATS_CallNag_HW(kv, [&](NagError* fail) {
    return nag2_gamma_probability(STATS_LowerTail_HW(), x, c, b, fail);
  });
}

double STATS_GammaDeviate_HW(VKernelVector kv, double p, double b, double c) {
  return STATS_CallNag_HW(kv,
                          [&](NagError* fail) { return nag2_gamma_quantile(p, c, b, 0.0, fail); });
}

void STATS_GammaRandomVariateSetup_HW(VKernelVector, double, double c, double& d, double& s) {
  if (c == 1.0) {
    return;
  }
  d = c > 1.0 ? c - 0.3333333333333333 : c + 1.0 - 0.3333333333333333;
  s = 1.0 / std::sqrt(9.0 * d);
}

namespace {

// Shape above 1: the cube of a normal, accepted in 95 % of the trials or more.  The uniform is
// drawn after the normal, and only when the cube is positive.
double cubedNormal(VKernelVector kv, double b, double d, double s) {
  for (;;) {
    const double z = STATS_NormalRandomVariate_HW(kv, 0.0, 1.0);
    double v = 1.0 + s * z;
    if (v <= 0.0) {
      continue;
    }
    v = v * v * v;
    const double u = STATS_VexelRandomStream_HW::NextDouble();
    const double squared = z * z;
    if (1.0 - 0.0331 * (squared * squared) > u) {
      return v * d * b;
    }
    if (0.5 * squared + d * (1.0 - v + std::log(v)) > std::log(u)) {
      return v * d * b;
    }
  }
}

}  // namespace

double STATS_GammaRandomVariateMain_HW(VKernelVector kv, double b, double c, double d, double s) {
  if (!(c >= 0.0)) {
    return std::numeric_limits<double>::quiet_NaN();  // no shape: the search would have no end
  }
  if (c == 1.0) {
    return STATS_ExponentialRandomVariate_HW(kv, b);
  }
  if (c > 1.0) {
    return cubedNormal(kv, b, d, s);
  }
  const double g = STATS_GammaRandomVariateMain_HW(kv, b, c + 1.0, d, s);
  const double u = STATS_VexelRandomStream_HW::NextDouble();
  return std::pow(u, 1.0 / c) * g;
}

double STATS_GammaRandomVariate_HW(VKernelVector kv, double b, double c) {
  double d = 0.0;
  double s = 0.0;
  STATS_GammaRandomVariateSetup_HW(kv, b, c, d, s);
  return STATS_GammaRandomVariateMain_HW(kv, b, c, d, s);
}
