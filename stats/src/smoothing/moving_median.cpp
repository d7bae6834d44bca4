// Medians of all windows of a series.

#include "smoothing/moving_median.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "descriptive/quantiles.hpp"
#include "kernel/interrupt.hpp"
#include "smoothing/running_median.hpp"
#include "smoothing/sorted_window.hpp"

namespace {

constexpr int kWindowCost = 100;  // operations, near enough

bool suitsSortedWindow(const double* series, int n, int w) {
  return w <= SortedWindow::kLongest && std::none_of(series, series + n, [](double x) {
           return x != x || (x == 0.0 && std::signbit(x));
         });
}

void medianOfShortWindows(VKernelVector kv, const double* series, int n, int w, double* out) {
  STATS_InterruptLookout_HW lookout(kv);
  SortedWindow window(series, w);
  out[0] = window.median();
  for (int s = 1; s <= n - w; ++s) {
    window.replace(series[s - 1], series[s - 1 + w]);
    out[s] = window.median();
    lookout.done(kWindowCost);
  }
}

}  // namespace

void STATS_MovingMedian_HW(VKernelVector kv, double* series, int n, int w, V_INT offset,
                           bool recursive, double* out) {
  if (n < w) {
    return;
  }
  if (!recursive && suitsSortedWindow(series, n, w)) {
    medianOfShortWindows(kv, series, n, w, out);
    return;
  }
  STATS_InterruptLookout_HW lookout(kv);
  RunningMedian window(series, w);
  int slot = 0;  // of series[s]; series[s + k] is k slots on, round the ring
  for (int s = 0;; ++s) {
    lookout.done(kWindowCost);
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

void STATS_WeightedMovingMedian_HW(VKernelVector kv, double* series, const double* weights, int n,
                                   int w, V_INT offset, bool recursive, double* scratch,
                                   double* weightScratch, double* out) {
  constexpr std::int64_t kValueCost = 20;
  STATS_InterruptLookout_HW lookout(kv);
  for (int s = 0; s <= n - w; ++s) {
    lookout.done(kValueCost * w);
    std::copy_n(series + s, w, scratch);
    std::copy_n(weights, w, weightScratch);
    out[s] = STATS_Median_HW(scratch, weightScratch, w);
    if (recursive) {
      series[offset + s] = out[s];
    }
  }
}
