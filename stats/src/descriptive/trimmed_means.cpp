// Trimmed and winsorized means and their entry points.
//
// Unweighted samples are cut by count, weighted ones by weight; at a cut by weight the boundary
// point keeps part of its weight.

#include <algorithm>
#include <cstdint>

#include "descriptive/means.hpp"
#include "descriptive/sample_view.hpp"
#include "descriptive/sort_kernels.hpp"
#include "kernel/entry_frame.hpp"

namespace {

// Ranks lo..hi-1 are kept, 0 <= lo, hi <= n.
struct CountCut {
  int lo;
  int hi;
  bool symmetric;  // as many values cut off below as above
};

// Rounds the cuts half up and moves the values of ranks lo..hi-1 to x[lo..hi-1].
CountCut cutByCount(double* x, int n, double lower, double upper) {
  const int size = std::max(n, 0);
  const int lo = std::clamp(STATS_DoubleToInteger_HW(n * lower + 0.5), 0, size);
  const int hi = std::clamp(STATS_DoubleToInteger_HW(n * upper + 0.5), 0, size);
  STATS_QuickSelect_HW(x, n, lo);
  STATS_QuickSelect_HW(x + lo, n - lo, hi - lo);
  return {lo, hi, std::int64_t{lo} + hi == n};
}

// Points first..last are kept, none when last < first.
struct WeightCut {
  int first;
  int last;
  double firstKept;   // the weight that the first keeps
  double lastExcess;  // the weight that the last loses, not below 0
};

// A point whose cumulative weight is the low cut exactly is dropped; one whose cumulative weight is
// the high cut exactly is kept whole.
WeightCut cutByWeight(const double* w, int n, double lower, double upper) {
  double total = 0.0;
  for (int i = 0; i < n; ++i) {
    total += w[i];
  }
  const double lowCut = lower * total;
  const double highCut = total - (1.0 - upper) * total;

  WeightCut cut{0, n - 1, 0.0, 0.0};
  double cumulative = 0.0;
  for (; cut.first < n; ++cut.first) {
    cumulative += w[cut.first];
    if (!(cumulative <= lowCut)) {
      break;
    }
  }
  cut.firstKept = cumulative - lowCut;

  double remaining = total;
  for (; cut.last >= 0 && remaining - w[cut.last] >= highCut; --cut.last) {
    remaining -= w[cut.last];
  }
  cut.lastExcess = remaining > highCut ? remaining - highCut : 0.0;
  return cut;
}

}  // namespace

// A cut that is not symmetric averages one value fewer; results have always been so.
double STATS_SimpleTrimmedMean_HW(double* x, int n, double lower, double upper,
                                  STATS_MEAN_TYPE_HW type) {
  const CountCut cut = cutByCount(x, n, lower, upper);
  const int kept = cut.hi - cut.lo;
  return STATS_SimpleMean_HW(x + cut.lo, cut.symmetric ? kept : kept - 1, type);
}

// A cut that is not symmetric takes its upper replacement, and starts replacing, one position
// lower.
double STATS_SimpleWinsorizedMean_HW(double* x, int n, double lower, double upper,
                                     STATS_MEAN_TYPE_HW type) {
  const CountCut cut = cutByCount(x, n, lower, upper);
  if (cut.lo < n) {
    std::fill(x, x + cut.lo, x[cut.lo]);
  }
  const int end = cut.symmetric ? cut.hi : cut.hi - 1;
  if (end >= 1) {
    std::fill(x + end, x + n, x[end - 1]);
  }
  return STATS_SimpleMean_HW(x, n, type);
}

double STATS_WeightedTrimmedMean_HW(double* x, double* w, int n, double lower, double upper,
                                    STATS_MEAN_TYPE_HW type) {
  STATS_SortData_HW(x, w, n);
  const WeightCut cut = cutByWeight(w, n, lower, upper);
  if (cut.last < cut.first) {
    return STATS_WeightedMean_HW(x, w, 0, type);
  }
  w[cut.first] = cut.firstKept;
  w[cut.last] -= cut.lastExcess;
  return STATS_WeightedMean_HW(x + cut.first, w + cut.first, cut.last - cut.first + 1, type);
}

