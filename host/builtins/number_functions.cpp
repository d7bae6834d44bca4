// floor and its like, abs, min and max: functions of numbers whose values are exact.

#include <cmath>
#include <compare>

#include "builtins/builtins.hpp"
#include "builtins/collections.hpp"
#include "builtins/functions/objects.hpp"
#include "mathematics/algebra.hpp"
#include "mathematics/elementary.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/evaluation.hpp"
#include "values/arrays.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

ALGEB rounded(State& s, const char* functionName, Rounding rounding, double (*hardware)(double),
              ALGEB x) {
  if (isReal(x)) {
    return toInteger(s, x, rounding);
  }
  if (isContainer(x)) {
    if (const ALGEB whole = elementwiseWhole(s, x, false)) {
      return whole;
    }
    return elementwiseFunction(s, x, hardware, [=, &s](ALGEB e) {
      return rounded(s, functionName, rounding, hardware, e);
    });
  }
  // A symbolic constant has a nearest float, which settles it unless it is very near a whole.
  const ALGEB value = evalf(s, x, s.digits() + 10);
  return isReal(value) ? toInteger(s, value, rounding) : applicationOf(s, functionName, x);
}

void defineRounding(State& state, const char* functionName, Rounding rounding,
                    double (*hardware)(double)) {
  defineFunction(
      state, functionName,
      [=](State& s, ALGEB args) {
        return rounded(s, functionName, rounding, hardware,
                       oneArgument(s, args, "expected one argument, received: %1"));
      },
      [hardware](State&, int, const double* a) { return hardware(a[1]); });
}

ALGEB absoluteValue(State& s, ALGEB x) {
  if (isReal(x)) {
    return absolute(s, x);
  }
  if (isContainer(x)) {
    if (const ALGEB whole = elementwiseWhole(s, x, true)) {
      return whole;
    }
    return elementwiseFunction(s, x, std::fabs, [&s](ALGEB e) { return absoluteValue(s, e); });
  }
  if (isComplex(x)) {
    const ALGEB squares = add(s, multiply(s, operand(x, 1), operand(x, 1)),
                              multiply(s, operand(x, 2), operand(x, 2)));
    return applyElementary(s, *elementaryFunction("sqrt"), squares);
  }
  return applicationOf(s, "abs", x);
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

// The first or last of texts, by code point, or of dates; null for anything else.
ALGEB extremeOfTextsOrDates(const Handles& all, bool largest) {
  ALGEB best = all[0];
  for (const ALGEB x : all.span()) {
    if (is(x, Tag::date) && is(best, Tag::date)) {
      best = (largest ? daysOf(x) > daysOf(best) : daysOf(x) < daysOf(best)) ? x : best;
    } else if (is(x, Tag::string) && is(best, Tag::string)) {
      best = (largest ? text(x) > text(best) : text(x) < text(best)) ? x : best;
    } else {
      return nullptr;
    }
  }
  return best;
}

// min and max: undefined if any is; symbolic while any is.
void defineExtreme(State& state, const char* functionName, bool largest) {
  defineFunction(
      state, functionName,
      [functionName, largest](State& s, ALGEB args) -> ALGEB {
        if (isMachineArray(args) && arrayOf(args).count > 0) {
          return machineExtreme(s, args, largest);
        }
        if (const ALGEB held = resultOfState(s, args, functionName)) {
          return held;
        }
        ALGEB best = nullptr;
        Handles all(s);
        compared(s, args, all);
        if (all.empty()) {
          raise(s, "expected numbers, received: %1", args);
        }
        if (const ALGEB found = extremeOfTextsOrDates(all, largest)) {
          return found;
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
        return absoluteValue(s, oneArgument(s, args, "expected one argument, received: %1"));
      },
      [](State&, int, const double* a) { return std::fabs(a[1]); });
}

}  // namespace vexel
