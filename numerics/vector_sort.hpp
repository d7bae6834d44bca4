// Sorting of integers with vector instructions, where this build and this machine have them.
//
// The Highway library's quicksort (M. Blacher, J. Giesen, P. Sanders and J. Wassenberg, Vectorized
// and performance-portable quicksort, 2022) picks the widest instructions at run time.  Only
// integers go through it: its floats take the largest finite number for the end of the order, and
// infinities get lost among its padding.  Without the library, or with narrow vectors, the radix
// sorts do the same work.
#pragma once

#include <cstddef>
#include <cstdint>

namespace nag2 {

// True when vectorSort is there and pays for n elements.  Vectors of less than 256 bits do not beat
// a radix sort.
bool vectorSortServes(std::size_t n);

// Sorts x[0..n-1] in place and takes no memory; only when vectorSortServes.
void vectorSort(std::int32_t* x, std::size_t n, bool descending);
void vectorSort(std::int64_t* x, std::size_t n, bool descending);
void vectorSort(std::uint64_t* x, std::size_t n, bool descending);

}  // namespace nag2
