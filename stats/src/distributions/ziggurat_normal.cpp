// Tables and rare paths of the standard normal ziggurat.

#include "distributions/ziggurat_normal.hpp"

#include <cmath>

int STATS_ZigguratNormalGenerator_HW::gDigits = 0;
STATS_ZigguratTables_HW STATS_ZigguratNormalGenerator_HW::gTables;

namespace {

double density(double x) { return std::exp(STATS_ZigguratNormalGenerator_HW::gH * x * x); }

// Beyond the last edge r: Marsaglia (1964), with the uniform for x drawn before the one for y.
double normalTail(bool negative) {
  constexpr double r = STATS_ZigguratNormalGenerator_HW::gD;
  for (;;) {
    const double x = -std::log(STATS_VexelRandomStream_HW::NextDouble()) / r;
    const double y = -std::log(STATS_VexelRandomStream_HW::NextDouble());
    if (x * x <= 2.0 * y) {
      return negative ? -r - x : r + x;
    }
  }
}

}  // namespace

int STATS_ZigguratNormalGenerator_HW::Build() {
  const double q = gV / density(gD);
  const std::int32_t k0 = STATS_DoubleToInteger_HW(std::floor(gD / q * gM));
  STATS_BuildZiggurat_HW(
      gTables, gD, gV, gM, k0, density,
      [](double x) { return std::sqrt(-2.0 * std::log(density(x) + gV / x)); },
      STATS_DoubleToInteger_HW);
  return gDigits = STATS_GetVexelDigits_HW();
}

// The 1.5 % that the quick test refuses.  After a refused wedge the next integer serves the quick
// test only, and a further wedge test comes back to the first abscissa and layer.  A textbook
// ziggurat would start over; changing that changes every stored sample.
double STATS_ZigguratNormalGenerator_HW::NextRare(std::int32_t h) {
  const int layer = h & 255;
  if (layer == 0) {
    return normalTail(h <= 0);
  }
  const double x = h * gTables.W[layer];
  const double f = std::exp(gH * x * x);
  for (;;) {
    const double u = STATS_VexelRandomStream_HW::NextDouble();
    if (f > gTables.F[layer] + u * (gTables.F[layer - 1] - gTables.F[layer])) {
      return x;
    }
    const std::int32_t retry = STATS_VexelRandomStream_HW::NextInteger();
    if (wrappingAbs(retry) < gTables.K[retry & 255]) {
      return retry * gTables.W[retry & 255];
    }
  }
}
