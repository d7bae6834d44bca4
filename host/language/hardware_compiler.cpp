// The compiler from syntax trees to the register machine of hardware floating point.
//
// An operand is a slot, an intermediate value or a constant.  Reading a slot or a constant needs
// no instruction, so x^3 - 2*x - 5 takes four and the one that finishes.  Names are looked up when
// an instruction runs; reassigning one needs no new compilation.

#include <algorithm>
#include <bit>
#include <cmath>

#include "language/hardware.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

using Op = HardwareCode::Op;

// A frame lies on the machine stack.
constexpr std::size_t kLargestFrame = 8192;

// Where a value is.  Intermediate values and constants move behind the slots when all are counted.
struct Operand {
  enum class Kind : std::uint8_t { slot, temporary, constant, anywhere, nowhere };
  Kind kind;
  std::int32_t number = 0;
};
// What a caller may want of a value: to be wherever it is, or not to be computed for its own sake.
constexpr Operand kAnywhere{Operand::Kind::anywhere};
constexpr Operand kNowhere{Operand::Kind::nowhere};

class Compiler {
 public:
  Compiler(State& state, int slots, HardwareCode& code)
      : state_(state), out_(code), slots_(slots) {}

  bool function(const Node& body) {
    const std::optional<Operand> result = compile(body, kAnywhere);
    if (!result) {
      return false;
    }
    emit(Op::finish, {}, *result);
    return settle();
  }

 private:
  using Kind = Operand::Kind;
  using Places = std::vector<std::size_t>;  // jumps whose target is not known yet
  struct Draft {
    Op op;
    std::uint16_t n;
    Operand to;
    Operand x;
    Operand y;
  };

  // ---- instructions

  void emit(Op op, Operand to, Operand x = {}, Operand y = {}) {
    drafts_.push_back({op, 0, to, x, y});
  }
  std::size_t here() const { return drafts_.size(); }

  // A jump to a place that land() names later.
  void emitJump(Places& places, Op op, Operand x = {}, Operand y = {}) {
    places.push_back(here());
    emit(op, {}, x, y);
  }
  void land(const Places& places, std::size_t target) {
    for (const std::size_t place : places) {
      drafts_[place].to = {Kind::slot, static_cast<std::int32_t>(target)};
    }
  }

  // ---- operands
  Operand newTemporary() {
    const Operand t{Kind::temporary, static_cast<std::int32_t>(temporaries_++)};
    out_.temporaries = std::max(out_.temporaries, temporaries_);
    return t;
  }
  Operand newSlot() { return {Kind::slot, slots_++}; }

  // The place of a value that an instruction makes.
  Operand target(Operand wanted) {
    return wanted.kind == Kind::anywhere || wanted.kind == Kind::nowhere ? newTemporary() : wanted;
  }

  Operand constant(double d) {
    const auto bits = [](double c) { return std::bit_cast<std::uint64_t>(c); };
    const auto found = std::find_if(out_.constants.begin(), out_.constants.end(),
                                    [&](double c) { return bits(c) == bits(d); });
    const auto i = static_cast<std::int32_t>(found - out_.constants.begin());
    if (found == out_.constants.end()) {
      out_.constants.push_back(d);
    }
    return {Kind::constant, i};
  }

  // A value that is somewhere already, brought where it is wanted.
  Operand deliver(Operand value, Operand wanted) {
    if (wanted.kind == Kind::anywhere || wanted.kind == Kind::nowhere) {
      return value;
    }
    emit(Op::move, wanted, value);
    return wanted;
  }

  std::int32_t object(ALGEB x) {
    const auto found = std::find(out_.objects.begin(), out_.objects.end(), x);
    const auto i = static_cast<std::int32_t>(found - out_.objects.begin());
    if (found == out_.objects.end()) {
      out_.objects.push_back(x);
    }
    return i;
  }

  // ---- nodes

