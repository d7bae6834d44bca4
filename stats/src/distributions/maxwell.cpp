// Maxwell distribution with scale a; variates by Johnk's method.
//
// Walck, Hand-book on Statistical Distributions for Experimentalists, Stockholm 1996, chapter 25.

#include "distributions/maxwell.hpp"

#include <cmath>

#include "kernel/uniform_source.hpp"

// Draws: one uniform, pairs until one lies in the quarter disc (1.27 pairs), one uniform.
double STATS_MaxwellRandomVariate_HW(VKernelVector, double a) {
  const double e = std::log(STATS_VexelRandomStream_HW::NextDouble());
  for (;;) {
    const double v = STATS_VexelRandomStream_HW::NextDouble();
    const double w = STATS_VexelRandomStream_HW::NextDouble();
    const double s = v * v + w * w;
    if (s <= 1.0) {
      const double l = std::log(STATS_VexelRandomStream_HW::NextDouble());
      const double y = -e - l * (v * v / s);
      return std::sqrt(2.0 * y) * a;
    }
  }
}
