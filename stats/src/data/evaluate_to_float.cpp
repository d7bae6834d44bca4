// A data array as 64-bit floats.

#include <vexelc/vexelc.h>

#include "kernel/data_argument.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"

// STATS_VexelEvaluateToFloat_HW(data): a new dense float[8] array with the data's lower bound and
// order, undefined values as NaN.
STATS_ENTRY(STATS_VexelEvaluateToFloat_HW) {
  const Arguments arg(kv, args, 1, "expected one argument, received: %1");
  const ALGEB data = arg[1];
  const STATS_VexelDataSample_HW sample(kv, data);

  const ALGEB result = STATS_FloatsLike_HW(kv, data, RTableLowerBound(kv, data, 1), sample.size());
  STATS_CopyData_HW(sample, STATS_FloatBlock_HW(kv, result));
  return result;
}
