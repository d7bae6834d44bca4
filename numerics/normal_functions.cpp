// The standard normal tail and quantile.
//
// The quantile is the routine of 16 digits of M. J. Wichura, Algorithm AS 241: the percentage
// points of the normal distribution, Applied Statistics 37 (1988): a rational function in the
// middle, two in the root of -log of the tail.

#include "normal_functions.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace nag2 {

namespace {

// A quotient of two polynomials of degree 7, lowest coefficients first.
struct Rational {
  double numerator[8];
  double denominator[8];

  double operator()(double x) const { return value(numerator, x) / value(denominator, x); }

 private:
  // In pairs, so that less waits for less.
  static double value(const double (&c)[8], double x) {
    const double x2 = x * x;
    const double x4 = x2 * x2;
    return ((c[0] + c[1] * x) + (c[2] + c[3] * x) * x2) +
           ((c[4] + c[5] * x) + (c[6] + c[7] * x) * x2) * x4;
  }
};

}  // namespace

double normalLower(double x) {
  constexpr double kRootHalf = 0.70710678118654752440;
  constexpr double kRootHalfRest = -4.8336466567264567e-17;  // of the root of 1/2
  const double t = -x * kRootHalf;
  if (!(t > 1.0) || t > 30.0) {
    return 0.5 * std::erfc(t);
  }
  // What the product's rounding takes from t, times the slope of log erfc there.
  const double rest = std::fma(-x, kRootHalf, -t) - x * kRootHalfRest;
  return 0.5 * std::erfc(t) * (1.0 - 2.0 * t * rest);
}

double normalLower(long double x) {
  const auto nearest = static_cast<double>(x);
  const auto rest = static_cast<double>(x - nearest);
  const double p = normalLower(nearest);
  return nearest < -1.0 && std::isfinite(rest) ? p * (1.0 - nearest * rest) : p;
}

double normalInverse(double p) {
  if (p <= 0.0 || p >= 1.0) {
    return p <= 0.0 ? -std::numeric_limits<double>::infinity()
                    : std::numeric_limits<double>::infinity();
  }
  const double q = p - 0.5;
  if (std::fabs(q) <= 0.425) {
    constexpr Rational kMiddle = {
        {3.3871328727963666080e0, 1.3314166789178437745e2, 1.9715909503065514427e3,
         1.3731693765509461125e4, 4.5921953931549871457e4, 6.7265770927008700853e4,
         3.3430575583588128105e4, 2.5090809287301226727e3},
        {1.0, 4.2313330701600911252e1, 6.8718700749205790830e2, 5.3941960214247511077e3,
         2.1213794301586595867e4, 3.9307895800092710610e4, 2.8729085735721942674e4,
         5.2264952788528545610e3}};
    return q * kMiddle(0.180625 - q * q);
  }
  constexpr Rational kTail = {
      {1.42343711074968357734e0, 4.63033784615654529590e0, 5.76949722146069140550e0,
       3.64784832476320460504e0, 1.27045825245236838258e0, 2.41780725177450611770e-1,
       2.27238449892691845833e-2, 7.74545014278341407640e-4},
      {1.0, 2.05319162663775882187e0, 1.67638483018380384940e0, 6.89767334985100004550e-1,
       1.48103976427480074590e-1, 1.51986665636164571966e-2, 5.47593808499534494600e-4,
       1.05075007164441684324e-9}};
  constexpr Rational kFarTail = {
      {6.65790464350110377720e0, 5.46378491116411436990e0, 1.78482653991729133580e0,
       2.96560571828504891230e-1, 2.65321895265761230930e-2, 1.24266094738807843860e-3,
       2.71155556874348757815e-5, 2.01033439929228813265e-7},
      {1.0, 5.99832206555887937690e-1, 1.36929880922735805310e-1, 1.48753612908506148525e-2,
       7.86869131145613259100e-4, 1.84631831751005468180e-5, 1.42151175831644588870e-7,
       2.04426310338993978564e-15}};
  const double r = std::sqrt(-std::log(std::min(p, 1.0 - p)));
  const double z = r <= 5.0 ? kTail(r - 1.6) : kFarTail(r - 5.0);
  return q < 0.0 ? -z : z;
}

}  // namespace nag2
