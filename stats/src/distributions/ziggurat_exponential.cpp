// Tables and rare paths of the standard exponential ziggurat.

#include "distributions/ziggurat_exponential.hpp"

int STATS_ZigguratExpGenerator_HW::gDigits = 0;
STATS_ZigguratTables_HW STATS_ZigguratExpGenerator_HW::gTables;

namespace {

double density(double x) { return std::exp(-x); }

}  // namespace

int STATS_ZigguratExpGenerator_HW::Build() {
  const double q = gV / density(gD);
  const std::int32_t k0 = STATS_DoubleToInteger_HW(gD / q * gM);
  STATS_BuildZiggurat_HW(
      gTables, gD, gV, gM, k0, density, [](double x) { return -std::log(gV / x + density(x)); },
      STATS_DoubleToInteger_HW);
  return gDigits = STATS_GetVexelDigits_HW();
}

// The 1.1 % that the quick test refuses, h >= 0.  A refused wedge is tried again on the first
// abscissa, as in the normal generator; only the tail restarts the law at r.
double STATS_ZigguratExpGenerator_HW::NextRare(std::int32_t h) {
  const int layer = h & 255;
  if (layer == 0) {
    return gD - std::log(STATS_VexelRandomStream_HW::NextDouble());
  }
  const double x = h * gTables.W[layer];
  const double f = std::exp(-x);
  for (;;) {
    const double u = STATS_VexelRandomStream_HW::NextDouble();
    if (f > gTables.F[layer] + u * (gTables.F[layer - 1] - gTables.F[layer])) {
      return x;
    }
    const std::int32_t retry = STATS_VexelRandomStream_HW::NextInteger();
    if (retry < gTables.K[retry & 255]) {
      return std::fabs(retry * gTables.W[retry & 255]);
    }
  }
}
