// Halton's points as the streams of the entry points have them: digit sums in floating point.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vexel::kernels::classic {

// Primality of n = 2 or n odd, by trial division.  Even numbers are not tested for.
bool isPrime(int n);

// Writes the points of index, index + 1, ... and moves index on, which may wrap around; an index
// from 2^31 on is a negative one, whose point is the negated one of its magnitude.  Coordinate j of
// point i, the radical inverse in bases[j], goes to out[i * pointStride + j * coordStride].
void writeHaltonPoints(std::span<const int> bases, std::uint32_t& index, int count, double* out,
                       std::ptrdiff_t pointStride, std::ptrdiff_t coordStride);

}  // namespace vexel::kernels::classic
