// Elementary functions through MPFR: evaluated with guard bits and again with more until the
// rounding to decimal digits no longer depends on the error (Ziv 1991, Fast evaluation of
// elementary functions with correctly rounded last bit).

#include "mathematics/elementary.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "mathematics/algebra.hpp"
#include "mathematics/complex_functions.hpp"
#include "mathematics/elementwise.hpp"
#include "mathematics/evaluation.hpp"
#include "mathematics/exact_values.hpp"
#include "values/arrays.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

constexpr std::array kFunctions = {
    ElementaryFunction{"sin", mpfr_sin, std::sin},
    ElementaryFunction{"cos", mpfr_cos, std::cos},
    ElementaryFunction{"tan", mpfr_tan, std::tan},
    ElementaryFunction{"arcsin", mpfr_asin, std::asin},
    ElementaryFunction{"arccos", mpfr_acos, std::acos},
    ElementaryFunction{"arctan", mpfr_atan, std::atan},
    ElementaryFunction{"asin", mpfr_asin, std::asin},
    ElementaryFunction{"acos", mpfr_acos, std::acos},
    ElementaryFunction{"atan", mpfr_atan, std::atan},
    ElementaryFunction{"sinh", mpfr_sinh, std::sinh},
    ElementaryFunction{"cosh", mpfr_cosh, std::cosh},
    ElementaryFunction{"tanh", mpfr_tanh, std::tanh},
    ElementaryFunction{"arcsinh", mpfr_asinh, std::asinh},
    ElementaryFunction{"arccosh", mpfr_acosh, std::acosh},
    ElementaryFunction{"arctanh", mpfr_atanh, std::atanh},
    ElementaryFunction{"asinh", mpfr_asinh, std::asinh},
    ElementaryFunction{"acosh", mpfr_acosh, std::acosh},
    ElementaryFunction{"atanh", mpfr_atanh, std::atanh},
    ElementaryFunction{"exp", mpfr_exp, std::exp},
    ElementaryFunction{"ln", mpfr_log, std::log},
    ElementaryFunction{"log", mpfr_log, std::log},
    ElementaryFunction{"log10", mpfr_log10, std::log10},
    ElementaryFunction{"sqrt", mpfr_sqrt, std::sqrt},
    ElementaryFunction{"erf", mpfr_erf, std::erf},
    ElementaryFunction{"erfc", mpfr_erfc, std::erfc},
    ElementaryFunction{"gamma", mpfr_gamma, std::tgamma},
};

// Repeats compute(result, bits), which errs by at most an ulp or two, with growing precision until
// the rounding to digits is settled.  An exact value settles never; it is taken as it is in the
// end.
template <typename Compute>
ALGEB settled(State& state, int digits, Compute compute) {
  mpfr_prec_t bits = bitsForDigits(state, digits) + 32;
  for (int attempt = 0;; ++attempt, bits *= 2) {
    lookAtInterrupt();
    RealNumber x(bits);
    compute(x.get(), bits);
    if (mpfr_regular_p(x.get()) == 0 || attempt == 4) {
      return fromMpfr(state, x.get(), digits);
    }
    RealNumber low(bits);
    RealNumber high(bits);
    mpfr_set(low.get(), x.get(), MPFR_RNDN);
    mpfr_set(high.get(), x.get(), MPFR_RNDN);
    for (int i = 0; i < 4; ++i) {
      mpfr_nextbelow(low.get());
      mpfr_nextabove(high.get());
    }
    const ALGEB a = fromMpfr(state, low.get(), digits);
    if (a == fromMpfr(state, high.get(), digits)) {
      return a;
    }
  }
}

// (a - 1)! (b - 1)! / (a + b - 1)! of positive integers, null for large ones.
ALGEB exactBeta(State& state, ALGEB a, ALGEB b) {
  std::int64_t m = 0;
  std::int64_t n = 0;
  if (!fitsInt64(a, &m) || !fitsInt64(b, &n) || m > 5000 || n > 5000) {
    return nullptr;
  }
  BigInteger choices;
  mpz_bin_uiui(choices.get(), static_cast<unsigned long>(m + n - 2),
               static_cast<unsigned long>(m - 1));
  return divide(state, immediate(1),
                multiply(state, newInteger(state, choices.get()), immediate(m + n - 1)));
}

}  // namespace

const ElementaryFunction* elementaryFunction(std::string_view name) {
  for (const ElementaryFunction& f : kFunctions) {
    if (f.name == name) {
      return &f;
    }
  }
  return nullptr;
}

