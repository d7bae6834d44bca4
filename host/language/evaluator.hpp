// Evaluation of syntax trees.
#pragma once

#include <memory>

#include "language/syntax.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// Runs one statement; its value.
ALGEB runProgram(State& state, const std::shared_ptr<Program>& program);

// Whether it is a loop, or a call of what prints: a statement that nobody runs for its value.
bool isForItsEffect(const Program& program);

}  // namespace vexel
