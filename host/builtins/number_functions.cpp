// floor and its like, abs, min and max: functions of numbers whose values are exact.

#include <cmath>
#include <compare>

#include "builtins/builtins.hpp"
#include "mathematics/algebra.hpp"
#include "mathematics/elementary.hpp"
#include "mathematics/evaluation.hpp"
#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

void defineRounding(State& state, const char* functionName, Rounding rounding,
                    double (*hardware)(double)) {
  defineFunction(
      state, functionName,
      [rounding, functionName](State& s, ALGEB args) {
        const ALGEB x = oneArgument(s, args, "expected one argument, received: %1");
        if (isReal(x)) {
          return toInteger(s, x, rounding);
        }
        // A symbolic constant has a nearest float, which settles it unless it is very near a whole.
        const ALGEB value = evalf(s, x, s.digits() + 10);
        return isReal(value) ? toInteger(s, value, rounding) : applicationOf(s, functionName, x);
      },
      [hardware](State&, int, const double* a) { return hardware(a[1]); });
}

// What min and max compare: all arguments, or the elements of a single list or array.
void compared(State& s, ALGEB args, Handles& all) {
  if (!isNull(args) && argumentCount(args) == 1) {
    const ALGEB x = argument(s, args, 1);
    if (isArray(x) || isList(x)) {
      elementsOf(s, x, all);
      return;
    }
  }
  for (std::size_t i = 1; i <= argumentCount(args); ++i) {
    all.push(argument(s, args, i));
  }
}

// min and max: undefined if any is; symbolic while any is.
void defineExtreme(State& state, const char* functionName, bool largest) {
  defineFunction(
      state, functionName,
      [functionName, largest](State& s, ALGEB args) -> ALGEB {
        ALGEB best = nullptr;
        Handles all(s);
        compared(s, args, all);
        if (all.empty()) {
          raise(s, "expected numbers, received: %1", args);
        }
        for (const ALGEB x : all.span()) {
          if (!isNumber(x) && !is(x, Tag::name) && !isExpression(x)) {
            raise(s, "expected numbers, received: %1", args);
          }
        }
        for (const ALGEB x : all.span()) {
          const ALGEB value = isReal(x) ? x : evalf(s, x, s.digits());
          if (!isReal(value)) {
            return newApplication(s, name(s, functionName), all.span());
          }
          if (isUndefined(s, value)) {
            return value;
          }
          if (best == nullptr) {
            best = x;
            continue;
          }
          const ALGEB bestValue = isReal(best) ? best : evalf(s, best, s.digits());
          const auto c = compare(s, value, bestValue);
          if (c == (largest ? std::partial_ordering::greater : std::partial_ordering::less)) {
            best = x;
          }
        }
        return best;
      },
      [largest](State&, int n, const double* a) {
        double best = a[1];
        for (int i = 2; i <= n; ++i) {
          if (a[i] != a[i]) {
            return a[i];
          }
          best = (largest ? a[i] > best : a[i] < best) ? a[i] : best;
        }
        return best;
      });
}

}  // namespace

void defineNumberFunctions(State& state) {
  defineRounding(state, "floor", Rounding::floor, std::floor);
  defineRounding(state, "ceil", Rounding::ceiling, std::ceil);
  defineRounding(state, "round", Rounding::nearest, std::round);
  defineRounding(state, "trunc", Rounding::truncate, std::trunc);
  defineExtreme(state, "min", false);
  defineExtreme(state, "max", true);
  defineFunction(
      state, "abs",
      [](State& s, ALGEB args) {
        const ALGEB x = oneArgument(s, args, "expected one argument, received: %1");
        if (isReal(x)) {
          return absolute(s, x);
        }
        if (isComplex(x)) {
          const ALGEB squares = add(s, multiply(s, operand(x, 1), operand(x, 1)),
                                    multiply(s, operand(x, 2), operand(x, 2)));
          return applyElementary(s, *elementaryFunction("sqrt"), squares);
        }
        return applicationOf(s, "abs", x);
      },
      [](State&, int, const double* a) { return std::fabs(a[1]); });
}

}  // namespace vexel