  // Compiles a node; where its value is, or nothing when it has no hardware form.  A wanted place
  // gets the value by the last instruction that runs, so the node may read what was there.
  std::optional<Operand> compile(const Node& node, Operand wanted) {
    checkStack(state_);
    const std::size_t mark = temporaries_;
    switch (node.kind) {
      case NodeKind::literal:
        return literal(node.value, wanted);
      case NodeKind::slot:
        out_.slotsRead.push_back(node.slot);
        slots_ = std::max(slots_, node.slot + 1);
        return deliver({Kind::slot, node.slot}, wanted);
      case NodeKind::global: {
        const Operand to = target(wanted);
        emit(Op::global, to, {Kind::slot, object(node.value)});
        return to;
      }
      case NodeKind::sum:
      case NodeKind::product:
        return chain(node, wanted, mark);
      case NodeKind::negate:
        return unary(Op::negate, *node.children[0], wanted, mark);
      case NodeKind::power:
        return power(node, wanted, mark);
      case NodeKind::compare:
      case NodeKind::logicalNot:
      case NodeKind::logicalAnd:
      case NodeKind::logicalOr:
        return truthValue(node, wanted);
      case NodeKind::call:
        return call(node, wanted, mark);
      case NodeKind::hardware:
        return compile(*node.children[1], wanted);
      case NodeKind::conditional:
      case NodeKind::ifStatement:
        return choice(node.children, wanted);
      case NodeKind::assign:
        return assignment(node, wanted);
      case NodeKind::block:
        return block(node, wanted);
      case NodeKind::whileLoop:
        return whileLoop(node, wanted);
      case NodeKind::forLoop:
        return forLoop(node, wanted);
      default:
        return std::nullopt;
    }
  }

  std::optional<Operand> literal(ALGEB x, Operand wanted) {
    if (!isReal(x)) {
      return std::nullopt;
    }
    const double d = toDouble(state_, x);
    if (std::isinf(d) && !isInfinite(state_, x)) {
      return std::nullopt;
    }
    return deliver(constant(d), wanted);
  }

  // The intermediate values of operands end where the result begins: mark is the state before.
  Operand binary(Op op, Operand x, Operand y, Operand wanted, std::size_t mark) {
    temporaries_ = mark;
    const Operand to = target(wanted);
    emit(op, to, x, y);
    return to;
  }

  std::optional<Operand> unary(Op op, const Node& operand, Operand wanted, std::size_t mark) {
    const auto x = compile(operand, kAnywhere);
    return x ? std::optional(binary(op, *x, {}, wanted, mark)) : std::nullopt;
  }

  std::optional<Operand> chain(const Node& node, Operand wanted, std::size_t mark) {
    const bool isSum = node.kind == NodeKind::sum;
    auto total = compile(*node.children[0], node.children.size() == 1 ? wanted : kAnywhere);
    for (std::size_t i = 1; total && i < node.children.size(); ++i) {
      const auto part = compile(*node.children[i], kAnywhere);
      if (!part) {
        return std::nullopt;
      }
      const Op op = isSum ? (node.flags[i] ? Op::subtract : Op::add)
                          : (node.flags[i] ? Op::divide : Op::multiply);
      const bool last = i + 1 == node.children.size();
      total = binary(op, *total, *part, last ? wanted : kAnywhere, mark);
    }
    return total;
  }

  std::optional<Operand> power(const Node& node, Operand wanted, std::size_t mark) {
    const Node& exponent = *node.children[1];
    if (exponent.kind == NodeKind::literal && exponent.value == immediate(2)) {
      return unary(Op::square, *node.children[0], wanted, mark);
    }
    if (exponent.kind == NodeKind::literal && exponent.value == immediate(3)) {
      return unary(Op::cube, *node.children[0], wanted, mark);
    }
    const auto x = compile(*node.children[0], kAnywhere);
    const auto y = x ? compile(exponent, kAnywhere) : std::nullopt;
    return y ? std::optional(binary(Op::power, *x, *y, wanted, mark)) : std::nullopt;
  }

  std::optional<Operand> call(const Node& node, Operand wanted, std::size_t mark) {
    const std::size_t n = node.children.size() - 1;
    if (node.children[0]->kind != NodeKind::global || n > kLargestFrame) {
      return std::nullopt;
    }
    const bool outer = inCondition_;
    inCondition_ = false;
    // The arguments' places, one after another.
    std::vector<Operand> places(n);
    std::generate(places.begin(), places.end(), [this] { return newTemporary(); });
    for (std::size_t i = 0; i < n; ++i) {
      const std::size_t before = temporaries_;
      if (!compile(*node.children[i + 1], places[i])) {
        return std::nullopt;
      }
      temporaries_ = before;
    }
    inCondition_ = outer;
    const Operand first{Kind::temporary, static_cast<std::int32_t>(mark)};
    const Operand function{Kind::slot, object(node.children[0]->value)};
    const Operand to = binary(Op::call, first, function, wanted, mark);
    drafts_.back().n = static_cast<std::uint16_t>(n);
    return to;
  }

