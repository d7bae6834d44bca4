// Sorting and parting of numbers with vector instructions, where this build and this machine have
// them.
//
// The widest instructions of the machine are picked at run time.  Without the Highway library, or
// with narrow vectors, the radix sorts do the same work.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace nag2 {

// True when what follows is there and pays for n elements.  Vectors of less than 256 bits do not
// beat a radix sort.
bool vectorSortServes(std::size_t n);

// Sorts x[0..n-1] in place, ascending, and takes no memory.  No float may be NaN, and zeros may
// change their signs: comparisons keep either of -0.0 and 0.0 for both.
void vectorSort(float* x, std::size_t n);
void vectorSort(double* x, std::size_t n);
void vectorSort(std::int32_t* x, std::size_t n);
void vectorSort(std::int64_t* x, std::size_t n);
void vectorSort(std::uint64_t* x, std::size_t n);

template <typename T>
void vectorSort(T* x, std::size_t n, bool descending) {
  vectorSort(x, n);
  if (descending) {
    std::reverse(x, x + n);
  }
}

// Integers, or the bits of floats, to be parted by a pivot.  A float counts as mirrorNegative of
// its bits (sort_keys.hpp).
template <typename Integer>
struct Parting {
  bool floats;
  bool descending;
  Integer pivot;
};

// What a block holds: how many elements sort before the pivot, the bits of all together (negative
// when some sign is), and whether there is a -0.0 or a NaN among floats.
template <typename Integer>
struct BlockFacts {
  std::size_t before;
  Integer bits;
  bool hasNegativeZeroOrNan;
};
BlockFacts<std::int32_t> lookThrough(const std::int32_t* x, std::size_t n,
                                     Parting<std::int32_t> by);
BlockFacts<std::int64_t> lookThrough(const std::int64_t* x, std::size_t n,
                                     Parting<std::int64_t> by);

// Copies floats to out, which may be x; whether there is a -0.0 or a NaN among them.
bool copyLooking(const float* x, std::size_t n, float* out);
bool copyLooking(const double* x, std::size_t n, double* out);

// Puts the elements that sort before the pivot to front, the others to back; memory of its own
// each.  The number of those before it.
std::size_t part(const std::int32_t* x, std::size_t n, Parting<std::int32_t> by,
                 std::int32_t* front, std::int32_t* back);
std::size_t part(const std::int64_t* x, std::size_t n, Parting<std::int64_t> by,
                 std::int64_t* front, std::int64_t* back);

}  // namespace nag2
