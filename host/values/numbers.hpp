// Numbers: exact integers and rationals, software decimal floats, complex numbers.
//
// A float is a decimal, mantissa x 10^exponent.  A float whose decimal is the shortest one that
// reads back to some double is held as that double (length-2 object), any other as a big mantissa
// (length-3 object); so equal floats are one object, and a double taken from a library comes back
// with all its bits.  As a decimal, a float made of a double is that shortest decimal.
// Undefined (the one NaN) and the infinities are double floats too.
//
// Sizes are checked before every operation that could exhaust GMP or MPFR, which end the process:
// a result beyond the limits raises a host error.
#pragma once

#include <gmp.h>
#include <mpfr.h>

#include <bit>
#include <cmath>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "memory/layout.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

inline constexpr std::size_t kMaxIntegerBits = std::size_t{1} << 26;  // 20 million digits
inline constexpr int kMaxDigits = 1'000'000;                          // of software floats
inline constexpr std::int64_t kMaxExponent =
    300'000'000;  // decimal, of floats; within what MPFR represents

// An integer that owns its memory, for intermediate results.
class BigInteger {
 public:
  BigInteger() { mpz_init(z_); }
  explicit BigInteger(std::int64_t i) { mpz_init_set_si(z_, i); }
  BigInteger(const BigInteger& b) { mpz_init_set(z_, b.z_); }
  BigInteger(BigInteger&& b) noexcept {
    mpz_init(z_);
    mpz_swap(z_, b.z_);
  }
  BigInteger& operator=(BigInteger b) noexcept {
    mpz_swap(z_, b.z_);
    return *this;
  }
  ~BigInteger() { mpz_clear(z_); }
  mpz_ptr get() { return z_; }
  mpz_srcptr get() const { return z_; }

 private:
  mpz_t z_;
};

// The value of an integer object without copying its limbs; valid while the object lives.
class IntegerView {
 public:
  explicit IntegerView(ALGEB integer);
  mpz_srcptr get() const { return z_; }
  IntegerView(const IntegerView&) = delete;
  IntegerView& operator=(const IntegerView&) = delete;

 private:
  mp_limb_t small_ = 0;
  mpz_t z_;
};

// A number of MPFR that owns its memory.
class RealNumber {
 public:
  explicit RealNumber(mpfr_prec_t bits) { mpfr_init2(x_, bits); }
  RealNumber(const RealNumber&) = delete;
  RealNumber& operator=(const RealNumber&) = delete;
  ~RealNumber() { mpfr_clear(x_); }
  mpfr_ptr get() { return x_; }
  mpfr_srcptr get() const { return x_; }

 private:
  mpfr_t x_;
};

// --- kinds ---
inline bool isInteger(ALGEB x) { return x != nullptr && (isImmediate(x) || is(x, Tag::integer)); }
inline bool isRational(ALGEB x) { return is(x, Tag::rational); }  // not integers
inline bool isExact(ALGEB x) { return isInteger(x) || isRational(x); }
inline bool isFloat(ALGEB x) { return is(x, Tag::softwareFloat); }
inline bool isReal(ALGEB x) { return isExact(x) || isFloat(x); }  // "numeric"
inline bool isComplex(ALGEB x) { return is(x, Tag::complex); }
inline bool isNumber(ALGEB x) { return isReal(x) || isComplex(x); }
inline bool isDoubleFloat(ALGEB x) { return isFloat(x) && isDoubleObject(x); }
inline double doubleOf(ALGEB doubleFloat) {
  return reinterpret_cast<DoubleObject*>(doubleFloat)->value;
}
// An infinity or undefined.
inline bool isSpecial(ALGEB x) { return isDoubleFloat(x) && !std::isfinite(doubleOf(x)); }
inline bool isUndefined(State& state, ALGEB x) { return x == state.undefined; }
inline bool isInfinite(State& state, ALGEB x) {
  return x == state.infinity || x == state.minusInfinity;
}
inline bool isFinite(State& state, ALGEB x) {
  return !isUndefined(state, x) && !isInfinite(state, x);
}

