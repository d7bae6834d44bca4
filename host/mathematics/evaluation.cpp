// Evaluation of objects: names and symbolic expressions anew, in software and in hardware floats.

#include "mathematics/evaluation.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <unordered_set>

#include "mathematics/algebra.hpp"
#include "mathematics/elementary.hpp"
#include "mathematics/known_parts.hpp"
#include "mathematics/summation.hpp"
#include "values/arrays.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

// Digits that a computation carries beyond those asked for.
constexpr int kGuardDigits = 10;
constexpr int kMostGuardDigits = 200;

// A sum, product or power like x of other parts.
ALGEB recombined(State& state, ALGEB x, std::span<const ALGEB> parts) {
  if (is(x, Tag::power)) {
    return powerOf(state, parts[0], parts[1]);
  }
  if (is(x, Tag::sum)) {
    return sumOf(state, parts);
  }
  ALGEB total = parts[0];
  for (const ALGEB part : parts.subspan(1)) {
    total = productOf(state, total, part);
  }
  return total;
}

// x of other parts: f of the elements of a list or sequence, of both sides of an equation, range or
// relation, of the terms of a sum and the factors of a product, in this order; anything else as it
// is.
template <typename F>
ALGEB withParts(State& state, ALGEB x, const F& f) {
  switch (tag(x)) {
    case Tag::list:
    case Tag::sequence: {
      if (isNull(x)) {
        return x;
      }
      Handles elements(state);
      for (std::size_t i = 1; i <= countOf(x); ++i) {
        elements.push(f(element(state, x, i)));
      }
      return is(x, Tag::list) ? newList(state, elements.span())
                              : sequenceOf(state, elements.span());
    }
    case Tag::equation:
    case Tag::range:
    case Tag::less:
    case Tag::lessEqual:
    case Tag::unequal: {
      const ALGEB a = f(operand(x, 1));
      return newPair(state, tag(x), a, f(operand(x, 2)));
    }
    case Tag::sum:
    case Tag::product: {
      Handles parts(state);
      for (std::size_t i = 1; i <= operandCount(x); ++i) {
        parts.push(f(operand(x, i)));
      }
      return recombined(state, x, parts.span());
    }
    default:
      return x;
  }
}

ALGEB floatsOf(State& state, KnownParts& known, ALGEB x);

// x in floats of Digits digits, parts without a value left alone.
ALGEB inFloats(State& state, KnownParts& known, ALGEB x) {
  checkStack(state);
  return known.value(x, [&] { return floatsOf(state, known, x); });
}
ALGEB inFloats(State& state, ALGEB x) {
  KnownParts known(state);
  return inFloats(state, known, x);
}

ALGEB floatsOf(State& state, KnownParts& known, ALGEB x) {
  if (isNumber(x)) {
    return isDoubleFloat(x) ? x : roundToDigits(state, x, state.digits());
  }
  switch (tag(x)) {
    case Tag::name: {
      if (x == state.piName) {
        return piFloat(state, state.digits());
      }
      const ALGEB v = nameValue(x);
      return v == nullptr || v == x ? x : inFloats(state, known, v);
    }
    case Tag::power: {
      const ALGEB base = inFloats(state, known, operand(x, 1));
      const ALGEB exponent = operand(x, 2);
      // A whole exponent stays exact, and so does that of a root.
      const bool kept =
          isInteger(exponent) || (isRational(exponent) && denominator(exponent) == immediate(2));
      return powerOf(state, base, kept ? exponent : inFloats(state, known, exponent));
    }
    case Tag::application: {
      if (isOpenSum(state, x)) {
        return openSumAnew(state, x, [&](ALGEB part) { return inFloats(state, part); });
      }
      Handles args(state);
      for (std::size_t i = 2; i <= operandCount(x); ++i) {
        args.push(inFloats(state, known, operand(x, i)));
      }
      const ALGEB function = operand(x, 1);
      if (args.size() == 1 && is(function, Tag::name) && isReal(args[0])) {
        if (const ElementaryFunction* f = elementaryFunction(text(function))) {
          return elementaryFloat(state, *f, args[0], state.digits());
        }
      }
      return apply(state, function, args.span());
    }
    default:
      return withParts(state, x, [&](ALGEB part) { return inFloats(state, known, part); });
  }
}

ALGEB roundedPartsOf(State& state, KnownParts& known, ALGEB x, int digits);

// x with its numbers rounded to that many digits.
ALGEB roundedParts(State& state, KnownParts& known, ALGEB x, int digits) {
  checkStack(state);
  return known.value(x, [&] { return roundedPartsOf(state, known, x, digits); });
}
ALGEB roundedParts(State& state, ALGEB x, int digits) {
  KnownParts known(state);
  return roundedParts(state, known, x, digits);
}

ALGEB roundedPartsOf(State& state, KnownParts& known, ALGEB x, int digits) {
  if (isNumber(x)) {
    return roundToDigits(state, x, digits);
  }
  const auto rounded = [&](ALGEB part) { return roundedParts(state, known, part, digits); };
  if (is(x, Tag::power)) {
    const ALGEB base = rounded(operand(x, 1));
    const ALGEB exponent = operand(x, 2);
    return powerOf(state, base, isInteger(exponent) ? exponent : rounded(exponent));
  }
  if (is(x, Tag::application)) {
    Handles args(state);
    for (std::size_t i = 2; i <= operandCount(x); ++i) {
      args.push(rounded(operand(x, i)));
    }
    return newApplication(state, operand(x, 1), args.span());
  }
  return withParts(state, x, rounded);
}

