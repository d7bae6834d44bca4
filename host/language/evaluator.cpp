// The evaluator of expressions: a walk over the tree with values in the machine stack's frames,
// where the collector sees them.
//
// A local variable of type ALGEB is all that keeps a value alive, which holds for arrays on the
// stack, too, but not for what lies in a std::vector: several values are collected in Handles.  The
// walk is as deep as the tree; value() looks at the stack's bounds before it goes down.

#include <alloca.h>

#include "language/elements.hpp"
#include "language/evaluator_frame.hpp"
#include "language/hardware.hpp"
#include "language/procedure.hpp"
#include "mathematics/algebra.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/evaluation.hpp"
#include "mathematics/summation.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

// What a name stands for where it is read.  A name assigned to another name is followed until
// something without a value comes; an expression is evaluated anew each time, since its names may
// mean something else by now.  A name that has a function only stands for the function, but Pi
// stays a name.
ALGEB Evaluator::global(ALGEB n) {
  const ALGEB v = nameValue(n);
  if (v == nullptr) {
    const ALGEB f = nameFunction(n);
    return f != nullptr && n != state_.piName ? f : n;
  }
  return isExpression(v) || (is(v, Tag::name) && v != n) ? evaluate(state_, v) : v;
}

// What decides in if and while: true or false and nothing else.  A comparison that cannot be
// decided, of a name without a value, raises here; compareValue makes a relation of it.  No object
// is made for a truth value that is looked at once.
bool Evaluator::condition(const Node& node) {
  switch (node.kind) {
    case NodeKind::compare: {
      const ALGEB a = value(*node.children[0]);
      const ALGEB b = value(*node.children[1]);
      if (const auto result = comparison(state_, node.op, a, b)) {
        return *result;
      }
      raise(state_, "unable to determine the truth of a relation between %1 and %2", a, b);
    }
    case NodeKind::logicalNot:
      return !condition(*node.children[0]);
    case NodeKind::logicalAnd:
      for (const Node* child : node.children) {
        if (!condition(*child)) {
          return false;
        }
      }
      return true;
    case NodeKind::logicalOr:
      for (const Node* child : node.children) {
        if (condition(*child)) {
          return true;
        }
      }
      return false;
    default:
      return truth(state_, value(node));
  }
}

// A comparison outside a condition.  `=` always makes an equation, which the user may be about to
// solve or to pass as a named argument; the others are decided where they can be.  > and >= have no
// kinds of relation of their own: the operands change places.
ALGEB Evaluator::compareValue(const Node& node) {
  const ALGEB a = value(*node.children[0]);
  const ALGEB b = value(*node.children[1]);
  if (node.op == CompareOp::equal) {
    return newPair(state_, Tag::equation, a, b);
  }
  // Two lists or two arrays differ as wholes; everything else goes element by element.
  if ((isContainer(a) || isContainer(b)) &&
      (node.op != CompareOp::unequal || !isContainer(a) || !isContainer(b))) {
    return elementwiseComparison(state_, node.op, a, b);
  }
  if (const auto result = comparison(state_, node.op, a, b)) {
    return boolean(state_, *result);
  }
  switch (node.op) {
    case CompareOp::unequal:
      return newPair(state_, Tag::unequal, a, b);
    case CompareOp::less:
      return newPair(state_, Tag::less, a, b);
    case CompareOp::lessEqual:
      return newPair(state_, Tag::lessEqual, a, b);
    case CompareOp::greater:
      return newPair(state_, Tag::less, b, a);
    default:
      return newPair(state_, Tag::lessEqual, b, a);
  }
}

// true or false, or a container of them; `=` compares here, as it does in a condition.
ALGEB Evaluator::logicalOperand(const Node& node) {
  if (node.kind == NodeKind::compare && node.op == CompareOp::equal) {
    const ALGEB a = value(*node.children[0]);
    const ALGEB b = value(*node.children[1]);
    if (isContainer(a) != isContainer(b)) {
      return elementwiseComparison(state_, node.op, a, b);
    }
    return boolean(state_, truth(state_, newPair(state_, Tag::equation, a, b)));
  }
  const ALGEB v = value(node);
  return isContainer(v) ? v : boolean(state_, truth(state_, v));
}

