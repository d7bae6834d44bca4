// A sum kept exactly, as the states hold it.
#pragma once

#include <cstdint>
#include <vector>

namespace vexel::states {

// A fixed-point number wide enough for every sum that a state makes: digits of 32 bits, least
// significant first, in cells of 64 with room for carries.  What NaNs and infinities among the
// summands make of it stands beside it.
struct ExactSum {
  std::vector<std::int64_t> cells = {};  // empty: 0
  std::int32_t pending = 0;              // summands since the last carry
  bool nan = false;
  bool plusInfinity = false;
  bool minusInfinity = false;
};

}  // namespace vexel::states
