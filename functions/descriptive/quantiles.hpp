// Quantiles by selection.
#pragma once

#include <span>
#include <vector>

#include "functions/descriptive/selection.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

// The value between those of two targets.
struct Place {
  Target low;
  Target high;
  double fraction;
};
// Where the quantile of a sample of total weight n lies.
Place placeOf(double q, double n, QuantileMethod method);
// low + (high - low) * fraction with one rounding, so that it rises with the fraction.
double between(double low, double high, double fraction);

// 0 <= q <= 1 or NaN; NaNs where the sample gives no result.
std::vector<double> quantilesOf(Selection&& selection, std::span<const double> q,
                                QuantileMethod method);
double medianOf(Selection&& selection);

// Quartiles and extremes, with what was found on the way.
struct Quartiles {
  Sample::Presence found;
  double total;
  double values[5];
};
Quartiles quartilesOf(const Sample& sample);

}  // namespace vexel
