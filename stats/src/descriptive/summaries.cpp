// Several statistics of a sample at once, computed by the numerical library.

#include <algorithm>
#include <cmath>

#include "kernel/entry_frame.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/sample_view.hpp"

namespace {

// The messages of the numerical library's failure codes; any other nonzero code is an internal
// error. The spelling "occured" is what hosts match on.
void raiseSummaryError(VKernelVector kv, const NagError& fail) {
  const char* message = "internal error occured in a NAG routine";
  switch (fail.code) {
    case NAG2_OK:
      return;
    case NAG2_TOO_FEW_ELEMENTS:
      message = "data sample must contain at least five elements";
      break;
    case NAG2_NEGATIVE_WEIGHT:
      message = "data weights can not be negative";
      break;
    case NAG2_ZERO_TOTAL_WEIGHT:
      message = "cumulative data weight must be strictly positive";
      break;
    case NAG2_TOO_FEW_CASES:
      message = "data sample must contain at least two elements of non-zero weight";
      break;
    default:
      break;
  }
  VexelRaiseError1(kv, message, ToVexelNULL(kv));
}

}  // namespace

// STATS_VexelFivePointSummary_HW(data, ignore): minimum, lower hinge, median, upper hinge and
// maximum as a float[8] array 1..5.  At least five values.
STATS_ENTRY(STATS_VexelFivePointSummary_HW) {
  const Arguments arg(kv, args, 2, "expected two arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1]);
  const SampleView view = SampleView::forReading(kv, sample, arg.boolean(2));

  const ALGEB result = STATS_CreateFloatVector_HW(kv, 5);
  NagError fail = STATS_NagError_HW();
  q51748(view.size, view.points, STATS_FloatBlock_HW(kv, result), &fail);
  raiseSummaryError(kv, fail);
  return result;
}

// STATS_VexelStatisticSummary_HW(data, weights, ignore): mean, standard deviation, skewness, excess
// kurtosis, minimum, maximum and total weight as a float[8] array 1..7 (nag2.h has the formulas).
// All are undefined when a value that takes part is.
STATS_ENTRY(STATS_VexelStatisticSummary_HW) {
  const Arguments arg(kv, args, 3, "expected 3 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const bool ignoreMissing = arg.boolean(3);
  const SampleView view = SampleView::forReading(kv, sample, ignoreMissing);
  if (ignoreMissing && view.size == 0) {
    VexelRaiseError(kv, "the data set contains only missing data");
  }

  int validCases = 0;
  double out[7] = {};
  NagError fail = STATS_NagError_HW();
  q15220(view.size, view.points, view.weights, &validCases, &out[0], &out[1], &out[2], &out[3],
         &out[4], &out[5], &out[6], &fail);
  const ALGEB result = STATS_CreateFloatVector_HW(kv, 7);
  if (std::isnan(out[4])) {
    std::fill(std::begin(out), std::end(out), out[4]);
  }
  std::copy(std::begin(out), std::end(out), STATS_FloatBlock_HW(kv, result));
  raiseSummaryError(kv, fail);
  return result;
}
