// Arithmetic of numbers of any kinds.
//
// Exact with exact stays exact; a float makes the result a float rounded once to "Digits" decimal
// digits.  Infinities and undefined follow the rules of IEEE doubles.
// Floats and rationals take part exactly, with one rounding of the result; numbers of few digits go
// by 128 bits (small_decimal.hpp), with the same results.

#include <algorithm>
#include <cmath>
#include <limits>

#include "values/arithmetic_parts.hpp"

namespace vexel {

namespace {

// A real number as a double of the same sign and finiteness, for the rules of infinities.
double signature(ALGEB x) {
  if (isSpecial(x) || (isDoubleFloat(x) && doubleOf(x) == 0.0)) {
    return doubleOf(x);
  }
  return static_cast<double>(sign(x));
}

// A finite real number as a decimal: floats and integers exactly, rationals to spare digits.
Decimal toDecimal(ALGEB x, std::int64_t digits) {
  constexpr int kSpareDigits = 20;
  if (isFloat(x)) {
    return decimalOfFloat(x);
  }
  if (isRational(x)) {
    return divideToDecimal(IntegerView(operand(x, 1)).get(), IntegerView(operand(x, 2)).get(),
                           digits + kSpareDigits);
  }
  Decimal d;
  mpz_set(d.mantissa.get(), IntegerView(x).get());
  return d;
}

// Both operands in 128-bit form, if they fit and so few digits are kept.
bool bothSmall(ALGEB a, ALGEB b, std::int64_t digits, SmallDecimal& x, SmallDecimal& y) {
  return digits <= kSmallDigits && smallDecimalOf(a, x) && smallDecimalOf(b, y);
}

// A finite number as n/d times a power of ten.
struct Quotient {
  explicit Quotient(ALGEB x) : d(1) {
    if (isFloat(x)) {
      decimalOf(x, n, exponent);
    } else {
      mpz_set(n.get(), IntegerView(numerator(x)).get());
      mpz_set(d.get(), IntegerView(denominator(x)).get());
    }
  }
  BigInteger n;
  BigInteger d;
  std::int64_t exponent = 0;
};

// n/d 10^exponent rounded once.
ALGEB roundedQuotient(State& state, const Quotient& q) {
  Decimal result;
  if (mpz_sgn(q.n.get()) != 0) {
    result = divideToDecimal(q.n.get(), q.d.get(), state.digits());
    result.exponent += q.exponent;
  }
  return toFloat(state, result);
}

// The sum of a float and a rational, which may cancel down to digits far behind those kept; null
// when it would take very many digits.
ALGEB sumWithRational(State& state, ALGEB a, ALGEB b, bool minus) {
  constexpr std::int64_t kMostPlaces = 20'000;
  Quotient x(a);
  Quotient y(b);
  for (Quotient* q : {&x, &y}) {
    if (std::abs(q->exponent) > kMostPlaces) {
      return nullptr;
    }
    scaleByTen(q->exponent >= 0 ? q->n.get() : q->d.get(),
               static_cast<std::uint64_t>(std::abs(q->exponent)));
    q->exponent = 0;
  }
  mpz_mul(x.n.get(), x.n.get(), y.d.get());
  mpz_mul(y.n.get(), y.n.get(), x.d.get());
  minus ? mpz_sub(x.n.get(), x.n.get(), y.n.get()) : mpz_add(x.n.get(), x.n.get(), y.n.get());
  mpz_mul(x.d.get(), x.d.get(), y.d.get());
  return roundedQuotient(state, x);
}

ALGEB productWithRational(State& state, ALGEB a, ALGEB b) {
  Quotient x(a);
  const Quotient y(b);
  mpz_mul(x.n.get(), x.n.get(), y.n.get());
  mpz_mul(x.d.get(), x.d.get(), y.d.get());
  x.exponent += y.exponent;
  return roundedQuotient(state, x);
}

ALGEB quotientWithRational(State& state, ALGEB a, ALGEB b) {
  Quotient x(a);
  const Quotient y(b);
  mpz_mul(x.n.get(), x.n.get(), y.d.get());
  mpz_mul(x.d.get(), x.d.get(), y.n.get());
  if (mpz_sgn(x.d.get()) < 0) {
    mpz_neg(x.n.get(), x.n.get());
    mpz_neg(x.d.get(), x.d.get());
  }
  x.exponent -= y.exponent;
  return roundedQuotient(state, x);
}

// Where a rational is too far from the float to be added exactly, 20 spare digits of it are.
ALGEB floatSum(State& state, ALGEB a, ALGEB b, bool minus) {
  if (isSpecial(a) || isSpecial(b)) {
    return newFloat(state, minus ? signature(a) - signature(b) : signature(a) + signature(b));
  }
  // The exact 0 leaves a zero its sign.
  if (isZero(a) && isZero(b) && (isInteger(a) || isInteger(b))) {
    return isInteger(b) ? a : minus ? newFloat(state, -doubleOf(b)) : b;
  }
  const int digits = state.digits();
  if (isRational(a) || isRational(b)) {
    if (const ALGEB sum = sumWithRational(state, a, b, minus)) {
      return sum;
    }
  }
  SmallDecimal small;
  SmallDecimal other;
  if (bothSmall(a, b, digits, small, other)) {
    other.mantissa = minus ? -other.mantissa : other.mantissa;
    SmallDecimal sum;
    if (addSmall(small, other, digits, sum)) {
      return toFloat(state, sum);
    }
  }
  const Decimal x = toDecimal(a, digits);
  Decimal y = toDecimal(b, digits);
  if (minus) {
    mpz_neg(y.mantissa.get(), y.mantissa.get());
  }
  return toFloat(state, addDecimals(x, y, digits));
}

ALGEB floatProduct(State& state, ALGEB a, ALGEB b) {
  const double rule = signature(a) * signature(b);
  if (rule == 0.0 || !std::isfinite(rule)) {
    return newFloat(state, rule);
  }
  if (isRational(a) || isRational(b)) {
    return productWithRational(state, a, b);
  }
  const int digits = state.digits();
  SmallDecimal small;
  SmallDecimal other;
  if (bothSmall(a, b, digits, small, other)) {
    return toFloat(state, multiplySmall(small, other, digits));
  }
  Decimal x = toDecimal(a, digits);
  const Decimal y = toDecimal(b, digits);
  checkBits(state, bitsOf(x.mantissa.get()) + bitsOf(y.mantissa.get()));
  mpz_mul(x.mantissa.get(), x.mantissa.get(), y.mantissa.get());
  x.exponent += y.exponent;
  roundDecimal(x, digits);
  return toFloat(state, x);
}

ALGEB floatQuotient(State& state, ALGEB a, ALGEB b) {
  const double rule = signature(a) / signature(b);
  if (rule == 0.0 || !std::isfinite(rule)) {
    return newFloat(state, rule);
  }
  if (isRational(a) || isRational(b)) {
    return quotientWithRational(state, a, b);
  }
  const int digits = state.digits();
  SmallDecimal small;
  SmallDecimal other;
  if (bothSmall(a, b, digits, small, other)) {
    return toFloat(state, divideSmall(small, other, digits));
  }
  Decimal x = toDecimal(a, digits);
  Decimal y = toDecimal(b, digits);
  if (mpz_sgn(y.mantissa.get()) < 0) {
    mpz_neg(x.mantissa.get(), x.mantissa.get());
    mpz_neg(y.mantissa.get(), y.mantissa.get());
  }
  Decimal q = divideToDecimal(x.mantissa.get(), y.mantissa.get(), digits);
  q.exponent += x.exponent - y.exponent;
  return toFloat(state, q);
}

// n/d op m/e for exact numbers that are not both immediate.
ALGEB exactSum(State& state, ALGEB a, ALGEB b, bool minus) {
  const IntegerView n(numerator(a));
  const IntegerView d(denominator(a));
  const IntegerView m(numerator(b));
  const IntegerView e(denominator(b));
  checkBits(state, bitsOf(n.get()) + bitsOf(e.get()));
  checkBits(state, bitsOf(m.get()) + bitsOf(d.get()));
  BigInteger left;
  BigInteger right;
  mpz_mul(left.get(), n.get(), e.get());
  mpz_mul(right.get(), m.get(), d.get());
  minus ? mpz_sub(left.get(), left.get(), right.get())
        : mpz_add(left.get(), left.get(), right.get());
  if (isInteger(a) && isInteger(b)) {
    return newInteger(state, left.get());
  }
  mpz_mul(right.get(), d.get(), e.get());
  return newRational(state, left.get(), right.get());
}

// (n / d) (m / e); newRational takes out what numerator and denominator have in common.
ALGEB exactProduct(State& state, ALGEB n, ALGEB m, ALGEB d, ALGEB e) {
  const IntegerView a(n);
  const IntegerView b(m);
  const IntegerView c(d);
  const IntegerView f(e);
  checkBits(state, bitsOf(a.get()) + bitsOf(b.get()));
  checkBits(state, bitsOf(c.get()) + bitsOf(f.get()));
  BigInteger top;
  BigInteger bottom;
  mpz_mul(top.get(), a.get(), b.get());
  mpz_mul(bottom.get(), c.get(), f.get());
  return newRational(state, top.get(), bottom.get());
}

// Products and quotients of parts of complex numbers: an exact 0 stays one.
ALGEB partProduct(State& state, ALGEB a, ALGEB b) {
  return a == immediate(0) || b == immediate(0) ? immediate(0) : multiply(state, a, b);
}
ALGEB partQuotient(State& state, ALGEB a, ALGEB b) {
  return a == immediate(0) && !isZero(b) ? a : divide(state, a, b);
}

ALGEB realSum(State& state, ALGEB a, ALGEB b, bool minus) {
  if (isImmediate(a) && isImmediate(b)) {
    const std::int64_t x = immediateValue(a);
    const std::int64_t y = immediateValue(b);
    return newInteger(state, minus ? x - y : x + y);
  }
  return isFloat(a) || isFloat(b) ? floatSum(state, a, b, minus) : exactSum(state, a, b, minus);
}

ALGEB sumOrDifference(State& state, ALGEB a, ALGEB b, bool minus) {
  checkNumbers(state, a, b);
  if (isComplex(a) || isComplex(b)) {
    ALGEB re = realSum(state, realPart(a), realPart(b), minus);
    ALGEB im = realSum(state, imaginaryPart(a), imaginaryPart(b), minus);
    return complexOrReal(state, re, im);
  }
  return realSum(state, a, b, minus);
}

}  // namespace

ALGEB add(State& state, ALGEB a, ALGEB b) { return sumOrDifference(state, a, b, false); }

ALGEB subtract(State& state, ALGEB a, ALGEB b) { return sumOrDifference(state, a, b, true); }

ALGEB multiply(State& state, ALGEB a, ALGEB b) {
  checkNumbers(state, a, b);
  if (isComplex(a) || isComplex(b)) {
    ALGEB re = subtract(state, partProduct(state, realPart(a), realPart(b)),
                        partProduct(state, imaginaryPart(a), imaginaryPart(b)));
    ALGEB im = add(state, partProduct(state, realPart(a), imaginaryPart(b)),
                   partProduct(state, imaginaryPart(a), realPart(b)));
    return complexOrReal(state, re, im);
  }
  if (isFloat(a) || isFloat(b)) {
    return floatProduct(state, a, b);
  }
  std::int64_t product = 0;
  if (isImmediate(a) && isImmediate(b) &&
      !__builtin_mul_overflow(immediateValue(a), immediateValue(b), &product)) {
    return newInteger(state, product);
  }
  return exactProduct(state, numerator(a), numerator(b), denominator(a), denominator(b));
}

ALGEB divide(State& state, ALGEB a, ALGEB b) {
  checkNumbers(state, a, b);
  if (isComplex(b)) {
    // a conj(b) / |b|^2
    ALGEB conjugate = newComplex(state, realPart(b), negate(state, imaginaryPart(b)));
    ALGEB norm = add(state, partProduct(state, realPart(b), realPart(b)),
                     partProduct(state, imaginaryPart(b), imaginaryPart(b)));
    return divide(state, multiply(state, a, conjugate), norm);
  }
  if (isComplex(a)) {
    ALGEB re = partQuotient(state, realPart(a), b);
    return complexOrReal(state, re, partQuotient(state, imaginaryPart(a), b));
  }
  if (b == immediate(0)) {
    raise(state, "division by zero");
  }
  if (isFloat(a) || isFloat(b)) {
    return floatQuotient(state, a, b);
  }
  return exactProduct(state, numerator(a), denominator(b), denominator(a), numerator(b));
}

// Of a float without rounding: it may have more digits than Digits now is.
ALGEB negate(State& state, ALGEB a) {
  if (isDoubleFloat(a)) {
    return newFloat(state, -doubleOf(a));
  }
  if (isFloat(a)) {
    Decimal d = decimalOfFloat(a);
    mpz_neg(d.mantissa.get(), d.mantissa.get());
    return toFloat(state, d);
  }
  return subtract(state, immediate(0), a);
}

ALGEB absolute(State& state, ALGEB a) {
  const bool negative = sign(a) < 0 || (isDoubleFloat(a) && std::signbit(doubleOf(a)));
  return negative && !isUndefined(state, a) ? negate(state, a) : a;
}

ALGEB roundToDigits(State& state, ALGEB x, int digits) {
  checkDigits(state, digits);
  if (isComplex(x)) {
    ALGEB re = roundToDigits(state, operand(x, 1), digits);
    return newComplex(state, re, roundToDigits(state, operand(x, 2), digits));
  }
  if (isSpecial(x) || (isFloat(x) && isZero(x))) {
    return x;
  }
  if (isDoubleFloat(x) && digits >= 17) {
    return x;  // no double's shortest decimal has more digits
  }
  if (isRational(x)) {
    return toFloat(state, divideToDecimal(IntegerView(operand(x, 1)).get(),
                                          IntegerView(operand(x, 2)).get(), digits));
  }
  if (SmallDecimal small; digits <= kSmallDigits && smallDecimalOf(x, small)) {
    return toFloat(state, roundSmall(small, digits));
  }
  Decimal d = toDecimal(x, digits);
  roundDecimal(d, digits);
  return toFloat(state, d);
}

}  // namespace vexel
