// Arithmetic on floats of few digits as a whole, without an object for each value between: the same
// operations in the same order, each rounded to Digits, as with objects.
//
// The walk reads literals, variables and names and calls nothing, so it may give up anywhere: the
// caller starts again with objects, and nothing has happened twice.  It gives up where the value is
// not a float of at most 18 digits, where two integers meet (their quotient is a fraction, which
// stays exact), at zero, which is exact or has a sign, and far from 1, where a float's exponent
// might run out of range.

#include <cstdlib>

#include "language/evaluator_frame.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"

namespace vexel {

namespace {

// Far from where a float's exponent is out of range.
constexpr std::int64_t kLargestExponent = 1000;
// Longer chains are summed in a way of their own.
constexpr std::size_t kLongChain = 8;

bool isPlain(const SmallDecimal& d) {
  return d.mantissa != 0 && std::abs(d.exponent) < kLargestExponent;
}

}  // namespace

// A variable that holds nothing yet is a null pointer here; the evaluator says what it stands for.
bool Evaluator::decimalOf(ALGEB x, Decimals& result) {
  result.isExact = isInteger(x);
  return x != nullptr && (isImmediate(x) || isFloat(x)) && smallDecimalOf(x, result.value) &&
         isPlain(result.value);
}

// Sums and products from left to right.  The sum of an integer and a float is a float; two integers
// end the walk, wherever they meet: in 1 + 2 + 0.5 the first sum is exact and not rounded to
// Digits.
bool Evaluator::decimalChain(const Node& node, Decimals& total) {
  if (node.children.size() >= kLongChain || !decimals(*node.children[0], total)) {
    return false;
  }
  for (std::size_t i = 1; i < node.children.size(); ++i) {
    Decimals part{{}, total.digits};
    if (!decimals(*node.children[i], part) || (total.isExact && part.isExact)) {
      return false;
    }
    if (node.kind == NodeKind::product) {
      total.value = node.flags[i] ? divideSmall(total.value, part.value, total.digits)
                                  : multiplySmall(total.value, part.value, total.digits);
    } else {
      part.value.mantissa = node.flags[i] ? -part.value.mantissa : part.value.mantissa;
      const SmallDecimal before = total.value;
      if (!addSmall(before, part.value, total.digits, total.value)) {
        return false;
      }
    }
    total.isExact = false;
    if (!isPlain(total.value)) {
      return false;
    }
  }
  return true;
}

// The exponent of a power is a literal from 1 to 16; of an integer's power, which is exact,
// nothing.
bool Evaluator::decimals(const Node& node, Decimals& result) {
  switch (node.kind) {
    case NodeKind::literal:
      return decimalOf(node.value, result);
    case NodeKind::slot:
      return decimalOf(slots_[node.slot], result);
    case NodeKind::global:
      return decimalOf(nameValue(node.value), result);
    case NodeKind::negate:
      checkStack(state_);
      if (!decimals(*node.children[0], result)) {
        return false;
      }
      result.value.mantissa = -result.value.mantissa;
      return true;
    case NodeKind::power: {
      checkStack(state_);
      const Node& exponent = *node.children[1];
      const bool isSmall = exponent.kind == NodeKind::literal && isImmediate(exponent.value) &&
                           immediateValue(exponent.value) >= 1 &&
                           immediateValue(exponent.value) <= kMostSmallPower;
      return isSmall && decimals(*node.children[0], result) && !result.isExact &&
             powerSmall(result.value, static_cast<int>(immediateValue(exponent.value)),
                        result.digits, result.value) &&
             isPlain(result.value);
    }
    case NodeKind::sum:
    case NodeKind::product:
      checkStack(state_);
      return decimalChain(node, result);
    default:
      return false;
  }
}

// An integer by itself, such as a variable's, is not arithmetic's result: it is left to the caller,
// lest it become a float.
ALGEB Evaluator::decimalValue(const Node& node) {
  Decimals result{{}, state_.digits()};
  if (result.digits > kSmallDigits || !decimals(node, result) || result.isExact) {
    return nullptr;
  }
  return newFloat(state_, static_cast<std::int64_t>(result.value.mantissa), result.value.exponent);
}

}  // namespace vexel
