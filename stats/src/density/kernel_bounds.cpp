// The smallest and the largest value of a sample, the default ends of a density estimate's grid.

#include <vexelc/vexelc.h>

#include <cmath>

#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernels/watch.hpp"

// STATS_VexelKernelBounds_HW(data): the list [minimum, maximum].
//
// NaNs are passed over, except that a NaN in first place stays both ends: nothing compares with it.
STATS_ENTRY(STATS_VexelKernelBounds_HW) {
  const Arguments arg(kv, args);
  if (arg.count() > 1) {
    VexelRaiseError1(kv, "expected 1 arguments, received: %1", args);
  }
  const ALGEB none = STATS_CreateFloatVector_HW(kv, 0);
  const STATS_VexelDataSample_HW sample(kv, arg[1], none);
  const int n = sample.size();
  if (n == 0) {
    VexelRaiseError(kv, "invalid input - dataset must contain at least one element.");
  }
  const double* x = sample.points();
  double ends[2] = {x[0], x[0]};
  vexel::kernels::forEach(n, [&](int i) {
    if (x[i] < ends[0]) {
      ends[0] = x[i];
    } else if (x[i] > ends[1]) {
      ends[1] = x[i];
    }
  });
  return STATS_FloatList_HW(kv, ends, 2);
}
