// Functions of whole numbers, with their usual extensions: factorials, binomial coefficients,
// divisors and remainders.  All may collect and raise.
#pragma once

#include "values/kernel_state.hpp"

namespace vexel {

// n! of an integer; gamma(x + 1) of a float; elementwise for lists and arrays.
ALGEB factorialOf(State& state, ALGEB x);

// n (n - 1) ... (n - k + 1) / k! for an integer k and any number n, 0 for k < 0;
// for other k by the gamma function, as a float.
ALGEB binomialOf(State& state, ALGEB n, ALGEB k);

// a - b floor(a/b), which has the sign of b; exact for decimal floats but for one last rounding.
ALGEB moduloOf(State& state, ALGEB a, ALGEB b);
double hardwareModulo(double a, double b);

}  // namespace vexel
