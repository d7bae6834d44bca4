// seq(e, i = a .. b) and sum(e, i = a .. b).

#include <algorithm>

#include "language/evaluator_frame.hpp"
#include "mathematics/algebra.hpp"
#include "mathematics/summation.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

// So many terms that a closed form, where there is one, is sooner found than the terms are added.
bool isLong(State& state, ALGEB lower, ALGEB upper) {
  constexpr std::int64_t kMany = 100'000;
  return isInteger(lower) && isInteger(upper) &&
         compare(state, subtract(state, upper, lower), immediate(kMany)) > 0;
}

}  // namespace

// Whether it is arithmetic on exact numbers and that slot: the same whenever it is evaluated, also
// while the slot holds a name.
bool Evaluator::isExactArithmetic(const Node& node, std::int32_t slot) {
  checkStack(state_);
  switch (node.kind) {
    case NodeKind::literal:
      return isExact(node.value);
    case NodeKind::slot:
      return node.slot == slot || isExact(slots_[node.slot]);
    case NodeKind::global:
      return isExact(nameValue(node.value));
    case NodeKind::sum:
    case NodeKind::product:
    case NodeKind::negate:
    case NodeKind::power:
      return std::all_of(node.children.begin(), node.children.end(),
                         [&](const Node* child) { return isExactArithmetic(*child, slot); });
    default:
      return false;
  }
}

// The sum in closed form, where that is an exact number, and so what adding the terms would give;
// else null.
ALGEB Evaluator::exactSum(const Node& node, ALGEB lower, ALGEB upper) {
  const Node& term = *node.children[0];
  if (!isExactArithmetic(term, node.slot)) {
    return nullptr;
  }
  const Unassigned unassigned(state_, node.value);
  slots_[node.slot] = node.value;
  const ALGEB sum = symbolicSum(state_, value(term), node.value, lower, upper);
  return isExact(sum) ? sum : nullptr;
}

// seq(e, i = a .. b) and sum(e, i = a .. b). The index is a slot of this frame, so a variable of
// its name outside keeps its value.  A sum whose range is no range of numbers is symbolic: the
// index is a name then, and one without a value while e is evaluated.
ALGEB Evaluator::overRange(const Node& node) {
  const ALGEB lower = value(*node.children[1]);
  const ALGEB upper = value(*node.children[2]);
  if (node.kind == NodeKind::sumOver && (!isReal(lower) || !isReal(upper))) {
    const Unassigned unassigned(state_, node.value);
    slots_[node.slot] = node.value;
    return symbolicSum(state_, value(*node.children[0]), node.value, lower, upper);
  }
  if (!isReal(lower) || !isReal(upper)) {
    raise(state_, "expected a range of numbers, received: %1 .. %2", lower, upper);
  }
  if (node.kind == NodeKind::sumOver && isLong(state_, lower, upper)) {
    if (const ALGEB closed = exactSum(node, lower, upper)) {
      return closed;
    }
  }
  Handles elements(state_);
  RunningSum total(state_, immediate(0));
  // Before memory runs out, not after.
  const auto raiseEndless = [&] { raise(state_, "the range %1 .. %2 has no end", lower, upper); };
  if (compare(state_, lower, upper) <= 0 &&
      (isInfinite(state_, lower) || isInfinite(state_, upper))) {
    raiseEndless();
  }
  ALGEB previous = nullptr;
  for (ALGEB i = lower; compare(state_, i, upper) <= 0; i = add(state_, i, immediate(1))) {
    lookAtInterrupt();
    if (i == previous) {
      raiseEndless();  // a float so large that adding 1 changes nothing
    }
    previous = i;
    slots_[node.slot] = i;
    const ALGEB v = value(*node.children[0]);
    if (node.kind == NodeKind::sumOver) {
      total.add(v);
    } else {
      elements.push(v);
    }
  }
  return node.kind == NodeKind::sumOver ? total.value() : sequenceOf(state_, elements.span());
}

}  // namespace vexel
