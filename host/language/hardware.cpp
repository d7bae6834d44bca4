// The compiler to the stack machine and the machine itself.
//
// Names are looked up when an instruction runs, so reassigning one needs no new compilation.  A
// name of an elementary function that has no value of its own becomes a direct call.

#include "language/hardware.hpp"

#include <alloca.h>

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "core/errors.hpp"
#include "core/evaluation.hpp"
#include "core/numbers.hpp"
#include "core/objects.hpp"
#include "language/elementary.hpp"
#include "language/procedure.hpp"

namespace vexel {

namespace {

using Op = HardwareCode::Op;

class Compiler {
 public:
  Compiler(State& state, int slots, HardwareCode& code) : state_(state), out_(code) {
    out_.slots = slots;
  }

  // False when a node has no hardware form.
  bool compile(const Node& node) {
    checkStack(state_);
    switch (node.kind) {
      case NodeKind::literal:
        return literal(node.value);
      case NodeKind::slot:
        push(1);
        emit(Op::slot).a = node.slot;
        out_.slots = std::max(out_.slots, node.slot + 1);
        return true;
      case NodeKind::global:
        push(1);
        emit(Op::global).object = node.value;
        return true;
      case NodeKind::sum:
      case NodeKind::product:
        return chain(node);
      case NodeKind::negate:
        return compile(*node.children[0]) && (emit(Op::negate), true);
      case NodeKind::power:
        return power(node);
      case NodeKind::compare:
        return compileComparison(node);
      case NodeKind::logicalNot:
        return compile(*node.children[0]) && (emit(Op::logicalNot), true);
      case NodeKind::logicalAnd:
      case NodeKind::logicalOr:
        return logical(node);
      case NodeKind::call:
        return call(node);
      case NodeKind::hardware:
        return compile(*node.children[1]);
      case NodeKind::conditional:
        return choice(node.children, 0);
      case NodeKind::ifStatement:
        return choice(node.children, 0);
      case NodeKind::assign:
        if (node.children[0]->kind != NodeKind::slot || !compile(*node.children[1])) {
          return false;
        }
        emit(Op::store).a = node.children[0]->slot;
        return true;
      case NodeKind::block:
        return block(node);
      case NodeKind::whileLoop:
        return whileLoop(node);
      case NodeKind::forLoop:
        return forLoop(node);
      default:
        return false;
    }
  }

 private:
  HardwareCode::Instruction& emit(Op op) {
    out_.code.push_back({op, 0, {0.0}});
    return out_.code.back();
  }
  void push(int n) {
    depth_ += n;
    out_.depth = depth_ > out_.depth ? depth_ : out_.depth;
  }
  std::int32_t here() const { return static_cast<std::int32_t>(out_.code.size()); }

  bool constant(double d) {
    push(1);
    emit(Op::constant).number = d;
    return true;
  }

  bool literal(ALGEB x) {
    if (!isReal(x)) {
      return false;
    }
    const double d = toDouble(state_, x);
    return (!std::isinf(d) || isInfinite(state_, x)) && constant(d);
  }

  bool chain(const Node& node) {
    if (!compile(*node.children[0])) {
      return false;
    }
    const bool isSum = node.kind == NodeKind::sum;
    for (std::size_t i = 1; i < node.children.size(); ++i) {
      if (!compile(*node.children[i])) {
        return false;
      }
      emit(isSum ? (node.flags[i] ? Op::subtract : Op::add)
                 : (node.flags[i] ? Op::divide : Op::multiply));
      push(-1);
    }
    return true;
  }

  bool power(const Node& node) {
    if (!compile(*node.children[0])) {
      return false;
    }
    const Node& exponent = *node.children[1];
    if (exponent.kind == NodeKind::literal &&
        (exponent.value == immediate(2) || exponent.value == immediate(3))) {
      emit(exponent.value == immediate(2) ? Op::square : Op::cube);
      return true;
    }
    if (!compile(exponent)) {
      return false;
    }
    emit(Op::power);
    push(-1);
    return true;
  }

  bool compileComparison(const Node& node) {
    static constexpr Op kOps[] = {Op::equal,     Op::unequal, Op::less,
                                  Op::lessEqual, Op::greater, Op::greaterEqual};
    if (!conditional_ || !compile(*node.children[0]) || !compile(*node.children[1])) {
      return false;  // a truth value is no number
    }
    emit(kOps[static_cast<int>(node.op)]);
    push(-1);
    return true;
  }

  // Short circuit, as truth values 0 and 1.
  bool logical(const Node& node) {
    const bool isOr = node.kind == NodeKind::logicalOr;
    std::vector<std::int32_t> early;
    for (const Node* child : node.children) {
      if (!compileCondition(*child)) {
        return false;
      }
      if (isOr) {
        emit(Op::logicalNot);
      }
      early.push_back(here());
      emit(Op::jumpIfFalse);
      push(-1);
    }
    constant(isOr ? 0.0 : 1.0);
    const std::int32_t leave = here();
    emit(Op::jump);
    push(-1);
    for (const std::int32_t at : early) {
      out_.code[static_cast<std::size_t>(at)].a = here();
    }
    constant(isOr ? 1.0 : 0.0);
    out_.code[static_cast<std::size_t>(leave)].a = here();
    return true;
  }

