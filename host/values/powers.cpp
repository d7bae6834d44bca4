// Powers of numbers of any kinds with whole exponents; exact ones of exact numbers, floats rounded
// once to "Digits" decimal digits.

#include <algorithm>
#include <cmath>

#include "values/arithmetic_parts.hpp"

namespace vexel {

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

}  // namespace vexel
