// Evaluation of syntax trees.
#pragma once

#include <memory>

#include "language/syntax.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// The value of a procedure's or a program's body on a frame of its slots, which lies on the machine
// stack: there the collector sees what is in it.
ALGEB evaluateBody(State& state, const std::shared_ptr<Program>& program, ALGEB* slots,
                   const Node& body);

// Runs one statement; its value.
ALGEB runProgram(State& state, const std::shared_ptr<Program>& program);

}  // namespace vexel