// now, or zero where it is a real number that lies very far below what it was before; so the parts
// of a complex number.
ALGEB withoutShrinking(State& state, ALGEB now, ALGEB before) {
  if (isComplex(now)) {
    const ALGEB re = withoutShrinking(state, operand(now, 1), realPart(before));
    return newComplex(state, re, withoutShrinking(state, operand(now, 2), imaginaryPart(before)));
  }
  if (!isReal(now) || !isReal(before)) {
    return now;
  }
  const ALGEB limit = absolute(state, multiply(state, before, newFloat(state, 1e-50)));
  const bool shrunk = compare(state, absolute(state, now), limit) == std::partial_ordering::less;
  return shrunk ? newFloat(state, 0.0) : now;
}

// True when a name in an expression has a value, so that evaluating it may change it.  Parts that
// were looked at before are not looked at again, and depth costs no stack.
bool mentionsValues(State& state, ALGEB x) {
  SettledExpressions& settled = state.settled;
  if (settled.at != settled.namesGivenValues) {
    settled.expressions.clear();
    settled.at = settled.namesGivenValues;
  }
  if (settled.expressions.contains(x)) {
    return false;
  }
  std::vector<ALGEB> open = {x};
  std::unordered_set<ALGEB> seen;
  while (!open.empty()) {
    lookAtInterrupt();
    const ALGEB part = open.back();
    open.pop_back();
    if (is(part, Tag::name)) {
      if (nameValue(part) != nullptr) {
        return true;
      }
    } else if (isExpression(part) && !settled.expressions.contains(part) &&
               seen.insert(part).second) {
      if (isOpenSum(state, part)) {
        const ALGEB range = operand(operand(part, 3), 2);
        open.insert(open.end(), {operand(range, 1), operand(range, 2)});
      }
      for (std::size_t i = 1; i <= operandCount(part); ++i) {
        open.push_back(operand(part, i));
      }
    }
  }
  settled.expressions.merge(seen);
  return false;
}

ALGEB anew(State& state, KnownParts& known, ALGEB x);

// An expression anew from the values of its names.
ALGEB evaluatedParts(State& state, KnownParts& known, ALGEB x) {
  if (!isExpression(x)) {
    return evaluate(state, x);
  }
  checkStack(state);
  return known.value(x, [&] { return anew(state, known, x); });
}

ALGEB anew(State& state, KnownParts& known, ALGEB x) {
  if (isOpenSum(state, x)) {
    return openSumAnew(state, x, [&](ALGEB part) { return evaluate(state, part); });
  }
  const bool application = is(x, Tag::application);
  Handles parts(state);
  bool same = true;
  for (std::size_t i = application ? 2 : 1; i <= operandCount(x); ++i) {
    parts.push(evaluatedParts(state, known, operand(x, i)));
    same = same && parts.back() == operand(x, i);
  }
  if (application) {
    const ALGEB function = operand(x, 1);
    const bool valueless = is(function, Tag::name) && nameValue(function) == nullptr;
    return same && valueless ? x : apply(state, function, parts.span());
  }
  return same ? x : recombined(state, x, parts.span());
}

}  // namespace

ALGEB evaluate(State& state, ALGEB x) {
  if (isImmediate(x)) {
    return x;
  }
  if (is(x, Tag::name)) {
    checkStack(state);
    const ALGEB v = nameValue(x);
    return v == nullptr || v == x ? x : evaluate(state, v);
  }
  if (!isExpression(x) || !mentionsValues(state, x)) {
    return x;
  }
  KnownParts known(state);
  return evaluatedParts(state, known, x);
}

namespace {

ALGEB evalf(State& state, KnownParts& known, ALGEB x, int digits) {
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
    return known.value(x, [&] {
      return withParts(state, x, [&](ALGEB part) { return evalf(state, known, part, digits); });
    });
  }
  if (!isExpression(x)) {
    const DigitsScope scope(state, digits + kGuardDigits);
    return roundedParts(state, inFloats(state, x), digits);
  }
  // Cancellation eats guard digits: more of them until the rounded value stays the same.  A value
  // of zero in disguise, or a part of a complex one, never does: it shrinks with every attempt.
  ALGEB previous = nullptr;
  for (int guard = kGuardDigits;; guard *= 3) {
    ALGEB value = nullptr;
    {
      const DigitsScope scope(state, std::min(digits + guard, kMaxDigits));
      value = inFloats(state, x);
    }
    value = roundedParts(state, value, digits);
    const bool settled = value == previous && !(isNumber(value) && isZero(value));
    if (settled) {
      return value;
    }
    if (guard > kMostGuardDigits) {
      return withoutShrinking(state, value, previous);
    }
    previous = value;
  }
}

}  // namespace

ALGEB evalf(State& state, ALGEB x, int digits) {
  checkDigits(state, digits);
  KnownParts known(state);
  return evalf(state, known, x, digits);
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
        return std::numbers::pi;
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
      lookAtInterrupt();
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
    case Tag::date:
      return static_cast<double>(daysOf(x));
    default:
      return refuse();
  }
}

}  // namespace vexel