// Values below the first kept point become that point's, values above the last kept one become
// that one's; all keep their weights.
double STATS_WeightedWinsorizedMean_HW(double* x, double* w, int n, double lower, double upper,
                                       STATS_MEAN_TYPE_HW type) {
  STATS_SortData_HW(x, w, n);
  const WeightCut cut = cutByWeight(w, n, lower, upper);
  if (cut.first < n && cut.last >= 0) {
    const double low = x[cut.first];
    const double high = x[cut.last];
    std::fill(x, x + cut.first, low);
    std::fill(x + cut.last + 1, x + n, high);
  }
  return STATS_WeightedMean_HW(x, w, n, type);
}

double STATS_TrimmedMean_HW(VKernelVector, double* x, double* w, int n, double lower, double upper,
                            STATS_MEAN_TYPE_HW type) {
  return w != nullptr ? STATS_WeightedTrimmedMean_HW(x, w, n, lower, upper, type)
                      : STATS_SimpleTrimmedMean_HW(x, n, lower, upper, type);
}

double STATS_WinsorizedMean_HW(VKernelVector, double* x, double* w, int n, double lower,
                               double upper, STATS_MEAN_TYPE_HW type) {
  return w != nullptr ? STATS_WeightedWinsorizedMean_HW(x, w, n, lower, upper, type)
                      : STATS_SimpleWinsorizedMean_HW(x, n, lower, upper, type);
}

namespace {

using CutMean = double (*)(VKernelVector, double*, double*, int, double, double,
                           STATS_MEAN_TYPE_HW);

// Raises unless 0 <= value <= 100; a NaN is outside too.
void checkPercentile(VKernelVector kv, double value, ALGEB given, const char* message) {
  if (!(value >= 0.0 && value <= 100.0)) {
    VexelRaiseError1(kv, message, given);
  }
}

// What both entry points do: (data, lower percentile, upper percentile, weights, ignore, kind).
// The kernels reorder and overwrite, so they always get a copy.
ALGEB meanWithCuts(VKernelVector kv, ALGEB args, CutMean mean) {
  const Arguments arg(kv, args, 6, "expected 6 arguments, received: %1");
  const double lower = arg.real(2);
  const double upper = arg.real(3);
  checkPercentile(kv, lower, arg[2],
                  "expected second argument (lower percentile) to be a numeric constant between 0 "
                  "and 100, received: %1");
  checkPercentile(kv, upper, arg[3],
                  "expected third argument (upper percentile) to be a numeric constant between 0 "
                  "and 100, received: %1");
  if (lower > upper) {
    VexelRaiseError2(kv,
                     "the value of lower percentile is expected to be smaller than the value of "
                     "upper percentile, received: %1, %2",
                     arg[2], arg[3]);
  }
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[4]);
  const SampleView view = SampleView::copied(kv, sample, arg.boolean(5));
  return STATS_DoubleToVexelFloat_HW(
      kv, mean(kv, view.points, view.weights, view.size, lower * 0.01, upper * 0.01,
               STATS_ToMeanType_HW(arg.integer(6))));
}

}  // namespace

// STATS_VexelTrimmedMean_HW(data, lower, upper, weights, ignore, kind): the mean of what lies
// between two percentiles, 0 <= lower <= upper <= 100.  The host's arrays are not changed.
STATS_ENTRY(STATS_VexelTrimmedMean_HW) { return meanWithCuts(kv, args, STATS_TrimmedMean_HW); }

// STATS_VexelWinsorizedMean_HW, the same arguments: the mean with what lies outside replaced by the
// nearest value inside.
STATS_ENTRY(STATS_VexelWinsorizedMean_HW) {
  return meanWithCuts(kv, args, STATS_WinsorizedMean_HW);
}
