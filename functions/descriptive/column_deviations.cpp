// Median absolute deviations of many short variables at once, to the bits of one by itself.
#include <algorithm>
#include <cmath>
#include <vector>

#include "functions/data/sample.hpp"
#include "functions/descriptive/column_ranks.hpp"
#include "functions/descriptive/column_strips.hpp"
#include "functions/descriptive/quantiles.hpp"
#include "kernels/sorting/network.hpp"
#include "kernels/watch.hpp"
#include "vexel/columns.hpp"

namespace vexel {

namespace {

struct Middle {
  std::size_t low;
  std::size_t high;
  double fraction;

  explicit Middle(std::size_t n) {
    const Place place = placeOf(0.5, static_cast<double>(n), QuantileMethod::linear);
    low = rankOf(place.low, n);
    high = rankOf(place.high, n);
    fraction = place.fraction;
  }
};

// Of columns without anything missing; the others are left to `alone`.
class Deviations {
 public:
  Deviations(const Columns& columns, double scale)
      : n_(columns.first().size()),
        scale_(scale),
        middle_(n_),
        strip_(columns),
        network_(kernels::sortingNetwork(n_, std::vector{middle_.low, middle_.high})) {}

  // Of a strip from column `begin` on.
  template <typename Alone>
  void find(std::size_t begin, std::span<double> out, bool propagates, Alone alone) {
    strip_.moveTo(begin);
    strip_.exchange(network_);
    double centers[ColumnStrip::width];
    bool served[ColumnStrip::width];
    for (std::size_t j = 0; j < ColumnStrip::width; ++j) {
      centers[j] = median(j);
      served[j] = strip_.missing(j) == 0 && std::isfinite(centers[j]) &&
                  !(strip_.hasNegativeZero(j) && touchesZero(j));
    }
    for (std::size_t i = 0; i < n_; ++i) {
      double* const row = strip_.row(i);
      for (std::size_t j = 0; j < ColumnStrip::width; ++j) {
        row[j] = std::fabs(row[j] - centers[j]);
      }
    }
    strip_.exchange(network_);
    for (std::size_t j = 0; j < strip_.columns(); ++j) {
      if (served[j]) {
        out[begin + j] = scale_ * median(j);
      } else if (propagates && strip_.missing(j) > 0) {
        out[begin + j] = kNaN;
      } else {
        alone(begin + j);
      }
    }
  }

 private:
  double median(std::size_t j) {
    return between(strip_.row(middle_.low)[j], strip_.row(middle_.high)[j], middle_.fraction);
  }
  bool touchesZero(std::size_t j) {
    return strip_.row(middle_.low)[j] == 0.0 || strip_.row(middle_.high)[j] == 0.0;
  }

  std::size_t n_;
  double scale_;
  Middle middle_;
  ColumnStrip strip_;
  std::vector<kernels::Exchange> network_;
};

}  // namespace

void median_absolute_deviation(const Columns& columns, std::span<double> out,
                               const MedianDeviationOptions& options) {
  requireRoom("median_absolute_deviation", columns, 1, out);
  const auto alone = [&](std::size_t j) {
    out[j] = median_absolute_deviation(columns[j], options);
  };
  const std::size_t count = columns.count();
  if (options.weights.given() || !ColumnStrip::serves(columns)) {
    for (std::size_t j = 0; j < count; ++j) {
      alone(j);
      kernels::poll(static_cast<double>(j + 1) / static_cast<double>(count));
    }
    return;
  }
  Deviations deviations(columns, options.scale);
  for (std::size_t j = 0; j < count; j += ColumnStrip::width) {
    deviations.find(j, out, options.missing == Missing::propagate, alone);
    if (j % 1024 == 0) {
      kernels::poll(static_cast<double>(j) / static_cast<double>(count));
    }
  }
}

}  // namespace vexel
