#include "functions/own_laws/segment.hpp"

#include <algorithm>

namespace vexel::own_laws {

namespace {

constexpr double pi = 3.141592653589793;

// cos(k pi (2 j + 1) / 32) at [k][j].
using Cosines = std::array<std::array<double, nodeCount>, nodeCount>;

const Cosines& cosines() {
  static const Cosines table = [] {
    Cosines c{};
    for (std::size_t k = 0; k < nodeCount; ++k) {
      for (std::size_t j = 0; j < nodeCount; ++j) {
        c[k][j] =
            std::cos(pi * static_cast<double>(k * (2 * j + 1) % (4 * nodeCount)) / (2 * nodeCount));
      }
    }
    return c;
  }();
  return table;
}

double largestOfLast(const Series& series) {
  return std::max({std::abs(series[nodeCount - 3]), std::abs(series[nodeCount - 2]),
                   std::abs(series[nodeCount - 1])});
}

}  // namespace

const std::array<double, nodeCount>& chebyshevNodes() { return cosines()[1]; }

Series interpolated(std::span<const double> values) {
  Series series{};
  for (std::size_t k = 0; k < nodeCount; ++k) {
    double sum = 0;
    for (std::size_t j = 0; j < nodeCount; ++j) {
      sum += values[j] * cosines()[k][j];
    }
    series[k] = sum * (k == 0 ? 1.0 : 2.0) / nodeCount;
  }
  return series;
}

double valueOf(const Series& series, double x) {
  double b1 = 0;
  double b2 = 0;
  for (std::size_t k = nodeCount; k > 0; --k) {
    const double b = series[k] + 2 * x * b1 - b2;
    b2 = b1;
    b1 = b;
  }
  return series[0] + x * b1 - b2;
}

Series derivativeOf(const Series& series) {
  Series slope{};
  for (std::size_t k = nodeCount; k > 0; --k) {
    slope[k - 1] = (k + 1 <= nodeCount ? slope[k + 1] : 0) + 2 * static_cast<double>(k) * series[k];
  }
  slope[0] *= 0.5;
  return slope;
}

Series integralOf(const Series& series) {
  Series integral{};
  integral[1] = series[0] - 0.5 * series[2];
  for (std::size_t k = 2; k <= nodeCount; ++k) {
    const double next = k + 1 <= nodeCount ? series[k + 1] : 0;
    integral[k] = (series[k - 1] - next) / (2 * static_cast<double>(k));
  }
  double atStart = 0;
  for (std::size_t k = 1; k <= nodeCount; ++k) {
    atStart += k % 2 == 0 ? integral[k] : -integral[k];
  }
  integral[0] = -atStart;
  return integral;
}

void Segment::fitDensity(const std::array<double, nodeCount>& shifts) {
  density = interpolated(values);
  if (map.side != 0 && map.origin != 0) {
    for (int pass = 0; pass < 2; ++pass) {
      const Series slope = derivativeOf(density);
      std::array<double, nodeCount> there{};
      for (std::size_t j = 0; j < nodeCount; ++j) {
        there[j] = values[j] - valueOf(slope, chebyshevNodes()[j]) / halfWidth() * shifts[j];
      }
      density = interpolated(there);
    }
  }
  cumulative = integralOf(density);
  for (double& c : cumulative) {
    c *= halfWidth();
  }
  mass = valueOf(cumulative, 1);
  error = 2 * halfWidth() * largestOfLast(density);
}

double Segment::fitCumulative() {
  cumulative = interpolated(values);
  error = 2 * largestOfLast(cumulative);
  const double atLow = valueOf(cumulative, -1);
  cumulative[0] -= atLow;
  mass = valueOf(cumulative, 1);
  density = derivativeOf(cumulative);
  for (double& c : density) {
    c /= halfWidth();
  }
  return atLow;
}

double Segment::massTo(double x) const {
  return std::clamp(valueOf(cumulative, nodeAt(map.t(x))), 0.0, std::max(mass, 0.0));
}

double Segment::densityAt(double x) const {
  const double t = map.t(x);
  return std::max(0.0, valueOf(density, nodeAt(t)) / map.slope(t));
}

// Newton's steps, kept in a bracket that halves where they leave it.
double Segment::inverse(double m) const {
  double low_node = -1;
  double high_node = 1;
  double node = mass > 0 ? std::clamp(2 * m / mass - 1, -1.0, 1.0) : 0;
  for (int i = 0; i < 100; ++i) {
    const double miss = valueOf(cumulative, node) - m;
    (miss < 0 ? low_node : high_node) = node;
    const double step = miss / (valueOf(density, node) * halfWidth());
    double next = node - step;
    if (!(next > low_node && next < high_node)) {
      next = 0.5 * (low_node + high_node);
    }
    if (std::abs(next - node) < 1e-15 || miss == 0) {
      break;
    }
    node = next;
  }
  return std::clamp(map.x(tAt(node)), low, high);
}

}  // namespace vexel::own_laws
