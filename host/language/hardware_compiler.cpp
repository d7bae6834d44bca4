// The compiler from syntax trees to the register machine of hardware floating point.
//
// An operand is a slot, an intermediate value or a constant.  Reading a slot or a constant needs
// no instruction, so x^3 - 2*x - 5 takes four and the one that finishes.  Names are looked up when
// an instruction runs; reassigning one needs no new compilation.
//
// In one walk, each node makes drafts of instructions whose operands say what they are, not yet
// where: how many slots, intermediate values and constants there will be is known at the end, when
// settle() (hardware_drafts.hpp) gives each its index in the frame.  A node that has no hardware
// form makes the whole have none.

#include <algorithm>
#include <bit>
#include <cmath>

#include "language/hardware_drafts.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

// One walk over a body.
//
// Intermediate values are a stack: temporaries_ is its height.  Whoever compiles operands notes the
// height before them and goes back to it when the instruction that takes them is written, so that
// the next value lies where they did.  An instruction reads its operands before it writes its
// result; the two may share a place.
class Compiler : HardwareDrafts {
 public:
  Compiler(State& state, int slots, HardwareCode& code)
      : HardwareDrafts(slots, code), state_(state) {}

  bool function(const Node& body) {
    const std::optional<Operand> result = compile(body, kAnywhere);
    if (!result) {
      return false;
    }
    emit(Op::finish, {}, *result);
    return settle();
  }

 private:
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
      case NodeKind::returnStatement:
        return finish(node);
      case NodeKind::leaveLoop:
      case NodeKind::nextPass:
        return leaveLoop(node);
      default:
        return std::nullopt;
    }
  }

  std::optional<Operand> literal(ALGEB x, Operand wanted) {
    if (!isReal(x)) {
      return std::nullopt;
    }
    const double d = toDouble(state_, x);
    // A number beyond the doubles would turn into an infinity that the text does not have.
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

  // a + b - c from left to right, as the evaluator adds.  Only the last instruction writes to the
  // wanted place: the operands may still read it, as in x := y - x.
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

  // Squares and cubes, the powers that densities are made of, have instructions of their own.
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

  // The function is a name that is looked up when the call runs; what the name means then may be a
  // machine function, another procedure, or nothing that hardware can call.
  std::optional<Operand> call(const Node& node, Operand wanted, std::size_t mark) {
    const std::size_t n = node.children.size() - 1;
    if (node.children[0]->kind != NodeKind::global || n > kLargestFrame) {
      return std::nullopt;
    }
    // An argument is a value, even of a call that is a condition.
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
    // The arguments' places were taken first, from mark on.
    const Operand first{Kind::temporary, static_cast<std::int32_t>(mark)};
    const Operand function{Kind::slot, object(node.children[0]->value)};
    const Operand to = binary(Op::call, first, function, wanted, mark);
    drafts_.back().n = static_cast<std::uint16_t>(n);
    return to;
  }

  // To a variable of the procedure only: the code assigns to nothing that outlives the call.
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

  // The jumps come in pairs, IfLess and UnlessLess, because of NaN: not (a < b) is not b <= a.  >
  // and >= exchange the operands.
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
    // Each part but the last jumps where it decides: to the caller's places when the whole is then
    // what the caller asked for, else past the rest.  The last part decides either way.
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
    // All branches put their value at one place, chosen before the first.
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

  // The value is that of the last statement; the others run for what they assign.
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

  // What follows a jump is not reached; its value is anything.
  std::optional<Operand> finish(const Node& node) {
    if (node.children.empty()) {
      return std::nullopt;
    }
    const auto value = compile(*node.children[0], kAnywhere);
    if (value) {
      emit(Op::finish, {}, *value);
    }
    return value;
  }

  // break and next; a name that the user has given a value is none of them.
  std::optional<Operand> leaveLoop(const Node& node) {
    if (loops_.empty() || nameValue(node.value) != nullptr) {
      return std::nullopt;
    }
    Loop& loop = loops_.back();
    emitJump(node.kind == NodeKind::leaveLoop ? loop.leave : loop.next, Op::jump);
    return constant(0.0);
  }

  // The body of a loop.  Jumps to the next pass land behind it, where the step is; those that leave
  // the loop wait for its end, which the caller knows.
  bool loopBody(const Node& body, Operand value, Places& leave) {
    const std::size_t mark = temporaries_;
    loops_.emplace_back();
    const bool ok = compile(body, value).has_value();
    land(loops_.back().next, here());
    leave.insert(leave.end(), loops_.back().leave.begin(), loops_.back().leave.end());
    loops_.pop_back();
    temporaries_ = mark;
    return ok;
  }

  // look, condition, body, jump to the look: the condition's own jump leaves.
  std::optional<Operand> whileLoop(const Node& node, Operand wanted) {
    const Operand value = loopValue(wanted);
    // An interrupt is looked for in every pass.
    const std::size_t top = here();
    Places leave;
    emit(Op::look, {});
    if (!condition(*node.children[0], false, leave) || !loopBody(*node.children[1], value, leave)) {
      return std::nullopt;
    }
    Places again;
    emitJump(again, Op::jump);
    land(again, top);
    land(leave, here());
    return endOfLoop(value, wanted);
  }

  // running := first; last; leave unless running <= last; then variable := running, body, step,
  // jump back while running <= last.  With a negative step the two change places in comparisons.
  std::optional<Operand> forLoop(const Node& node, Operand wanted) {
    if (node.children[0]->kind != NodeKind::slot) {
      return std::nullopt;
    }
    // The comparison that ends the loop is one instruction; a step whose sign came out at run time
    // would need two.  So a step is a number.
    const Node* const step = node.children.size() > 4 ? node.children[4] : nullptr;
    if (step != nullptr &&
        (step->kind != NodeKind::literal || !isReal(step->value) || isZero(step->value))) {
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
    const bool up = step == nullptr || sign(step->value) > 0;
    const Operand value = loopValue(wanted);
    Places leave;
    Places again;
    emit(Op::look, {});
    emitJump(leave, Op::jumpUnlessLessEqual, up ? running : last, up ? last : running);
    const std::size_t top = here();
    emit(Op::move, variable, running);
    if (!loopBody(*node.children[3], value, leave)) {
      return std::nullopt;
    }
    if (step == nullptr) {
      // Step 1 is nearly every loop: add, look, compare and jump in one instruction.
      emitJump(again, Op::next, running, last);
    } else {
      emit(Op::add, running, running, constant(toDouble(state_, step->value)));
      emit(Op::look, {});
      emitJump(again, Op::jumpIfLessEqual, up ? running : last, up ? last : running);
    }
    land(again, top);
    land(leave, here());
    return endOfLoop(value, wanted);
  }

  // Jumps out of the loops around a statement, innermost last.
  struct Loop {
    Places leave;
    Places next;
  };

  State& state_;
  std::vector<Loop> loops_;
  bool inCondition_ = false;
};

}  // namespace

std::unique_ptr<HardwareCode> compileHardware(State& state, const Node& body, int slots) {
  auto code = std::make_unique<HardwareCode>();
  return Compiler(state, slots, *code).function(body) ? std::move(code) : nullptr;
}

}  // namespace vexel
