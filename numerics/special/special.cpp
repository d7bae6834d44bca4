#include "numerics/special/special.hpp"

#include "numerics/special/normal_functions.hpp"
#include "numerics/special/stirling_tables.hpp"

namespace nag2 {

namespace {

constexpr double eulerNumber = 2.7182818284590452354;
// Below this quotient m / z powers are taken instead of exponents.
constexpr double smallQuotient = 0.05;

}  // namespace

// From 8 on the asymptotic series: the next term is below 2e-18.
double stirlingRest(double z) {
  const double u = 1.0 / z;
  if (z < 8.0) {
    if (z < 1.0) {
      return logGamma1p(z) - (z + 0.5) * std::log(z) + z - logRootTwoPi;
    }
    const int part = z < 2.0 ? 0 : z < 4.0 ? 1 : 2;
    const double t = part == 0   ? 4.0 * u - 3.0
                     : part == 1 ? 8.0 * u - 3.0
                                 : (u - 0.15625) * (1.0 / 0.09375);
    return polynomial(stirlingFits[part], t) * u;
  }
  // Bernoulli numbers B(2k) / (2k (2k - 1)).
  static constexpr double c[] = {1.0 / 12.0,          -1.0 / 360.0,       1.0 / 1260.0,
                                 -1.0 / 1680.0,       1.0 / 1188.0,       -691.0 / 360360.0,
                                 1.0 / 156.0,         -3617.0 / 122400.0, 43867.0 / 244188.0,
                                 -174611.0 / 125400.0};
  const double s = u * u;
  const double s2 = s * s;
  const double s4 = s2 * s2;
  const double low = (c[0] + s * c[1]) + s2 * (c[2] + s * c[3]);
  const double high = (c[4] + s * c[5]) + s2 * (c[6] + s * c[7]) + s4 * (c[8] + s * c[9]);
  return u * (low + s4 * high);
}

PowerPiece::PowerPiece(double z) : z_(z) {
  if (z < 1.0) {
    reciprocal_ = reciprocalGamma1p(z);
  } else {
    rest_ = stirlingRest(z);
  }
}

Piece PowerPiece::at(double m, double difference) const {
  if (z_ < 1.0) {
    return {z_ == 0.0 ? 1.0 : std::pow(m, z_) * reciprocal_, m};
  }
  if (m < smallQuotient * z_) {
    return {scale() * std::pow(m / z_ * eulerNumber, z_), rest_ + m};
  }
  return {scale(), rest_ + devianceOf(z_, m, difference)};
}

double PowerPiece::logAt(double m, double difference) const {
  if (z_ < 1.0) {
    return z_ == 0.0 ? -m : z_ * std::log(m) - m - logGamma1p(z_);
  }
  return -(rest_ + devianceOf(z_, m, difference)) - (logRootTwoPi + 0.5 * std::log(z_));
}

Piece PowerPiece::atPeak() const {
  return z_ < 1.0 ? Piece{(z_ == 0.0 ? 1.0 : std::pow(z_, z_)) * reciprocal_, z_}
                  : Piece{scale(), rest_};
}

double PowerPiece::logAtPeak() const {
  return z_ < 1.0 ? (z_ == 0.0 ? 0.0 : z_ * std::log(z_) - z_ - logGamma1p(z_))
                  : -rest_ - (logRootTwoPi + 0.5 * std::log(z_));
}

// From b = 8 on Stirling's formula, its terms as differences; below there by the recurrence.
double logGammaQuotient(double a, double b) {
  double product = 0.0;  // of the factors 1 + a / (b + i), less 1
  for (; b < 8.0; b += 1.0) {
    const double r = a / b;
    product += r + product * r;
  }
  const double sum = a + b;
  const double u = 1.0 / b;
  const double v = 1.0 / sum;
  const double u2 = u * u;
  const double v2 = v * v;
  // v^m - u^m over v - u for m = 1, 3, 5, ...: powers times those of even order.
  static constexpr double c[] = {1.0 / 12.0,   -1.0 / 360.0,      1.0 / 1260.0, -1.0 / 1680.0,
                                 1.0 / 1188.0, -691.0 / 360360.0, 1.0 / 156.0};
  double slope = 1.0;
  double power = v2;  // v^(m + 1)
  double rests = 0.0;
  for (const double ck : c) {
    rests += ck * slope;
    slope = slope * u2 + power + power / v * u;
    power *= v2;
  }
  const double rest = -a * u * v * rests;
  return (b - 0.5) * std::log1p(a * u) + a * (std::log(sum) - 1.0) + rest - std::log1p(product);
}

double logNormalLower(double x) {
  if (x > -1.0) {
    return x > 0.0 ? std::log1p(-normalLower(-x)) : std::log(normalLower(x));
  }
  if (x > -20.0) {
    return std::log(normalLower(x));
  }
  return -0.5 * x * x - (logRootTwoPi - std::log(millsRatio(-x)));
}

}  // namespace nag2
