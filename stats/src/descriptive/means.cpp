// The entry point of the four kinds of mean.

#include "descriptive/given_names.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/sample_view.hpp"

// STATS_VexelMean_HW(data, weights, ignore, kind): the mean of a sample as a host float.
//
// data     array of any element type; complex elements must have no imaginary part
// weights  array of the same size, or an empty one for an unweighted sample
// ignore   true drops every pair with a missing point or weight; false lets a NaN through
// kind     1 geometric, 2 harmonic, 3 quadratic, anything else arithmetic
//
// The host's arrays are not changed.  An empty sample gives NaN (0/0), not an error.
STATS_ENTRY(STATS_VexelMean_HW) {
  const Arguments arg(kv, args, 4, "expected 4 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const SampleView view = SampleView::forReading(kv, sample, arg.boolean(3));
  const STATS_MEAN_TYPE_HW type = STATS_ToMeanType_HW(arg.integer(4));
  return STATS_DoubleToVexelFloat_HW(kv,
                                     STATS_Mean_HW(kv, view.points, view.weights, view.size, type));
}
