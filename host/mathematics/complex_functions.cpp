// Elementary functions of complex numbers: MPC's, which rounds both parts correctly and takes the
// sign of a zero part for the side of a branch cut.  The tangents are our own: far from the axis,
// MPC's take forever.

#include "mathematics/complex_functions.hpp"

#include <mpc.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

class ComplexNumber {
 public:
  explicit ComplexNumber(mpfr_prec_t bits) { mpc_init2(value_, bits); }
  ComplexNumber(State& state, ALGEB z, mpfr_prec_t bits) : ComplexNumber(bits) {
    toMpfr(state, re(), realPart(z));
    toMpfr(state, im(), imaginaryPart(z));
  }
  ComplexNumber(const ComplexNumber&) = delete;
  ComplexNumber& operator=(const ComplexNumber&) = delete;
  ~ComplexNumber() { mpc_clear(value_); }
  mpc_ptr get() { return value_; }
  mpfr_ptr re() { return mpc_realref(value_); }
  mpfr_ptr im() { return mpc_imagref(value_); }

 private:
  mpc_t value_;
};

// (sin 2x + i sinh 2y) / (cos 2x + cosh 2y)
int tangent(mpc_ptr r, mpc_srcptr z, mpc_rnd_t) {
  const mpfr_prec_t bits = 2 * mpc_get_prec(z);  // for zeros of the denominator, and nearly i
  ComplexNumber twice(bits);
  ComplexNumber circular(bits);  // cos + i sin
  ComplexNumber hyperbolic(bits);
  mpc_mul_2ui(twice.get(), z, 1, MPC_RNDNN);
  mpfr_sin_cos(circular.im(), circular.re(), twice.re(), MPFR_RNDN);
  mpfr_sinh_cosh(hyperbolic.im(), hyperbolic.re(), twice.im(), MPFR_RNDN);
  if (mpfr_inf_p(hyperbolic.re()) != 0) {
    mpfr_set_zero(mpc_realref(r), 1);
    mpfr_set_si(mpc_imagref(r), mpfr_signbit(hyperbolic.im()) != 0 ? -1 : 1, MPFR_RNDN);
    return 0;
  }
  mpfr_add(circular.re(), circular.re(), hyperbolic.re(), MPFR_RNDN);
  mpfr_div(mpc_realref(r), circular.im(), circular.re(), MPFR_RNDN);
  mpfr_div(mpc_imagref(r), hyperbolic.im(), circular.re(), MPFR_RNDN);
  return 0;
}

// -i tan(i z)
int hyperbolicTangent(mpc_ptr r, mpc_srcptr z, mpc_rnd_t rounding) {
  ComplexNumber turned(mpc_get_prec(z));
  mpc_mul_i(turned.get(), z, 1, rounding);
  tangent(r, turned.get(), rounding);
  mpc_mul_i(r, r, -1, rounding);
  return 0;
}

struct ComplexFunction {
  std::string_view name;
  int (*compute)(mpc_ptr, mpc_srcptr, mpc_rnd_t);
};

constexpr std::array kFunctions = {
    ComplexFunction{"exp", mpc_exp},
    ComplexFunction{"ln", mpc_log},
    ComplexFunction{"log", mpc_log},
    ComplexFunction{"log10", mpc_log10},
    ComplexFunction{"sqrt", mpc_sqrt},
    ComplexFunction{"sin", mpc_sin},
    ComplexFunction{"cos", mpc_cos},
    ComplexFunction{"tan", tangent},
    ComplexFunction{"sinh", mpc_sinh},
    ComplexFunction{"cosh", mpc_cosh},
    ComplexFunction{"tanh", hyperbolicTangent},
    ComplexFunction{"arcsin", mpc_asin},
    ComplexFunction{"asin", mpc_asin},
    ComplexFunction{"arccos", mpc_acos},
    ComplexFunction{"acos", mpc_acos},
    ComplexFunction{"arctan", mpc_atan},
    ComplexFunction{"atan", mpc_atan},
    ComplexFunction{"arcsinh", mpc_asinh},
    ComplexFunction{"asinh", mpc_asinh},
    ComplexFunction{"arccosh", mpc_acosh},
    ComplexFunction{"acosh", mpc_acosh},
    ComplexFunction{"arctanh", mpc_atanh},
    ComplexFunction{"atanh", mpc_atanh},
};

// Beyond these sizes a part's reduction by pi, or its precision, takes seconds.
constexpr int kMostDigits = 100'000;
constexpr mpfr_exp_t kLargestExponent = 5'000;

// Bits of z that lie before the point, or that separate it from a point of a cut or a zero.
mpfr_prec_t extraBits(State& state, ALGEB z) {
  ComplexNumber rounded(state, z, 64);
  mpfr_exp_t most = 0;
  for (mpfr_srcptr part : {rounded.re(), rounded.im()}) {
    if (mpfr_regular_p(part) != 0) {
      most = std::max<mpfr_exp_t>(most, std::abs(mpfr_get_exp(part)));
    }
  }
  if (most > kLargestExponent) {
    raise(state, "too large or too small a complex number, received: %1", z);
  }
  return most;
}

// Repeats compute(result, bits) with more precision until both parts' decimal roundings stay the
// same: decimal arguments, too, are then known well enough.
template <typename Compute>
ALGEB settled(State& state, int digits, Compute compute) {
  if (digits > kMostDigits) {
    raise(state, "too many digits for a complex number, received: %1", immediate(digits));
  }
  ALGEB previous = nullptr;
  mpfr_prec_t bits = bitsForDigits(state, digits) + 32;
  for (int attempt = 0;; ++attempt, bits += bits / 2) {
    lookAtInterrupt();
    ComplexNumber r(bits);
    compute(r.get(), bits);
    const ALGEB re = fromMpfr(state, r.re(), digits);
    const ALGEB value = newComplex(state, re, fromMpfr(state, r.im(), digits));
    if (value == previous || attempt == 6) {
      return value;
    }
    previous = value;
  }
}

}  // namespace

bool isComplexFloat(ALGEB x) {
  return isComplex(x) && (isFloat(operand(x, 1)) || isFloat(operand(x, 2)));
}

ALGEB complexElementary(State& state, std::string_view function, ALGEB z, int digits) {
  for (const ComplexFunction& f : kFunctions) {
    if (f.name == function) {
      const mpfr_prec_t extra = extraBits(state, z);
      return settled(state, digits, [&](mpc_ptr r, mpfr_prec_t bits) {
        ComplexNumber argument(state, z, bits + extra);
        f.compute(r, argument.get(), MPC_RNDNN);
      });
    }
  }
  return nullptr;
}

ALGEB complexPowerFloat(State& state, ALGEB base, ALGEB exponent, int digits) {
  if (isZero(base)) {
    return sign(realPart(exponent)) > 0 ? newFloat(state, 0.0) : state.undefined;
  }
  const mpfr_prec_t extra = extraBits(state, base) + extraBits(state, exponent);
  return settled(state, digits, [&](mpc_ptr r, mpfr_prec_t bits) {
    ComplexNumber b(state, base, bits + extra);
    ComplexNumber e(state, exponent, bits + extra);
    mpc_pow(r, b.get(), e.get(), MPC_RNDNN);
  });
}

}  // namespace vexel
