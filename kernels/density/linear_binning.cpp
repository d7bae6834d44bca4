// Linear binning: M. C. Jones and H. W. Lotwick, 1984, A remark on algorithm AS 176, Applied
// Statistics 33, 120-122.  One pass over the data, nothing allocated.

#include "kernels/density/linear_binning.hpp"

#include <cmath>
#include <cstddef>

#include "kernels/lookout.hpp"
#include "kernels/saturate.hpp"

namespace vexel::kernels {

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
    const std::int32_t j = toInteger(p);
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

bool binLinearly(std::int32_t M, double a, double b, double c, std::int64_t n, const double* x,
                 const double* w, double* out) {
  constexpr int kDatumCost = 10;  // operations, near enough
  const double scale = c == 0.0 ? 1.0 / ((b - a) / M) : c;

  Grid grid(M, a, b, out);
  double total = 0.0;
  bool missing = false;
  Lookout lookout;
  for (std::int64_t i = 0; i < n; ++i) {
    lookout.done(kDatumCost);
    missing |= std::isnan(x[i]);
    if (a <= x[i] && x[i] <= b) {
      const double weight = w != nullptr && !std::isnan(w[i]) ? w[i] : 1.0;
      total += weight;
      grid.add(x[i], weight);
    }
  }
  const double factor = scale / total;
  for (std::int32_t j = 0; j < M; ++j) {
    lookout.done(1);
    out[j] *= factor;
  }
  return missing;
}

}  // namespace vexel::kernels
