// Procedures compiled for 64-bit hardware floating point: a register machine over doubles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "language/syntax.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// Code that works on a frame of doubles: the slots of the function, then intermediate values, then
// the constants.
struct HardwareCode {
  enum class Op : std::uint8_t {
    move,  // f[to] = f[x]
    add,   // f[to] = f[x] + f[y], and so on
    subtract,
    multiply,
    divide,
    power,
    square,
    cube,
    negate,
    global,  // f[to] = the value of the name objects[x]
    call,    // f[to] = objects[y](f[x], ..., f[x + n - 1])
    jump,    // go on at instruction to
    jumpIfZero,
    jumpUnlessZero,
    jumpIfLess,  // where f[x] < f[y]; a NaN is neither less nor equal
    jumpUnlessLess,
    jumpIfLessEqual,
    jumpUnlessLessEqual,
    jumpIfEqual,
    jumpUnlessEqual,
    look,   // for an interrupt
    next,   // look; f[x] += 1; jump where f[x] <= f[y]
    finish  // the result is f[x]
  };
  struct Instruction {
    Op op;
    std::uint16_t n = 0;
    std::int32_t to = 0;
    std::int32_t x = 0;
    std::int32_t y = 0;
  };
  std::vector<Instruction> code;
  std::vector<double> constants;
  std::vector<ALGEB> objects;           // names; literals of the program keep them alive
  std::vector<std::int32_t> slotsRead;  // of the function's
  std::size_t slots = 0;                // the function's and those of loops
  std::size_t temporaries = 0;

  std::size_t constantsAt() const { return slots + temporaries; }
  std::size_t frameSize() const { return constantsAt() + constants.size(); }
};

// Compiles a function, or an expression in its frame; null when it has something without a
// hardware form, or needs a frame beyond any reason.
std::unique_ptr<HardwareCode> compileHardware(State& state, const Node& body, int slots);

// An expression in a frame of host values: nothing when it, or a function that it calls, has no
// hardware form, or when a slot that it reads holds no real number.  Raises what running it raises.
std::optional<double> runHardware(State& state, const Node& expression, const ALGEB* slots);

// f of every element of an array of machine numbers, as an array of float[8]; raises where f has no
// hardware form, and for anything but such an array.
ALGEB hardwareMap(State& state, ALGEB f, ALGEB x);

}  // namespace vexel
