// Arithmetic of numbers of any kinds.
//
// Exact with exact stays exact; a float makes the result a float rounded once to "Digits" decimal
// digits.  Infinities and undefined follow the rules of IEEE doubles.
// Floats and rationals take part exactly, with one rounding of the result; numbers of few digits go
// by 128 bits (small_decimal.hpp), with the same results.

#include <algorithm>
#include <limits>

#include "values/decimal.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/small_decimal.hpp"

namespace vexel {

namespace {

std::size_t bitsOf(mpz_srcptr z) { return mpz_sizeinbase(z, 2); }

// Before an operation whose result would take very much memory, and time.
void checkBits(State& state, std::size_t bits) {
  if (bits > kMaxIntegerBits) {
    raise(state, "integer too large");
  }
}

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

ALGEB toFloat(State& state, const Decimal& d) {
  return newFloat(state, d.mantissa.get(), d.exponent);
}

ALGEB toFloat(State& state, const SmallDecimal& d) {
  return newFloat(state, static_cast<std::int64_t>(d.mantissa), d.exponent);
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

// A complex number whose exact zero imaginary part makes it a real one.
ALGEB complexOrReal(State& state, ALGEB re, ALGEB im) {
  return im == immediate(0) ? re : newComplex(state, re, im);
}

// Products and quotients of parts of complex numbers: an exact 0 stays one.
ALGEB partProduct(State& state, ALGEB a, ALGEB b) {
  return a == immediate(0) || b == immediate(0) ? immediate(0) : multiply(state, a, b);
}
ALGEB partQuotient(State& state, ALGEB a, ALGEB b) {
  return a == immediate(0) && !isZero(b) ? a : divide(state, a, b);
}

void checkNumbers(State& state, ALGEB a, ALGEB b) {
  for (ALGEB x : {a, b}) {
    if (!isNumber(x)) {
      raise(state, "a number expected, received %1", x);
    }
  }
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

namespace {

// m^n 10^(e n) with its integers: right where the power lies half-way between two decimals.
ALGEB shortPower(State& state, const Decimal& base, std::int64_t n) {
  Decimal power;
  mpz_pow_ui(power.mantissa.get(), base.mantissa.get(), static_cast<std::uint64_t>(std::abs(n)));
  if (n < 0) {
    if (mpz_sgn(power.mantissa.get()) < 0) {
      mpz_neg(power.mantissa.get(), power.mantissa.get());
      power = divideToDecimal(BigInteger(-1).get(), power.mantissa.get(), state.digits());
    } else {
      power = divideToDecimal(BigInteger(1).get(), power.mantissa.get(), state.digits());
    }
  } else {
    roundDecimal(power, state.digits());
  }
  power.exponent += base.exponent * n;
  return toFloat(state, power);
}

ALGEB floatPower(State& state, ALGEB a, ALGEB n) {
  if (isSpecial(a) || isZero(a)) {
    return newFloat(state, std::pow(doubleOf(a), toDouble(state, n)));
  }
  SmallDecimal small;
  if (isImmediate(n) && immediateValue(n) >= 1 && immediateValue(n) <= kMostSmallPower &&
      state.digits() <= kSmallDigits && smallDecimalOf(a, small) &&
      powerSmall(small, static_cast<int>(immediateValue(n)), state.digits(), small)) {
    return toFloat(state, small);
  }
  const Decimal base = decimalOfFloat(a);
  const std::size_t bits = bitsOf(base.mantissa.get());
  // A power of more bits has too many digits to lie half-way, or so near that it matters.
  const std::size_t shortBits = 8 * static_cast<std::size_t>(state.digits()) + 8192;
  if (isImmediate(n) &&
      std::abs(immediateValue(n)) <= static_cast<std::int64_t>(shortBits / bits)) {
    return shortPower(state, base, immediateValue(n));
  }
  // The exponent magnifies the base's rounding; where it has many more bits than the base, the
  // power is beyond all range.
  constexpr std::size_t kSpareBits = 64;
  const std::size_t magnified = std::min(bitsOf(IntegerView(n).get()), bits + kSpareBits);
  RealNumber x(bitsForDigits(state, state.digits()) +
               static_cast<mpfr_prec_t>(magnified + kSpareBits));
  toMpfr(state, x.get(), a);
  mpfr_pow_z(x.get(), x.get(), IntegerView(n).get(), MPFR_RNDN);
  return fromMpfr(state, x.get(), state.digits());
}

ALGEB complexPower(State& state, ALGEB a, std::int64_t n) {
  if (n < 0) {
    return divide(state, immediate(1), complexPower(state, a, -n));
  }
  ALGEB result = immediate(1);
  for (ALGEB square = a; n != 0; n >>= 1) {
    if ((n & 1) != 0) {
      result = multiply(state, result, square);
    }
    if (n > 1) {
      square = multiply(state, square, square);
    }
  }
  return result;
}

}  // namespace

ALGEB integerPower(State& state, ALGEB a, ALGEB n) {
  checkNumbers(state, a, n);
  if (isFloat(a)) {
    return n == immediate(0) ? newFloat(state, 1.0) : floatPower(state, a, n);
  }
  if (n == immediate(0) || a == immediate(1)) {
    return immediate(1);
  }
  if (a == immediate(0)) {
    if (sign(n) < 0) {
      raise(state, "division by zero");
    }
    return a;
  }
  if (a == immediate(-1)) {
    return mpz_even_p(IntegerView(n).get()) != 0 ? immediate(1) : a;
  }
  std::int64_t k = 0;
  if (fitsInt64(n, &k) && k != INT64_MIN && isComplex(a) &&
      (isFloat(operand(a, 1)) || isFloat(operand(a, 2)))) {
    // Every product rounds, and the exponent magnifies that.
    const int digits = state.digits();
    const int magnified = static_cast<int>(decimalDigits(IntegerView(n).get()));
    ALGEB power = nullptr;
    {
      const DigitsScope scope(state, std::min(digits + 2 * magnified + 10, kMaxDigits));
      power = complexPower(state, a, k);
    }
    const auto rounded = [&](ALGEB part) {
      return isFloat(part) ? roundToDigits(state, part, digits) : part;
    };
    const ALGEB re = rounded(realPart(power));
    return complexOrReal(state, re, rounded(imaginaryPart(power)));
  }
  if (!fitsInt64(n, &k) || std::abs(k / 2) >= static_cast<std::int64_t>(kMaxIntegerBits)) {
    raise(state, "integer too large");
  }
  if (isComplex(a)) {
    return complexPower(state, a, k);
  }
  const std::uint64_t e = static_cast<std::uint64_t>(std::abs(k));
  BigInteger top;
  BigInteger bottom;
  const IntegerView p(numerator(a));
  const IntegerView q(denominator(a));
  // A number of b bits is at least 2^(b-1).
  checkBits(state, (std::max(bitsOf(p.get()), bitsOf(q.get())) - 1) * e);
  mpz_pow_ui(top.get(), p.get(), e);
  mpz_pow_ui(bottom.get(), q.get(), e);
  return k < 0 ? newRational(state, bottom.get(), top.get())
               : newRational(state, top.get(), bottom.get());
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
