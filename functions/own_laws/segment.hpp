// A stretch of the support on which a distribution function is one Chebyshev series.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <span>

namespace vexel::own_laws {

inline constexpr std::size_t nodeCount = 16;
using Series = std::array<double, nodeCount + 1>;  // Chebyshev coefficients, the first one whole

// cos(pi (2 j + 1) / 32), descending.
const std::array<double, nodeCount>& chebyshevNodes();
// The polynomial through values at the nodes.
Series interpolated(std::span<const double> values);
double valueOf(const Series& series, double x);  // -1 <= x <= 1
Series derivativeOf(const Series& series);
Series integralOf(const Series& series);  // 0 at -1

// The variable t that a segment's series is in: x itself, or the logarithm of the distance from an
// origin, which makes stretches of a power alike.  x grows with t.
struct Map {
  double origin = 0;
  int side = 0;  // 0: x = t; 1: x = origin + exp(t); -1: x = origin - exp(-t)

  double x(double t) const { return side == 0 ? t : origin + side * std::exp(side * t); }
  double slope(double t) const { return side == 0 ? 1 : std::exp(side * t); }  // dx / dt
  double t(double at) const { return side == 0 ? at : side * std::log(side * (at - origin)); }
};

struct Segment {
  Map map;
  double begin = 0;  // of t
  double end = 0;
  double low = 0;  // of x
  double high = 0;
  int depth = 0;        // halvings that led to it
  Series cumulative{};  // mass from low on
  Series density{};     // its slope by t
  double mass = 0;
  double error = 0;  // estimate, of the mass up to any point
  double left = 0;   // share of the mass before it; filled in last, with mass and series shares
  double right = 0;  // share behind it
  std::array<double, nodeCount> values{};  // at the nodes, from the largest t down

  double halfWidth() const { return 0.5 * (end - begin); }
  double tAt(double node) const { return begin + halfWidth() * (1 + node); }
  double nodeAt(double t) const {
    const double node = (t - begin) / halfWidth() - 1;
    return node < -1 ? -1 : node > 1 ? 1 : node;
  }
  // The mass between low and x, and the density by x.
  double massTo(double x) const;
  double densityAt(double x) const;
  // x with massTo(x) = m.
  double inverse(double m) const;

  // From values of the density by t at the nodes, each `shifts` further on in t: near a pole the
  // rounding of x is much of its distance from the pole.
  void fitDensity(const std::array<double, nodeCount>& shifts);
  // From values of the distribution function; returns its value at low.
  double fitCumulative();
};

}  // namespace vexel::own_laws
