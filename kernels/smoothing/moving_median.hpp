// Medians of all windows of a series.
#pragma once

#include <cstdint>

namespace vexel::kernels {

// out[s] = the median of series[s..s+w-1], for s = 0 .. n - w; O(log w) for each, O(w) for
// one that is a zero where zeros of both signs lie in the window.
//
// A recursive one also writes it to series[offset + s] before the next window, which may lie in it,
// so series has room for offset + n - w + 1 values.  Polls.
void movingMedian(double* series, int n, int w, std::int64_t offset, bool recursive, double* out);

// The same with weights[0..w-1] for the places of each window, O(w log w) for each window: weights
// belong to places, not to values.  Both scratch arrays have room for w.
void weightedMovingMedian(double* series, const double* weights, int n, int w, std::int64_t offset,
                          bool recursive, double* scratch, double* weightScratch, double* out);

}  // namespace vexel::kernels
