// The machine of hardware floating point: runs what hardware_compiler.cpp makes.
//
// A frame of doubles lies on the machine stack: the slots of the function, its intermediate values,
// its constants, copied in at each call.  Nothing is checked while code runs; the compiler has seen
// to it that every index lies in the frame and that every path ends in finish.  Code is compiled
// when a procedure is first called in hardware and stays with the procedure; that there is none is
// remembered, too.

#include "language/hardware.hpp"

#include <alloca.h>

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "language/interpreter.hpp"
#include "language/procedure.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/evaluation.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

using Op = HardwareCode::Op;

// args point at the first argument; hosts count from 1.
double callByName(State& state, ALGEB functionName, int n, const double* args) {
  const ALGEB v = nameValue(functionName);
  return applyHardware(state, v != nullptr ? v : functionName, n, args - 1);
}

// Copies the few doubles of a call.  The empty statement keeps the compiler from making this a
// call of memcpy, which takes longer than the rest of a small procedure.
inline void copyFew(const double* from, std::size_t n, double* to) {
  for (std::size_t i = 0; i < n; ++i) {
    to[i] = from[i];
    __asm__("");
  }
}

// Runs code on a frame whose slots are set.
double run(State& state, const HardwareCode& code, double* f) {
  copyFew(code.constants.data(), code.constants.size(), f + code.constantsAt());
  const HardwareCode::Instruction* const first = code.code.data();
  const HardwareCode::Instruction* at = first;
  for (;;) {
    const HardwareCode::Instruction& i = *at++;
    switch (i.op) {
      case Op::move:
        f[i.to] = f[i.x];
        break;
      case Op::add:
        f[i.to] = f[i.x] + f[i.y];
        break;
      case Op::subtract:
        f[i.to] = f[i.x] - f[i.y];
        break;
      case Op::multiply:
        f[i.to] = f[i.x] * f[i.y];
        break;
      case Op::divide:
        f[i.to] = f[i.x] / f[i.y];
        break;
      case Op::power:
        f[i.to] = std::pow(f[i.x], f[i.y]);
        break;
      case Op::square:
        f[i.to] = f[i.x] * f[i.x];
        break;
      case Op::cube:
        f[i.to] = f[i.x] * f[i.x] * f[i.x];
        break;
      case Op::negate:
        f[i.to] = -f[i.x];
        break;
      case Op::global:
        f[i.to] = vexel::evaluateHardware(state, code.objects[static_cast<std::size_t>(i.x)]);
        break;
      case Op::call:
        f[i.to] = callByName(state, code.objects[static_cast<std::size_t>(i.y)], i.n, f + i.x);
        break;
      case Op::jump:
        at = first + i.to;
        break;
      case Op::jumpIfZero:
        at = f[i.x] == 0.0 ? first + i.to : at;
        break;
      case Op::jumpUnlessZero:
        at = f[i.x] == 0.0 ? at : first + i.to;
        break;
      case Op::jumpIfLess:
        at = f[i.x] < f[i.y] ? first + i.to : at;
        break;
      case Op::jumpUnlessLess:
        at = f[i.x] < f[i.y] ? at : first + i.to;
        break;
      case Op::jumpIfLessEqual:
        at = f[i.x] <= f[i.y] ? first + i.to : at;
        break;
      case Op::jumpUnlessLessEqual:
        at = f[i.x] <= f[i.y] ? at : first + i.to;
        break;
      case Op::jumpIfEqual:
        at = f[i.x] == f[i.y] ? first + i.to : at;
        break;
      case Op::jumpUnlessEqual:
        at = f[i.x] == f[i.y] ? at : first + i.to;
        break;
      case Op::look:
        lookAtInterrupt();
        break;
      case Op::next:
        lookAtInterrupt();
        f[i.x] += 1.0;
        at = f[i.x] <= f[i.y] ? first + i.to : at;
        break;
      case Op::finish:
        return f[i.x];
    }
  }
}

// hardwareRefused and not a second attempt: a body without a hardware form never gets one.
void compileOnce(State& state, LanguageProcedure& procedure) {
  if (!procedure.hardware && !procedure.hardwareRefused) {
    procedure.hardware = compileHardware(state, *procedure.code->body, procedure.code->slots);
    procedure.hardwareRefused = procedure.hardware == nullptr;
  }
}

