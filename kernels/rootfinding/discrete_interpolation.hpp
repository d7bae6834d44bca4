// Integer quantile search: where a nondecreasing F on the integers reaches p.
//
// F is called on integers converted to double.  lowerValue and upperValue bound the values of F.
// Points are 32-bit; an extrapolation beyond that range goes to the end of it that
// toInteger names.  maxIter counts steps; spending it is refused.
#pragma once

#include <cstdint>

#include "kernels/rootfinding/real_function.hpp"

namespace vexel::kernels {

// The smallest b in (lo, hi] with F(b) >= p, or lo if F(lo) > p.  The left end counts as lying
// below p even when F(lo) = p.  F(hi) < p is refused.
std::int32_t interpolate(double p, RealFunction F, std::int32_t lo, std::int32_t hi, int maxIter);

// Extends a bracket to the right of x0 > left by floored secant steps toward upperValue, then
// bisects it.
std::int32_t interpolateRightOf(double p, RealFunction F, double lowerValue, double upperValue,
                                std::int32_t left, std::int32_t x0, int maxIter);

// Bisects [x0, right] if F(right) >= p, x0 included when F(x0) > p; otherwise steps to the left.
std::int32_t interpolateLeftOf(double p, RealFunction F, double lowerValue, double upperValue,
                               std::int32_t x0, std::int32_t right, int maxIter);

// Two distinct points to start from, expected in ascending order: given in descending order, the
// smaller one serves for both, and unless F is p there the search is refused.
std::int32_t interpolateFromTwo(double p, RealFunction F, double lowerValue, double upperValue,
                                std::int32_t initPoint1, std::int32_t initPoint2, int maxIter);

}  // namespace vexel::kernels
