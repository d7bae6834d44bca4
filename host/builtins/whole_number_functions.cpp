// factorial, binomial, gcd, lcm and mod.

#include <cmath>

#include "builtins/builtins.hpp"
#include "mathematics/whole_numbers.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

// The divisor or multiple of all arguments, or of the elements of a list or array.
template <typename Combine>
ALGEB ofIntegers(State& s, const char* functionName, ALGEB args, Combine combine) {
  Handles all(s);
  if (!isNull(args) && argumentCount(args) == 1) {
    elementsOf(s, args, all);
  } else {
    for (std::size_t i = 1; !isNull(args) && i <= argumentCount(args); ++i) {
      all.push(argument(s, args, i));
    }
  }
  if (all.empty()) {
    raise(s, std::string(functionName) + " expects integers, received: %1", args);
  }
  bool isOpen = false;
  for (const ALGEB x : all.span()) {
    isOpen = isOpen || is(x, Tag::name) || isExpression(x);
    if (!isInteger(x) && !is(x, Tag::name) && !isExpression(x)) {
      raise(s, std::string(functionName) + " expects integers, received: %1", x);
    }
  }
  if (isOpen) {
    return newApplication(s, name(s, functionName), all.span());
  }
  ALGEB result = absolute(s, all[0]);
  for (const ALGEB x : all.span().subspan(1)) {
    lookAtInterrupt();
    result = combine(s, result, x);
  }
  return result;
}

ALGEB leastCommonMultiple(State& s, ALGEB a, ALGEB b) {
  if (isZero(a) || isZero(b)) {
    return immediate(0);
  }
  return absolute(s, multiply(s, integerQuotient(s, a, gcd(s, a, b)), b));
}

void requireTwo(State& s, ALGEB args, const char* message) {
  if (isNull(args) || argumentCount(args) != 2) {
    raise(s, message, args);
  }
}

}  // namespace

void defineWholeNumberFunctions(State& state) {
  defineFunction(
      state, "factorial",
      [](State& s, ALGEB args) {
        return factorialOf(s, oneArgument(s, args, "factorial expects one argument, received: %1"));
      },
      [](State&, int, const double* a) { return std::tgamma(a[1] + 1); });
  defineFunction(state, "binomial", [](State& s, ALGEB args) {
    requireTwo(s, args, "binomial expects two arguments, received: %1");
    return binomialOf(s, argument(s, args, 1), argument(s, args, 2));
  });
  defineFunction(
      state, "mod",
      [](State& s, ALGEB args) {
        requireTwo(s, args, "mod expects two arguments, received: %1");
        return moduloOf(s, argument(s, args, 1), argument(s, args, 2));
      },
      [](State& s, int n, const double* a) {
        if (n != 2) {
          raise(s, "mod expects two arguments");
        }
        return hardwareModulo(a[1], a[2]);
      });
  defineFunction(state, "gcd",
                 [](State& s, ALGEB args) { return ofIntegers(s, "gcd", args, gcd); });
  defineFunction(state, "lcm", [](State& s, ALGEB args) {
    return ofIntegers(s, "lcm", args, leastCommonMultiple);
  });
}

}  // namespace vexel
