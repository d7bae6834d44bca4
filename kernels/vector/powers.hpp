// Sums of powers of differences from a center near the mean, and of products of two of them.
//
// As in sums.hpp, lanes are to be added up by exact_sum.hpp, blocks have sumBlock elements at most,
// and lanes hold NaNs or infinities where something overflowed.
#pragma once

#include <cstddef>

namespace vexel::kernels {

// The sums of w d and of w d^2, d = x - center, as exact as sums.hpp: differences and products keep
// their rounding errors.  w may be null, for weights of 1.
void squaresInLanes(const double* x, const double* w, std::size_t n, double center, double* first,
                    double* second);

inline constexpr std::size_t powerLanes = 16;

// The sums of d, d^2, d^3 and d^4, powerLanes numbers each, one after the other.  Differences and
// powers are rounded; eight of them are added as pairs of pairs, those sums with compensation, so
// that the error is below 4, 6, 8 and 9 units of the last place of the sum of sizes and does not
// grow with n.
void powersInLanes(const double* x, std::size_t n, double center, double* sums);

// The sums of d and e as above, and of d e as exact as sums.hpp; d = x - xCenter, e = y - yCenter,
// both rounded.
void productsInLanes(const double* x, const double* y, std::size_t n, double xCenter,
                     double yCenter, double* xSums, double* ySums, double* products);

}  // namespace vexel::kernels
