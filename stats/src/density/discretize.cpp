// Linear binning: M. C. Jones and H. W. Lotwick, 1984, A remark on algorithm AS 176, Applied
// Statistics 33, 120-122.  One pass over the data, nothing allocated.

#include "density/discretize.hpp"

#include <cmath>
#include <cstddef>

#include "kernel/conversions.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernel/interrupt.hpp"

namespace {

// The grid and its running contents.
class Grid {
 public:
  Grid(std::int32_t M, double a, double b, double* out)
      : a_(a), factor_((M - 1) / (b - a)), last_(M - 1), out_(out) {}

  void add(double x, double weight) {
    // Rounding may put a position just past the last point, and a range too narrow or too wide for
    // a factor makes it infinite or NaN: such a position belongs to the nearest end.
    double p = (x - a_) * factor_;
    p = p > 0.0 ? p : 0.0;
    p = p < last_ ? p : last_;
    const std::int32_t j = STATS_DoubleToInteger_HW(p);
    const double lower = j;
    if (p == lower) {
      out_[j] += weight;
      return;
    }
    const double upper = lower + 1.0;
    out_[j] += (lower + 1.0 - p) * weight;
    out_[j + 1] += (1.0 - upper + p) * weight;
  }

 private:
  double a_;
  double factor_;
  double last_;
  double* out_;
};

}  // namespace

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
  constexpr int kDatumCost = 10;  // operations, near enough
  const double scale = c == 0.0 ? 1.0 / ((b - a) / M) : c;

  Grid grid(M, a, b, out);
  double total = 0.0;
  bool missing = false;
  STATS_InterruptLookout_HW lookout(kv);
  for (V_INT i = 0; i < n; ++i) {
    lookout.done(kDatumCost);
    missing |= std::isnan(x[i]);
    if (a <= x[i] && x[i] <= b) {
      const double weight = w != nullptr && !std::isnan(w[i]) ? w[i] : 1.0;
      total += weight;
      grid.add(x[i], weight);
    }
  }
  if (missing && !quiet) {
    VexelUserInfo(kv, 1, "Statistics", "missing data has been detected in the dataset, discarded.");
  }
  const double factor = scale / total;
  for (std::int32_t j = 0; j < M; ++j) {
    lookout.done(1);
    out[j] *= factor;
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
