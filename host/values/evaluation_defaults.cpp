// What the core does by itself where no language is linked in: numbers and names have values, and
// nothing can be parsed.  The language's definitions take the place of these weak ones.

#include "values/errors.hpp"
#include "values/evaluation.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

#define VEXEL_DEFAULT __attribute__((weak))

namespace vexel {

VEXEL_DEFAULT void initialiseLanguage(State& state) {
  defineFunction(state, "evalf", [](State& s, ALGEB args) { return evalf(s, args, s.digits()); });
}

VEXEL_DEFAULT ALGEB evaluate(State&, ALGEB x) {
  return is(x, Tag::name) && nameValue(x) != nullptr ? nameValue(x) : x;
}

VEXEL_DEFAULT ALGEB callProcedure(State& state, ALGEB procedure, ALGEB) {
  raise(state, "%1 cannot be called", procedure);
}

VEXEL_DEFAULT double evaluateHardware(State& state, ALGEB x) {
  ALGEB value = evalf(state, evaluate(state, x), 30);
  if (!isReal(value)) {
    raise(state, "%1 has no hardware floating-point value", x);
  }
  return toDouble(state, value);
}

VEXEL_DEFAULT double callHardware(State& state, ALGEB procedure, int, const double*) {
  raise(state, "%1 has no hardware floating-point form", procedure);
}

VEXEL_DEFAULT ALGEB runStatements(State& state, std::string_view text) {
  if (text.starts_with("Float(undefined)")) {
    return state.undefined;
  }
  raise(state, "no language to run %1", string(state, text));
}

VEXEL_DEFAULT ALGEB evalf(State& state, ALGEB x, int digits) {
  if (isNumber(x)) {
    return roundToDigits(state, x, digits);
  }
  if (x == state.piName) {
    RealNumber pi(bitsForDigits(state, digits));
    mpfr_const_pi(pi.get(), MPFR_RNDN);
    return fromMpfr(state, pi.get(), digits);
  }
  return x;
}

VEXEL_DEFAULT std::string jsonText(State& state, ALGEB x) { return sourceText(state, x); }

}  // namespace vexel
