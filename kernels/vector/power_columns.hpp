// Exact sums of powers of many numbers of like size, in columns of 31 bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::kernels {

// The sum of the k-th powers is the sum over i of column[k - 1][i] 2^(31 i + k unit).
struct PowerColumns {
  static constexpr int bits = 31;
  static constexpr int span = 9;  // a number is a multiple of 2^unit below 2^(unit + 53 + span)

  std::int64_t column[4][8] = {};
};

// Adds the first to `order`-th powers, order 1 to 4, of at most 2^24 finite numbers; gives how many
// of them it looked at, from the first on: none where there are no vector instructions.  *apart
// tells whether some that were looked at, but for zeros, are not in the span and were left out.
std::size_t addPowerColumns(const double* x, std::size_t n, int order, int unit, PowerColumns& sums,
                            bool* apart);

// Whether a number other than 0 is in the span.
bool inPowerSpan(double x, int unit);

}  // namespace vexel::kernels
