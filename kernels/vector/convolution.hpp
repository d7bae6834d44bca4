// Short convolutions of rows of numbers.
#pragma once

#include <cstddef>

namespace vexel::kernels {

// Numbers written at a time by convolve.
inline constexpr std::size_t convolutionBlock = 32;

// out[k] = sum of weights[s] x[k - s] over s < m, added up from s = 0 on, for k < n.  n is a
// multiple of convolutionBlock, and m - 1 numbers before x are read.
void convolve(const double* x, std::size_t n, const double* weights, std::size_t m, double* out);

}  // namespace vexel::kernels
