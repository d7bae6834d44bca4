// The spread of a sample, as widths of bins and bandwidths are made of it.
#pragma once

#include <span>

namespace vexel {

struct Spread {
  double total;  // number of points, or their weight
  double sd;     // divisor: total
  double iqr;    // of the quantiles by linear interpolation
};

// weights may be empty.
Spread spreadOf(std::span<const double> points, std::span<const double> weights);

}  // namespace vexel
