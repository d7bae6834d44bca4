// Sums of all windows of a series of finite numbers, in twice the working precision.
#pragma once

#include <cstddef>

namespace vexel::kernels {

// 1 / window as the unevaluated sum of two doubles, or 1.
struct WindowFactor {
  double window;
  double high;
  double low;
  bool one;
};

// out[j] = (x[j] + ... + x[j+window-1]), divided by window if means, for j = 0 .. results-1.  The
// same bits on every machine.  False, with out in no particular state, where something is not
// finite on the way, or a long window's results are not whole groups.
bool movingSums(const double* x, std::size_t results, std::size_t window, bool means, double* out);

struct VarianceFactors {
  WindowFactor byWindow;
  double byLess;  // 1 / (window - 1)
};

// The variances (divisor window - 1) of all windows, or their roots, for whole groups of results:
// deviations are taken about an element of the window, so that constants have exactly 0.  False,
// with out in no particular state, where something leaves the range in which that is exact or the
// window is short.
bool movingVariances(const double* x, std::size_t results, std::size_t window, bool roots,
                     double* out);

// As many results, or a multiple of it, are made without a rest.
constexpr std::size_t movingSumsGroup(std::size_t window) { return 8 * window; }

}  // namespace vexel::kernels