// and, or, not outside a condition: element by element as soon as a part is a container, and the
// parts behind it are evaluated then; of truth values the first decisive one ends the walk.
ALGEB Evaluator::logicalValue(const Node& node) {
  if (node.kind == NodeKind::logicalNot) {
    const ALGEB v = logicalOperand(*node.children[0]);
    return isContainer(v) ? elementwiseNot(state_, v) : boolean(state_, v == state_.falseValue);
  }
  const bool isAnd = node.kind == NodeKind::logicalAnd;
  ALGEB result = boolean(state_, isAnd);
  for (const Node* child : node.children) {
    const ALGEB v = logicalOperand(*child);
    if (isContainer(result) || isContainer(v)) {
      result = elementwiseLogic(state_, isAnd, result, v);
    } else if (v == boolean(state_, !isAnd)) {
      return v;  // what follows is not evaluated
    }
  }
  return result;
}

// A call.  The arguments lie in this frame, where the collector sees them by looking at the stack:
// a call makes no object but those of its values.
ALGEB Evaluator::callValue(const Node& node) {
  const std::size_t n = node.children.size() - 1;
  // 32 KiB of stack at most.
  if (n > 4096) {
    raise(state_, "too many arguments");
  }
  auto* args = static_cast<ALGEB*>(alloca((n + 1) * sizeof(ALGEB)));
  // The function comes before its arguments, which may assign to its name.  A function that the
  // user has hidden by a value of the same name is not found; a name without either is applied to
  // the values as it is, and stays symbolic.
  const Node& callee = *node.children[0];
  ALGEB function = nullptr;
  if (callee.kind == NodeKind::global) {
    const ALGEB v = nameValue(callee.value);
    function = v != nullptr                            ? global(callee.value)
               : nameFunction(callee.value) != nullptr ? nameFunction(callee.value)
                                                       : callee.value;
  } else {
    function = value(callee);
  }
  // The stack holds what was there before: stale handles would keep their objects alive.
  for (std::size_t i = 0; i < n; ++i) {
    args[i] = nullptr;
  }
  const bool takesEquations = namesArguments(function);
  for (std::size_t i = 0; i < n; ++i) {
    const Node& argument = *node.children[i + 1];
    args[i] =
        takesEquations && isNamedArgument(argument) ? namedArgument(argument) : value(argument);
  }
  if (!isProcedure(function) && !is(function, Tag::name) && !isCallable(function)) {
    if (isNumber(function)) {
      raise(state_, "unable to call the number %1 (a product is written with *)", function);
    }
    raise(state_, "unable to call %1", function);
  }
  // Noted after the arguments, whose own calls have come and gone, so that an error names this one;
  // when it has returned the one around it is noted again.
  const Node* const outer = interpreter(state_).node;
  note(callee);
  const ALGEB result = apply(state_, function, std::span<const ALGEB>(args, n));
  interpreter(state_).node = outer;
  return result;
}

// evalhf(e): e is run in hardware as a whole where it can be, else its value is converted.
ALGEB Evaluator::hardwareValue(const Node& node) {
  // Unless the user has given evalhf another meaning.
  if (nameValue(node.children[0]->value) == nullptr) {
    if (const auto d = runHardware(state_, *node.children[1], slots_)) {
      return newFloat(state_, *d);
    }
    const Node& e = *node.children[1];
    if (e.kind == NodeKind::call && e.children.size() == 3 &&
        e.children[0]->kind == NodeKind::global && text(e.children[0]->value) == "map" &&
        nameValue(e.children[0]->value) == nullptr) {
      const ALGEB f = value(*e.children[1]);
      return hardwareMap(state_, f, value(*e.children[2]));
    }
  }
  return callValue(node);
}

