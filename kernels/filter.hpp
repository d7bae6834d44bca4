// Sums of products of taps and a series, in twice the working precision.
#pragma once

#include <cmath>
#include <cstddef>
#include <span>

namespace vexel::kernels {

// out[i] = sum over k of taps[k] x[i-k] for i in 0 .. n-1; x reaches back as far as the taps do.
// The same bits on every machine.
void filterStretch(const double* x, std::size_t n, std::span<const double> taps, double* out);

// x + sum over k of taps[k] latest[-k].
double recursiveStep(double x, std::span<const double> taps, const double* latest);

}  // namespace vexel::kernels