  bool compileCondition(const Node& node) {
    const bool outer = conditional_;
    conditional_ = true;
    const bool ok = compile(node);
    conditional_ = outer;
    return ok;
  }

  // condition, then, condition, then, ..., else
  bool choice(const std::vector<Node*>& parts, std::size_t i) {
    if (i >= parts.size()) {
      return constant(0.0);
    }
    if (i + 1 == parts.size()) {
      return compile(*parts[i]);
    }
    if (!compileCondition(*parts[i])) {
      return false;
    }
    const std::int32_t skip = here();
    emit(Op::jumpIfFalse);
    push(-1);
    if (!compile(*parts[i + 1])) {
      return false;
    }
    const std::int32_t leave = here();
    emit(Op::jump);
    push(-1);
    out_.code[static_cast<std::size_t>(skip)].a = here();
    if (!choice(parts, i + 2)) {
      return false;
    }
    out_.code[static_cast<std::size_t>(leave)].a = here();
    return true;
  }

  bool block(const Node& node) {
    if (node.children.empty()) {
      return constant(0.0);
    }
    for (std::size_t i = 0; i < node.children.size(); ++i) {
      if (i > 0) {
        emit(Op::pop);
        push(-1);
      }
      if (!compile(*node.children[i])) {
        return false;
      }
    }
    return true;
  }

  bool whileLoop(const Node& node) {
    constant(0.0);
    const std::int32_t top = here();
    emit(Op::look);
    if (!compileCondition(*node.children[0])) {
      return false;
    }
    const std::int32_t leave = here();
    emit(Op::jumpIfFalse);
    push(-1);
    emit(Op::pop);
    push(-1);
    if (!compile(*node.children[1])) {
      return false;
    }
    emit(Op::jump).a = top;
    out_.code[static_cast<std::size_t>(leave)].a = here();
    return true;
  }

  bool forLoop(const Node& node) {
    if (node.children[0]->kind != NodeKind::slot) {
      return false;
    }
    // Two hidden slots: the running value and the end, so that the body may change the variable.
    const int running = out_.slots++;
    const int last = out_.slots++;
    if (!compile(*node.children[1])) {
      return false;
    }
    emit(Op::store).a = running;
    emit(Op::pop);
    push(-1);
    if (!compile(*node.children[2])) {
      return false;
    }
    emit(Op::store).a = last;
    emit(Op::pop);
    push(-1);
    constant(0.0);
    const std::int32_t top = here();
    emit(Op::look);
    push(2);
    emit(Op::slot).a = running;
    emit(Op::slot).a = last;
    emit(Op::lessEqual);
    push(-1);
    const std::int32_t leave = here();
    emit(Op::jumpIfFalse);
    push(-1);
    emit(Op::pop);
    push(-1);
    push(1);
    emit(Op::slot).a = running;
    emit(Op::store).a = node.children[0]->slot;
    emit(Op::pop);
    push(-1);
    if (!compile(*node.children[3])) {
      return false;
    }
    emit(Op::increment).a = running;
    emit(Op::jump).a = top;
    out_.code[static_cast<std::size_t>(leave)].a = here();
    return true;
  }

  bool call(const Node& node) {
    if (node.children[0]->kind != NodeKind::global) {
      return false;
    }
    const bool outer = conditional_;
    conditional_ = false;
    for (std::size_t i = 1; i < node.children.size(); ++i) {
      if (!compile(*node.children[i])) {
        return false;
      }
    }
    conditional_ = outer;
    const ALGEB function = node.children[0]->value;
    const auto n = static_cast<int>(node.children.size()) - 1;
    HardwareCode::Instruction& instruction = emit(Op::call);
    instruction.a = n;
    instruction.object = function;
    push(1 - n);
    return true;
  }

