// Elements of the laws' functions, in plain doubles: gamma function near 1, Stirling error,
// deviance, normal tails and their logarithms.
//
// Measured against 40 digits: every function within 3 epsilons, of its value or, for the logarithms
// of gamma functions away from their zeros, of 1.
#pragma once

#include <cmath>

#include "numerics/special/special_tables.hpp"

namespace nag2 {

inline constexpr double logRootTwoPi = 0.91893853320467274178;
inline constexpr double rootTwoPi = 2.5066282746310005024;

// By halves, so that less waits for less.
inline double polynomial(const double (&c)[15], double t) {
  const double t2 = t * t;
  const double t4 = t2 * t2;
  const double low = ((c[0] + c[1] * t) + (c[2] + c[3] * t) * t2) +
                     ((c[4] + c[5] * t) + (c[6] + c[7] * t) * t2) * t4;
  const double high =
      ((c[8] + c[9] * t) + (c[10] + c[11] * t) * t2) + ((c[12] + c[13] * t) + c[14] * t2) * t4;
  return low + high * (t4 * t4);
}

template <int n>
double polynomial(const double (&c)[n], double t) {
  double sum = c[n - 1];
  for (int k = n - 2; k >= 0; --k) {
    sum = sum * t + c[k];
  }
  return sum;
}

// 1 / Gamma(1 + a) and log Gamma(1 + a) for 0 <= a <= 1; the logarithm relative to itself.
inline double reciprocalGamma1p(double a) {
  return 1.0 + a * (1.0 - a) * polynomial(reciprocalGamma, 2.0 * a - 1.0);
}
inline double logGamma1p(double a) {
  return -std::log1p(a * (1.0 - a) * polynomial(reciprocalGamma, 2.0 * a - 1.0));
}

// log Gamma(z + 1) - (z + 1/2) log z + z - log(2 pi) / 2 for z >= 1/2.
double stirlingRest(double z);

// t - log(1 + t) for |t| <= 0.4: with r = t / (2 + t), log(1 + t) = 2 artanh r.
inline double minusLog1pmx(double t) {
  const double r = t / (2.0 + t);
  const double s = r * r;
  double sum = 1.0 / 7.0 + s * (1.0 / 9.0 + s * (1.0 / 11.0 + s * (1.0 / 13.0)));
  if (s > 0.002) {
    const double s4 = (s * s) * (s * s);
    sum += s4 * ((1.0 / 15.0 + s * (1.0 / 17.0)) + s * s * (1.0 / 19.0 + s * (1.0 / 21.0)) +
                 s4 * ((1.0 / 23.0 + s * (1.0 / 25.0)) + s * s * (1.0 / 27.0 + s * (1.0 / 29.0))));
  }
  sum = 1.0 / 3.0 + s * (1.0 / 5.0 + s * sum);
  return r * (t - 2.0 * s * sum);
}

// z log(z / m) + m - z >= 0 for z, m > 0; difference is m - z, which the caller may know better.
inline double devianceOf(double z, double m, double difference) {
  const double t = difference / z;
  if (std::fabs(t) < 0.4) {
    return z * minusLog1pmx(t);
  }
  const double quotient = m / z;
  const bool normal = quotient > 1e-300 && quotient < 1e300;
  return difference - z * (normal ? std::log(quotient) : std::log(m) - std::log(z));
}

// A quantity factor * exp(-exponent).
struct Piece {
  double factor;
  double exponent;
};

// m^z exp(-m) / Gamma(z + 1) for one z >= 0 and any m > 0; difference is m - z, which the caller
// may know better.  Small powers of small m are taken as powers: an exponent would carry the
// rounding of log m.
class PowerPiece {
 public:
  explicit PowerPiece(double z);
  Piece at(double m, double difference) const;
  double logAt(double m, double difference) const;
  // At m = z, where the deviance is 0.
  Piece atPeak() const;
  double logAtPeak() const;
  // 1 / sqrt(2 pi z), below 1: 1 / Gamma(1 + z).
  double scale() const { return z_ < 1.0 ? reciprocal_ : 1.0 / (rootTwoPi * std::sqrt(z_)); }
  double rest() const { return rest_; }

 private:
  double z_;
  double rest_ = 0.0;        // Stirling error, from 1 on
  double reciprocal_ = 0.0;  // 1 / Gamma(1 + z), below 1
};

// log Gamma(b + a) - log Gamma(b) for 0 < a <= 1, b > 0, relative to a (1 + |log b|).
double logGammaQuotient(double a, double b);

// P(Z > z) / density(z) of the standard normal law, z >= 0.
inline double millsRatio(double z) {
  const double r = 1.0 / (z + 5.0);
  const double t = z < 1e15 ? (z - 5.0) * r : 1.0;
  const double t2 = t * t;
  const double t4 = t2 * t2;
  const auto& c = millsFit;
  double sum = c[24];
  for (int k = 20; k >= 0; k -= 4) {
    sum = sum * t4 + ((c[k] + c[k + 1] * t) + (c[k + 2] + c[k + 3] * t) * t2);
  }
  return sum * r;
}
// log P(Z <= x); of any x for which it is a double, relative to itself at both ends.
double logNormalLower(double x);

// log(1 - exp(x)) for x < 0.
inline double log1mexp(double x) {
  return x > -0.6931471805599453 ? std::log(-std::expm1(x)) : std::log1p(-std::exp(x));
}

}  // namespace nag2
