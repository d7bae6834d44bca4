// Elementary functions: exact where the value is exact, floats through MPFR, else left as they are.
#pragma once

#include <mpfr.h>

#include <string_view>

#include "values/kernel_state.hpp"

namespace vexel {

// A function of one real number.
struct ElementaryFunction {
  std::string_view name;
  int (*real)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t);
  double (*hardware)(double);
};

// The function of that name, null for none.
const ElementaryFunction* elementaryFunction(std::string_view name);

// f(x): a float argument gives a float of Digits digits, correctly rounded; an exact one its exact
// value where it has one, and otherwise the application itself.
ALGEB applyElementary(State& state, const ElementaryFunction& f, ALGEB x);

// f of a real number as a float of that many digits, correctly rounded; undefined outside the
// domain.
ALGEB elementaryFloat(State& state, const ElementaryFunction& f, ALGEB x, int digits);

// base^exponent of numbers: exact where it can be, float if either is one.
ALGEB numberPower(State& state, ALGEB base, ALGEB exponent);
ALGEB powerFloat(State& state, ALGEB base, ALGEB exponent, int digits);

// pi, correctly rounded.
ALGEB piFloat(State& state, int digits);

// Defines sin, cos, ..., gamma, beta and their like as built-in functions.
void defineElementaryFunctions(State& state);

}  // namespace vexel
