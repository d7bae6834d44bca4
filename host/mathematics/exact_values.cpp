#include "mathematics/exact_values.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <string>

#include "mathematics/algebra.hpp"
#include "mathematics/elementary.hpp"
#include "mathematics/evaluation.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

bool isExactSquare(ALGEB x) {
  const IntegerView n(numerator(x));
  const IntegerView d(denominator(x));
  return mpz_sgn(n.get()) >= 0 && mpz_perfect_square_p(n.get()) != 0 &&
         mpz_perfect_square_p(d.get()) != 0;
}

ALGEB exactRoot(State& state, ALGEB x) {
  BigInteger n;
  BigInteger d;
  mpz_sqrt(n.get(), IntegerView(numerator(x)).get());
  mpz_sqrt(d.get(), IntegerView(denominator(x)).get());
  return newRational(state, n.get(), d.get());
}

// n for 10^n, null for any other number.
ALGEB exactCommonLogarithm(State& state, ALGEB x) {
  const bool whole = isInteger(x);
  const ALGEB power = whole ? x : denominator(x);
  if (sign(x) <= 0 || (!whole && numerator(x) != immediate(1))) {
    return nullptr;
  }
  const IntegerView z(power);
  const std::size_t digits = mpz_sizeinbase(z.get(), 10);  // one too many at times
  for (std::size_t n = digits > 1 ? digits - 2 : 0; n < digits; ++n) {
    BigInteger candidate;
    mpz_ui_pow_ui(candidate.get(), 10, n);
    if (mpz_cmp(candidate.get(), z.get()) == 0) {
      const auto exponent = static_cast<std::int64_t>(n);
      return newInteger(state, whole ? exponent : -exponent);
    }
  }
  return nullptr;
}

// At an exact number.
ALGEB valueAtNumber(State& state, std::string_view f, ALGEB x) {
  if (f == "sqrt") {
    if (isExactSquare(x)) {
      return exactRoot(state, x);
    }
    const ALGEB minus = negate(state, x);
    return sign(x) < 0 && isExactSquare(minus)
               ? newComplex(state, immediate(0), exactRoot(state, minus))
               : nullptr;
  }
  const bool zero = x == immediate(0);
  const bool one = x == immediate(1);
  if (zero) {
    for (const std::string_view odd : {"sin", "tan", "arcsin", "arctan", "asin", "atan", "sinh",
                                       "tanh", "arcsinh", "arctanh", "asinh", "atanh", "erf"}) {
      if (f == odd) {
        return immediate(0);
      }
    }
    if (f == "cos" || f == "cosh" || f == "exp" || f == "erfc") {
      return immediate(1);
    }
    if (f == "ln" || f == "log" || f == "log10") {
      raise(state, "the logarithm of 0 has no value");
    }
  }
  if (one && (f == "ln" || f == "log" || f == "log10" || f == "arccos" || f == "acos")) {
    return immediate(0);
  }
  if (f == "log10") {
    return exactCommonLogarithm(state, x);
  }
  if (f == "gamma" && isInteger(x)) {
    if (sign(x) <= 0) {
      raise(state, "gamma has no value at %1", x);
    }
    std::int64_t n = 0;
    if (fitsInt64(x, &n) && n <= 10000) {
      BigInteger z;
      mpz_fac_ui(z.get(), static_cast<unsigned long>(n - 1));
      return newInteger(state, z.get());
    }
  }
  return nullptr;
}

// A value in square roots: (a sqrt(m) + b sqrt(n)) / d at the angle p/q Pi.
struct Radicals {
  int p;
  int q;
  int a;
  int m;
  int b;
  int n;
  int d;
};

// From 0 to Pi/2; the cosine of an angle is the sine of what it lacks to Pi/2.
constexpr std::array kSines = {
    Radicals{0, 1, 0, 1, 0, 1, 1}, Radicals{1, 12, 1, 6, -1, 2, 4}, Radicals{1, 10, 1, 5, -1, 1, 4},
    Radicals{1, 6, 1, 1, 0, 1, 2}, Radicals{1, 4, 1, 2, 0, 1, 2},   Radicals{3, 10, 1, 5, 1, 1, 4},
    Radicals{1, 3, 1, 3, 0, 1, 2}, Radicals{5, 12, 1, 6, 1, 2, 4},  Radicals{1, 2, 1, 1, 0, 1, 1}};
constexpr std::array kTangents = {Radicals{0, 1, 0, 1, 0, 1, 1}, Radicals{1, 12, 2, 1, -1, 3, 1},
                                  Radicals{1, 6, 1, 3, 0, 1, 3}, Radicals{1, 4, 1, 1, 0, 1, 1},
                                  Radicals{1, 3, 1, 3, 0, 1, 1}, Radicals{5, 12, 2, 1, 1, 3, 1}};

ALGEB fraction(State& state, int p, int q) { return divide(state, immediate(p), immediate(q)); }

ALGEB valueOf(State& state, const Radicals& row) {
  const auto term = [&](int coefficient, int radicand) {
    const ALGEB root =
        radicand == 1 ? immediate(1) : applicationOf(state, "sqrt", immediate(radicand));
    return productOf(state, fraction(state, coefficient, row.d), root);
  };
  return sumOf(state, term(row.a, row.m), term(row.b, row.n));
}

// The value at the angle r Pi, null when the table has none.
ALGEB lookUp(State& state, std::span<const Radicals> table, ALGEB r) {
  for (const Radicals& row : table) {
    if (numerator(r) == immediate(row.p) && denominator(r) == immediate(row.q)) {
      return valueOf(state, row);
    }
  }
  return nullptr;
}

