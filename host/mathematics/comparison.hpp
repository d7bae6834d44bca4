// Comparison of objects and the truth of relations.
#pragma once

#include <cstdint>
#include <optional>

#include "values/kernel_state.hpp"

namespace vexel {

enum class CompareOp : std::uint8_t { equal, unequal, less, lessEqual, greater, greaterEqual };

// a op b: of numbers and symbolic constants its truth; nothing where that is open.
std::optional<bool> comparison(State& state, CompareOp op, ALGEB a, ALGEB b);

// The truth of a boolean, an equation or a relation; raises for anything else.
bool truth(State& state, ALGEB x);

}  // namespace vexel
