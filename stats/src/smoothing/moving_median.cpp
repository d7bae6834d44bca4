// Medians of all windows of a series.

#include "smoothing/moving_median.hpp"

#include <algorithm>

#include "descriptive/quantiles.hpp"
#include "smoothing/running_median.hpp"

void STATS_MovingMedian_HW(double* series, int n, int w, V_INT offset, bool recursive,
                           double* out) {
  if (n < w) {
    return;
  }
  RunningMedian window(series, w);
  int slot = 0;  // of series[s]; series[s + k] is k slots on, round the ring
  for (int s = 0;; ++s) {
    const double median = window.median();
    out[s] = median;
    if (recursive) {
      series[offset + s] = median;
      if (offset > 0 && offset < w) {
        window.replace(static_cast<int>((slot + offset) % w), median);
      }
    }
    if (s == n - w) {
      return;
    }
    window.replace(slot, series[s + w]);
    slot = slot + 1 == w ? 0 : slot + 1;
  }
}

void STATS_WeightedMovingMedian_HW(double* series, const double* weights, int n, int w,
                                   V_INT offset, bool recursive, double* scratch,
                                   double* weightScratch, double* out) {
  for (int s = 0; s <= n - w; ++s) {
    std::copy_n(series + s, w, scratch);
    std::copy_n(weights, w, weightScratch);
    out[s] = STATS_Median_HW(scratch, weightScratch, w);
    if (recursive) {
      series[offset + s] = out[s];
    }
  }
}
