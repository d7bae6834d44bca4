// Integrals by quadrature.
#pragma once

#include "values/kernel_state.hpp"

namespace vexel {

// The integral of a procedure of one real number between two real numbers or infinities, as a
// float of Digits digits.  Raises where it does not converge, where the integrand has no real
// value, and what the integrand raises.
ALGEB integral(State& state, ALGEB f, ALGEB lower, ALGEB upper);

}  // namespace vexel