// The r of an arc of r Pi that has the value x; null when the table has none.
ALGEB lookUpArc(State& state, std::span<const Radicals> table, ALGEB x) {
  for (const Radicals& row : table) {
    const ALGEB value = valueOf(state, row);
    if (value == x) {
      return fraction(state, row.p, row.q);
    }
    if (negativeOf(state, value) == x) {
      return fraction(state, -row.p, row.q);
    }
  }
  return nullptr;
}

// The number c of c Pi, null for anything else.
ALGEB multipleOfPi(State& state, ALGEB x) {
  if (x == state.piName) {
    return immediate(1);
  }
  const bool isMultiple = is(x, Tag::product) && operandCount(x) == 2 && isNumber(operand(x, 1)) &&
                          operand(x, 2) == state.piName;
  return isMultiple ? operand(x, 1) : nullptr;
}

// sin, cos or tan of r Pi: in roots where the table has it, else at an angle below Pi/2; null when
// it is there already.
ALGEB circular(State& state, std::string_view f, ALGEB r) {
  const ALGEB half = fraction(state, 1, 2);
  const ALGEB period = immediate(f == "tan" ? 1 : 2);
  ALGEB angle = subtract(
      state, r,
      multiply(state, period, toInteger(state, divide(state, r, period), Rounding::floor)));
  bool negative = false;
  if (compare(state, angle, immediate(1)) > 0 || (f == "sin" && angle == immediate(1))) {
    angle =
        f == "sin" ? subtract(state, angle, immediate(1)) : subtract(state, immediate(2), angle);
    negative = f == "sin";
  }
  if (compare(state, angle, half) > 0) {
    angle = subtract(state, immediate(1), angle);
    negative = negative != (f != "sin");
  }
  if (f == "tan" && angle == half) {
    raise(state, "tan has no value at %1", productOf(state, r, state.piName));
  }
  ALGEB value = f == "tan"   ? lookUp(state, kTangents, angle)
                : f == "sin" ? lookUp(state, kSines, angle)
                             : lookUp(state, kSines, subtract(state, half, angle));
  if (value == nullptr) {
    if (angle == r) {
      return nullptr;
    }
    value = applicationOf(state, std::string(f).c_str(), productOf(state, angle, state.piName));
  }
  return negative ? negativeOf(state, value) : value;
}

// arcsin, arccos or arctan of what the tables have.
ALGEB arc(State& state, std::string_view f, ALGEB x) {
  const bool isTangent = f == "arctan" || f == "atan";
  ALGEB r = isTangent ? lookUpArc(state, kTangents, x) : lookUpArc(state, kSines, x);
  if (r != nullptr && (f == "arccos" || f == "acos")) {
    r = subtract(state, fraction(state, 1, 2), r);
  }
  return r == nullptr ? nullptr : productOf(state, r, state.piName);
}

bool isCallOf(ALGEB x, std::string_view f) {
  return is(x, Tag::application) && operandCount(x) == 2 && is(operand(x, 1), Tag::name) &&
         text(operand(x, 1)) == f;
}

// A value, and not one of a smaller angle.
bool isInRoots(ALGEB value, std::string_view f) {
  return value != nullptr && !isCallOf(value, f) &&
         !(is(value, Tag::product) && isCallOf(operand(value, 2), f));
}

// exp(I r Pi) = cos(r Pi) + I sin(r Pi) in roots, and exp(c ln(u)) = u^c.
ALGEB exponential(State& state, ALGEB x) {
  if (const ALGEB c = multipleOfPi(state, x);
      c != nullptr && realPart(c) == immediate(0) && isExact(imaginaryPart(c))) {
    const ALGEB r = imaginaryPart(c);
    const ALGEB cosine = circular(state, "cos", r);
    const ALGEB sine = circular(state, "sin", r);
    if (isInRoots(cosine, "cos") && isInRoots(sine, "sin")) {
      const ALGEB i = newComplex(state, immediate(0), immediate(1));
      return sumOf(state, cosine, productOf(state, i, sine));
    }
  }
  const bool scaled = is(x, Tag::product) && operandCount(x) == 2 && isExact(operand(x, 1));
  const ALGEB logarithm = scaled ? operand(x, 2) : x;
  if (isCallOf(logarithm, "ln") || isCallOf(logarithm, "log")) {
    return powerOf(state, operand(logarithm, 2), scaled ? operand(x, 1) : immediate(1));
  }
  return nullptr;
}

// ln(exp(u)) = u for a real number u.
ALGEB logarithm(State& state, ALGEB x) {
  if (!isCallOf(x, "exp")) {
    return nullptr;
  }
  const ALGEB u = operand(x, 2);
  return isReal(isExact(u) ? u : evalf(state, u, 5)) ? u : nullptr;
}

bool isOneOf(std::string_view f, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), f) != names.end();
}

}  // namespace

ALGEB exactValue(State& state, std::string_view f, ALGEB x) {
  if (isExact(x)) {
    if (const ALGEB value = valueAtNumber(state, f, x)) {
      return value;
    }
  }
  if (isOneOf(f, {"sin", "cos", "tan"})) {
    const ALGEB r = multipleOfPi(state, x);
    return r != nullptr && isExact(r) ? circular(state, f, r) : nullptr;
  }
  if (isOneOf(f, {"arcsin", "asin", "arccos", "acos", "arctan", "atan"})) {
    return arc(state, f, x);
  }
  if (f == "exp") {
    return exponential(state, x);
  }
  return f == "ln" || f == "log" ? logarithm(state, x) : nullptr;
}

}  // namespace vexel
