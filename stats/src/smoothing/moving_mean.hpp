// Means of all windows of a series.
#pragma once

#include "descriptive/means.hpp"

// out[s] = STATS_Mean_HW(kv, series + s, weights, w, type) to the last bit, for s = 0 .. n - w.
// weights has w values or is null.  out may not overlap series.  Raises interrupts, unless kv is
// null.
void STATS_MovingMean_HW(VKernelVector kv, const double* series, const double* weights, int n,
                         int w, STATS_MEAN_TYPE_HW type, double* out);
