#include "functions/density/grid.hpp"

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <new>

#include "functions/density/kernels.hpp"
#include "kernels/binning.hpp"
#include "kernels/watch.hpp"

namespace vexel {

Grid::Grid(Interval bounds, std::size_t points)
    : points_(points),
      low_(bounds.low),
      high_(bounds.high),
      step_((bounds.high - bounds.low) / static_cast<double>(points - 1)),
      scale_(static_cast<double>(points - 1) / (bounds.high - bounds.low)),
      last_(static_cast<double>(points - 1)) {}

double Grid::point(std::size_t i) const {
  return i + 1 == points_ ? high_ : low_ + static_cast<double>(i) * step_;
}

namespace {

// Half of the symmetric kernel at the grid's distances, as far as it matters.
std::vector<double> sampledKernel(DensityKernel kernel, double step, double bandwidth,
                                  std::size_t most) {
  const double reach = std::min(kernelReach(kernel), kFarKernel) * bandwidth / step;
  const auto count = static_cast<std::size_t>(std::min(reach, static_cast<double>(most - 1))) + 1;
  std::vector<double> k(count);
  for (std::size_t j = 0; j < count; ++j) {
    k[j] = kernelDensity(kernel, static_cast<double>(j) * step / bandwidth);
  }
  return k;
}

// The circular convolution of two series of a length that holds both.
std::vector<double> transformed(std::span<const double> shares, const std::vector<double>& kernel,
                                std::size_t needed) {
  std::size_t length = 2;
  while (length < needed + kernel.size()) {
    length *= 2;
  }
  std::vector<double> a(length);
  std::vector<double> b(length);
  std::vector<double> work(length);
  std::copy(shares.begin(), shares.end(), a.begin());
  b[0] = kernel[0];
  for (std::size_t j = 1; j < kernel.size(); ++j) {
    b[j] = b[length - j] = kernel[j];
  }
  const auto m = static_cast<int>(length);
  int failA = 0;
  int failB = 0;
  q64883(a.data(), &m, work.data(), &failA);
  kernels::poll();
  q64883(b.data(), &m, work.data(), &failB);
  kernels::poll();
  // The kernel is even, so its transform is real.
  for (std::size_t k = 1; k < length / 2; ++k) {
    a[k] *= b[k];
    a[length - k] *= -b[k];
  }
  a[0] *= b[0];
  a[length / 2] *= b[length / 2];
  int failC = 0;
  q42899(a.data(), &m, work.data(), &failC);
  if (failA != 0 || failB != 0 || failC != 0) {
    throw std::bad_alloc();
  }
  const double scale = std::sqrt(static_cast<double>(length));
  for (double& v : a) {
    v *= scale;
  }
  return a;
}

}  // namespace

std::vector<double> convolved(std::span<const double> shares, GridSums at, DensityKernel kernel,
                              double bandwidth, double total) {
  constexpr double directOperations = 3e7;  // beyond that the transforms are faster
  const std::vector<double> k = sampledKernel(kernel, at.step, bandwidth, shares.size());
  const double scale = 1 / (total * bandwidth);
  std::vector<double> y(at.points);
  if (static_cast<double>(at.points) * static_cast<double>(k.size()) > directOperations) {
    const std::vector<double> all = transformed(shares, k, shares.size());
    for (std::size_t i = 0; i < at.points; ++i) {
      y[i] = std::max(0.0, all[at.first + i * at.stride] * scale);
    }
    return y;
  }
  // Both halves, so that each density is one sum of products.
  std::vector<double> whole(k.rbegin(), k.rend());
  whole.insert(whole.end(), k.begin() + 1, k.end());
  for (std::size_t i = 0; i < at.points; ++i) {
    if (i % 256 == 0) {
      kernels::poll(static_cast<double>(i) / static_cast<double>(at.points));
    }
    const std::size_t middle = at.first + i * at.stride;
    const std::size_t left = std::min(middle, k.size() - 1);
    const std::size_t right = std::min(shares.size() - 1 - middle, k.size() - 1);
    y[i] =
        kernels::dot(&shares[middle - left], &whole[k.size() - 1 - left], left + right + 1) * scale;
  }
  return y;
}

namespace {

// Every point added to what it reaches.
std::vector<double> directDensity(std::span<const double> x, std::span<const double> weights,
                                  const Grid& grid, DensityKernel kernel, double h) {
  std::vector<double> y(grid.points());
  const double reach = std::min(kernelReach(kernel), kFarKernel) * h;
  const auto last = static_cast<double>(grid.points() - 1);
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (i % 256 == 0) {
      kernels::poll(static_cast<double>(i) / static_cast<double>(x.size()));
    }
    const double from = (x[i] - reach - grid.point(0)) / grid.step();
    const double to = (x[i] + reach - grid.point(0)) / grid.step();
    if (to < 0 || from > last) {
      continue;
    }
    const auto first = static_cast<std::size_t>(std::max(0.0, std::floor(from)));
    const auto end = static_cast<std::size_t>(std::min(last, std::ceil(to))) + 1;
    for (std::size_t j = first; j < end; ++j) {
      y[j] +=
          (weights.empty() ? 1 : weights[i]) * kernelDensity(kernel, (grid.point(j) - x[i]) / h);
    }
  }
  return y;
}

}  // namespace

std::vector<double> densityOnGrid(std::span<const double> x, std::span<const double> weights,
                                  double total, Interval bounds, std::size_t points,
                                  DensityKernel kernel, double h) {
  constexpr double fewKernels = 5e5;      // done directly in a few milliseconds
  constexpr double finest = 64;           // steps of the fine grid in a bandwidth
  constexpr double mostShares = 1 << 22;  // of the fine grid
  const Grid grid(bounds, points);
  const double reach = std::min(kernelReach(kernel), kFarKernel) * h;
  const auto stride = std::max(1.0, std::ceil(finest * grid.step() / h));
  const double step = grid.step() / stride;
  const double margin = std::ceil(reach / step) + 1;
  const double shares = static_cast<double>(points - 1) * stride + 1 + 2 * margin;
  const double reached = std::min(2 * reach / grid.step() + 1, static_cast<double>(points));
  if (static_cast<double>(x.size()) * reached <= fewKernels || shares > mostShares) {
    std::vector<double> y = directDensity(x, weights, grid, kernel, h);
    for (double& v : y) {
      v /= total * h;
    }
    return y;
  }
  const Grid fine({bounds.low - margin * step, bounds.high + margin * step},
                  static_cast<std::size_t>(shares));
  std::vector<double> share(fine.points());
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (i % kernels::pollInterval == 0) {
      kernels::poll(static_cast<double>(i) / static_cast<double>(x.size()));
    }
    GridPlace at{};
    if (fine.place(x[i], at)) {
      const double w = weights.empty() ? 1 : weights[i];
      share[at.index] += w * (1 - at.share);
      share[at.index + 1] += w * at.share;
    }
  }
  const GridSums sums{static_cast<std::size_t>(margin), static_cast<std::size_t>(stride), points,
                      step};
  return convolved(share, sums, kernel, h, total);
}

}  // namespace vexel
