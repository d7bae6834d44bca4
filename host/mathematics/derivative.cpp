// Derivatives of symbolic expressions by the usual rules.

#include <string>
#include <string_view>

#include "mathematics/algebra.hpp"
#include "mathematics/known_parts.hpp"
#include "mathematics/summation.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

ALGEB square(State& s, ALGEB u) { return powerOf(s, u, immediate(2)); }
ALGEB reciprocal(State& s, ALGEB u) { return powerOf(s, u, immediate(-1)); }
ALGEB root(State& s, ALGEB u) { return applicationOf(s, "sqrt", u); }
ALGEB oneMinusSquare(State& s, ALGEB u) { return differenceOf(s, immediate(1), square(s, u)); }
ALGEB onePlusSquare(State& s, ALGEB u) { return sumOf(s, immediate(1), square(s, u)); }
// c exp(-u^2), c = 2/sqrt(pi) with a sign
ALGEB bell(State& s, ALGEB u, int sign) {
  return quotientOf(
      s, productOf(s, immediate(2 * sign), applicationOf(s, "exp", negativeOf(s, square(s, u)))),
      root(s, s.piName));
}

// f'(u) for the functions that have one in closed form.
struct Rule {
  std::string_view name;
  ALGEB (*derivative)(State&, ALGEB u);
};

constexpr Rule kRules[] = {
    {"sin", [](State& s, ALGEB u) { return applicationOf(s, "cos", u); }},
    {"cos", [](State& s, ALGEB u) { return negativeOf(s, applicationOf(s, "sin", u)); }},
    {"tan", [](State& s,
               ALGEB u) { return sumOf(s, immediate(1), square(s, applicationOf(s, "tan", u))); }},
    {"arcsin", [](State& s, ALGEB u) { return reciprocal(s, root(s, oneMinusSquare(s, u))); }},
    {"arccos",
     [](State& s, ALGEB u) { return negativeOf(s, reciprocal(s, root(s, oneMinusSquare(s, u)))); }},
    {"arctan", [](State& s, ALGEB u) { return reciprocal(s, onePlusSquare(s, u)); }},
    {"sinh", [](State& s, ALGEB u) { return applicationOf(s, "cosh", u); }},
    {"cosh", [](State& s, ALGEB u) { return applicationOf(s, "sinh", u); }},
    {"tanh",
     [](State& s, ALGEB u) {
       return differenceOf(s, immediate(1), square(s, applicationOf(s, "tanh", u)));
     }},
    {"arcsinh", [](State& s, ALGEB u) { return reciprocal(s, root(s, onePlusSquare(s, u))); }},
    {"arccosh",
     [](State& s, ALGEB u) {
       return reciprocal(s, root(s, differenceOf(s, square(s, u), immediate(1))));
     }},
    {"arctanh", [](State& s, ALGEB u) { return reciprocal(s, oneMinusSquare(s, u)); }},
    {"exp", [](State& s, ALGEB u) { return applicationOf(s, "exp", u); }},
    {"ln", [](State& s, ALGEB u) { return reciprocal(s, u); }},
    {"log", [](State& s, ALGEB u) { return reciprocal(s, u); }},
    {"log10",
     [](State& s, ALGEB u) {
       return reciprocal(s, productOf(s, u, applicationOf(s, "ln", immediate(10))));
     }},
    {"sqrt",
     [](State& s, ALGEB u) { return reciprocal(s, productOf(s, immediate(2), root(s, u))); }},
    {"abs", [](State& s, ALGEB u) { return quotientOf(s, u, applicationOf(s, "abs", u)); }},
    {"erf", [](State& s, ALGEB u) { return bell(s, u, 1); }},
    {"erfc", [](State& s, ALGEB u) { return bell(s, u, -1); }},
};

// "arcsin" for "asin" and its like.
std::string longName(std::string_view function) {
  for (const std::string_view inverse : {"asin", "acos", "atan", "asinh", "acosh", "atanh"}) {
    if (function == inverse) {
      return "arc" + std::string(function.substr(1));
    }
  }
  return std::string(function);
}

