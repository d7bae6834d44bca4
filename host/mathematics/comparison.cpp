// Comparison of objects: numbers and symbolic constants by value, everything else by its parts.

#include "mathematics/comparison.hpp"

#include "mathematics/evaluation.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

std::optional<bool> comparison(State& state, CompareOp op, ALGEB a, ALGEB b) {
  auto constant = [&](ALGEB x) -> ALGEB {
    if (isReal(x)) {
      return x;
    }
    if (is(x, Tag::name) || isExpression(x)) {
      const ALGEB v = evalf(state, x, state.digits() + 10);
      return isReal(v) ? v : nullptr;
    }
    return nullptr;
  };
  const bool equality = op == CompareOp::equal || op == CompareOp::unequal;
  if (a == b && equality && !(isReal(a) && isUndefined(state, a))) {
    return op == CompareOp::equal;
  }
  if (isDate(a) && isDate(b)) {
    return comparison(state, op, immediate(daysOf(a)), immediate(daysOf(b)));
  }
  if (!equality && is(a, Tag::string) && is(b, Tag::string)) {  // by code point, as bytes are
    return comparison(state, op, immediate(text(a).compare(text(b))), immediate(0));
  }
  const ALGEB x = constant(a);
  const ALGEB y = constant(b);
  if (x != nullptr && y != nullptr) {
    const std::partial_ordering c = compare(state, x, y);
    switch (op) {
      case CompareOp::equal:
        return c == 0;
      case CompareOp::unequal:
        return c != 0;
      case CompareOp::less:
        return c < 0;
      case CompareOp::lessEqual:
        return c <= 0;
      case CompareOp::greater:
        return c > 0;
      default:
        return c >= 0;
    }
  }
  if (!equality) {
    return std::nullopt;
  }
  if (isNumber(a) && isNumber(b)) {
    return equal(state, a, b) == (op == CompareOp::equal);
  }
  // Lists, sequences, ranges and equations are equal when their parts are.
  if (!isImmediate(a) && !isImmediate(b) && tag(a) == tag(b) && length(a) == length(b) &&
      (is(a, Tag::list) || is(a, Tag::sequence) || is(a, Tag::range) || is(a, Tag::equation))) {
    checkStack(state);
    for (std::size_t i = 1; i < length(a); ++i) {
      const ALGEB p = operand(a, i) == nullptr ? state.null : operand(a, i);
      const ALGEB q = operand(b, i) == nullptr ? state.null : operand(b, i);
      const auto same = comparison(state, CompareOp::equal, p, q);
      if (same && !*same) {
        return op == CompareOp::unequal;
      }
      if (!same) {
        return std::nullopt;
      }
    }
    return op == CompareOp::equal;
  }
  if (!isImmediate(a) && !isImmediate(b) && is(a, Tag::foreign) && is(b, Tag::foreign) &&
      foreign(a)->equals(*foreign(b))) {
    return op == CompareOp::equal;
  }
  const bool open = is(a, Tag::name) || isExpression(a) || is(b, Tag::name) || isExpression(b);
  if (open && (isNumber(a) || is(a, Tag::name) || isExpression(a)) &&
      (isNumber(b) || is(b, Tag::name) || isExpression(b))) {
    // Different expressions: as objects they differ.
    return op == CompareOp::unequal;
  }
  return op == CompareOp::unequal;
}

bool truth(State& state, ALGEB x) {
  if (isBoolean(state, x)) {
    return x == state.trueValue;
  }
  if (isRelation(x)) {
    const CompareOp op = is(x, Tag::equation)  ? CompareOp::equal
                         : is(x, Tag::unequal) ? CompareOp::unequal
                         : is(x, Tag::less)    ? CompareOp::less
                                               : CompareOp::lessEqual;
    if (const auto result = comparison(state, op, operand(x, 1), operand(x, 2))) {
      return *result;
    }
  }
  raise(state, "expected true or false, received: %1", x);
}

}  // namespace vexel
