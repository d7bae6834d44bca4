// The tables of the ziggurats, made once when the library is loaded.

#include "kernels/classic/ziggurats.hpp"

#include "kernels/saturate.hpp"

namespace vexel::kernels::classic {

namespace {

constexpr double kScale = 2147483648.0;  // 2^31, of the integers

// Of a decreasing density f with right edge r of the base layer and layer area v.  nextEdge(x) is
// the edge of the layer above the one that ends at x; k0 is the threshold of the base strip, whose
// rounding the two do differently.
template <typename Density, typename NextEdge>
ZigguratTables build(double r, double v, std::int32_t k0, Density f, NextEdge nextEdge) {
  ZigguratTables table;
  table.K[0] = k0;
  table.K[1] = 0;
  table.W[0] = v / f(r) / kScale;
  table.W[255] = r / kScale;
  table.F[255] = f(r);
  double t = r;
  for (int i = 254; i >= 1; --i) {
    const double x = nextEdge(t);
    table.K[i + 1] = toInteger(x / t * kScale);
    table.F[i] = f(x);
    table.W[i] = x / kScale;
    t = x;
  }
  // The top follows from the layers' area, so it lies a little above 1.
  const double top = kScale * table.W[1];
  table.F[0] = f(top) + v / top;
  return table;
}

ZigguratTables normalTables() {
  constexpr double r = NormalZiggurat::kEdge;
  constexpr double v = NormalZiggurat::kArea;
  const auto f = [](double x) { return std::exp(-0.5 * x * x); };
  const double q = v / f(r);
  return build(r, v, toInteger(std::floor(r / q * kScale)), f,
               [=](double x) { return std::sqrt(-2.0 * std::log(f(x) + v / x)); });
}

ZigguratTables exponentialTables() {
  constexpr double r = ExponentialZiggurat::kEdge;
  constexpr double v = ExponentialZiggurat::kArea;
  const auto f = [](double x) { return std::exp(-x); };
  const double q = v / f(r);
  return build(r, v, toInteger(r / q * kScale), f,
               [=](double x) { return -std::log(v / x + f(x)); });
}

}  // namespace

const ZigguratTables NormalZiggurat::tables = normalTables();
const ZigguratTables ExponentialZiggurat::tables = exponentialTables();

}  // namespace vexel::kernels::classic
