// Means of all windows of a series.
#pragma once

#include "kernels/descriptive/means.hpp"

namespace vexel::kernels {

// out[s] = mean(series + s, weights, w, type) to the last bit, for s = 0 .. n - w.
// weights has w values or is null.  out may not overlap series.  Polls.
void movingMean(const double* series, const double* weights, int n, int w, MeanKind type,
                double* out);

}  // namespace vexel::kernels