namespace {

// MPFR's gamma function takes many seconds beyond that, and cannot be interrupted.
constexpr int kMostGammaDigits = 1500;
// The others take some seconds at that.
constexpr int kMostDigits = 1'000'000;
// So does reducing a huge angle, which needs as many bits of pi as the angle has before its point.
constexpr mpfr_exp_t kMostAngleBits = 400000;

// How many bits of |x| lie before the point: what a reduction by pi takes away.
mpfr_prec_t bitsBeforePoint(State& state, ALGEB x) {
  RealNumber rounded(64);
  toMpfr(state, rounded.get(), x);
  const bool large = mpfr_regular_p(rounded.get()) != 0 && mpfr_get_exp(rounded.get()) > 0;
  return large ? mpfr_get_exp(rounded.get()) : 0;
}

// Bits of the argument that a function may take away near a zero or a pole: a number is no nearer
// to another whole one, or to a multiple of pi, than its digits allow.
mpfr_prec_t bitsThatCancel(ALGEB x, bool never) {
  if (never || isDoubleFloat(x) || isInteger(x)) {
    return 0;
  }
  const auto bits = [](ALGEB integer) {
    return static_cast<mpfr_prec_t>(mpz_sizeinbase(IntegerView(integer).get(), 2));
  };
  return isRational(x) ? 2 * bits(denominator(x)) : 2 * bits(operand(x, 1));
}

void requireReach(State& state, const ElementaryFunction& f, ALGEB x, int digits) {
  const bool slow = f.name == "gamma" || f.name == "lgamma" || f.name == "erf" || f.name == "erfc";
  if (digits > (slow ? kMostGammaDigits : kMostDigits) && f.name != "sqrt") {
    raise(state, "too many digits for %1, received: %2", name(state, std::string(f.name)),
          immediate(digits));
  }
  if (f.name == "sin" || f.name == "cos" || f.name == "tan") {
    RealNumber angle(64);
    toMpfr(state, angle.get(), x);
    if (mpfr_regular_p(angle.get()) != 0 && mpfr_get_exp(angle.get()) > kMostAngleBits) {
      raise(state, "too large an angle, received: %1", x);
    }
  }
}

}  // namespace

ALGEB elementaryFloat(State& state, const ElementaryFunction& f, ALGEB x, int digits) {
  requireReach(state, f, x, digits);
  if (f.name == "sqrt" && sign(x) < 0) {
    return newComplex(state, immediate(0), elementaryFloat(state, f, negate(state, x), digits));
  }
  const bool isPeriodic = f.name == "sin" || f.name == "cos" || f.name == "tan";
  const mpfr_prec_t extraBits =
      (isPeriodic ? bitsBeforePoint(state, x) : 0) + bitsThatCancel(x, f.name == "sqrt");
  return settled(state, digits, [&](mpfr_ptr r, mpfr_prec_t bits) {
    RealNumber argument(2 * bits + 64 + extraBits);
    toMpfr(state, argument.get(), x);
    f.real(r, argument.get(), MPFR_RNDN);
  });
}

ALGEB applyElementary(State& state, const ElementaryFunction& f, ALGEB x) {
  if (isFloat(x)) {
    return elementaryFloat(state, f, x, state.digits());
  }
  if (isContainer(x)) {
    return elementwiseFunction(state, x, f.hardware,
                               [&](ALGEB e) { return applyElementary(state, f, e); });
  }
  if (isComplexFloat(x)) {
    if (const ALGEB value = complexElementary(state, f.name, x, state.digits())) {
      return value;
    }
  }
  if (!isNumber(x) && !is(x, Tag::name) && !isExpression(x)) {
    raise(state, "expected a number or an expression, received: %1", x);
  }
  if (const ALGEB value = exactValue(state, f.name, x)) {
    return value;
  }
  return applicationOf(state, std::string(f.name).c_str(), x);
}

// An exponent of more bits than this, beyond those of the base, gives a power out of all range.
constexpr mpfr_prec_t kMostExponentBits = 128;

ALGEB powerFloat(State& state, ALGEB base, ALGEB exponent, int digits) {
  if (isInteger(exponent) && !isFloat(base)) {
    return roundToDigits(state, integerPower(state, base, exponent), digits);
  }
  // The exponent magnifies the rounding of the base, most where the base is near 1.
  RealNumber rounded(64);
  toMpfr(state, rounded.get(), exponent);
  const mpfr_prec_t magnified =
      mpfr_regular_p(rounded.get()) == 0
          ? 0
          : std::clamp<mpfr_prec_t>(mpfr_get_exp(rounded.get()), 0,
                                    bitsThatCancel(base, false) + kMostExponentBits);
  const mpfr_prec_t extraBits = magnified + bitsThatCancel(base, false);
  return settled(state, digits, [&](mpfr_ptr r, mpfr_prec_t bits) {
    RealNumber b(2 * bits + 64 + extraBits);
    RealNumber e(2 * bits + 64 + extraBits);
    toMpfr(state, b.get(), base);
    toMpfr(state, e.get(), exponent);
    mpfr_pow(r, b.get(), e.get(), MPFR_RNDN);
  });
}

