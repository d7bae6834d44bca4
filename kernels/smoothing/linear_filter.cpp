// The finite linear filter.

#include "kernels/smoothing/linear_filter.hpp"

#include <cstddef>

#include "kernels/lookout.hpp"
#include "kernels/smoothing/side_by_side.hpp"

namespace vexel::kernels {

void linearFilter(double* series, const double* taps, int n, int k, bool recursive, double* y) {
  Lookout lookout;
  if (!recursive || k == 0) {
    sumsSideBySide(n, k, y, lookout, [=](auto i, auto j) { return series[i + j] * taps[j]; });
    return;
  }
  for (std::ptrdiff_t i = 0; i < n; ++i) {
    double sum = 0.0;
    for (int j = 0; j < k; ++j) {
      sum += series[i + j] * taps[j];
    }
    y[i] = sum;
    series[i + k - 1] = sum;
    lookout.done(k);
  }
}

}  // namespace vexel::kernels
