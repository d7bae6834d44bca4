// Principal values of elementary functions of complex numbers, by their real and imaginary parts.
//
// The inverse functions follow Kahan, Branch cuts for complex elementary functions (1987): on a cut
// the sign of a zero part tells the side.  Both parts are computed with growing precision until
// their rounding to decimal digits stays the same.

#include "language/complex_functions.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "core/errors.hpp"
#include "core/numbers.hpp"
#include "core/objects.hpp"

namespace vexel {

namespace {

constexpr mpfr_rnd_t kNear = MPFR_RNDN;

struct ComplexNumber {
  explicit ComplexNumber(mpfr_prec_t bits) : re(bits), im(bits) {}
  RealNumber re;
  RealNumber im;
};

mpfr_prec_t precision(const ComplexNumber& z) { return mpfr_get_prec(z.re.get()); }

void assign(ComplexNumber& r, const ComplexNumber& z) {
  mpfr_set(r.re.get(), z.re.get(), kNear);
  mpfr_set(r.im.get(), z.im.get(), kNear);
}

void addReal(ComplexNumber& r, const ComplexNumber& z, long n) {
  mpfr_add_si(r.re.get(), z.re.get(), n, kNear);
  mpfr_set(r.im.get(), z.im.get(), kNear);
}

void subtractFromOne(ComplexNumber& r, const ComplexNumber& z) {
  mpfr_ui_sub(r.re.get(), 1, z.re.get(), kNear);
  mpfr_neg(r.im.get(), z.im.get(), kNear);
}

void conjugate(ComplexNumber& z) { mpfr_neg(z.im.get(), z.im.get(), kNear); }

// i z and -i z
void turnLeft(ComplexNumber& z) {
  mpfr_swap(z.re.get(), z.im.get());
  mpfr_neg(z.re.get(), z.re.get(), kNear);
}
void turnRight(ComplexNumber& z) {
  mpfr_swap(z.re.get(), z.im.get());
  mpfr_neg(z.im.get(), z.im.get(), kNear);
}

// Each part rounded once.
void multiply(ComplexNumber& r, const ComplexNumber& a, const ComplexNumber& b) {
  ComplexNumber product(precision(r));
  mpfr_fmms(product.re.get(), a.re.get(), b.re.get(), a.im.get(), b.im.get(), kNear);
  mpfr_fmma(product.im.get(), a.re.get(), b.im.get(), a.im.get(), b.re.get(), kNear);
  assign(r, product);
}

void exponential(ComplexNumber& r, const ComplexNumber& z) {
  RealNumber size(precision(r));
  RealNumber sine(precision(r));
  RealNumber cosine(precision(r));
  mpfr_exp(size.get(), z.re.get(), kNear);
  mpfr_sin_cos(sine.get(), cosine.get(), z.im.get(), kNear);
  mpfr_mul(r.re.get(), size.get(), cosine.get(), kNear);
  mpfr_mul(r.im.get(), size.get(), sine.get(), kNear);
}

void logarithm(ComplexNumber& r, const ComplexNumber& z) {
  RealNumber size(precision(r));
  mpfr_hypot(size.get(), z.re.get(), z.im.get(), kNear);
  mpfr_atan2(r.im.get(), z.im.get(), z.re.get(), kNear);
  mpfr_log(r.re.get(), size.get(), kNear);
}

void commonLogarithm(ComplexNumber& r, const ComplexNumber& z) {
  RealNumber ten(precision(r));
  logarithm(r, z);
  mpfr_log_ui(ten.get(), 10, kNear);
  mpfr_div(r.re.get(), r.re.get(), ten.get(), kNear);
  mpfr_div(r.im.get(), r.im.get(), ten.get(), kNear);
}

// t = sqrt((|z| + |x|)/2) is one part, |y|/2t the other; t is the real one where x >= 0.
void squareRoot(ComplexNumber& r, const ComplexNumber& z) {
  RealNumber t(precision(r));
  RealNumber other(precision(r));
  mpfr_hypot(t.get(), z.re.get(), z.im.get(), kNear);
  mpfr_abs(other.get(), z.re.get(), kNear);
  mpfr_add(t.get(), t.get(), other.get(), kNear);
  mpfr_div_2ui(t.get(), t.get(), 1, kNear);
  mpfr_sqrt(t.get(), t.get(), kNear);
  mpfr_abs(other.get(), z.im.get(), kNear);
  if (mpfr_zero_p(t.get()) == 0) {
    mpfr_div(other.get(), other.get(), t.get(), kNear);
    mpfr_div_2ui(other.get(), other.get(), 1, kNear);
  }
  const int imaginarySign = mpfr_signbit(z.im.get());
  const bool right = mpfr_signbit(z.re.get()) == 0;
  mpfr_set(r.re.get(), right ? t.get() : other.get(), kNear);
  mpfr_setsign(r.im.get(), right ? other.get() : t.get(), imaginarySign, kNear);
}

// sin x cosh y + i cos x sinh y
void sine(ComplexNumber& r, const ComplexNumber& z) {
  const mpfr_prec_t bits = precision(r);
  RealNumber sinX(bits);
  RealNumber cosX(bits);
  RealNumber sinhY(bits);
  RealNumber coshY(bits);
  mpfr_sin_cos(sinX.get(), cosX.get(), z.re.get(), kNear);
  mpfr_sinh_cosh(sinhY.get(), coshY.get(), z.im.get(), kNear);
  mpfr_mul(r.re.get(), sinX.get(), coshY.get(), kNear);
  mpfr_mul(r.im.get(), cosX.get(), sinhY.get(), kNear);
}

// cos x cosh y - i sin x sinh y
void cosine(ComplexNumber& r, const ComplexNumber& z) {
  const mpfr_prec_t bits = precision(r);
  RealNumber sinX(bits);
  RealNumber cosX(bits);
  RealNumber sinhY(bits);
  RealNumber coshY(bits);
  mpfr_sin_cos(sinX.get(), cosX.get(), z.re.get(), kNear);
  mpfr_sinh_cosh(sinhY.get(), coshY.get(), z.im.get(), kNear);
  mpfr_mul(r.re.get(), cosX.get(), coshY.get(), kNear);
  mpfr_mul(r.im.get(), sinX.get(), sinhY.get(), kNear);
  conjugate(r);
}

// (sin 2x + i sinh 2y) / (cos 2x + cosh 2y)
void tangent(ComplexNumber& r, const ComplexNumber& z) {
  const mpfr_prec_t bits = precision(r);
  RealNumber twice(bits);
  RealNumber sin2x(bits);
  RealNumber cos2x(bits);
  RealNumber sinh2y(bits);
  RealNumber cosh2y(bits);
  mpfr_mul_2ui(twice.get(), z.im.get(), 1, kNear);
  mpfr_sinh_cosh(sinh2y.get(), cosh2y.get(), twice.get(), kNear);
  if (mpfr_inf_p(cosh2y.get()) != 0) {  // i or -i far from the real axis
    mpfr_set_zero(r.re.get(), 1);
    mpfr_set_si(r.im.get(), mpfr_signbit(z.im.get()) != 0 ? -1 : 1, kNear);
    return;
  }
  mpfr_mul_2ui(twice.get(), z.re.get(), 1, kNear);
  mpfr_sin_cos(sin2x.get(), cos2x.get(), twice.get(), kNear);
  mpfr_add(cos2x.get(), cos2x.get(), cosh2y.get(), kNear);
  mpfr_div(r.re.get(), sin2x.get(), cos2x.get(), kNear);
  mpfr_div(r.im.get(), sinh2y.get(), cos2x.get(), kNear);
}

// atan2(x, Re(sqrt(1-z) sqrt(1+z))) + i asinh(Im(conj(sqrt(1-z)) sqrt(1+z)))
void arcSine(ComplexNumber& r, const ComplexNumber& z) {
  const mpfr_prec_t bits = precision(r);
  ComplexNumber below(bits);
  ComplexNumber above(bits);
  ComplexNumber product(bits);
  RealNumber x(bits);
  mpfr_set(x.get(), z.re.get(), kNear);
  subtractFromOne(below, z);
  squareRoot(below, below);
  addReal(above, z, 1);
  squareRoot(above, above);
  multiply(product, below, above);
  mpfr_atan2(r.re.get(), x.get(), product.re.get(), kNear);
  conjugate(below);
  multiply(product, below, above);
  mpfr_asinh(r.im.get(), product.im.get(), kNear);
}

// 2 atan2(Re sqrt(1-z), Re sqrt(1+z)) + i asinh(Im(conj(sqrt(1+z)) sqrt(1-z)))
void arcCosine(ComplexNumber& r, const ComplexNumber& z) {
  const mpfr_prec_t bits = precision(r);
  ComplexNumber below(bits);
  ComplexNumber above(bits);
  ComplexNumber product(bits);
  subtractFromOne(below, z);
  squareRoot(below, below);
  addReal(above, z, 1);
  squareRoot(above, above);
  mpfr_atan2(r.re.get(), below.re.get(), above.re.get(), kNear);
  mpfr_mul_2ui(r.re.get(), r.re.get(), 1, kNear);
  conjugate(above);
  multiply(product, above, below);
  mpfr_asinh(r.im.get(), product.im.get(), kNear);
}

// asinh(Re(conj(sqrt(z-1)) sqrt(z+1))) + 2i atan2(Im sqrt(z-1), Re sqrt(z+1))
void arcHyperbolicCosine(ComplexNumber& r, const ComplexNumber& z) {
  const mpfr_prec_t bits = precision(r);
  ComplexNumber below(bits);
  ComplexNumber above(bits);
  ComplexNumber product(bits);
  addReal(below, z, -1);
  squareRoot(below, below);
  addReal(above, z, 1);
  squareRoot(above, above);
  mpfr_atan2(r.im.get(), below.im.get(), above.re.get(), kNear);
  mpfr_mul_2ui(r.im.get(), r.im.get(), 1, kNear);
  conjugate(below);
  multiply(product, below, above);
  mpfr_asinh(r.re.get(), product.re.get(), kNear);
}

// log1p(4x / ((1-x)^2 + y^2)) / 4 + i atan2(2y, (1-x)(1+x) - y^2) / 2
void arcHyperbolicTangent(ComplexNumber& r, const ComplexNumber& z) {
  const mpfr_prec_t bits = precision(r);
  RealNumber below(bits);
  RealNumber above(bits);
  RealNumber a(bits);
  RealNumber b(bits);
  mpfr_ui_sub(below.get(), 1, z.re.get(), kNear);
  mpfr_add_ui(above.get(), z.re.get(), 1, kNear);
  mpfr_fmma(a.get(), below.get(), below.get(), z.im.get(), z.im.get(), kNear);
  mpfr_mul_2ui(b.get(), z.re.get(), 2, kNear);
  mpfr_div(a.get(), b.get(), a.get(), kNear);
  mpfr_fmms(b.get(), below.get(), above.get(), z.im.get(), z.im.get(), kNear);
  mpfr_mul_2ui(r.im.get(), z.im.get(), 1, kNear);
  mpfr_atan2(r.im.get(), r.im.get(), b.get(), kNear);
  mpfr_div_2ui(r.im.get(), r.im.get(), 1, kNear);
  mpfr_log1p(r.re.get(), a.get(), kNear);
  mpfr_div_2ui(r.re.get(), r.re.get(), 2, kNear);
}

using Function = void (*)(ComplexNumber&, const ComplexNumber&);

// f(z) = -i g(i z) ties the circular functions to the hyperbolic ones.
template <Function g>
void turned(ComplexNumber& r, const ComplexNumber& z) {
  ComplexNumber w(precision(r));
  assign(w, z);
  turnLeft(w);
  g(r, w);
  turnRight(r);
}

void hyperbolicCosine(ComplexNumber& r, const ComplexNumber& z) {
  ComplexNumber w(precision(r));
  assign(w, z);
  turnLeft(w);
  cosine(r, w);
}

struct ComplexFunction {
  std::string_view name;
  Function compute;
};

constexpr std::array kFunctions = {
    ComplexFunction{"exp", exponential},
    ComplexFunction{"ln", logarithm},
    ComplexFunction{"log", logarithm},
    ComplexFunction{"log10", commonLogarithm},
    ComplexFunction{"sqrt", squareRoot},
    ComplexFunction{"sin", sine},
    ComplexFunction{"cos", cosine},
    ComplexFunction{"tan", tangent},
    ComplexFunction{"sinh", turned<sine>},
    ComplexFunction{"cosh", hyperbolicCosine},
    ComplexFunction{"tanh", turned<tangent>},
    ComplexFunction{"arcsin", arcSine},
    ComplexFunction{"asin", arcSine},
    ComplexFunction{"arccos", arcCosine},
    ComplexFunction{"acos", arcCosine},
    ComplexFunction{"arctan", turned<arcHyperbolicTangent>},
    ComplexFunction{"atan", turned<arcHyperbolicTangent>},
    ComplexFunction{"arcsinh", turned<arcSine>},
    ComplexFunction{"asinh", turned<arcSine>},
    ComplexFunction{"arccosh", arcHyperbolicCosine},
    ComplexFunction{"acosh", arcHyperbolicCosine},
    ComplexFunction{"arctanh", arcHyperbolicTangent},
    ComplexFunction{"atanh", arcHyperbolicTangent},
};

void set(State& state, ComplexNumber& r, ALGEB z) {
  toMpfr(state, r.re.get(), realPart(z));
  toMpfr(state, r.im.get(), imaginaryPart(z));
}

// Beyond these sizes a part's reduction by pi, or its precision, takes seconds.
constexpr int kMostDigits = 100'000;
constexpr mpfr_exp_t kLargestExponent = 400'000;

// Bits of z that lie before the point, or that separate it from a point of a cut or a zero.
mpfr_prec_t extraBits(State& state, ALGEB z) {
  ComplexNumber rounded(64);
  set(state, rounded, z);
  mpfr_exp_t most = 0;
  for (mpfr_srcptr part : {rounded.re.get(), rounded.im.get()}) {
    if (mpfr_regular_p(part) != 0) {
      most = std::max<mpfr_exp_t>(most, std::abs(mpfr_get_exp(part)));
    }
  }
  if (most > kLargestExponent) {
    raise(state, "too large or too small a complex number, received: %1", z);
  }
  return most;
}

// Repeats compute(result) with more precision until both parts' roundings stay the same.
template <typename Compute>
ALGEB settled(State& state, int digits, mpfr_prec_t extra, Compute compute) {
  if (digits > kMostDigits) {
    raise(state, "too many digits for a complex number, received: %1", immediate(digits));
  }
  ALGEB previous = nullptr;
  mpfr_prec_t bits = 2 * (bitsForDigits(state, digits) + 32) + extra;
  for (int attempt = 0;; ++attempt, bits += bits / 2) {
    lookAtInterrupt();
    ComplexNumber r(bits);
    compute(r);
    const ALGEB re = fromMpfr(state, r.re.get(), digits);
    const ALGEB value = newComplex(state, re, fromMpfr(state, r.im.get(), digits));
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
      return settled(state, digits, extraBits(state, z), [&](ComplexNumber& r) {
        ComplexNumber argument(precision(r));
        set(state, argument, z);
        f.compute(r, argument);
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
  return settled(state, digits, extra, [&](ComplexNumber& r) {
    ComplexNumber power(precision(r));
    ComplexNumber factor(precision(r));
    set(state, power, base);
    set(state, factor, exponent);
    logarithm(power, power);
    multiply(power, power, factor);
    exponential(r, power);
  });
}

}  // namespace vexel