  std::optional<Operand> assignment(const Node& node, Operand wanted) {
    if (node.children[0]->kind != NodeKind::slot) {
      return std::nullopt;
    }
    const Operand slot{Kind::slot, node.children[0]->slot};
    slots_ = std::max(slots_, slot.number + 1);
    const std::size_t mark = temporaries_;
    if (!compile(*node.children[1], slot)) {
      return std::nullopt;
    }
    temporaries_ = mark;
    return deliver(slot, wanted);
  }

  // ---- truth values

  // Jumps when the truth of a node is sense, to places that land() names; else goes on.
  bool condition(const Node& node, bool sense, Places& places) {
    checkStack(state_);
    const bool outer = inCondition_;
    const std::size_t mark = temporaries_;
    inCondition_ = true;
    bool ok = false;
    switch (node.kind) {
      case NodeKind::compare:
        ok = comparison(node, sense, places);
        break;
      case NodeKind::logicalNot:
        ok = condition(*node.children[0], !sense, places);
        break;
      case NodeKind::logicalAnd:
      case NodeKind::logicalOr:
        ok = logical(node, sense, places);
        break;
      default:
        if (const auto value = compile(node, kAnywhere)) {
          emitJump(places, sense ? Op::jumpUnlessZero : Op::jumpIfZero, *value);
          ok = true;
        }
    }
    inCondition_ = outer;
    temporaries_ = mark;
    return ok;
  }

  bool comparison(const Node& node, bool sense, Places& places) {
    const auto a = compile(*node.children[0], kAnywhere);
    const auto b = a ? compile(*node.children[1], kAnywhere) : std::nullopt;
    if (!b) {
      return false;
    }
    switch (node.op) {
      case CompareOp::less:
        emitJump(places, sense ? Op::jumpIfLess : Op::jumpUnlessLess, *a, *b);
        break;
      case CompareOp::greater:
        emitJump(places, sense ? Op::jumpIfLess : Op::jumpUnlessLess, *b, *a);
        break;
      case CompareOp::lessEqual:
        emitJump(places, sense ? Op::jumpIfLessEqual : Op::jumpUnlessLessEqual, *a, *b);
        break;
      case CompareOp::greaterEqual:
        emitJump(places, sense ? Op::jumpIfLessEqual : Op::jumpUnlessLessEqual, *b, *a);
        break;
      case CompareOp::equal:
        emitJump(places, sense ? Op::jumpIfEqual : Op::jumpUnlessEqual, *a, *b);
        break;
      case CompareOp::unequal:
        emitJump(places, sense ? Op::jumpUnlessEqual : Op::jumpIfEqual, *a, *b);
        break;
    }
    return true;
  }

  // Short circuit: one false part decides a conjunction, one true part a disjunction.
  bool logical(const Node& node, bool sense, Places& places) {
    const bool decisive = node.kind == NodeKind::logicalOr;
    Places past;
    for (std::size_t i = 0; i < node.children.size(); ++i) {
      const bool last = i + 1 == node.children.size();
      const bool leaves = sense == decisive || last;
      if (!condition(*node.children[i], leaves ? sense : decisive, leaves ? places : past)) {
        return false;
      }
    }
    land(past, here());
    return true;
  }

  // 1 or 0.  A truth value is no number outside a condition.
  std::optional<Operand> truthValue(const Node& node, Operand wanted) {
    if (!inCondition_) {
      return std::nullopt;
    }
    const Operand to = target(wanted);
    Places isFalse;
    Places end;
    if (!condition(node, false, isFalse)) {
      return std::nullopt;
    }
    emit(Op::move, to, constant(1.0));
    emitJump(end, Op::jump);
    land(isFalse, here());
    emit(Op::move, to, constant(0.0));
    land(end, here());
    return to;
  }

  // ---- statements

