// Cumulative sums and products of a sample.

#include <vexelc/vexelc.h>

#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernels/watch.hpp"

namespace {

// The array to fill: the one given if it has elements and fits, else a new one with the data's
// indices.
ALGEB outputArray(VKernelVector kv, ALGEB given, ALGEB data, V_INT size) {
  if (IsVexelRTable(kv, given) == 0) {
    VexelRaiseError1(kv, "invalid 3rd argument, expected rtable, received: %1", given);
  }
  if (RTableNumDimensions(kv, given) != 1) {
    VexelRaiseError1(kv, "invalid 3rd argument, expected one-dimensional rtable, received: %1",
                     given);
  }
  const V_INT elements = RTableNumElements(kv, given);
  if (elements == 0) {
    const STATS_Bounds_HW indices = STATS_BoundsFrom_HW(kv, RTableLowerBound(kv, data, 1), size);
    return STATS_CreateVector_HW(kv, RTABLE_FLOAT64, indices.lower, indices.upper);
  }
  if (elements < size) {
    VexelRaiseError1(kv, "output array has insufficient number of elements: %1", given);
  }
  RTableSettings settings;
  RTableGetSettings(kv, &settings, given);
  if (settings.data_type != RTABLE_FLOAT64) {
    VexelRaiseError1(kv, "output array has invalid data type: %1", given);
  }
  if (settings.storage != RTABLE_RECTANGULAR) {
    VexelRaiseError1(kv, "output array has invalid storage type: %1", given);
  }
  if (settings.read_only != 0) {
    VexelRaiseError1(kv, "output array is read-only: %1", given);
  }
  return given;
}

void cumulate(const STATS_VexelDataSample_HW& sample, bool product, double* out) {
  const double* x = sample.points();
  const double* w = sample.weights();
  const int n = sample.size();
  double running = 0.0;
  vexel::kernels::forEach(n, [&](int i) {
    if (i == 0) {
      running = w != nullptr ? x[0] * w[0] : x[0];
    } else if (product) {
      running = w != nullptr ? running * x[i] * w[i] : running * x[i];
    } else {
      running = w != nullptr ? x[i] * w[i] + running : running + x[i];
    }
    out[i] = running;
  });
}

}  // namespace

// STATS_VexelCumulative_HW(data, weights, output, product): sums, or products when product is
// not 0, of the points up to each one (each times its weight).
//
// output   array to fill and return, of one dimension, dense, float[8]; an empty one asks for a new
// A NaN stays in all later elements.  An empty sample writes nothing.
STATS_ENTRY(STATS_VexelCumulative_HW) {
  const Arguments arg(kv, args, 4, "expected 4 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const ALGEB output = outputArray(kv, arg[3], arg[1], sample.size());
  const bool product = arg.integer(4) != 0;
  if (sample.size() > 0) {
    cumulate(sample, product, STATS_FloatBlock_HW(kv, output));
  }
  return output;
}
