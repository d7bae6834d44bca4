// Linear binning: M. C. Jones and H. W. Lotwick, 1984, A remark on algorithm AS 176, Applied
// Statistics 33, 120-122.  One pass over the data, nothing allocated.

#include "nag/discretize.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kernel/conversions.hpp"

namespace {

// The grid and its running contents.
class Grid {
 public:
  Grid(std::int32_t M, double a, double b, double* out)
      : a_(a), factor_((M - 1) / (b - a)), last_(M - 1), out_(out) {}

  void add(double x, double weight) {
    const double p = (x - a_) * factor_;
    const double lower = std::floor(p);
    if (p == lower) {
      at(p) += weight;
      return;
    }
    const double upper = std::ceil(p);
    at(lower) += (lower + 1.0 - p) * weight;
    at(upper) += (1.0 - upper + p) * weight;
  }

 private:
  // Rounding may put a position just past the end, and a range too wide for a double makes it NaN:
  // such a position belongs to the nearest end.
  double& at(double position) {
    const std::int32_t j = std::clamp(STATS_DoubleToInteger_HW(position), 0, last_);
    return out_[j];
  }

  double a_;
  double factor_;
  std::int32_t last_;
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
  const double scale = c == 0.0 ? 1.0 / ((b - a) / M) : c;

  Grid grid(M, a, b, out);
  double total = 0.0;
  bool missing = false;
  for (V_INT i = 0; i < n; ++i) {
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
  for (std::int32_t j = 0; j < M; ++j) {
    out[j] *= scale / total;
  }
}
