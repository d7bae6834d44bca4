// Doubles as integers, whatever they are.
#pragma once

#include <cstdint>
#include <limits>

namespace vexel::kernels {

// Truncation toward zero; NaN and values beyond 32 bits give -2147483648.
inline std::int32_t toInteger(double d) {
  // A NaN fails both comparisons.
  const bool fits = d > -2147483649.0 && d < 2147483648.0;
  return fits ? static_cast<std::int32_t>(d) : std::numeric_limits<std::int32_t>::min();
}

}  // namespace vexel::kernels
