// Cauchy distribution with location a and scale b.
//
// Closed forms: Johnson, Kotz and Balakrishnan, Continuous Univariate Distributions, volume 1, 2nd
// edition (1994), chapter 16.  Variates: Ahrens and Dieter, Efficient Table-Free Sampling Methods
// for the Exponential, Cauchy, and Normal Distributions, Communications of the ACM 31, 1988, with
// their constants.

#include "distributions/cauchy.hpp"

#include <cmath>

#include "distributions/nag_call.hpp"
#include "kernel/uniform_source.hpp"

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

// One uniform per variate in 99.8 % of the cases; otherwise pairs until one is accepted, the
// abscissa's uniform before the test's.
double STATS_CauchyRandomVariate_HW(VKernelVector, double a, double b) {
  double u = STATS_VexelRandomStream_HW::NextDouble() - 0.5;
  double t = 0.2488702280083841 - u * u;
  if (t > 0.0) {
    return u * (0.6366197723675813 / t + 0.5972997593539963) * b + a;
  }
  for (;;) {
    u = STATS_VexelRandomStream_HW::NextDouble() - 0.5;
    t = 0.25 - u * u;
    const double x = u * (0.6380631366077802 / t + 0.595948606052907);
    const double w = STATS_VexelRandomStream_HW::NextDouble();
    const double score = (x * x + 1.0) * (0.0214949004570452 * w + 4.9125013953033205);
    if (t * t * (score - 0.9339962957603656) + t <= 0.5) {
      return x * b + a;
    }
  }
}
