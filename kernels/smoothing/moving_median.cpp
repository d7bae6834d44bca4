// Medians of all windows of a series.

#include "kernels/smoothing/moving_median.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "kernels/descriptive/quantiles.hpp"
#include "kernels/lookout.hpp"
#include "kernels/smoothing/window_medians.hpp"

namespace vexel::kernels {

namespace {

constexpr int kWindowCost = 100;  // operations, near enough

bool suitsSortedWindow(const double* series, int n, int w) {
  return w <= SortedWindow::kLongest && std::none_of(series, series + n, [](double x) {
           return x != x || (x == 0.0 && std::signbit(x));
         });
}

void medianOfShortWindows(const double* series, int n, int w, double* out) {
  Lookout lookout;
  SortedWindow window(series, w);
  out[0] = window.median();
  for (int s = 1; s <= n - w; ++s) {
    window.replace(series[s - 1], series[s - 1 + w]);
    out[s] = window.median();
    lookout.done(kWindowCost);
  }
}

// How many zeros of each sign a window holds.
class ZeroCount {
 public:
  void add(double x) { count(x, 1); }
  void remove(double x) { count(x, -1); }
  bool bothSigns() const { return zeros_[0] > 0 && zeros_[1] > 0; }

 private:
  void count(double x, int by) {
    if (x == 0.0) {
      zeros_[std::signbit(x) ? 1 : 0] += by;
    }
  }

  int zeros_[2] = {0, 0};
};

}  // namespace

void movingMedian(double* series, int n, int w, std::int64_t offset, bool recursive, double* out) {
  if (n < w) {
    return;
  }
  if (!recursive && suitsSortedWindow(series, n, w)) {
    medianOfShortWindows(series, n, w, out);
    return;
  }
  Lookout lookout;
  RunningMedian window(series, w);
  ZeroCount zeros;
  std::for_each(series, series + w, [&](double x) { zeros.add(x); });
  std::vector<double> scratch;
  int slot = 0;  // of series[s]; series[s + k] is k slots on, round the ring
  for (int s = 0;; ++s) {
    lookout.done(kWindowCost);
    double median = window.median();
    if (median == 0.0 && zeros.bothSigns()) {
      // Zeros are equal, so only the selection itself tells the sign of the one it ends at.
      lookout.done(w);
      scratch.assign(series + s, series + s + w);
      median = simpleMedian(scratch.data(), w);
    }
    out[s] = median;
    const double leaving = series[s];
    if (recursive) {
      if (offset > 0 && offset < w) {
        zeros.remove(series[offset + s]);
        zeros.add(median);
        window.replace(static_cast<int>((slot + offset) % w), median);
      }
      series[offset + s] = median;
    }
    if (s == n - w) {
      return;
    }
    zeros.remove(leaving);
    zeros.add(series[s + w]);
    window.replace(slot, series[s + w]);
    slot = slot + 1 == w ? 0 : slot + 1;
  }
}

void weightedMovingMedian(double* series, const double* weights, int n, int w, std::int64_t offset,
                          bool recursive, double* scratch, double* weightScratch, double* out) {
  constexpr std::int64_t kValueCost = 20;
  Lookout lookout;
  for (int s = 0; s <= n - w; ++s) {
    lookout.done(kValueCost * w);
    std::copy_n(series + s, w, scratch);
    std::copy_n(weights, w, weightScratch);
    out[s] = median(scratch, weightScratch, w);
    if (recursive) {
      series[offset + s] = out[s];
    }
  }
}

}  // namespace vexel::kernels
