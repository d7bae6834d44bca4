// Cauchy distribution with location a and scale b.
//
// Method  Closed forms: the probability as an angle, the quantile as the tangent of an exact
//         distance from the nearer of 0, 1/2 and 1.
// Source  Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 1, 2nd
//         edition (1994), chapter 16.
// Draws   One uniform in 99.8 % of the cases, otherwise pairs more until one is accepted: Ahrens
//         and Dieter 1988, in kernels/classic/variates.hpp.
// Error   Probability below 0.008 at 10 points, quantile below 0.03 at 22 points, in units of 1e-14
//         max(1, condition) (tests/reference/data/closed_forms.txt).

#include <cmath>

#include "distributions/families.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"

// atan(z)/pi + 1/2 as one angle in (0, pi), which keeps the digits far to the left.
double STATS_CauchyProbability_HW(VKernelVector kv, double x, double a, double b) {
  const double pi = STATS_HostPi_HW(kv);
  return std::atan2(1.0, -(x - a) / b) / pi;
}

// tan(pi (p - 1/2)) b + a, the tangent taken of an exact distance from the nearer of 0, 1/2, 1.
double STATS_CauchyDeviate_HW(VKernelVector kv, double p, double a, double b) {
  const double pi = STATS_HostPi_HW(kv);
  if (p < 0.25) {
    return -1.0 / std::tan(pi * (p + 0.0)) * b + a;  // + 0.0: of -0.0 as of 0.0
  }
  if (p > 0.75) {
    return 1.0 / std::tan(pi * (1.0 - p)) * b + a;
  }
  return std::tan(pi * (p - 0.5)) * b + a;
}

double STATS_CauchyRandomVariate_HW(VKernelVector, double a, double b) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::cauchy(uniforms, a, b);
}
