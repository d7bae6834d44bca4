// The rounding error of a product.
#pragma once

#include <cmath>

namespace vexel::kernels {

// a b - p, exactly where it is a double, for p = a b rounded.
inline double exactProductError(double a, double b, double p) {
#ifdef __FMA__
  return std::fma(a, b, -p);
#else
  // T. J. Dekker, A floating-point technique for extending the available precision, 1971; it needs
  // room above and below, which the library's slow fma does not.
  const double size = std::fabs(p);
  if (size > 0x1p-960 && size < 0x1p960 && std::fabs(a) < 0x1p960 && std::fabs(b) < 0x1p960) {
    constexpr double split = 134217729.0;  // 2^27 + 1
    const double aHigh = split * a - (split * a - a);
    const double aLow = a - aHigh;
    const double bHigh = split * b - (split * b - b);
    const double bLow = b - bHigh;
    return ((aHigh * bHigh - p) + aHigh * bLow + aLow * bHigh) + aLow * bLow;
  }
  return std::fma(a, b, -p);
#endif
}

}  // namespace vexel::kernels
