// Evaluation of objects: names and symbolic expressions anew, in software and in hardware floats,
// and comparison.

#include <algorithm>
#include <cmath>

#include "core/arrays.hpp"
#include "core/errors.hpp"
#include "core/evaluation.hpp"
#include "core/numbers.hpp"
#include "core/objects.hpp"
#include "language/algebra.hpp"
#include "language/elementary.hpp"
#include "language/evaluator.hpp"

namespace vexel {

namespace {

// Calls f on an application by its name: the value or function of that name, or the application
// again.
ALGEB reapply(State& state, ALGEB function, std::span<const ALGEB> args) {
  return apply(state, function, args);
}

// Digits that a computation carries beyond those asked for.
constexpr int kGuardDigits = 10;
constexpr int kMostGuardDigits = 200;

// Sets Digits for as long as it lives.
class DigitsScope {
 public:
  DigitsScope(State& state, int digits) : state_(state), saved_(nameValue(state.digitsName)) {
    setNameValue(state.digitsName, immediate(digits));
  }
  DigitsScope(const DigitsScope&) = delete;
  DigitsScope& operator=(const DigitsScope&) = delete;
  ~DigitsScope() { setNameValue(state_.digitsName, saved_); }

 private:
  State& state_;
  ALGEB saved_;
};

// x in floats of Digits digits, parts without a value left alone.
ALGEB inFloats(State& state, ALGEB x) {
  checkStack(state);
  if (isNumber(x)) {
    return isDoubleFloat(x) ? x : roundToDigits(state, x, state.digits());
  }
  switch (tag(x)) {
    case Tag::name: {
      if (x == state.piName) {
        return piFloat(state, state.digits());
      }
      const ALGEB v = nameValue(x);
      return v == nullptr || v == x ? x : inFloats(state, v);
    }
    case Tag::sum:
    case Tag::product: {
      ALGEB total = inFloats(state, operand(x, 1));
      for (std::size_t i = 2; i <= operandCount(x); ++i) {
        const ALGEB part = inFloats(state, operand(x, i));
        total = is(x, Tag::sum) ? sumOf(state, total, part) : productOf(state, total, part);
      }
      return total;
    }
    case Tag::power: {
      const ALGEB base = inFloats(state, operand(x, 1));
      const ALGEB exponent = operand(x, 2);
      // A whole exponent stays exact.
      return powerOf(state, base, isInteger(exponent) ? exponent : inFloats(state, exponent));
    }
    case Tag::application: {
      Handles args(state);
      for (std::size_t i = 2; i <= operandCount(x); ++i) {
        args.push(inFloats(state, operand(x, i)));
      }
      const ALGEB function = operand(x, 1);
      if (args.size() == 1 && is(function, Tag::name) && isReal(args[0])) {
        if (const ElementaryFunction* f = elementaryFunction(text(function))) {
          return elementaryFloat(state, *f, args[0], state.digits());
        }
      }
      return reapply(state, function, args.span());
    }
    case Tag::list: {
      Handles elements(state);
      for (std::size_t i = 1; i <= countOf(x); ++i) {
        elements.push(inFloats(state, element(state, x, i)));
      }
      return newList(state, elements.span());
    }
    case Tag::sequence: {
      if (isNull(x)) {
        return x;
      }
      Handles elements(state);
      for (std::size_t i = 1; i <= countOf(x); ++i) {
        elements.push(inFloats(state, element(state, x, i)));
      }
      return sequenceOf(state, elements.span());
    }
    case Tag::equation:
    case Tag::range:
    case Tag::less:
    case Tag::lessEqual:
    case Tag::unequal: {
      const ALGEB a = inFloats(state, operand(x, 1));
      return newPair(state, tag(x), a, inFloats(state, operand(x, 2)));
    }
    default:
      return x;
  }
}

ALGEB roundedParts(State& state, ALGEB x, int digits) {
  checkStack(state);
  if (isNumber(x)) {
    return roundToDigits(state, x, digits);
  }
  switch (isImmediate(x) ? Tag::integer : tag(x)) {
    case Tag::list:
    case Tag::sequence: {
      if (isNull(x)) {
        return x;
      }
      Handles elements(state);
      for (std::size_t i = 1; i <= countOf(x); ++i) {
        elements.push(roundedParts(state, element(state, x, i), digits));
      }
      return is(x, Tag::list) ? newList(state, elements.span())
                              : sequenceOf(state, elements.span());
    }
    case Tag::equation:
    case Tag::range: {
      const ALGEB a = roundedParts(state, operand(x, 1), digits);
      return newPair(state, tag(x), a, roundedParts(state, operand(x, 2), digits));
    }
    case Tag::sum:
    case Tag::product: {
      ALGEB total = roundedParts(state, operand(x, 1), digits);
      for (std::size_t i = 2; i <= operandCount(x); ++i) {
        const ALGEB part = roundedParts(state, operand(x, i), digits);
        total = is(x, Tag::sum) ? sumOf(state, total, part) : productOf(state, total, part);
      }
      return total;
    }
    case Tag::power: {
      const ALGEB base = roundedParts(state, operand(x, 1), digits);
      const ALGEB exponent = operand(x, 2);
      return powerOf(state, base,
                     isInteger(exponent) ? exponent : roundedParts(state, exponent, digits));
    }
    case Tag::application: {
      Handles args(state);
      for (std::size_t i = 2; i <= operandCount(x); ++i) {
        args.push(roundedParts(state, operand(x, i), digits));
      }
      return newApplication(state, operand(x, 1), args.span());
    }
    default:
      return x;
  }
}

}  // namespace

ALGEB evaluate(State& state, ALGEB x) {
  if (isImmediate(x)) {
    return x;
  }
  checkStack(state);
  switch (tag(x)) {
    case Tag::name: {
      const ALGEB v = nameValue(x);
      return v == nullptr || v == x ? x : evaluate(state, v);
    }
    case Tag::sum:
    case Tag::product: {
      ALGEB total = evaluate(state, operand(x, 1));
      for (std::size_t i = 2; i <= operandCount(x); ++i) {
        const ALGEB part = evaluate(state, operand(x, i));
        total = is(x, Tag::sum) ? sumOf(state, total, part) : productOf(state, total, part);
      }
      return total;
    }
    case Tag::power: {
      const ALGEB base = evaluate(state, operand(x, 1));
      return powerOf(state, base, evaluate(state, operand(x, 2)));
    }
    case Tag::application: {
      Handles args(state);
      bool same = true;
      for (std::size_t i = 2; i <= operandCount(x); ++i) {
        args.push(evaluate(state, operand(x, i)));
        same = same && args.back() == operand(x, i);
      }
      const ALGEB function = operand(x, 1);
      const bool valueless = is(function, Tag::name) && nameValue(function) == nullptr;
      return same && valueless ? x : reapply(state, function, args.span());
    }
    default:
      return x;
  }
}

ALGEB evalf(State& state, ALGEB x, int digits) {
  checkDigits(state, digits);
  if (isNumber(x)) {
    return roundToDigits(state, x, digits);
  }
  if (x == state.piName) {
    return piFloat(state, digits);
  }
  if (is(x, Tag::application) && operandCount(x) == 2 && is(operand(x, 1), Tag::name) &&
      isReal(operand(x, 2))) {
    if (const ElementaryFunction* f = elementaryFunction(text(operand(x, 1)))) {
      return elementaryFloat(state, *f, operand(x, 2), digits);
    }
  }
  if (isList(x) || (isSequence(x) && !isNull(x))) {
    checkStack(state);
    Handles elements(state);
    for (std::size_t i = 1; i <= countOf(x); ++i) {
      elements.push(evalf(state, element(state, x, i), digits));
    }
    return isList(x) ? newList(state, elements.span()) : sequenceOf(state, elements.span());
  }
  if (!isExpression(x)) {
    const DigitsScope scope(state, digits + kGuardDigits);
    return roundedParts(state, inFloats(state, x), digits);
  }
  // Cancellation eats guard digits: more of them until the rounded value stays the same.  A value
  // of zero in disguise never does; what is left of it then is returned.
  ALGEB previous = nullptr;
  for (int guard = kGuardDigits;; guard *= 3) {
    ALGEB value = nullptr;
    {
      const DigitsScope scope(state, std::min(digits + guard, kMaxDigits));
      value = inFloats(state, x);
    }
    value = roundedParts(state, value, digits);
    const bool settled = value == previous && !(isNumber(value) && isZero(value));
    if (settled || guard > kMostGuardDigits) {
      return value;
    }
    previous = value;
  }
}

double evaluateHardware(State& state, ALGEB x) {
  checkStack(state);
  auto refuse = [&]() -> double { raise(state, "no hardware floating-point value: %1", x); };
  if (isReal(x)) {
    const double d = toDouble(state, x);
    return std::isinf(d) && !isInfinite(state, x) ? refuse() : d;
  }
  if (x == nullptr || isImmediate(x)) {
    return refuse();
  }
  switch (tag(x)) {
    case Tag::name: {
      if (x == state.piName) {
        return 3.14159265358979323846;
      }
      const ALGEB v = nameValue(x);
      return v == nullptr || v == x ? refuse() : evaluateHardware(state, v);
    }
    case Tag::sum:
    case Tag::product: {
      double total = evaluateHardware(state, operand(x, 1));
      for (std::size_t i = 2; i <= operandCount(x); ++i) {
        const double part = evaluateHardware(state, operand(x, i));
        total = is(x, Tag::sum) ? total + part : total * part;
      }
      return total;
    }
    case Tag::power: {
      const double base = evaluateHardware(state, operand(x, 1));
      return std::pow(base, evaluateHardware(state, operand(x, 2)));
    }
    case Tag::application: {
      std::vector<double> args(operandCount(x), 0.0);
      for (std::size_t i = 2; i <= operandCount(x); ++i) {
        args[i - 1] = evaluateHardware(state, operand(x, i));
      }
      const ALGEB f = operand(x, 1);
      if (is(f, Tag::name) && nameValue(f) == nullptr && nameFunction(f) == nullptr) {
        return refuse();
      }
      return applyHardware(state, f, static_cast<int>(args.size()) - 1, args.data());
    }
    default:
      return refuse();
  }
}

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
