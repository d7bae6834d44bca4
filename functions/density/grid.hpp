// Densities on a grid: weights shared out between neighbouring grid points, and a convolution.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "vexel/kernel_density.hpp"

namespace vexel {

// Where x lies on a grid: in cell `index`, `share` of the way to the next point.
struct GridPlace {
  std::size_t index;
  double share;
};

class Grid {
 public:
  Grid(Interval bounds, std::size_t points);

  std::size_t points() const { return points_; }
  double step() const { return step_; }
  double point(std::size_t i) const;
  // False for what lies outside.
  bool place(double x, GridPlace& at) const {
    const double t = (x - low_) * scale_;
    if (!(t >= 0 && t <= last_)) {
      return false;
    }
    at.index = static_cast<std::size_t>(t);
    at.index -= static_cast<std::size_t>(at.index + 1 == points_);
    at.share = t - static_cast<double>(at.index);
    return true;
  }

 private:
  std::size_t points_;
  double low_;
  double high_;
  double step_;
  double scale_;
  double last_;
};

// sum over j of shares[j] K((first + i stride - j) step / h) / (total h) for i = 0 .. points-1.
struct GridSums {
  std::size_t first;
  std::size_t stride;
  std::size_t points;
  double step;
};
std::vector<double> convolved(std::span<const double> shares, GridSums at, DensityKernel kernel,
                              double bandwidth, double total);

// The density of the points (weights may be empty: all 1) at the points of a grid.
std::vector<double> densityOnGrid(std::span<const double> x, std::span<const double> weights,
                                  double total, Interval bounds, std::size_t points,
                                  DensityKernel kernel, double bandwidth);

}  // namespace vexel
