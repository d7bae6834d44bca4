// How many equal bins a rule makes of data.
//
// Freedman and Diaconis (1981), On the histogram as a density estimator: width 2 IQR n^(-1/3).
// Scott (1979), On optimal and data-based histograms: width (24 sqrt(pi) / n)^(1/3) sd.
// Sturges (1926), The choice of a class interval: width range / (log2(n) + 1).
#include <algorithm>
#include <numbers>
#include <numeric>

#include "functions/ordering/binning.hpp"
#include "kernels/watch.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

namespace {

constexpr double kMostBins = 0x1p27;

struct Present {
  std::vector<double> points;
  std::vector<double> weights;  // empty: all 1
  double total() const {
    return weights.empty() ? static_cast<double>(points.size())
                           : std::accumulate(weights.begin(), weights.end(), 0.0);
  }
};

Present presentIn(Data x, Interval range, Data w) {
  Present p;
  kernels::forEach(x.size(), [&](std::size_t i) {
    const double v = x[i];
    const double weight = w.given() ? w[i] : 1;
    if (weight > 0 && v >= range.low && v <= range.high) {
      p.points.push_back(v);
      if (w.given()) {
        p.weights.push_back(weight);
      }
    }
  });
  return p;
}

}  // namespace

std::size_t ruleBins(Data x, BinRule rule, Interval range, const HistogramOptions& options) {
  const Present p = presentIn(x, range, options.weights);
  if (p.points.empty()) {
    return 1;
  }
  const Data weights = p.weights.empty() ? Data() : Data(p.weights);
  const auto [smallest, largest] = std::minmax_element(p.points.begin(), p.points.end());
  const double sturges = (*largest - *smallest) / (std::log2(p.total()) + 1);
  double width = sturges;
  if (rule == BinRule::scott) {
    width = std::cbrt(24 * std::sqrt(std::numbers::pi) / p.total()) *
            std(p.points, {.weights = weights, .ddof = 0});
  } else if (rule != BinRule::sturges) {
    const double fd = 2 * iqr(p.points, {.weights = weights}) / std::cbrt(p.total());
    // At most twice as many bins as the root of the number, whatever lies far out.
    const double least = (*largest - *smallest) / std::sqrt(p.total()) / 2;
    width = rule == BinRule::fd ? fd : std::min(std::max(fd, least), sturges);
  }
  if (!(width > 0)) {
    return 1;
  }
  // Bins of integers hold at least one each.
  if (x.element() == Element::int32 || x.element() == Element::int64) {
    width = std::max(width, 1.0);
  }
  const double bins = std::ceil((range.high - range.low) / width);
  if (!(bins <= kMostBins)) {
    throw std::length_error("bins: the rule makes more than 2^27 of them; give their number");
  }
  return static_cast<std::size_t>(std::max(bins, 1.0));
}

}  // namespace vexel