// A closure: the values that its free variables have now, not the variables.
ALGEB Evaluator::makeProcedure(const Node& node) {
  auto procedure = std::make_unique<LanguageProcedure>();
  procedure->program = program_;
  procedure->code = node.function;
  for (const FunctionCode::Capture& capture : node.function->captures) {
    procedure->captured.push_back(slots_[capture.outer]);
  }
  // What a procedure weighs toward the next collection, captured values not counted.
  return newForeign(state_, Tag::procedure, std::move(procedure), 128);
}

// target := v; the value is v, so that assignments can be chained.  The index of an element is
// evaluated after the right side, and what it is taken of last.
ALGEB Evaluator::assign(const Node& target, ALGEB v) {
  if (target.kind == NodeKind::slot) {
    slots_[target.slot] = v;
  } else if (target.kind == NodeKind::global) {
    if (target.value == state_.piName) {
      raise(state_, "unable to assign to %1", target.value);
    }
    // Digits is read by every operation on floats: what could not be read must not be stored.
    if (target.value == state_.digitsName) {
      std::int64_t digits = 0;
      if (!isInteger(v) || !fitsInt64(v, &digits)) {
        raise(state_, "number of digits out of range, received %1", v);
      }
      checkDigits(state_, digits);
    }
    // x := x takes the value away, as clearing does; a name whose value is itself would never end.
    setNameValue(state_, target.value, v == target.value ? nullptr : v);
  } else {
    const Node& base = *target.children[0];
    Handles index(state_);
    for (std::size_t i = 1; i < target.children.size(); ++i) {
      index.push(value(*target.children[i]));
    }
    assignIndexed(state_, value(base), index.span(), v);
  }
  return v;
}

// Arithmetic with an object for each value between, from left to right; flags say which terms are
// subtracted and which factors divide.
ALGEB Evaluator::arithmetic(const Node& node) {
  switch (node.kind) {
    case NodeKind::sum: {
      ALGEB total = value(*node.children[0]);
      // A long sum collects its terms and makes one object in the end; term by term each would copy
      // the sum so far.  For a few the plain way is quicker.
      constexpr std::size_t kLongSum = 8;
      if (node.children.size() >= kLongSum) {
        RunningSum sum(state_, total);
        for (std::size_t i = 1; i < node.children.size(); ++i) {
          const ALGEB term = value(*node.children[i]);
          node.flags[i] ? sum.subtract(term) : sum.add(term);
        }
        return sum.value();
      }
      for (std::size_t i = 1; i < node.children.size(); ++i) {
        const ALGEB term = value(*node.children[i]);
        total = node.flags[i] ? differenceOf(state_, total, term) : sumOf(state_, total, term);
      }
      return total;
    }
    case NodeKind::product: {
      ALGEB total = value(*node.children[0]);
      constexpr std::size_t kLongProduct = 8;
      if (node.children.size() >= kLongProduct) {
        RunningProduct product(state_, total);
        for (std::size_t i = 1; i < node.children.size(); ++i) {
          const ALGEB factor = value(*node.children[i]);
          node.flags[i] ? product.divide(factor) : product.multiply(factor);
        }
        return product.value();
      }
      for (std::size_t i = 1; i < node.children.size(); ++i) {
        const ALGEB factor = value(*node.children[i]);
        total =
            node.flags[i] ? quotientOf(state_, total, factor) : productOf(state_, total, factor);
      }
      return total;
    }
    case NodeKind::negate:
      return negativeOf(state_, value(*node.children[0]));
    case NodeKind::power: {
      const ALGEB base = value(*node.children[0]);
      return powerOf(state_, base, value(*node.children[1]));
    }
    default:
      return state_.null;
  }
}

