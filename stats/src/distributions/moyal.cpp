// Moyal distribution with location a and scale b; variates by rejection from a uniform angle.
//
// Walck, Hand-book on Statistical Distributions for Experimentalists, Stockholm 1996, chapter 26.

#include "distributions/moyal.hpp"

#include <cmath>

#include "distributions/nag_call.hpp"
#include "kernel/uniform_source.hpp"

// Two uniforms per trial, the angle's first; 2.9 trials per variate.
double STATS_MoyalRandomVariate_HW(VKernelVector kv, double a, double b) {
  const double pi = STATS_HostPi_HW(kv);
  const double k = std::sqrt(2.0 * pi);
  for (;;) {
    const double theta = STATS_VexelRandomStream_HW::NextDouble() * pi - 0.5 * pi;
    const double w = STATS_VexelRandomStream_HW::NextDouble();
    const double x = std::tan(theta);
    const double cosine = std::cos(theta);
    const double g = std::exp(-0.5 * (std::exp(-x) + x)) * (1.0 / k) / (cosine * cosine);
    if (g >= 0.912 * w) {
      return x * b + a;
    }
  }
}
