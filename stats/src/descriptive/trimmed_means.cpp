// The entry points of trimmed and winsorized means.

#include "descriptive/given_names.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/sample_view.hpp"

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
