// Numbers of about 106 bits as the unevaluated sum of two doubles.
//
// T. J. Dekker, A floating-point technique for extending the available precision, 1971; errors of
// the operations by M. Joldes, J.-M. Muller and V. Popescu, Tight and rigorous error bounds for
// basic building blocks of double-word arithmetic, 2017: below 2^-100 relative, but for a sum of
// opposite signs, where it is below 2^-104 of the larger one.
#pragma once

#include <cmath>

#include "kernels/exact_product.hpp"

namespace vexel::kernels {

struct DoubleDouble {
  double high = 0.0;
  double low = 0.0;

  constexpr DoubleDouble() = default;
  constexpr DoubleDouble(double x) : high(x) {}
  constexpr DoubleDouble(double h, double l) : high(h), low(l) {}
  explicit constexpr operator double() const { return high; }

  static constexpr DoubleDouble sumOf(double a, double b) {
    const double s = a + b;
    const double fromB = s - a;
    return {s, (a - (s - fromB)) + (b - fromB)};
  }
  // Of |a| >= |b|.
  static constexpr DoubleDouble ordered(double a, double b) {
    const double s = a + b;
    return {s, b - (s - a)};
  }
  static DoubleDouble productOf(double a, double b) {
    const double p = a * b;
    return {p, exactProductError(a, b, p)};
  }

  friend constexpr DoubleDouble operator-(DoubleDouble a) { return {-a.high, -a.low}; }
  friend constexpr DoubleDouble operator+(DoubleDouble a, DoubleDouble b) {
    const DoubleDouble s = sumOf(a.high, b.high);
    const DoubleDouble t = sumOf(a.low, b.low);
    const DoubleDouble v = ordered(s.high, s.low + t.high);
    return ordered(v.high, v.low + t.low);
  }
  friend constexpr DoubleDouble operator-(DoubleDouble a, DoubleDouble b) { return a + -b; }
  friend DoubleDouble operator*(DoubleDouble a, DoubleDouble b) {
    const DoubleDouble p = productOf(a.high, b.high);
    return ordered(p.high, p.low + (a.high * b.low + a.low * b.high));
  }
  friend DoubleDouble operator/(DoubleDouble a, DoubleDouble b) {
    const double q = a.high / b.high;
    const DoubleDouble rest = a - b * DoubleDouble(q);
    const double r = rest.high / b.high;
    const DoubleDouble rest2 = rest - b * DoubleDouble(r);
    return ordered(q, r) + DoubleDouble(rest2.high / b.high);
  }
  friend DoubleDouble sqrt(DoubleDouble a) {
    if (!(a.high > 0.0)) {
      return {std::sqrt(a.high)};
    }
    const double root = std::sqrt(a.high);
    const DoubleDouble rest = a - productOf(root, root);
    return ordered(root, rest.high / (2.0 * root));
  }
  DoubleDouble timesTwoTo(int exponent) const {
    return {std::ldexp(high, exponent), std::ldexp(low, exponent)};
  }
};

}  // namespace vexel::kernels
