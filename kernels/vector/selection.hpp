// What selection by bracketing asks of a block.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::kernels {

// How many elements lie below, at or below low, and below, at or below high.
struct BracketCounts {
  std::int64_t belowLow = 0;
  std::int64_t toLow = 0;
  std::int64_t belowHigh = 0;
  std::int64_t toHigh = 0;
};

// Counts a block and copies what lies strictly between low <= high to between, where there is room
// for n elements; how many those are, in no order.
std::size_t countAndCollect(const double* x, std::size_t n, double low, double high,
                            BracketCounts& counts, double* between);

// Adds sixteen-lane sums of the elements strictly between low and high (sums.hpp), and counts.
void sumBetween(const double* x, std::size_t n, double low, double high, BracketCounts& counts,
                double* lanes);

// The cell min(max(floor((x - base) * scale), 0), cells - 1) of each element, cells <= 2^20.
void cellsOf(const double* x, std::size_t n, double base, double scale, std::int32_t cells,
             std::int32_t* to);

}  // namespace vexel::kernels