bool canRun(State& state, const HardwareCode& code, std::unordered_set<ALGEB>& seen);

// True when a function known under a name has a hardware form now, and all that it calls.
bool canCall(State& state, ALGEB functionName, std::unordered_set<ALGEB>& seen) {
  const ALGEB v = nameValue(functionName);
  const ALGEB f = v != nullptr ? v : nameFunction(functionName);
  if (is(f, Tag::procedure)) {
    auto& procedure = static_cast<LanguageProcedure&>(*foreign(f));
    compileOnce(state, procedure);
    return !procedure.hardwareRefused && canRun(state, *procedure.hardware, seen);
  }
  return is(f, Tag::function) && machineFunction(f).hardware;
}

// Whether all that the code calls, and what that calls, has a hardware form now; each name is
// looked at once.  The call itself looks again: by then the name may mean something else.
bool canRun(State& state, const HardwareCode& code, std::unordered_set<ALGEB>& seen) {
  checkStack(state);
  return std::all_of(code.code.begin(), code.code.end(), [&](const auto& instruction) {
    if (instruction.op != Op::call) {
      return true;
    }
    const ALGEB name = code.objects[static_cast<std::size_t>(instruction.y)];
    return !seen.insert(name).second || canCall(state, name, seen);
  });
}

}  // namespace

// An expression by itself runs in a frame of the values around it; only those that it reads need be
// numbers.
std::optional<double> runHardware(State& state, const Node& expression, const ALGEB* slots) {
  std::unordered_set<ALGEB> seen;
  const auto code = compileHardware(state, expression, 0);
  if (!code || !canRun(state, *code, seen)) {
    return std::nullopt;
  }
  std::vector<double> frame(code->frameSize());
  for (const std::int32_t slot : code->slotsRead) {
    if (!isReal(slots[slot])) {
      return std::nullopt;
    }
    frame[static_cast<std::size_t>(slot)] = vexel::evaluateHardware(state, slots[slot]);
  }
  return run(state, *code, frame.data());
}

ALGEB hardwareMap(State& state, ALGEB f, ALGEB x) {
  if (!isMachineArray(x)) {
    raise(state, "no hardware floating-point value: %1", x);
  }
  constexpr std::int64_t kBlock = 1024;
  double room[kBlock];
  const ALGEB result = arrayLike(state, x, RTABLE_FLOAT64);
  const std::int64_t count = arrayOf(result).count;
  for (std::int64_t first = 0; first < count; first += kBlock) {
    // f may do anything to arrays: where the elements are is asked anew for each block, and those
    // of a block are copied.
    const std::int64_t n = std::min(kBlock, std::min(count, arrayOf(x).count) - first);
    const double* const from = doublesOf(arrayOf(x), first, n, room);
    std::copy_n(from, from == room ? 0 : n, room);
    for (std::int64_t i = 0; i < n; ++i) {
      const double args[] = {0.0, room[i]};
      static_cast<double*>(arrayOf(result).data)[first + i] = applyHardware(state, f, 1, args);
    }
  }
  return result;
}

// The frame of a call: arguments, zeros for the other variables, and the closure's values, which
// are evaluated anew at each call, since they may be names that mean something else by now.
double Interpreter::callHardware(State& state, ALGEB procedureObject, int n, const double* args) {
  checkStack(state);
  auto& procedure = static_cast<LanguageProcedure&>(*foreign(procedureObject));
  const FunctionCode& function = *procedure.code;
  compileOnce(state, procedure);
  if (procedure.hardwareRefused || n != function.parameters) {
    raise(state, "no hardware floating-point value: %1", procedureObject);
  }
  const HardwareCode& code = *procedure.hardware;
  auto* frame = static_cast<double*>(alloca(code.frameSize() * sizeof(double)));
  copyFew(args + 1, static_cast<std::size_t>(n), frame);
  for (auto i = static_cast<std::size_t>(n); i < code.slots; ++i) {
    frame[i] = 0.0;
  }
  for (std::size_t i = 0; i < function.captures.size(); ++i) {
    frame[function.captures[i].inner] = vexel::evaluateHardware(state, procedure.captured[i]);
  }
  return run(state, code, frame);
}

}  // namespace vexel