ALGEB numberPower(State& state, ALGEB base, ALGEB exponent) {
  if (isInteger(exponent)) {
    return integerPower(state, base, exponent);
  }
  if (isComplex(base) || isComplex(exponent)) {
    if (isComplexFloat(base) || isFloat(base) || isComplexFloat(exponent) || isFloat(exponent)) {
      return complexPowerFloat(state, base, exponent, state.digits());
    }
    return newPower(state, base, exponent);
  }
  if (isFloat(base) && sign(base) < 0 && isRational(exponent) &&
      denominator(exponent) == immediate(2)) {
    const ElementaryFunction& root = *elementaryFunction("sqrt");
    return integerPower(state, elementaryFloat(state, root, base, state.digits() + 10),
                        numerator(exponent));
  }
  if (isFloat(base) || isFloat(exponent)) {
    return powerFloat(state, base, exponent, state.digits());
  }
  if (denominator(exponent) == immediate(2)) {
    if (const ALGEB root = exactValue(state, "sqrt", base)) {
      return integerPower(state, root, numerator(exponent));
    }
    if (numerator(exponent) == immediate(1)) {
      return applicationOf(state, "sqrt", base);
    }
  }
  if (base == immediate(0) || base == immediate(1)) {
    if (base == immediate(0) && sign(exponent) < 0) {
      raise(state, "division by zero");
    }
    return base;
  }
  return newPower(state, base, exponent);
}

ALGEB piFloat(State& state, int digits) {
  return settled(state, digits, [](mpfr_ptr r, mpfr_prec_t) { mpfr_const_pi(r, MPFR_RNDN); });
}

namespace {

// arctan(x), and arctan(y, x): the angle of the point (x, y).
void defineArcTangent(State& state, const char* functionName) {
  const ElementaryFunction& f = *elementaryFunction(functionName);
  defineFunction(
      state, functionName,
      [&f](State& s, ALGEB args) -> ALGEB {
        if (isNull(args) || argumentCount(args) != 2) {
          return applyElementary(
              s, f, oneArgument(s, args, "expected one or two arguments, received: %1"));
        }
        const ALGEB y = argument(s, args, 1);
        const ALGEB x = argument(s, args, 2);
        if (!isReal(x) || !isReal(y) || (!isFloat(x) && !isFloat(y))) {
          const ALGEB operands[] = {y, x};
          return newApplication(s, name(s, std::string(f.name)), operands);
        }
        return settled(s, s.digits(), [&](mpfr_ptr r, mpfr_prec_t bits) {
          RealNumber a(2 * bits + 64);
          RealNumber b(2 * bits + 64);
          toMpfr(s, a.get(), y);
          toMpfr(s, b.get(), x);
          mpfr_atan2(r, a.get(), b.get(), MPFR_RNDN);
        });
      },
      [](State& s, int n, const double* a) {
        if (n != 1 && n != 2) {
          raise(s, "expected one or two arguments");
        }
        return n == 1 ? std::atan(a[1]) : std::atan2(a[1], a[2]);
      });
}

int lgammaReal(mpfr_ptr r, mpfr_srcptr x, mpfr_rnd_t rounding) {
  int s = 0;
  return mpfr_lgamma(r, &s, x, rounding);
}

constexpr ElementaryFunction kLgamma{"lgamma", lgammaReal, [](double x) { return std::lgamma(x); }};

}  // namespace

void defineElementaryFunctions(State& state) {
  auto define = [&](const ElementaryFunction& f) {
    defineFunction(
        state, f.name,
        [&f](State& s, ALGEB args) {
          return applyElementary(s, f, oneArgument(s, args, "expected one argument, received: %1"));
        },
        [&f](State& s, int n, const double* a) {
          if (n != 1) {
            raise(s, "expected one argument");
          }
          return f.hardware(a[1]);
        });
  };
  for (const ElementaryFunction& f : kFunctions) {
    define(f);
  }
  defineArcTangent(state, "arctan");
  defineArcTangent(state, "atan");
  define(kLgamma);
  defineFunction(
      state, "beta",
      [](State& s, ALGEB args) -> ALGEB {
        if (argumentCount(args) != 2) {
          raise(s, "beta expects two arguments, received: %1", args);
        }
        const ALGEB a = argument(s, args, 1);
        const ALGEB b = argument(s, args, 2);
        if (isInteger(a) && isInteger(b) && sign(a) > 0 && sign(b) > 0) {
          if (const ALGEB exact = exactBeta(s, a, b)) {
            return exact;
          }
        }
        if (!isReal(a) || !isReal(b) || (!isFloat(a) && !isFloat(b))) {
          const ALGEB operands[] = {a, b};
          return newApplication(s, name(s, "beta"), operands);
        }
        if (s.digits() > kMostGammaDigits) {
          raise(s, "too many digits for %1, received: %2", name(s, "beta"), immediate(s.digits()));
        }
        return settled(s, s.digits(), [&](mpfr_ptr r, mpfr_prec_t bits) {
          RealNumber x(2 * bits + 64);
          RealNumber y(2 * bits + 64);
          toMpfr(s, x.get(), a);
          toMpfr(s, y.get(), b);
          mpfr_beta(r, x.get(), y.get(), MPFR_RNDN);
        });
      },
      [](State&, int, const double* a) {
        return std::exp(std::lgamma(a[1]) + std::lgamma(a[2]) - std::lgamma(a[1] + a[2]));
      });
}

}  // namespace vexel
