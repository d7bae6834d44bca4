// The tail beyond |x| over x times the density: the series of the incomplete beta function far out,
// its continued fraction nearer by, 1/2 less the series of the probability between 0 and x around
// the centre.

#include "numerics/laws/student_law.hpp"

#include <algorithm>
#include <limits>
#include <numbers>

#include "numerics/laws/beta_law.hpp"
#include "numerics/special/inversion.hpp"
#include "numerics/special/normal_functions.hpp"

namespace nag2 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
// From here on the law equals the normal one to the last bit.
constexpr double hugeFreedom = 1e17;
// Of the continued fraction; the series does below.
constexpr double leastFractionArgument = 0.3;

double densityAtZero(double nu) {
  const double h = 0.5 * nu;
  if (h < 1e-20) {
    return 0.5 * std::sqrt(nu);  // the logarithm of gamma(h) would lose digits
  }
  if (h < 1.0) {
    return std::exp(logGammaQuotient(0.5, h)) / std::sqrt(nu * std::numbers::pi);
  }
  const double rest = h >= 1.25 ? h * minusLog1pmx(1.0 / nu) : 0.5 - h * std::log1p(1.0 / nu);
  return inverseRootTwoPi * std::exp(stirlingRest(h + 0.5) - stirlingRest(h) - rest);
}

}  // namespace

StudentLaw::StudentLaw(double nu)
    : nu_(nu), peak_(nu < hugeFreedom ? densityAtZero(nu) : inverseRootTwoPi) {}

// (1 + x^2 / nu)^(-(nu + 1) / 2), the density over its value at 0, and x times it, x >= 0.
double StudentLaw::power(double x) const {
  if (nu_ >= hugeFreedom) {
    return std::exp(-0.5 * x * x);
  }
  const double s = x / nu_ * x;
  return s < 1.0 ? std::exp(-0.5 * (nu_ + 1.0) * std::log1p(s)) : timesPower(x) / x;
}

double StudentLaw::timesPower(double x) const {
  const double s = x / nu_ * x;
  if (s < 1.0) {
    return x * std::exp(-0.5 * (nu_ + 1.0) * std::log1p(s));
  }
  if (s < 1e17) {
    return std::pow(1.0 + s, -0.5 * nu_) * std::sqrt(nu_ / (1.0 + 1.0 / s));
  }
  const double quotient = x / std::sqrt(nu_);
  return std::sqrt(nu_) * (std::isfinite(quotient) ? std::pow(quotient, -nu_)
                                                   : std::pow(x, -nu_) * std::pow(nu_, 0.5 * nu_));
}

double StudentLaw::logPower(double x) const {
  const double s = x / nu_ * x;
  if (nu_ >= hugeFreedom && s < 1e-16) {
    return -0.5 * x * x;
  }
  return s < 1e17 ? -0.5 * (nu_ + 1.0) * std::log1p(s)
                  : -(nu_ + 1.0) * (std::log(x) - 0.5 * std::log(nu_));
}

double StudentLaw::density(double x) const { return peak_ * power(std::fabs(x)); }

double StudentLaw::logDensity(double x) const { return std::log(peak_) + logPower(std::fabs(x)); }

// For few degrees of freedom as far as the series of the tail begins: the centre holds next to
// nothing there, so that 1/2 less it keeps its digits, and the continued fraction would not.
bool StudentLaw::nearCentre(double x) const {
  if (nu_ < 5e-4) {
    return x / nu_ * x < 1.0 / leastFractionArgument - 1.0;
  }
  return x < 1.2 && x * x < nu_;
}

// P(0 < T < x), for x where it is not near 1/2.
double StudentLaw::central(double x) const {
  const double s = x / nu_ * x;
  return peak_ * timesPower(x) * betaSeries(0.5, 0.5 * nu_ + 0.5, s / (1.0 + s));
}

// P(T > x) over x times the density, x > 0 not near 0.
double StudentLaw::outerFactor(double x) const {
  const double s = x / nu_ * x;
  const double w = 1.0 / (1.0 + s);
  if (w < leastFractionArgument) {
    return betaSeries(0.5 * nu_, 0.5 * nu_ + 0.5, w) / nu_;
  }
  return 0.5 * betaFraction(0.5 * nu_, 0.5, w, (0.5 * nu_ * s - 0.5) * w);
}

// P(T > x), x >= 0.
double StudentLaw::outer(double x) const {
  if (nu_ >= hugeFreedom) {
    return normalLower(-x);
  }
  if (nearCentre(x)) {
    return 0.5 - central(x);
  }
  const double xf = peak_ * timesPower(x);
  return xf == 0.0 ? 0.0 : xf * outerFactor(x);
}

double StudentLaw::logOuter(double x) const {
  if (nu_ >= hugeFreedom) {
    const double power = logPower(x);  // so deep that nothing else counts, or the normal law's
    return power < -1e16 ? power : logNormalLower(-x);
  }
  if (nearCentre(x)) {
    return std::log(outer(x));
  }
  if (std::isinf(x)) {
    return -infinity;
  }
  const double value = outer(x);
  return value > 1e-290 ? std::log(value) : std::log(x) + logDensity(x) + std::log(outerFactor(x));
}

