// What is missing in a block, and its extremes.
#pragma once

#include <cstddef>

namespace vexel::kernels {

// True when no element is NaN.
bool allPresent(const double* x, std::size_t n);

// True when every weight is positive and finite and no point is NaN.
bool allPresent(const double* x, const double* w, std::size_t n);

struct Range {
  double min;
  double max;
};
// Of n > 0 elements without NaN; a zero may have either sign.
Range rangeOf(const double* x, std::size_t n);

}  // namespace vexel::kernels
