// Binning onto a grid for hosts: checks, messages and the entry point.

#include "density/discretize.hpp"

#include <cmath>

#include "kernel/conversions.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernels/density/linear_binning.hpp"

void STATS_CheckGrid_HW(VKernelVector kv, std::int32_t M, double a, double b) {
  if (!(a < b) || std::isinf(a) || std::isinf(b)) {
    VexelRaiseError2(kv, "left boundary must be smaller than right boundary, received: %1 and %2",
                     STATS_DoubleToVexelFloat_HW(kv, a), STATS_DoubleToVexelFloat_HW(kv, b));
  }
  if (M < 1) {
    VexelRaiseError1(kv, "number of grid points must be positive, received: %1",
                     ToVexelInteger(kv, M));
  }
}

void STATS_Discretize_HW(VKernelVector kv, std::int32_t M, double a, double b, double c, bool quiet,
                         V_INT n, const double* x, const double* w, double* out) {
  if (vexel::kernels::binLinearly(M, a, b, c, n, x, w, out) && !quiet) {
    VexelUserInfo(kv, 1, "Statistics", "missing data has been detected in the dataset, discarded.");
  }
}

// STATS_VexelDiscretize_HW(data, M, a, b, c, quiet, weights): the binned weights on M points over
// [a, b] times c over the total weight inside, a new float[8] array; c = 0 stands for M/(b - a).
STATS_ENTRY(STATS_VexelDiscretize_HW) {
  const Arguments arg(kv, args, 7, "expected 7 arguments, received: %1");
  const std::int32_t M = arg.integer32(2);
  const double a = arg.real(3);
  const double b = arg.real(4);
  const double c = arg.real(5);
  const bool quiet = arg.boolean(6);
  STATS_CheckGrid_HW(kv, M, a, b);

  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[7]);
  const ALGEB result = STATS_CreateFloatVector_HW(kv, M);
  STATS_Discretize_HW(kv, M, a, b, c, quiet, sample.size(), sample.points(), sample.weights(),
                      STATS_FloatBlock_HW(kv, result));
  return result;
}
