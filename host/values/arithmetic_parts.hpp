// What the files of the arithmetic of numbers share.
#pragma once

#include <cstddef>
#include <cstdint>

#include "values/decimal.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/small_decimal.hpp"

namespace vexel {

inline std::size_t bitsOf(mpz_srcptr z) { return mpz_sizeinbase(z, 2); }

// Before an operation whose result would take very much memory, and time.
inline void checkBits(State& state, std::size_t bits) {
  if (bits > kMaxIntegerBits) {
    raise(state, "integer too large");
  }
}

inline ALGEB toFloat(State& state, const Decimal& d) {
  return newFloat(state, d.mantissa.get(), d.exponent);
}

inline ALGEB toFloat(State& state, const SmallDecimal& d) {
  return newFloat(state, static_cast<std::int64_t>(d.mantissa), d.exponent);
}

// A complex number whose exact zero imaginary part makes it a real one.
inline ALGEB complexOrReal(State& state, ALGEB re, ALGEB im) {
  return im == immediate(0) ? re : newComplex(state, re, im);
}

inline void checkNumbers(State& state, ALGEB a, ALGEB b) {
  for (ALGEB x : {a, b}) {
    if (!isNumber(x)) {
      raise(state, "a number expected, received %1", x);
    }
  }
}

}  // namespace vexel
