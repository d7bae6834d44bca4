// Quantiles by selection.
#pragma once

#include <span>
#include <vector>

#include "functions/selection.hpp"
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

// Of a selection that is not undefined; 0 <= q <= 1 or NaN.
std::vector<double> quantilesOf(const Selection& selection, std::span<const double> q,
                                QuantileMethod method);
double medianOf(const Selection& selection);

}  // namespace vexel
