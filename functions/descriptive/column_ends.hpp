// The least and the greatest element of many variables at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernels/vector/column_extremes.hpp"
#include "vexel/columns.hpp"

namespace vexel {

// Ends of some neighbouring variables.
struct EndsFound {
  std::vector<double> values;         // of what is not missing; an infinity where nothing is there
  std::vector<std::uint8_t> missing;  // something is
  // The value is a zero, and there are zeros of the other sign, perhaps.
  std::vector<std::uint8_t> doubtful;
  bool plain = true;  // nothing is missing or doubtful anywhere
};

// Of columns begin to begin + n - 1, at most mostEnds of them.
inline constexpr std::size_t mostEnds = 4096;
void findEnds(const Columns& columns, kernels::End end, std::size_t begin, std::size_t n,
              EndsFound& found);

}  // namespace vexel
