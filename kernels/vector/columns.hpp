// Means of columns that lie side by side, as those of a matrix whose rows follow each other.
#pragma once

#include <cstddef>

namespace vexel::kernels {

inline constexpr std::size_t columnsTogether = 8;

// The means of eight columns, from x, x + 1, ..., x + 7 on, of 1 to sumBlock elements `stride`
// apart.  Sums run in the lanes of sumInLanes (sums.hpp), element i in lane i mod 16.
//
// Bit j of the result is set where mean[j] is the quotient rounded, whatever comes of rounding
// errors; otherwise (something is not finite, or too near the middle of two doubles to tell) it
// says nothing.
unsigned meansOfColumns(const double* x, std::ptrdiff_t stride, std::size_t n, double* mean);

}  // namespace vexel::kernels