// The switch over the kinds of nodes.  The three that nearly every walk ends in come first, before
// the look at the stack: they call nothing.  Operands are evaluated from left to right, each into a
// variable of this frame, never as operands of one C++ call, whose order the compiler chooses.
ALGEB Evaluator::value(const Node& node) {
  switch (node.kind) {
    case NodeKind::literal:
      return node.value;
    case NodeKind::slot: {
      const ALGEB v = slots_[node.slot];
      return v == nullptr ? state_.null : v;
    }
    case NodeKind::global:
      return global(node.value);
    default:
      break;
  }
  checkStack(state_);
  switch (node.kind) {
    case NodeKind::sum:
    case NodeKind::product:
    case NodeKind::negate:
    case NodeKind::power: {
      // Floats of few digits without objects, or, where that ends, all of it with objects: the
      // nodes within are not tried once more, which would take time in the square of the depth.
      if (withObjects_) {
        return arithmetic(node);
      }
      if (const ALGEB v = decimalValue(node)) {
        return v;
      }
      withObjects_ = true;
      const ALGEB v = arithmetic(node);
      withObjects_ = false;
      return v;
    }
    case NodeKind::logicalAnd:
    case NodeKind::logicalOr:
    case NodeKind::logicalNot:
      return logicalValue(node);
    case NodeKind::compare:
      return compareValue(node);
    case NodeKind::range: {
      const ALGEB a = value(*node.children[0]);
      return newPair(state_, Tag::range, a, value(*node.children[1]));
    }
    case NodeKind::list:
    case NodeKind::sequence: {
      Handles elements(state_);
      for (const Node* child : node.children) {
        const ALGEB v = value(*child);
        // seq(...) fills the list that it is the only element of.
        if (node.kind == NodeKind::list && node.children.size() == 1 &&
            child->kind == NodeKind::sequenceOver && (isSequence(v) || isNull(v))) {
          for (std::size_t i = 1; i <= countOf(v); ++i) {
            elements.push(operand(v, i));
          }
        } else {
          elements.push(v);
        }
      }
      return node.kind == NodeKind::list ? newList(state_, elements.span())
                                         : sequenceOf(state_, elements.span());
    }
    case NodeKind::index: {
      const ALGEB what = value(*node.children[0]);
      Handles index(state_);
      for (std::size_t i = 1; i < node.children.size(); ++i) {
        index.push(value(*node.children[i]));
      }
      return indexed(state_, what, index.span());
    }
    case NodeKind::call:
      return callValue(node);
    case NodeKind::hardware:
      return hardwareValue(node);
    case NodeKind::procedure:
      return makeProcedure(node);
    case NodeKind::conditional:
      return value(condition(*node.children[0]) ? *node.children[1] : *node.children[2]);
    case NodeKind::sequenceOver:
    case NodeKind::sumOver:
      return overRange(node);
    case NodeKind::clear:
      setNameValue(state_, node.value, nullptr);
      return state_.null;
    case NodeKind::assign:
      return assign(*node.children[0], value(*node.children[1]));
    case NodeKind::ifStatement: {
      const auto& parts = node.children;
      std::size_t i = 0;
      for (; i + 1 < parts.size(); i += 2) {
        if (condition(*parts[i])) {
          return value(*parts[i + 1]);
        }
      }
      return i < parts.size() ? value(*parts[i]) : state_.null;
    }
    case NodeKind::forLoop:
      return forLoop(node);
    case NodeKind::forIn:
      return forIn(node);
    case NodeKind::whileLoop: {
      ALGEB result = state_.null;
      while (condition(*node.children[0]) && pass(*node.children[1], result)) {
      }
      return result;
    }
    case NodeKind::returnStatement: {
      const ALGEB result = node.children.empty() ? state_.null : value(*node.children[0]);
      way_ = Way::returned;
      return result;
    }
    // break and next are names that the user may have given a value, and then they are no
    // statements.
    case NodeKind::leaveLoop:
    case NodeKind::nextPass:
      if (nameValue(node.value) != nullptr) {
        return global(node.value);
      }
      way_ = node.kind == NodeKind::leaveLoop ? Way::leaveLoop : Way::nextPass;
      return state_.null;
    case NodeKind::tryStatement:
      return tryStatement(node);
    // A block ends early when a statement leads elsewhere: whoever can go there, a loop or the call
    // of the procedure, sets way_ back.  quit leaves everything.
    case NodeKind::block: {
      ALGEB result = state_.null;
      for (const Node* child : node.children) {
        result = statement(*child);
        if (way_ != Way::on || interpreter(state_).quit) {
          break;
        }
      }
      return result;
    }
    default:
      return state_.null;
  }
}

}  // namespace vexel