  State& state_;
  HardwareCode& out_;
  int depth_ = 0;
  bool conditional_ = false;
};

double callByName(State& state, ALGEB functionName, int n, double* args) {
  const ALGEB v = nameValue(functionName);
  return applyHardware(state, v != nullptr ? v : functionName, n, args - 1);
}

double run(State& state, const HardwareCode& code, double* slots, double* stack) {
  double* top = stack - 1;
  const HardwareCode::Instruction* const first = code.code.data();
  const HardwareCode::Instruction* const end = first + code.code.size();
  for (const HardwareCode::Instruction* at = first; at != end; ++at) {
    switch (at->op) {
      case Op::constant:
        *++top = at->number;
        break;
      case Op::slot:
        *++top = slots[at->a];
        break;
      case Op::store:
        slots[at->a] = *top;
        break;
      case Op::global:
        *++top = evaluateHardware(state, at->object);
        break;
      case Op::add:
        top[-1] += top[0];
        --top;
        break;
      case Op::subtract:
        top[-1] -= top[0];
        --top;
        break;
      case Op::multiply:
        top[-1] *= top[0];
        --top;
        break;
      case Op::divide:
        top[-1] /= top[0];
        --top;
        break;
      case Op::negate:
        *top = -*top;
        break;
      case Op::power:
        top[-1] = std::pow(top[-1], top[0]);
        --top;
        break;
      case Op::square:
        *top *= *top;
        break;
      case Op::cube:
        *top = *top * *top * *top;
        break;
      case Op::call:
        top -= at->a;
        top[1] = callByName(state, at->object, at->a, top + 1);
        ++top;
        break;
      case Op::less:
        top[-1] = top[-1] < top[0] ? 1.0 : 0.0;
        --top;
        break;
      case Op::lessEqual:
        top[-1] = top[-1] <= top[0] ? 1.0 : 0.0;
        --top;
        break;
      case Op::greater:
        top[-1] = top[-1] > top[0] ? 1.0 : 0.0;
        --top;
        break;
      case Op::greaterEqual:
        top[-1] = top[-1] >= top[0] ? 1.0 : 0.0;
        --top;
        break;
      case Op::equal:
        top[-1] = top[-1] == top[0] ? 1.0 : 0.0;
        --top;
        break;
      case Op::unequal:
        top[-1] = top[-1] != top[0] ? 1.0 : 0.0;
        --top;
        break;
      case Op::logicalNot:
        *top = *top == 0.0 ? 1.0 : 0.0;
        break;
      case Op::jump:
        at = first + at->a - 1;
        break;
      case Op::jumpIfFalse:
        if (*top-- == 0.0) {
          at = first + at->a - 1;
        }
        break;
      case Op::pop:
        --top;
        break;
      case Op::increment:
        slots[at->a] += 1.0;
        break;
      case Op::look:
        lookAtInterrupt();
        break;
    }
  }
  return *top;
}

}  // namespace

std::unique_ptr<HardwareCode> compileHardware(State& state, const FunctionCode& function) {
  auto code = std::make_unique<HardwareCode>();
  Compiler compiler(state, function.slots, *code);
  return compiler.compile(*function.body) ? std::move(code) : nullptr;
}

namespace {

void compileOnce(State& state, LanguageProcedure& procedure) {
  if (!procedure.hardware && !procedure.hardwareRefused) {
    procedure.hardware = compileHardware(state, *procedure.code);
    procedure.hardwareRefused = procedure.hardware == nullptr;
  }
}

// True when everything that the code calls, directly or not, has a hardware form now.
bool canRun(State& state, const HardwareCode& code, std::unordered_set<ALGEB>& seen) {
  checkStack(state);
  for (const HardwareCode::Instruction& instruction : code.code) {
    if (instruction.op != Op::call || !seen.insert(instruction.object).second) {
      continue;
    }
    const ALGEB v = nameValue(instruction.object);
    const ALGEB f = v != nullptr ? v : nameFunction(instruction.object);
    if (is(f, Tag::procedure)) {
      auto& procedure = static_cast<LanguageProcedure&>(*foreign(f));
      compileOnce(state, procedure);
      if (procedure.hardwareRefused || !canRun(state, *procedure.hardware, seen)) {
        return false;
      }
    } else if (!is(f, Tag::function) || !machineFunction(f).hardware) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::optional<double> runHardware(State& state, const Node& expression, const ALGEB* slots) {
  HardwareCode code;
  std::unordered_set<ALGEB> seen;
  if (!Compiler(state, 0, code).compile(expression) || !canRun(state, code, seen)) {
    return std::nullopt;
  }
  std::vector<double> frame(static_cast<std::size_t>(code.slots + code.depth) + 1);
  for (const HardwareCode::Instruction& instruction : code.code) {
    if (instruction.op == Op::slot) {
      const ALGEB x = slots[instruction.a];
      if (!isReal(x)) {
        return std::nullopt;
      }
      frame[static_cast<std::size_t>(instruction.a)] = evaluateHardware(state, x);
    }
  }
  return run(state, code, frame.data(), frame.data() + code.slots);
}

double callHardware(State& state, ALGEB procedureObject, int n, const double* args) {
  checkStack(state);
  lookAtInterrupt();
  auto& procedure = static_cast<LanguageProcedure&>(*foreign(procedureObject));
  const FunctionCode& function = *procedure.code;
  compileOnce(state, procedure);
  if (procedure.hardwareRefused || n != function.parameters || procedure.hardware->slots > 4096 ||
      procedure.hardware->depth > 4096) {
    raise(state, "no hardware floating-point value: %1", procedureObject);
  }
  const HardwareCode& code = *procedure.hardware;
  auto* slots = static_cast<double*>(
      alloca(static_cast<std::size_t>(code.slots + code.depth + 1) * sizeof(double)));
  for (int i = 0; i < n; ++i) {
    slots[i] = args[i + 1];
  }
  for (int i = n; i < code.slots; ++i) {
    slots[i] = 0.0;
  }
  for (std::size_t i = 0; i < function.captures.size(); ++i) {
    slots[function.captures[i].inner] = evaluateHardware(state, procedure.captured[i]);
  }
  return run(state, code, slots, slots + code.slots);
}

}  // namespace vexel
