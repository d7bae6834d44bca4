// Kernel densities.
//
//   vexel::KernelDensity d = vexel::kde(x, {.bandwidth = vexel::BandwidthRule::scott});
//   double y = d(1.5), p = d.cdf(1.5);
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>
#include <vexel/interval.hpp>

namespace vexel {

class Random;

// Densities of standard deviation 1, scaled by the bandwidth.
enum class DensityKernel : std::uint8_t {
  gaussian,
  epanechnikov,
  rectangular,
  triangular,
  biweight
};

// silverman: 0.9 min(sd, IQR/1.34) n^(-1/5); scott: 1.06 in place of 0.9.
enum class BandwidthRule : std::uint8_t { silverman, scott };

class Bandwidth {
 public:
  constexpr Bandwidth(BandwidthRule rule) : rule_(rule) {}
  constexpr Bandwidth(double value) : value_(value), given_(true) {}
  constexpr bool given() const { return given_; }
  constexpr double value() const { return value_; }
  constexpr BandwidthRule rule() const { return rule_; }

 private:
  BandwidthRule rule_ = BandwidthRule::silverman;
  double value_ = 0;
  bool given_ = false;
};

struct KdeOptions {
  Data weights = {};
  Bandwidth bandwidth = BandwidthRule::silverman;
  DensityKernel kernel = DensityKernel::gaussian;
  std::size_t points = 512;
  std::optional<Interval> bounds = {};  // left out: three bandwidths beyond the data
  Missing missing = Missing::propagate;
};

class VEXEL_API KernelDensity {
 public:
  // The density at points equally spaced between the bounds.
  const std::vector<double>& x() const { return x_; }
  const std::vector<double>& y() const { return y_; }
  double bandwidth() const { return bandwidth_; }
  DensityKernel kernel() const { return kernel_; }

  // The direct sums at t, whatever the grid.
  double operator()(double t) const;
  double cdf(double t) const;
  void operator()(std::span<const double> t, std::span<double> out) const;
  void cdf(std::span<const double> t, std::span<double> out) const;

  // Exact variates of the density: a point of the data plus a variate of the kernel.
  std::vector<double> sample(std::size_t n, Random& rng) const;
  void sample(std::span<double> out, Random& rng) const;

 private:
  friend VEXEL_API KernelDensity kde(Data x, const KdeOptions& options);
  struct Sample;
  KernelDensity() = default;

  std::vector<double> x_;
  std::vector<double> y_;
  double bandwidth_ = 0;
  DensityKernel kernel_ = DensityKernel::gaussian;
  std::shared_ptr<const Sample> sample_;
};

// A sample without spread needs a bandwidth; an empty one, or (propagate) one with missing values,
// has a density that is NaN everywhere.
VEXEL_API KernelDensity kde(Data x, const KdeOptions& options = {});

}  // namespace vexel
