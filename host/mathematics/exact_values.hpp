// Exact values of elementary functions: at exact numbers, at multiples of Pi and at one another's
// values.
#pragma once

#include <string_view>

#include "values/kernel_state.hpp"

namespace vexel {

// The value of the function at an exact number or an expression, null when it has no simpler one;
// raises where it has a pole.
ALGEB exactValue(State& state, std::string_view function, ALGEB x);

}  // namespace vexel