ALGEB slope(State& state, KnownParts& known, ALGEB x, ALGEB variable);

ALGEB applicationSlope(State& state, KnownParts& known, ALGEB x, ALGEB variable) {
  if (operandCount(x) == 2 && is(operand(x, 1), Tag::name)) {
    const ALGEB u = operand(x, 2);
    const ALGEB inner = slope(state, known, u, variable);
    if (inner == immediate(0)) {
      return inner;
    }
    const std::string function = longName(text(operand(x, 1)));
    for (const Rule& rule : kRules) {
      if (rule.name == function) {
        return productOf(state, rule.derivative(state, u), inner);
      }
    }
  } else if (isOpenSum(state, x)) {
    const ALGEB k = operand(operand(x, 3), 1);
    const ALGEB range = operand(operand(x, 3), 2);
    if (variable == k) {
      return immediate(0);
    }
    if (slope(state, known, operand(range, 1), variable) == immediate(0) &&
        slope(state, known, operand(range, 2), variable) == immediate(0)) {
      return symbolicSum(state, slope(state, known, operand(x, 2), variable), k, operand(range, 1),
                         operand(range, 2));
    }
  } else {
    bool constant = true;
    for (std::size_t i = 2; i <= operandCount(x); ++i) {
      constant = constant && slope(state, known, operand(x, i), variable) == immediate(0);
    }
    if (constant) {
      return immediate(0);
    }
  }
  const ALGEB operands[] = {x, variable};
  return newApplication(state, name(state, "diff"), operands);
}

ALGEB slopeOf(State& state, KnownParts& known, ALGEB x, ALGEB variable) {
  if (isNumber(x)) {
    return immediate(0);
  }
  if (is(x, Tag::name)) {
    return immediate(x == variable ? 1 : 0);
  }
  switch (isImmediate(x) ? Tag::integer : tag(x)) {
    case Tag::sum: {
      RunningSum result(state, immediate(0));
      for (std::size_t i = 1; i <= operandCount(x); ++i) {
        result.add(slope(state, known, operand(x, i), variable));
      }
      return result.value();
    }
    case Tag::product: {
      ALGEB result = immediate(0);
      for (std::size_t i = 1; i <= operandCount(x); ++i) {
        ALGEB term = slope(state, known, operand(x, i), variable);
        for (std::size_t j = 1; j <= operandCount(x) && term != immediate(0); ++j) {
          if (j != i) {
            term = productOf(state, term, operand(x, j));
          }
        }
        result = sumOf(state, result, term);
      }
      return result;
    }
    case Tag::power: {
      const ALGEB base = operand(x, 1);
      const ALGEB exponent = operand(x, 2);
      const ALGEB baseSlope = slope(state, known, base, variable);
      const ALGEB exponentSlope = slope(state, known, exponent, variable);
      ALGEB result = immediate(0);
      if (baseSlope != immediate(0)) {
        result =
            productOf(state,
                      productOf(state, exponent,
                                powerOf(state, base, differenceOf(state, exponent, immediate(1)))),
                      baseSlope);
      }
      if (exponentSlope != immediate(0)) {
        result = sumOf(
            state, result,
            productOf(state, productOf(state, x, applicationOf(state, "ln", base)), exponentSlope));
      }
      return result;
    }
    case Tag::application:
      return applicationSlope(state, known, x, variable);
    default:
      raise(state, "unable to differentiate %1", x);
  }
}

ALGEB slope(State& state, KnownParts& known, ALGEB x, ALGEB variable) {
  checkStack(state);
  return known.value(x, [&] { return slopeOf(state, known, x, variable); });
}

}  // namespace

ALGEB derivative(State& state, ALGEB x, ALGEB variable) {
  KnownParts known(state);
  return slope(state, known, x, variable);
}

}  // namespace vexel
