#include "functions/own_laws/envelope.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "functions/data/text.hpp"
#include "kernels/variates/ziggurat.hpp"

namespace vexel::own_laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

double scaledAt(DensityValues& f, double x) {
  double y = 0;
  f.scaled(std::span(&x, 1), std::span(&y, 1));
  return y;
}

}  // namespace

// Strips to one side, of width area / height each, the height being the density at the nearer edge.
// Edges and their logarithms are kept to see that slopes fall.
bool Envelope::addSide(DensityValues& f, double mode, double atMode, double end, double area,
                       int most, const std::function<double(double)>& derivative) {
  constexpr double slack = 1e-9;  // of slopes, relative: rounding of logarithms
  const double side = end > mode ? 1 : -1;
  const std::size_t first = cells_.size();
  double edge = mode;
  double height = atMode;
  double slope = infinity;  // of the logarithm, outwards, over the strip before
  for (int i = 0; i < most; ++i) {
    double next = edge + side * (i == 0 ? 0.98 : 1.0) * (area / height);
    const bool last = side * (end - next) <= 0;
    if (last) {
      next = end;
    }
    const double width = side * (next - edge);
    if (!(width > 0)) {
      return false;
    }
    const double below = last ? scaledAt(f, std::nextafter(end, mode)) : scaledAt(f, next);
    const double fall = std::log(below / height) / width;
    if (fall > slope * (1 - std::copysign(slack, slope)) + slack / width ||
        (i > 0 && fall > slack / width)) {
      return false;
    }
    if (i == 1) {
      // The top: no higher than the second strip's chord goes on to.
      const double top = std::log(cells_[first].height) + std::log1p(-slack);
      const double chord = std::log(height) - fall * std::abs(edge - mode);
      if (chord > top) {
        return false;
      }
    }
    const double least = std::min(below, height);
    const double cellHeight = area / width;
    const double sure = least / cellHeight;
    cells_.push_back({edge, sure > 0 ? side * width / sure : 0, sure, side * width, cellHeight, 0});
    if (last || below == 0) {
      return true;
    }
    edge = next;
    height = below;
    slope = fall;
    double steepness = -fall;
    if (derivative) {
      steepness = f.logDerivative(derivative(edge), height) * -side;
    }
    if (i > 0 && steepness > 0 && height / steepness <= area) {
      const double tail = height / (steepness * area);
      cells_.push_back({edge, 0, 0, side / steepness, height, tail});
      return true;
    }
  }
  return false;
}

std::optional<Envelope> Envelope::over(DensityValues& f, double mode, double mass, int strips,
                                       const std::function<double(double)>& derivative) {
  const Interval support = f.support();
  const double inside = std::clamp(mode, std::nextafter(support.low, infinity),
                                   std::nextafter(support.high, -infinity));
  const double atMode = scaledAt(f, inside);
  const double area = mass / strips;
  Envelope envelope;
  const int most = strips + 8;
  if (mode < support.high &&
      !envelope.addSide(f, mode, atMode, support.high, area, most, derivative)) {
    return std::nullopt;
  }
  if (mode > support.low &&
      !envelope.addSide(f, mode, atMode, support.low, area, most, derivative)) {
    return std::nullopt;
  }
  return envelope;
}

// In the part of a cell that the density may or may not fill: another place, at the same height.
bool Envelope::tried(const Cell& cell, double u, const DensityValues& f, Random& rng,
                     double& x) const {
  double height = u * cell.height;
  if (cell.tail == 0) {
    x = cell.from + cell.width * rng.uniform();
  } else {
    if (u >= cell.tail) {
      return false;
    }
    const double e = kernels::exponentialVariate(rng);
    x = cell.from + cell.width * e;
    height = rng.uniform() * cell.height * std::exp(-e);
    const Interval support = f.support();
    if (!(x > support.low && x < support.high)) {
      return false;
    }
  }
  const double y = f.scaledOnce(x);
  const double bound =
      cell.tail == 0 ? cell.height : cell.height * std::exp(-(x - cell.from) / cell.width);
  if (!(y <= bound * (1 + 1e-6)) || std::isnan(y) || y < 0) {
    throw std::domain_error("the density at " + number(x) +
                            " does not fit what it was when the law was built");
  }
  return height < y;
}

}  // namespace vexel::own_laws
