// The finite linear filter, recursive or not.
#pragma once

namespace vexel::kernels {

// y[i] = 0 + series[i] taps[0] + ... + series[i + k - 1] taps[k - 1], summed in this order, i < n.
//
// series has n + k - 1 values, the history of the first datum before it, oldest first; taps are the
// filter coefficients in reverse.  A recursive filter puts each y[i] in place of its datum,
// series[i + k - 1], before the next one.  Without taps every y is 0.  Polls.
void linearFilter(double* series, const double* taps, int n, int k, bool recursive, double* y);

}  // namespace vexel::kernels
