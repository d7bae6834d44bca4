// Sums of blocks, to twice the working precision.
//
// Each runs in sixteen lanes, element i in lane i mod 16, with compensation (eight.hpp), and leaves
// them as 32 numbers whose sum is the result: exact_sum.hpp adds them up without error.  Of n
// elements in a block the error is below (n/16)^2 2^-106 times the sum of sizes, so with blocks of
// sumBlock elements below n 2^-100 times it.  Where a number is not finite or a partial sum
// overflows, the lanes hold NaNs or infinities, and the elements must be added one by one.
#pragma once

#include <cstddef>

namespace vexel::kernels {

inline constexpr std::size_t sumBlock = 4096;
inline constexpr std::size_t sumLanes = 32;

// All of n <= sumBlock elements.
void sumInLanes(const double* x, std::size_t n, double* lanes);

// The same; true when no rounding error was lost, so that the lanes hold the sum exactly.
bool sumInLanesExactly(const double* x, std::size_t n, double* lanes);

// The sum of w x, and that of w.  True when some w has a sign: it may be negative.
bool weightedSumsInLanes(const double* x, const double* w, std::size_t n, double* products,
                         double* weights);

}  // namespace vexel::kernels
