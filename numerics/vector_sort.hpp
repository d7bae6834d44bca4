// Sorting with vector instructions, where this build and this machine have them.
//
// The Highway library's quicksort (M. Blacher, J. Giesen, P. Sanders and J. Wassenberg, Vectorized
// and performance-portable quicksort, 2022) picks the widest instructions at run time.  Without the
// library, or on machines with narrow vectors only, radix sorts do the same work.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nag2 {

// True when vectorSort is there and pays for n elements.
bool vectorSortServes(std::size_t n);

// Sorts x[0..n-1] in place, without memory of its own; only when vectorSortServes.  There must be
// no NaN, and zeros come out with any sign.
void vectorSort(std::int32_t* x, std::size_t n, bool descending);
void vectorSort(std::int64_t* x, std::size_t n, bool descending);
void vectorSort(std::uint64_t* x, std::size_t n, bool descending);
void vectorSort(float* x, std::size_t n, bool descending);
void vectorSort(double* x, std::size_t n, bool descending);

}  // namespace nag2
