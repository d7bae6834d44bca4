// Evaluation of objects: anew, in software floats and in hardware floats.  All may collect and
// raise.
#pragma once

#include "values/kernel_state.hpp"

namespace vexel {

// x evaluated: names by their values (themselves without one), symbolic expressions anew.
ALGEB evaluate(State& state, ALGEB x);

// x in software floating point of that many decimal digits; parts without a value stay symbolic.
ALGEB evalf(State& state, ALGEB x, int digits);

// x in 64-bit floating point; raises when it has no hardware value.
double evaluateHardware(State& state, ALGEB x);

}  // namespace vexel
