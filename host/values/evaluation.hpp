// What the core asks of the language: evaluation of objects, of procedures and of text.
//
// The functions are implemented in host/mathematics, language, builtins and embedding.  All may
// collect and raise.
#pragma once

#include <string>
#include <string_view>

#include "memory/handle.hpp"

namespace vexel {

// Registers built-in functions and constants; called once, when a kernel is made.
void initialiseLanguage(State& state);

// x evaluated: names by their values (themselves without one), symbolic expressions anew.
ALGEB evaluate(State& state, ALGEB x);

// A procedure of the language (tag procedure) called with an argument sequence; see
// argumentsOf in functions.hpp.
ALGEB callProcedure(State& state, ALGEB procedure, ALGEB args);

// x in 64-bit floating point; raises when it has no hardware value.
double evaluateHardware(State& state, ALGEB x);

// A procedure of the language on args[1] ... args[n] in 64-bit floating point; raises when it has
// no hardware form.  The core itself handles machine functions and names.
double callHardware(State& state, ALGEB procedure, int n, const double* args);

// Runs statements; the value of the last one.
ALGEB runStatements(State& state, std::string_view text);

// x in software floating point of that many decimal digits; parts without a value stay symbolic.
ALGEB evalf(State& state, ALGEB x, int digits);

// One line of JSON.
std::string jsonText(State& state, ALGEB x);

}  // namespace vexel
