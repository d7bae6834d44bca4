// The regularised incomplete beta functions, both tails, and their inverse.
//
// Behind saddle-point prefixes (deviance.hpp): the power series at small b x, otherwise the
// continued fraction of A. R. DiDonato and A. H. Morris, Significant Digit Computation of the
// Incomplete Beta Function Ratios, ACM TOMS 18 (1992), equation 9; the first two terms of the
// uniform expansion where both parameters are huge.

#include <algorithm>
#include <cmath>
#include <limits>

#include "numerics/interface/bisection.hpp"
#include "numerics/interface/boost_functions.hpp"
#include "numerics/interface/deviance.hpp"
#include "numerics/interface/incomplete_functions.hpp"
#include "numerics/interface/incomplete_parts.hpp"
#include "numerics/special/normal_functions.hpp"

namespace nag2 {

namespace {

// first + sum over n > 0 of (1 - b)_n a x^n / (n! (a + n)); a NaN where it has not converged.
template <typename Real>
Real betaSeriesSum(double a, double b, Real x, Real first = 1.0) {
  Real sum = first;
  Real term = 1.0;
  for (int n = 1; n < maxTerms; ++n) {
    term *= (n - static_cast<Real>(b)) / n * x;
    const Real part = term * (a / (static_cast<Real>(a) + n));
    sum += part;
    if (std::fabs(part) <= 0.25 * epsilon * std::fabs(sum)) {
      return sum;
    }
    if (!std::isfinite(part)) {
      break;
    }
  }
  return nan;
}

// I_x(a, b) by the series x^a / (a B(a, b)) times the sum above, for b x below 1.  Near x = 1 the
// terms are many, and a rounded x would be felt in their powers.
double betaSeries(double a, double b, UnitPoint at) {
  const double x = static_cast<double>(at.x);
  const double sum =
      x < 0.8 ? betaSeriesSum(a, b, x) : static_cast<double>(betaSeriesSum(a, b, at.x));
  // x^a / (a B(a, b)) = [x^a y^b Gamma(a+b+1) / (Gamma(a+1) Gamma(b+1))] y^-b b / (a + b).
  // Little precision is needed here: b log y is of order 1.
  const double unscale =
      x < 0.5 ? std::exp(-b * std::log1p(-x)) : std::pow(static_cast<double>(at.y), -b);
  return binomialWeight(a, b, at.x, at.y) * unscale * (b / (a + b)) * sum;
}

// x^a, by multiplications where they are few.
double power(double x, double a) {
  if (a > 8.0 || a != std::floor(a)) {
    return std::pow(x, a);
  }
  double value = 1.0;
  for (double k = 0.0; k < a; k += 1.0) {
    value *= x;
  }
  return value;
}

// I_x(a, b) for a whole b: x^a sum over j < b of (a)_j y^j / j!, whose terms are all positive.
double betaSum(double a, double b, UnitPoint at) {
  const auto x = static_cast<double>(at.x);
  const auto y = static_cast<double>(at.y);
  double sum = 1.0;
  double term = 1.0;
  for (double j = 1.0; j < b; j += 1.0) {
    term *= y * ((a + j - 1.0) / j);
    sum += term;
  }
  const double rounding = static_cast<double>(at.x - x) / x;
  return power(x, a) * (1.0 + a * rounding) * sum;
}

// I_x(a, b) by the continued fraction, for x below a / (a + b) or little above.
double betaFraction(double a, double b, UnitPoint at) {
  const double x = static_cast<double>(at.x);
  const double excess =
      static_cast<double>(static_cast<long double>(a) * at.y - static_cast<long double>(b) * at.x);
  double inverse = 1.0 / (a + 1.0);  // 1 / (a + 2 m + 1)
  const double f = continuedFraction(
      a * (excess + 1.0) * inverse, [=](double m, double* am, double* bm) mutable {
        const double last = inverse;
        inverse = 1.0 / (a + 2.0 * m + 1.0);
        const double rest = m * (b - m) * x * last;
        *am = (a + m - 1.0) * last * (a + b + m - 1.0) * x * rest;
        *bm = m + rest + (a + m) * (excess + 1.0 + m * (2.0 - x)) * inverse;
      });
  // x^a y^b / B(a, b), the fraction's prefix.
  const double weight = binomialWeight(a, b, at.x, at.y);
  return weight * (a / (a + b)) * b / f;
}

// log(Gamma(a + b) / (Gamma(b) Gamma(1 + a))) for a < 5e-4, to a relative error of epsilon.
long double smallGammaQuotient(long double a, double b) {
  // Gamma(1 + a), by its series in zeta(k) / k.
  constexpr long double euler = 0.57721566490153286061L;
  const long double own =
      a * (-euler + a * (0.822467033424113218236L +
                         a * (-0.400685634386531428467L +
                              a * (0.270580808427784547879L - a * 0.207385551028673985266L))));
  // The other quotient from the middle of its interval, at least 1: the next derivative's term is
  // a correction of 1e-8.
  const auto middle = static_cast<double>((b < 1.0 ? 1.0L + b : b) + 0.5L * a);
  double second = 0.0;  // of the digamma function
  double z = middle;
  for (; z < 6.0; z += 1.0) {
    second -= 2.0 / (z * z * z);
  }
  const double inverse = 1.0 / z;
  second -= inverse * inverse * (1.0 + inverse * (1.0 + inverse * (0.5 - inverse * inverse / 6.0)));
  const long double other = a * (boostDigamma(middle) + a * a * second / 24.0L);
  return other - own - (b < 1.0 ? std::log1p(a / b) : 0.0L);
}

// 1 - I_x(a, b) for small a and small x: 1 - exp(L) S with L = log(x^a / (a B(a, b))) and S the
// series' sum, both near their limits 0 and 1 and good to long double's rounding.
double betaSeriesComplement(double a, double b, UnitPoint at) {
  const long double shape = a;
  const long double other = b;
  if (a < 5e-4) {
    const long double log = shape * std::log(at.x) + smallGammaQuotient(a, b);
    const long double rest = betaSeriesSum(a, b, at.x, 0.0L);
    return static_cast<double>(-std::expm1(log) - std::exp(log) * rest);
  }
  const long double gammas = b > 10.0 ? (other - 0.5L) * std::log1p(shape / other) +
                                            shape * std::log(shape + other) - shape +
                                            stirlingError(a + b) - stirlingError(b)
                                      : std::lgamma(shape + other) - std::lgamma(other);
  const long double log = shape * std::log(at.x) + gammas - std::lgamma(1.0L + shape);
  const long double sum = betaSeriesSum(a, b, at.x);
  return static_cast<double>(-std::expm1(log) - std::exp(log) * (sum - 1.0L));
}

// From this quotient of the parameters on the beta law is a gamma law to the last bit.
constexpr double hugeRatio = 1e17;

Tails hugeBetaTails(double a, double b, UnitPoint at) {
  const long double p = a;
  const long double q = b;
  const long double n = p + q;
  const long double difference = q * at.x - p * at.y;  // n x - a
  const long double deviation = std::sqrt(p * q / n);
  const long double exponent =
      deviance(p, n * at.x, difference) + deviance(q, n * at.y, -difference);
  return uniformTails(difference / deviation, exponent, (q - p) / (3.0L * n * deviation));
}

// Both tails, one of them computed and the other its complement: the computed one is below about
// 1/2 except at small parameters, where small says which tail is to keep its digits.
Tails betaTails(double a, double b, UnitPoint at) {
  if (std::isinf(a) || std::isinf(b)) {  // all mass at 1, at 0 or, both infinite, at 1/2
    const bool below = std::isinf(a) && (std::isinf(b) ? at.x < 0.5L : at.y > 0.0L);
    return below ? Tails{0.0, 1.0} : Tails{1.0, 0.0};
  }
  if (at.x <= 0.0L || at.y <= 0.0L) {
    return at.x <= 0.0L ? Tails{0.0, 1.0} : Tails{1.0, 0.0};
  }
  if (std::min(a, b) >= hugeParameter) {
    return hugeBetaTails(a, b, at);
  }
  if (b >= hugeRatio * std::max(1.0, a)) {  // b times -log(1 - x) is a gamma variate
    const auto reduced =
        static_cast<double>(-b * (at.x < 0.5L ? std::log1p(-at.x) : std::log(at.y)));
    return {gammaLower(a, reduced), gammaUpper(a, reduced)};
  }
  const bool swap = a >= hugeRatio * std::max(1.0, b) ||
                    static_cast<long double>(a) * at.y < static_cast<long double>(b) * at.x;
  if (swap) {
    const Tails other = betaTails(b, a, {at.y, at.x});
    return {other.upper, other.lower};
  }
  const double x = static_cast<double>(at.x);
  if (b <= 16.0 && b == std::floor(b) && a <= 100.0 && a > 1.0 && x > 1e-3) {
    const double direct = betaSum(a, b, at);
    return {direct, 1.0 - direct};
  }
  const bool series = x <= 0.7 ? b * x <= 0.7 || b <= 1.0 : a <= 1.0 && b <= 1.0 && x <= 0.99;
  // Near x = 1 with a small b the fraction loses digits; the mirrored series has none to lose.
  const bool mirrored = !series && (a <= 1.0 ? b <= 1.0 : b < 0.5 && a * at.y <= 0.7L);
  const double direct = series     ? betaSeries(a, b, at)
                        : mirrored ? betaSeriesComplement(b, a, {at.y, at.x})
                                   : betaFraction(a, b, at);
  if (direct > 0.7 && a <= 1.0) {
    // Small a: nearly all mass lies below x, and the rest needs its own sum.
    return {direct, at.y < 0.95L ? betaSeries(b, a, {at.y, at.x}) : betaSeriesComplement(a, b, at)};
  }
  return {direct, 1.0 - direct};
}

double betaDensity(double a, double b, UnitPoint at) {
  return static_cast<double>(binomialWeight(a, b, at.x, at.y) *
                             (static_cast<long double>(a) * b / (static_cast<long double>(a) + b)) /
                             (at.x * at.y));
}

// The root of I_x(a, b) = p (or of the complement) for a, b >= 1 and ordinary p, by Halley steps
// from Abramowitz and Stegun's 26.5.22, in the smaller of x and 1 - x; false where they do not
// settle.
bool betaRootByHalley(double a, double b, double p, bool upperTail, UnitPoint* root) {
  const double z = upperTail ? normalInverse(p) : -normalInverse(p);
  const double mean = (z * z - 3.0) / 6.0;
  const double fromA = 1.0 / (2.0 * a - 1.0);
  const double fromB = 1.0 / (2.0 * b - 1.0);
  const double h = 2.0 / (fromA + fromB);
  const double spread = h + mean;
  if (!(spread > 0.0)) {
    return false;
  }
  const double w =
      z * std::sqrt(spread) / h - (fromB - fromA) * (mean + 5.0 / 6.0 - 2.0 / (3.0 * h));
  const double rest = b * std::exp(2.0 * w);
  const bool left = a <= rest;
  double u = left ? a / (a + rest) : rest / (a + rest);
  const double own = left ? a : b;  // the parameter that belongs to u
  const double other = left ? b : a;
  const double sign = left != upperTail ? 1.0 : -1.0;
  const double scale = binomialWeight(own, other, 0.5L, 0.5L) * own * (other / (own + other));
  for (int i = 0; i < 6 && u > 0.0 && u < 0.75; ++i) {
    const UnitPoint at = left ? UnitPoint{u, 1.0L - u} : UnitPoint{1.0L - u, u};
    const Tails tails = betaTails(a, b, at);
    const double v = 1.0 - u;
    const double density =
        scale * std::exp(own * std::log(2.0 * u) + other * std::log(2.0 * v)) / (u * v);
    const double newton = sign * ((upperTail ? tails.upper : tails.lower) - p) / density;
    const double bend = 0.5 * ((own - 1.0) / u - (other - 1.0) / v);
    const double step = newton / (1.0 - newton * bend);
    if (!(std::fabs(newton * bend) < 0.5)) {
      return false;
    }
    u -= step;
    // The error after a step is of third order in step times the sharpness of the law.
    if (std::fabs(step) * (own / u + other / v) < 1e-5) {
      *root = left ? UnitPoint{u, 1.0L - u} : UnitPoint{1.0L - u, u};
      return true;
    }
  }
  return false;
}

// A start for the inverse where a parameter is large, for the smaller of x and 1 - x: the normal
// law with the skewness's term, or the gamma law that is the limit for one large parameter.
double largeBetaStart(double own, double other, double p, bool falling) {
  if (own < 1000.0) {
    return -std::expm1(-gammaInverse(own, p, falling) / (other + 0.5 * (own - 1.0)));
  }
  const long double n = static_cast<long double>(own) + other;
  const long double deviation = std::sqrt(own * (other / n));
  const long double z = falling ? -normalInverse(p) : normalInverse(p);
  return static_cast<double>((own + deviation * z + (other - own) / n * ((z * z - 1.0L) / 3.0L)) /
                             n);
}

// The point with the given tail for two large parameters, by Newton steps.
UnitPoint hugeBetaInverse(double a, double b, double p, bool upperTail) {
  const bool left = a <= b;
  const bool falling = upperTail == left;
  const double own = left ? a : b;
  const double other = left ? b : a;
  const auto n = static_cast<long double>(own) + other;
  const auto width = static_cast<double>(std::sqrt(own * (other / n)) / n);
  const auto point = [left](double v) {
    return left ? UnitPoint{v, 1.0L - v} : UnitPoint{1.0L - v, v};
  };
  double u = largeBetaStart(own, other, p, falling);
  for (int i = 0; i < 5; ++i) {
    const Tails tails = hugeBetaTails(a, b, point(u));
    const double difference = (upperTail ? tails.upper : tails.lower) - p;
    const double step = (falling ? -difference : difference) / betaDensity(a, b, point(u));
    if (!(std::fabs(step) < 0.1 * width)) {
      break;  // the law is narrower than the distance of the doubles
    }
    u -= step;
    if (std::fabs(step) < 1e-6 * width) {
      break;
    }
  }
  return point(u);
}

}  // namespace

double betaLower(double a, double b, UnitPoint at) { return betaTails(a, b, at).lower; }

double betaUpper(double a, double b, UnitPoint at) { return betaTails(a, b, at).upper; }

// The unknown of the iteration is the smaller of x and 1 - x, so that its digits are not lost.
UnitPoint betaInverse(double a, double b, double p, bool upperTail) {
  if (p <= 0.0 || p >= 1.0) {
    return (p <= 0.0) != upperTail ? UnitPoint{0.0L, 1.0L} : UnitPoint{1.0L, 0.0L};
  }
  if (std::min(a, b) >= hugeParameter) {
    return hugeBetaInverse(a, b, p, upperTail);
  }
  if (UnitPoint root{}; p > 1e-8 && a >= 1.0 && b >= 1.0 && std::max(a, b) <= 100.0 &&
                        betaRootByHalley(a, b, p, upperTail, &root)) {
    return root;
  }
  double x = nan;
  double y = nan;
  if (std::max(a, b) >= hugeParameter) {
    (a <= b ? x : y) = largeBetaStart(std::min(a, b), std::max(a, b), p, upperTail == (a <= b));
  } else {
    x = upperTail ? boostBetaComplementInverse(a, b, p, &y) : boostBetaInverse(a, b, p, &y);
  }
  // At a point 1/2 the tail says on which side the root lies, whatever the start was.
  const double half = upperTail ? betaUpper(a, b, {0.5L, 0.5L}) : betaLower(a, b, {0.5L, 0.5L});
  const bool left = upperTail ? p >= half : p <= half;
  const auto point = [left](double u) {
    const long double v = u;
    return left ? UnitPoint{v, 1.0L - v} : UnitPoint{1.0L - v, v};
  };
  const auto tail = [&](double u) {
    return upperTail ? betaUpper(a, b, point(u)) : betaLower(a, b, point(u));
  };
  const auto density = [&](double u) { return betaDensity(a, b, point(u)); };
  const double root = invertTail(tail, density, p, upperTail == left, left ? x : y, {0.0, 0.5});
  return point(root);
}

}  // namespace nag2
