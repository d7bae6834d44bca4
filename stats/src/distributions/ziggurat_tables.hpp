// What the two ziggurats share: the shape of their tables and the 2^31 scale of their integers.
//
// Marsaglia and Tsang, The Ziggurat Method for Generating Random Variables, Journal of Statistical
// Software 5(8), 2000, with 256 layers.
#pragma once

#include <cstdint>

struct STATS_ZigguratTables_HW {
  static constexpr int kLayers = 256;
  std::int32_t K[kLayers];  // quick-acceptance thresholds
  double W[kLayers];        // from a 32-bit integer to an abscissa
  double F[kLayers];        // density at the layer's right edge
};

// Fills the tables of a decreasing density f with right edge r of the base layer and layer area v.
// nextEdge(x) is the edge of the layer above the one that ends at x; k0 is the threshold of the
// base strip, whose rounding the two generators do differently.
template <typename Density, typename NextEdge>
void STATS_BuildZiggurat_HW(STATS_ZigguratTables_HW& table, double r, double v, double m,
                            std::int32_t k0, Density f, NextEdge nextEdge,
                            std::int32_t (*toInteger)(double)) {
  table.K[0] = k0;
  table.K[1] = 0;
  table.W[0] = v / f(r) / m;
  table.W[255] = r / m;
  table.F[255] = f(r);
  double t = r;
  for (int i = 254; i >= 1; --i) {
    const double x = nextEdge(t);
    table.K[i + 1] = toInteger(x / t * m);
    table.F[i] = f(x);
    table.W[i] = x / m;
    t = x;
  }
  // The top follows from the layers' area, so it lies a little above 1.
  const double top = m * table.W[1];
  table.F[0] = f(top) + v / top;
}
