// A data array as 64-bit floats.

#include <vexelc/vexelc.h>

#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"

// STATS_VexelEvaluateToFloat_HW(data): a new dense float[8] array with the data's lower bound and
// order, undefined values as NaN.
STATS_ENTRY(STATS_VexelEvaluateToFloat_HW) {
  const Arguments arg(kv, args, 1, "expected one argument, received: %1");
  const ALGEB data = arg[1];
  const STATS_VexelDataSample_HW sample(kv, data);

  RTableSettings settings;
  RTableGetSettings(kv, &settings, data);
  settings.data_type = RTABLE_FLOAT64;
  settings.storage = RTABLE_RECTANGULAR;
  settings.num_dimensions = 1;
  settings.read_only = 0;  // the copy is the caller's own
  const STATS_Bounds_HW indices =
      STATS_BoundsFrom_HW(kv, RTableLowerBound(kv, data, 1), sample.size());
  const V_INT bounds[] = {indices.lower, indices.upper};
  const ALGEB result = RTableCreate(kv, &settings, nullptr, bounds);
  STATS_CopyData_HW(sample, STATS_FloatBlock_HW(kv, result));
  return result;
}
