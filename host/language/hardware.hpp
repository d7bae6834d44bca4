// Procedures compiled for 64-bit hardware floating point: a stack machine over doubles.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "core/kernel_state.hpp"
#include "language/syntax.hpp"

namespace vexel {

struct HardwareCode {
  enum class Op : std::uint8_t {
    constant,
    slot,
    store,
    global,
    add,
    subtract,
    multiply,
    divide,
    negate,
    power,
    square,
    cube,
    call,
    less,
    lessEqual,
    greater,
    greaterEqual,
    equal,
    unequal,
    logicalNot,
    jump,
    jumpIfFalse,
    pop,
    increment,
    look
  };
  struct Instruction {
    Op op;
    std::int32_t a = 0;  // slot, target, number of arguments
    union {
      double number = 0.0;
      ALGEB object;  // a name; literals of the program keep it alive
    };
  };
  std::vector<Instruction> code;
  int slots = 0;
  int depth = 0;  // most values on the stack at once
};

// Compiles a function; null when it has something without a hardware form.
std::unique_ptr<HardwareCode> compileHardware(State& state, const FunctionCode& function);

// An expression in a frame of host values: nothing when it, or a function that it calls, has no
// hardware form, or when a slot that it reads holds no real number.  Raises what running it raises.
std::optional<double> runHardware(State& state, const Node& expression, const ALGEB* slots);

}  // namespace vexel
