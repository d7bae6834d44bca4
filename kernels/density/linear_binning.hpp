// Linear binning of a sample onto an equally spaced grid.
#pragma once

#include <cstdint>

namespace vexel::kernels {

// Adds the data in [a, b] to the M points a + j (b - a)/(M - 1), each datum's weight shared between
// its two neighbours in proportion to nearness, then scales all points by c over the total weight
// binned; c = 0 stands for M/(b - a).  True when some datum is missing.
//
// out has M elements, cleared by the caller; a < b, both finite, and M >= 1.  w may be null; a NaN
// weight counts as 1.  NaN data and data outside [a, b] are left out.  With no datum inside, the
// scaling divides by zero.
bool binLinearly(std::int32_t M, double a, double b, double c, std::int64_t n, const double* x,
                 const double* w, double* out);

}  // namespace vexel::kernels
