// Sums and extremes of arrays of machine numbers, for sum, min and max.
#pragma once

#include "values/kernel_state.hpp"

namespace vexel {

// x must be a machine array (mathematics/elementwise.hpp).  Sums of integers are exact; those of
// floats are carried in twice the precision (Neumaier 1974) and rounded once.
ALGEB machineSum(State& state, ALGEB x);
// x must not be empty; undefined when an element is.
ALGEB machineExtreme(State& state, ALGEB x, bool largest);

}  // namespace vexel
