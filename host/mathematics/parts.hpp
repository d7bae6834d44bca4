// What an object is made of.
#pragma once

#include "memory/heap.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// Elements of a list, sequence or array (in the order of its indices, the last one fastest), table
// entries as equations, operands of an expression, ends of a range; a number or name is its own.
void elementsOf(State& state, ALGEB x, Handles& out);

// The numbers a, a + 1, ... up to b of the range a .. b; raises for ends that are no numbers.
void rangeElements(State& state, ALGEB range, Handles& out);

}  // namespace vexel
