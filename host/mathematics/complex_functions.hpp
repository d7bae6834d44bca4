// Elementary functions of complex numbers in software floating point.
#pragma once

#include <string_view>

#include "values/kernel_state.hpp"

namespace vexel {

// True for a complex number with a float among its parts.
bool isComplexFloat(ALGEB x);

// The principal value of the named function at a complex number, a complex float of that many
// digits in both parts; null when the function has no complex form here.
ALGEB complexElementary(State& state, std::string_view function, ALGEB z, int digits);

// The principal value exp(exponent ln(base)) of numbers.
ALGEB complexPowerFloat(State& state, ALGEB base, ALGEB exponent, int digits);

}  // namespace vexel
