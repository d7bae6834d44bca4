// Sums, means and variances of columns that lie side by side, as those of a matrix whose rows
// follow each other: vectors hold neighbouring columns, so that every line of memory is used when
// it comes.
//
// The columns worked on together are `width` <= columnsTogether; numbers kept for each stand in
// rows of `pitch` doubles, a multiple of 8 not below width - or just width, where the rows of the
// matrix follow each other without a gap (stride == width).
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::kernels {

inline constexpr std::size_t columnsTogether = 128;

// The lanes of sums.hpp for columns: row r < 16 of `sums` holds what lane r of each column has,
// row 16 + r its rounding errors.
inline constexpr std::size_t columnLanes = 32;

// Adds n more rows, the first of which belongs to lane 0.
void addColumns(const double* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                std::size_t pitch, double* sums);

// The sums of n <= foldedRows rows of floats to `sums`, one for each column; false where one of
// them is not exact, perhaps: the sizes of the elements differ too much, or are not finite.
inline constexpr std::size_t foldedRows = 64;
bool foldFloats(const float* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                double* sums);

// The means of n elements each from their lanes, where the rows of up to 16 elements are lanes
// themselves.  sure[j] is set where mean[j] is the quotient
// rounded, whatever comes of rounding errors; otherwise (something is not finite, or too near the
// middle of two doubles to tell) mean[j] says nothing.
void meansOfLanes(const double* sums, std::size_t width, std::ptrdiff_t pitch, std::size_t n,
                  double* mean, std::uint8_t* sure);

// Sums of differences from a center of each column, and of their squares, in four rows: the first
// sums and their rounding errors, the second ones and theirs.
inline constexpr std::size_t squareLanes = 4;

// Adds n more rows; after 4096 the sums must be moved elsewhere.
void addSquaresOfColumns(const double* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                         std::size_t pitch, const double* center, double* sums);

// Their second sum less the first one squared over n, divided by the divisor: variances, or their
// square roots.  sure[j] as above.
void variancesOfSums(const double* sums, std::size_t width, std::size_t pitch, double n,
                     double divisor, bool root, double* out, std::uint8_t* sure);

}  // namespace vexel::kernels