double StudentLaw::tail(double x, Tail which) const {
  if (std::isnan(x)) {
    return nan;
  }
  return tailFrom(outer(std::fabs(x)), x, which);
}

StudentLaw::Place StudentLaw::partsAt(double x, Parts& parts) const {
  if (nu_ >= hugeFreedom) {
    return Place::normal;
  }
  const double size = std::fabs(x);
  const double s = size / nu_ * size;
  parts.factor = peak_ * timesPower(size);
  if (nearCentre(size)) {
    parts.argument = s / (1.0 + s);
    return Place::centre;
  }
  parts.argument = 1.0 / (1.0 + s);
  parts.excess = (0.5 * nu_ * s - 0.5) * parts.argument;
  return parts.argument < leastFractionArgument ? Place::far : Place::between;
}

double StudentLaw::outer(Place place, double factor, double value) const {
  if (place == Place::centre) {
    return 0.5 - factor * value;
  }
  return factor == 0.0 ? 0.0 : factor * (place == Place::far ? value / nu_ : 0.5 * value);
}

double StudentLaw::logTail(double x, Tail which) const {
  if (std::isnan(x)) {
    return nan;
  }
  const double size = std::fabs(x);
  return (which == Tail::lower) == (x < 0.0) ? logOuter(size) : std::log1p(-outer(size));
}

// G. W. Hill, Algorithm 396: Student's t-quantiles, CACM 13 (1970); nu >= 1, upper tail q.
double StudentLaw::hill(double q) const {
  const double p = 2.0 * q;
  const double a = 1.0 / (nu_ - 0.5);
  const double b = 48.0 / (a * a);
  double c = ((20700.0 * a / b - 98.0) * a - 16.0) * a + 96.36;
  const double d =
      ((94.5 / (b + c) - 3.0) / b + 1.0) * std::sqrt(a * (std::numbers::pi / 2.0)) * nu_;
  double y = std::pow(d * p, 2.0 / nu_);
  if (y > 0.05 + a) {
    const double z = normalInverse(q);
    y = z * z;
    if (nu_ < 5.0) {
      c += 0.3 * (nu_ - 4.5) * (z + 0.6);
    }
    c += (((0.05 * d * z - 5.0) * z - 7.0) * z - 2.0) * z + b;
    y = (((((0.4 * y + 6.3) * y + 36.0) * y + 94.5) / c - y - 3.0) / b + 1.0) * z;
    y = std::expm1(a * y * y);
  } else {
    y = ((1.0 / (((nu_ + 6.0) / (nu_ * y) - 0.089 * d - 0.822) * (nu_ + 2.0) * 3.0) +
          0.5 / (nu_ + 4.0)) *
             y -
         1.0) *
            (nu_ + 1.0) / (nu_ + 2.0) +
        1.0 / y;
  }
  return std::sqrt(nu_ * y);
}

// x > 0 with P(T > x) = q < 1/2.
double StudentLaw::positiveQuantile(double q) const {
  if (nu_ >= hugeFreedom) {
    return -normalInverse(q);
  }
  // The leading term: P(T > x) = peak nu^((nu - 1) / 2) x^-nu.
  const double logX = (std::log(peak_ / q) - 0.5 * std::log(nu_)) / nu_ + 0.5 * std::log(nu_);
  if (logX > 700.0) {
    return std::exp(logX);
  }
  double x = nu_ >= 1.0 ? hill(q) : 0.0;
  if (!(x > 0.0 && std::isfinite(x))) {
    x = std::exp(logX);
  }
  if (q > 0.25) {
    const double near = 0.5 - q;
    x = nu_ >= 1.0 ? x : near / peak_;
    return invertTail(
        [&](double t) {
          if (t > 1.2 || (t * t > nu_ && !nearCentre(t))) {  // the series is for the centre
            const double inside = 0.5 - outer(t);
            return TailSlope{logQuotient(inside, near), peak_ * timesPower(t) / inside,
                             1.0 - (nu_ + 1.0) / (1.0 + nu_ / t / t)};
          }
          const double inside = central(t);
          return TailSlope{logQuotient(inside, near), peak_ * timesPower(t) / inside,
                           1.0 - (nu_ + 1.0) / (1.0 + nu_ / t / t)};
        },
        true, x, 0.0, infinity);
  }
  return invertTail(
      [&](double t) {
        const double beyond = outer(t);
        return TailSlope{logQuotient(beyond, q), -peak_ * timesPower(t) / beyond,
                         1.0 - (nu_ + 1.0) / (1.0 + nu_ / t / t)};
      },
      false, x, 0.0, infinity);
}

double StudentLaw::quantile(double p, Tail which) const {
  if (!(p > 0.0) || p >= 1.0) {
    return std::isnan(p) ? p : (p <= 0.0) == (which == Tail::lower) ? -infinity : infinity;
  }
  if (p == 0.5) {
    return 0.0;
  }
  const bool positive = (p < 0.5) == (which == Tail::upper);
  const double x = positiveQuantile(std::min(p, 1.0 - p));
  return positive ? x : -x;
}

}  // namespace nag2