  // Of parts condition, then, condition, then, ..., else; 0 without an else.
  std::optional<Operand> choice(const std::vector<Node*>& parts, Operand wanted) {
    const Operand to = wanted.kind == Kind::nowhere ? wanted : target(wanted);
    const std::size_t mark = temporaries_;
    Places end;
    std::size_t i = 0;
    for (; i + 1 < parts.size(); i += 2) {
      Places otherwise;
      if (!condition(*parts[i], false, otherwise) || !compile(*parts[i + 1], to)) {
        return std::nullopt;
      }
      temporaries_ = mark;
      emitJump(end, Op::jump);
      land(otherwise, here());
    }
    if (i < parts.size()) {
      if (!compile(*parts[i], to)) {
        return std::nullopt;
      }
      temporaries_ = mark;
    } else {
      deliver(constant(0.0), to);
    }
    land(end, here());
    return to;
  }

  std::optional<Operand> block(const Node& node, Operand wanted) {
    if (node.children.empty()) {
      return deliver(constant(0.0), wanted);
    }
    for (std::size_t i = 0; i + 1 < node.children.size(); ++i) {
      const std::size_t mark = temporaries_;
      if (!compile(*node.children[i], kNowhere)) {
        return std::nullopt;
      }
      temporaries_ = mark;
    }
    return compile(*node.children.back(), wanted);
  }

  // A loop's value is that of the last run of its body, 0 without one.  It has a place of its own,
  // since the body may read the wanted one.
  Operand loopValue(Operand wanted) {
    if (wanted.kind == Kind::nowhere) {
      return wanted;
    }
    const Operand value = newTemporary();
    return deliver(constant(0.0), value);
  }
  Operand endOfLoop(Operand value, Operand wanted) {
    return wanted.kind == Kind::nowhere ? value : deliver(value, wanted);
  }

  std::optional<Operand> whileLoop(const Node& node, Operand wanted) {
    const Operand value = loopValue(wanted);
    const std::size_t mark = temporaries_;
    const std::size_t top = here();
    Places leave;
    emit(Op::look, {});
    if (!condition(*node.children[0], false, leave) || !compile(*node.children[1], value)) {
      return std::nullopt;
    }
    temporaries_ = mark;
    Places again;
    emitJump(again, Op::jump);
    land(again, top);
    land(leave, here());
    return endOfLoop(value, wanted);
  }

  std::optional<Operand> forLoop(const Node& node, Operand wanted) {
    if (node.children[0]->kind != NodeKind::slot) {
      return std::nullopt;
    }
    // The running value and the end have slots of their own: the body may change the variable.
    const Operand variable{Kind::slot, node.children[0]->slot};
    slots_ = std::max(slots_, variable.number + 1);
    const Operand running = newSlot();
    const Operand last = newSlot();
    if (!compile(*node.children[1], running) || !compile(*node.children[2], last)) {
      return std::nullopt;
    }
    const Operand value = loopValue(wanted);
    const std::size_t mark = temporaries_;
    Places leave;
    emit(Op::look, {});
    emitJump(leave, Op::jumpUnlessLessEqual, running, last);
    const std::size_t top = here();
    emit(Op::move, variable, running);
    if (!compile(*node.children[3], value)) {
      return std::nullopt;
    }
    temporaries_ = mark;
    Places again;
    emitJump(again, Op::next, running, last);
    land(again, top);
    land(leave, here());
    return endOfLoop(value, wanted);
  }

  // ---- the end

  // Gives every operand its place in the frame; false when the frame is too large.
  bool settle() {
    out_.slots = static_cast<std::size_t>(slots_);
    if (out_.frameSize() > kLargestFrame) {
      return false;
    }
    const auto place = [this](Operand operand) {
      switch (operand.kind) {
        case Kind::temporary:
          return operand.number + static_cast<std::int32_t>(out_.slots);
        case Kind::constant:
          return operand.number + static_cast<std::int32_t>(out_.constantsAt());
        default:
          return operand.number;
      }
    };
    out_.code.reserve(drafts_.size());
    for (const Draft& d : drafts_) {
      out_.code.push_back({d.op, d.n, place(d.to), place(d.x), place(d.y)});
    }
    return true;
  }

  State& state_;
  HardwareCode& out_;
  std::vector<Draft> drafts_;
  int slots_;
  std::size_t temporaries_ = 0;  // in use
  bool inCondition_ = false;
};

}  // namespace

std::unique_ptr<HardwareCode> compileHardware(State& state, const Node& body, int slots) {
  auto code = std::make_unique<HardwareCode>();
  return Compiler(state, slots, *code).function(body) ? std::move(code) : nullptr;
}

}  // namespace vexel
