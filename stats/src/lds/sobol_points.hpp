// Runs of Sobol points from direction numbers, without going back to each index.
#pragma once

#include <cstddef>
#include <cstdint>

struct STATS_SobolNumbers_HW {
  const std::uint64_t* v;  // number k of dimension j is v[j * rowLength + k]
  std::ptrdiff_t rowLength;
  int dimension;
  int precision;  // how many numbers a dimension has; coordinates are over 2^precision
};

// Writes the points of index, index + 1, ..., which may wrap around: coordinate j of point i goes
// to out[i * pointStride + j * coordStride].
void STATS_WriteSobolPoints_HW(const STATS_SobolNumbers_HW& numbers, std::uint32_t index, int count,
                               double* out, std::ptrdiff_t pointStride, std::ptrdiff_t coordStride);