// --- making numbers ---
ALGEB newInteger(State& state, std::int64_t i);
ALGEB newInteger(State& state, mpz_srcptr z);
ALGEB newRational(State& state, mpz_srcptr numerator, mpz_srcptr denominator);  // reduces; not 0
ALGEB newComplex(State& state, ALGEB re, ALGEB im);                             // also with im zero
inline ALGEB newFloat(State& state, double d) {
  return d == d ? state.interned.real(d) : state.undefined;
}
// mantissa x 10^exponent with every digit of the mantissa.
ALGEB newFloat(State& state, mpz_srcptr mantissa, std::int64_t exponent);
ALGEB newFloat(State& state, std::int64_t mantissa, std::int64_t exponent);  // below 10^18
// Text of an unsigned literal: digits, or with a point or exponent a float.  False when it is none.
ALGEB numberFromText(State& state, std::string_view literal);

// --- taking them apart ---
bool fitsInt64(ALGEB integer, std::int64_t* value);
ALGEB numerator(ALGEB exact);    // of an integer: itself
ALGEB denominator(ALGEB exact);  // of an integer: 1
inline ALGEB realPart(ALGEB number) { return isComplex(number) ? operand(number, 1) : number; }
inline ALGEB imaginaryPart(ALGEB number) {
  return isComplex(number) ? operand(number, 2) : immediate(0);
}
// The decimal of a finite float, exactly.
void decimalOf(ALGEB x, BigInteger& mantissa, std::int64_t& exponent);

// --- signs and order ---
int sign(ALGEB real);       // -1, 0, 1; undefined gives 0
bool isZero(ALGEB number);  // 0, 0.0, -0.0, complex of these
// Exact comparison of two real numbers of any kinds; unordered with undefined.
std::partial_ordering compare(State& state, ALGEB a, ALGEB b);
bool equal(State& state, ALGEB a, ALGEB b);  // numbers of any kinds, complex included

// --- arithmetic of numbers of any kinds; with a float the result is rounded to Digits ---
ALGEB add(State& state, ALGEB a, ALGEB b);
ALGEB subtract(State& state, ALGEB a, ALGEB b);
ALGEB multiply(State& state, ALGEB a, ALGEB b);
ALGEB divide(State& state, ALGEB a, ALGEB b);  // exact division by zero raises; 1.0/0 is infinite
ALGEB negate(State& state, ALGEB a);
ALGEB absolute(State& state, ALGEB real);
// a^n for an integer n; other exponents belong to the language.
ALGEB integerPower(State& state, ALGEB a, ALGEB n);
// Floor and the like: an integer object; undefined and infinities are returned as they are.
enum class Rounding { floor, ceiling, nearest, truncate };  // nearest: halves away from zero
ALGEB toInteger(State& state, ALGEB real, Rounding r);
// Floor division and its remainder of integers; raise for a zero divisor.
ALGEB integerQuotient(State& state, ALGEB a, ALGEB b);
ALGEB integerRemainder(State& state, ALGEB a, ALGEB b);
ALGEB gcd(State& state, ALGEB a, ALGEB b);

// --- floats ---
// A real or complex number as a float of that many decimal digits, rounded to nearest, ties to
// even.
ALGEB roundToDigits(State& state, ALGEB number, int digits);
// The nearest double of a real number, whatever its kind: ties to even, beyond the range an
// infinity.
double toDouble(State& state, ALGEB real);
// Sets Digits for as long as it lives.
class DigitsScope {
 public:
  DigitsScope(State& state, int digits);
  DigitsScope(const DigitsScope&) = delete;
  DigitsScope& operator=(const DigitsScope&) = delete;
  ~DigitsScope();

 private:
  State& state_;
  ALGEB saved_;
};

// MPFR in and out.  toMpfr rounds to x's precision; fromMpfr to decimal digits, both to nearest.
void toMpfr(State& state, mpfr_ptr result, ALGEB real);
ALGEB fromMpfr(State& state, mpfr_srcptr x, int digits);
// Bits that hold that many decimal digits, with a few to spare; raises when digits is out of range.
mpfr_prec_t bitsForDigits(State& state, std::int64_t digits);
void checkDigits(State& state, std::int64_t digits);

}  // namespace vexel
