// Quantiles by selection.
#pragma once

#include <span>
#include <vector>

#include "functions/selection.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

// Of a selection that is not undefined; 0 <= q <= 1 or NaN.
std::vector<double> quantilesOf(const Selection& selection, std::span<const double> q,
                                QuantileMethod method);
double medianOf(const Selection& selection);

}  // namespace vexel
