// diff and integrate.

#include <string>

#include "builtins/builtins.hpp"
#include "language/procedure.hpp"
#include "mathematics/algebra.hpp"
#include "mathematics/quadrature.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

constexpr std::int64_t kMostDerivatives = 1000;

std::int64_t times(State& s, ALGEB x) {
  std::int64_t n = 0;
  if (!isInteger(x) || !fitsInt64(x, &n) || n < 0 || n > kMostDerivatives) {
    raise(s, "expected a number of derivatives from 0 to 1000, received: %1", x);
  }
  return n;
}

ALGEB repeatedDerivative(State& s, ALGEB e, ALGEB variable, std::int64_t n) {
  for (std::int64_t i = 0; i < n && e != immediate(0); ++i) {
    e = derivative(s, e, variable);
  }
  return e;
}

ALGEB valueAtName(State& s, ALGEB f, ALGEB variable) {
  const ALGEB args[] = {variable};
  return apply(s, f, args);
}

// f', or the n-th derivative, of a procedure of one parameter, as a procedure.
ALGEB derivedProcedure(State& s, ALGEB f, std::int64_t n) {
  std::string parameter = "x";
  if (is(f, Tag::procedure)) {
    const FunctionCode& code = *static_cast<const LanguageProcedure&>(*foreign(f)).code;
    if (code.names.size() != 1) {
      raise(s, "diff expects a procedure of one parameter, received: %1", f);
    }
    parameter = code.names[0];
  }
  const ALGEB variable = name(s, parameter);
  const ALGEB e = repeatedDerivative(s, valueAtName(s, f, variable), variable, n);
  return s.language->runStatements(s, parameter + " -> " + sourceText(s, e) + ":");
}

// diff(e, x, y, ...), diff(e, x, n, ...), diff(f), diff(f, n).
ALGEB diff(State& s, ALGEB args) {
  const std::size_t count = isNull(args) ? 0 : argumentCount(args);
  const ALGEB first = count == 0 ? args : argument(s, args, 1);
  if (isProcedure(first) && (count == 1 || (count == 2 && isInteger(argument(s, args, 2))))) {
    return derivedProcedure(s, first, count == 1 ? 1 : times(s, argument(s, args, 2)));
  }
  if (count < 2) {
    raise(s, "diff expects an expression and a name, received: %1", args);
  }
  ALGEB e = first;
  for (std::size_t i = 2; i <= count; ++i) {
    const ALGEB variable = argument(s, args, i);
    if (!is(variable, Tag::name)) {
      raise(s, "expected an unassigned name, received: %1", variable);
    }
    e = isProcedure(e) ? valueAtName(s, e, variable) : e;
    const bool repeats = i < count && isInteger(argument(s, args, i + 1));
    e = repeatedDerivative(s, e, variable, repeats ? times(s, argument(s, args, ++i)) : 1);
  }
  return e;
}

}  // namespace

void defineCalculusFunctions(State& state) {
  defineFunction(state, "diff", diff);
  defineFunction(state, "integrate", [](State& s, ALGEB args) {
    if (isNull(args) || argumentCount(args) != 2 || !isRange(argument(s, args, 2))) {
      raise(s,
            "integrate expects a procedure and a range, or an expression and x = a .. b, "
            "received: %1",
            args);
    }
    const ALGEB f = argument(s, args, 1);
    if (!isProcedure(f)) {
      raise(s,
            "integrate expects a procedure and a range, or an expression and x = a .. b, "
            "received: %1",
            args);
    }
    const ALGEB range = argument(s, args, 2);
    return integral(s, f, operand(range, 1), operand(range, 2));
  });
}

}  // namespace vexel
