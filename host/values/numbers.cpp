// Making numbers and taking them apart.

#include "values/numbers.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>

#include "values/decimal.hpp"
#include "values/errors.hpp"
#include "values/objects.hpp"
#include "values/small_decimal.hpp"

namespace vexel {

namespace {

constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// The double nearest to a decimal text; beyond the range an infinity or zero.
double doubleFromText(const char* first, const char* last, bool hugeNotTiny) {
  double d = 0.0;
  const auto result = std::from_chars(first, last, d);
  if (result.ec == std::errc::result_out_of_range) {
    const double limit = hugeNotTiny ? std::numeric_limits<double>::infinity() : 0.0;
    return *first == '-' ? -limit : limit;
  }
  return d;
}

// The double whose shortest decimal is m x 10^e, m < 10^17 without trailing zeros; NaN for none.
double doubleOfShortest(std::uint64_t m, std::int64_t e, bool negative) {
  constexpr std::uint64_t kFifteenDigits = 1'000'000'000'000'000;
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  if (m < kFifteenDigits && e >= -22 && e <= 22) {
    // m and the power are exact, so the one operation rounds correctly; and no two decimals of
    // fifteen digits share a double, so this is its shortest.
    const double d = e >= 0 ? static_cast<double>(m) * kPowersOfTen[e]
                            : static_cast<double>(m) / kPowersOfTen[-e];
    return negative ? -d : d;
  }
  if (e < -400 || e > 400) {
    return kNone;
  }
  double d = 0;
  if (m <= std::uint64_t{1} << 53 && e >= -22 && e <= 22) {
    d = e >= 0 ? static_cast<double>(m) * kPowersOfTen[e]
               : static_cast<double>(m) / kPowersOfTen[-e];
  } else {
    char buffer[48];
    char* p = std::to_chars(buffer, buffer + 24, m).ptr;
    *p++ = 'e';
    p = std::to_chars(p, buffer + sizeof buffer, e).ptr;
    d = doubleFromText(buffer, p, e > 0);
  }
  if (d == 0.0 || std::isinf(d)) {
    return kNone;
  }
  const SmallDecimal back = shortestDecimal(d);
  const bool same = back.mantissa == static_cast<Int128>(m) && back.exponent == e;
  return same ? (negative ? -d : d) : kNone;
}

// No double's shortest decimal has more.
constexpr std::uint64_t kSeventeenDigits = 100'000'000'000'000'000;

// A float that is no double; the mantissa without trailing zeros.
ALGEB newDecimal(State& state, ALGEB mantissa, std::int64_t exponent) {
  if (exponent > kMaxExponent || exponent < -kMaxExponent) {
    raise(state, "exponent of a float out of range");
  }
  const Word payload[] = {reinterpret_cast<Word>(mantissa), static_cast<Word>(exponent)};
  return state.interned.words(Tag::softwareFloat, payload, 2);
}

}  // namespace

IntegerView::IntegerView(ALGEB x) {
  if (isImmediate(x)) {
    const std::int64_t i = immediateValue(x);
    small_ = static_cast<mp_limb_t>(i < 0 ? -i : i);
    mpz_roinit_n(z_, &small_, i < 0 ? -1 : 1);
  } else {
    mpz_roinit_n(z_, reinterpret_cast<const mp_limb_t*>(words(x) + 2),
                 static_cast<mp_size_t>(words(x)[1]));
  }
}

ALGEB newInteger(State& state, std::int64_t i) {
  if (i >= kSmallestImmediate && i <= kLargestImmediate) {
    return immediate(i);
  }
  const std::uint64_t magnitude =
      i < 0 ? 0 - static_cast<std::uint64_t>(i) : static_cast<std::uint64_t>(i);
  const Word payload[] = {static_cast<Word>(std::int64_t{i < 0 ? -1 : 1}), magnitude};
  return state.interned.words(Tag::integer, payload, 2);
}

ALGEB newInteger(State& state, mpz_srcptr z) {
  if (mpz_fits_slong_p(z) != 0) {
    return newInteger(state, static_cast<std::int64_t>(mpz_get_si(z)));
  }
  const std::size_t limbs = mpz_size(z);
  if (limbs * 64 > kMaxIntegerBits + 64) {
    raise(state, "integer too large");
  }
  std::array<Word, 34> few;
  std::vector<Word> many;
  Word* payload = few.data();
  if (limbs + 1 > few.size()) {
    many.resize(limbs + 1);
    payload = many.data();
  }
  payload[0] =
      static_cast<Word>(static_cast<std::int64_t>(mpz_sgn(z)) * static_cast<std::int64_t>(limbs));
  std::memcpy(payload + 1, mpz_limbs_read(z), limbs * sizeof(Word));
  return state.interned.words(Tag::integer, payload, limbs + 1);
}

ALGEB newRational(State& state, mpz_srcptr numerator, mpz_srcptr denominator) {
  BigInteger n;
  BigInteger d;
  BigInteger g;
  mpz_gcd(g.get(), numerator, denominator);
  mpz_divexact(n.get(), numerator, g.get());
  mpz_divexact(d.get(), denominator, g.get());
  if (mpz_sgn(d.get()) < 0) {
    mpz_neg(n.get(), n.get());
    mpz_neg(d.get(), d.get());
  }
  if (mpz_cmp_ui(d.get(), 1) == 0) {
    return newInteger(state, n.get());
  }
  ALGEB top = newInteger(state, n.get());
  ALGEB bottom = newInteger(state, d.get());
  const Word payload[] = {reinterpret_cast<Word>(top), reinterpret_cast<Word>(bottom)};
  return state.interned.words(Tag::rational, payload, 2);
}

ALGEB newComplex(State& state, ALGEB re, ALGEB im) {
  const Word payload[] = {reinterpret_cast<Word>(re), reinterpret_cast<Word>(im)};
  return state.interned.words(Tag::complex, payload, 2);
}

ALGEB newFloat(State& state, mpz_srcptr mantissa, std::int64_t exponent) {
  if (mpz_sgn(mantissa) == 0) {
    return state.interned.real(0.0);
  }
  BigInteger stripped;
  mpz_srcptr m = mantissa;
  if (mpz_size(mantissa) > 1) {
    BigInteger ten(10);
    exponent += static_cast<std::int64_t>(mpz_remove(stripped.get(), mantissa, ten.get()));
    m = stripped.get();
  }
  if (mpz_size(m) == 1) {
    std::uint64_t small = mpz_getlimbn(m, 0);
    for (; small % 10 == 0; small /= 10) {
      ++exponent;
    }
    if (small < kSeventeenDigits) {
      const double d = doubleOfShortest(small, exponent, mpz_sgn(m) < 0);
      if (d == d) {
        return state.interned.real(d);
      }
    }
    const int sign = mpz_sgn(m);
    mpz_set_ui(stripped.get(), small);
    if (sign < 0) {
      mpz_neg(stripped.get(), stripped.get());
    }
    m = stripped.get();
  }
  return newDecimal(state, newInteger(state, m), exponent);
}

ALGEB newFloat(State& state, std::int64_t mantissa, std::int64_t exponent) {
  if (mantissa == 0) {
    return state.interned.real(0.0);
  }
  const bool negative = mantissa < 0;
  std::uint64_t m = static_cast<std::uint64_t>(negative ? -mantissa : mantissa);
  for (; m % 10 == 0; m /= 10) {
    ++exponent;
  }
  if (m < kSeventeenDigits) {
    const double d = doubleOfShortest(m, exponent, negative);
    if (d == d) {
      return state.interned.real(d);
    }
  }
  return newDecimal(
      state,
      newInteger(state, negative ? -static_cast<std::int64_t>(m) : static_cast<std::int64_t>(m)),
      exponent);
}

ALGEB numberFromText(State& state, std::string_view literal) {
  std::string digits;
  std::int64_t exponent = 0;
  bool isFloatLiteral = false;
  std::size_t i = 0;
  const auto takeDigits = [&] {
    const std::size_t from = i;
    while (i < literal.size() && literal[i] >= '0' && literal[i] <= '9') {
      digits += literal[i++];
    }
    return static_cast<std::int64_t>(i - from);
  };
  takeDigits();
  if (i < literal.size() && literal[i] == '.') {
    ++i;
    isFloatLiteral = true;
    exponent -= takeDigits();
  }
  if (digits.empty()) {
    return nullptr;
  }
  if (i < literal.size() && (literal[i] == 'e' || literal[i] == 'E')) {
    isFloatLiteral = true;
    const bool plus = i + 1 < literal.size() && literal[i + 1] == '+';
    i += plus ? 2 : 1;
    if (plus && i < literal.size() && literal[i] == '-') {
      return nullptr;
    }
    std::int64_t written = 0;
    const auto [end, error] =
        std::from_chars(literal.data() + i, literal.data() + literal.size(), written);
    if (error == std::errc::result_out_of_range ||
        (error == std::errc() && std::abs(written / 2) > kMaxExponent)) {
      raise(state, "exponent of a float out of range");
    }
    if (error != std::errc()) {
      return nullptr;
    }
    exponent += written;
    i = static_cast<std::size_t>(end - literal.data());
  }
  if (i != literal.size()) {
    return nullptr;
  }
  if (digits.size() > kMaxIntegerBits * 3 / 10) {
    raise(state, "integer too large");
  }
  BigInteger z;
  mpz_set_str(z.get(), digits.c_str(), 10);
  return isFloatLiteral ? newFloat(state, z.get(), exponent) : newInteger(state, z.get());
}

bool fitsInt64(ALGEB x, std::int64_t* value) {
  if (isImmediate(x)) {
    *value = immediateValue(x);
    return true;
  }
  const IntegerView view(x);
  if (mpz_fits_slong_p(view.get()) == 0) {
    return false;
  }
  *value = mpz_get_si(view.get());
  return true;
}

ALGEB numerator(ALGEB exact) { return isRational(exact) ? operand(exact, 1) : exact; }

ALGEB denominator(ALGEB exact) { return isRational(exact) ? operand(exact, 2) : immediate(1); }

void decimalOf(ALGEB x, BigInteger& mantissa, std::int64_t& exponent) {
  if (isDoubleFloat(x)) {
    const SmallDecimal d = shortestDecimal(doubleOf(x));
    mpz_set_si(mantissa.get(), static_cast<std::int64_t>(d.mantissa));
    exponent = d.exponent;
  } else {
    mpz_set(mantissa.get(), IntegerView(decimalObject(x).mantissa).get());
    exponent = decimalObject(x).exponent;
  }
}

// ---- conversions

namespace {

// Quotient of integers as the nearest double: at least 66 bits of it with a sticky last bit, which
// MPFR then rounds once, subnormal results included.
double quotientToDouble(mpz_srcptr numerator, mpz_srcptr denominator) {
  const auto bits = [](mpz_srcptr z) { return static_cast<long>(mpz_sizeinbase(z, 2)); };
  const long shift = std::max(0L, 67 - (bits(numerator) - bits(denominator)));
  BigInteger scaled;
  BigInteger q;
  BigInteger rest;
  mpz_mul_2exp(scaled.get(), numerator, static_cast<mp_bitcnt_t>(shift));
  mpz_tdiv_qr(q.get(), rest.get(), scaled.get(), denominator);
  if (mpz_sgn(rest.get()) != 0 && mpz_even_p(q.get()) != 0) {
    mpz_sgn(q.get()) < 0 ? mpz_sub_ui(q.get(), q.get(), 1) : mpz_add_ui(q.get(), q.get(), 1);
  }
  RealNumber x(std::max<mpfr_prec_t>(80, bits(q.get())));
  mpfr_set_z(x.get(), q.get(), MPFR_RNDN);
  mpfr_mul_2si(x.get(), x.get(), -shift, MPFR_RNDN);
  return mpfr_get_d(x.get(), MPFR_RNDN);
}

std::string decimalText(ALGEB x) {
  BigInteger m;
  std::int64_t e = 0;
  decimalOf(x, m, e);
  std::string s(mpz_sizeinbase(m.get(), 10) + 2, '\0');
  mpz_get_str(s.data(), 10, m.get());
  s.resize(std::strlen(s.c_str()));
  return s + "e" + std::to_string(e);
}

}  // namespace

double toDouble(State&, ALGEB x) {
  if (isImmediate(x)) {
    return static_cast<double>(immediateValue(x));
  }
  if (isFloat(x)) {
    if (isDoubleObject(x)) {
      return doubleOf(x);
    }
    const std::string s = decimalText(x);
    const std::int64_t leading = decimalObject(x).exponent + static_cast<std::int64_t>(s.find('e'));
    return doubleFromText(s.data(), s.data() + s.size(), leading > 0);
  }
  if (isRational(x)) {
    return quotientToDouble(IntegerView(operand(x, 1)).get(), IntegerView(operand(x, 2)).get());
  }
  RealNumber rounded(53);
  mpfr_set_z(rounded.get(), IntegerView(x).get(), MPFR_RNDN);
  return mpfr_get_d(rounded.get(), MPFR_RNDN);
}

DigitsScope::DigitsScope(State& state, int digits)
    : state_(state), saved_(nameValue(state.digitsName)) {
  setNameValue(state, state.digitsName, immediate(digits));
}
DigitsScope::~DigitsScope() { setNameValue(state_, state_.digitsName, saved_); }

void checkDigits(State& state, std::int64_t digits) {
  if (digits < 1 || digits > kMaxDigits) {
    raise(state, "number of digits out of range, received %1", newInteger(state, digits));
  }
}

mpfr_prec_t bitsForDigits(State& state, std::int64_t digits) {
  checkDigits(state, digits);
  return static_cast<mpfr_prec_t>(digits * 3322 / 1000 + 16);
}

void toMpfr(State&, mpfr_ptr result, ALGEB x) {
  if (isInteger(x)) {
    mpfr_set_z(result, IntegerView(x).get(), MPFR_RNDN);
  } else if (isRational(x)) {
    const IntegerView n(operand(x, 1));
    const IntegerView d(operand(x, 2));
    mpq_t q;
    *mpq_numref(q) = *n.get();
    *mpq_denref(q) = *d.get();
    mpfr_set_q(result, q, MPFR_RNDN);
  } else if (isDoubleFloat(x) && (!std::isfinite(doubleOf(x)) || doubleOf(x) == 0.0)) {
    mpfr_set_d(result, doubleOf(x), MPFR_RNDN);
  } else {
    mpfr_set_str(result, decimalText(x).c_str(), 10, MPFR_RNDN);
  }
}

ALGEB fromMpfr(State& state, mpfr_srcptr x, int digits) {
  if (mpfr_number_p(x) == 0 || mpfr_zero_p(x) != 0) {
    return newFloat(state, mpfr_get_d(x, MPFR_RNDN));
  }
  checkDigits(state, digits);
  mpfr_exp_t exponent = 0;
  char* s = mpfr_get_str(nullptr, &exponent, 10, static_cast<std::size_t>(digits), x, MPFR_RNDN);
  BigInteger m;
  mpz_set_str(m.get(), s, 10);
  const std::size_t count = std::strlen(s) - (s[0] == '-' ? 1U : 0U);
  mpfr_free_str(s);
  return newFloat(state, m.get(), exponent - static_cast<std::int64_t>(count));
}

}  // namespace vexel
