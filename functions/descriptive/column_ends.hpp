// The least and the greatest element of many variables at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "kernels/vector/column_extremes.hpp"
#include "vexel/columns.hpp"

namespace vexel {

// What is known of a variable whose end was looked for.
struct EndFound {
  double value;   // of the elements that are not missing; an infinity where there are none
  bool missing;   // some are
  bool doubtful;  // value is a zero, and there are zeros of the other sign, perhaps
};

// Of columns begin to begin + found.size() - 1, at most mostEnds of them.
inline constexpr std::size_t mostEnds = 4096;
void findEnds(const Columns& columns, kernels::End end, std::size_t begin,
              std::span<EndFound> found);

}  // namespace vexel
