// Moments, variance, skewness and kurtosis.

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

#include "functions/data/sample.hpp"
#include "functions/descriptive/power_means.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

namespace {

using kernels::DoubleDouble;

constexpr int kHighestOrder = 64;

DoubleDouble variance(const PowerMeans& means, double ddof) {
  const DoubleDouble divisor = means.weight - DoubleDouble(ddof);
  if (!(divisor.high > 0.0)) {
    return kNaN;
  }
  return means.central(2) * (means.weight / divisor);
}

}  // namespace

std::vector<double> moment(Data x, std::span<const int> orders, const MomentOptions& options) {
  int highest = 0;
  for (const int order : orders) {
    if (order < 0 || order > kHighestOrder) {
      throw std::domain_error("moment: order must be 0 to " + std::to_string(kHighestOrder) +
                              ", got " + std::to_string(order));
    }
    highest = std::max(highest, order);
  }
  Sample sample("moment", x, options.weights, options.missing);
  const PowerMeans means =
      options.center ? powerMeans(sample, highest, *options.center) : powerMeans(sample, highest);
  std::vector<double> result;
  for (const int order : orders) {
    if (!means.defined) {
      result.push_back(kNaN);
    } else if (options.center) {
      result.push_back(means.inUnits(means.mean[static_cast<std::size_t>(order)], order));
    } else {
      result.push_back(order == 1 ? 0.0 : means.inUnits(means.central(order), order));
    }
  }
  return result;
}

double moment(Data x, int order, const MomentOptions& options) {
  return moment(x, std::span<const int>(&order, 1), options)[0];
}

double var(Data x, const VarianceOptions& options) {
  Sample sample("var", x, options.weights, options.missing);
  const PowerMeans means = powerMeans(sample, 2);
  return means.defined ? means.inUnits(variance(means, options.ddof), 2) : kNaN;
}

double std(Data x, const VarianceOptions& options) {
  Sample sample("std", x, options.weights, options.missing);
  const PowerMeans means = powerMeans(sample, 2);
  return means.defined ? means.inUnits(sqrt(variance(means, options.ddof)), 1) : kNaN;
}

double skewness(Data x, const ShapeOptions& options) {
  Sample sample("skewness", x, options.weights, options.missing);
  const PowerMeans means = powerMeans(sample, 3);
  return means.defined ? skewnessOf(means, options.bias) : kNaN;
}

double kurtosis(Data x, const ShapeOptions& options) {
  Sample sample("kurtosis", x, options.weights, options.missing);
  const PowerMeans means = powerMeans(sample, 4);
  return means.defined ? kurtosisOf(means, options.bias) : kNaN;
}

// Joanes and Gill, Comparing measures of sample skewness and kurtosis, 1998: g1 and G1.
double skewnessOf(const PowerMeans& means, bool bias) {
  const DoubleDouble m2 = means.central(2);
  const double g = (means.central(3) / (m2 * sqrt(m2))).high;
  const double n = means.weight.high;
  if (!(m2.high > 0.0) || (!bias && !(n > 2.0))) {
    return kNaN;
  }
  return bias ? g : g * std::sqrt(n) * std::sqrt(n - 1.0) / (n - 2.0);
}

// There: g2 and G2.
double kurtosisOf(const PowerMeans& means, bool bias) {
  const DoubleDouble m2 = means.central(2);
  const DoubleDouble ratio = means.central(4) / (m2 * m2);
  const double n = means.weight.high;
  if (!(m2.high > 0.0) || (!bias && !(n > 3.0))) {
    return kNaN;
  }
  if (bias) {
    return (ratio - DoubleDouble(3.0)).high;
  }
  const DoubleDouble excess =
      DoubleDouble(n + 1.0) * ratio - DoubleDouble(3.0) * DoubleDouble(n - 1.0);
  return (DoubleDouble((n - 1.0) / ((n - 2.0) * (n - 3.0))) * excess).high;
}

}  // namespace vexel
