// The regularised incomplete gamma functions, both tails, and their inverse.
//
// The power series and Legendre's continued fraction behind saddle-point prefixes (deviance.hpp);
// with a large shape near its mean Temme's uniform expansion, of which two terms are enough for
// huge shapes.

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

// P(a, x) by its power series, for x not far above a.
double gammaSeries(double a, double x) {
  double sum = 1.0;
  double term = 1.0;
  for (int n = 1; n < maxTerms; ++n) {
    term *= x / (a + n);
    sum += term;
    if (term < 0.25 * epsilon * sum) {
      return poissonWeight(a, x) * sum;
    }
  }
  return nan;
}

// Q(a, x) by Legendre's continued fraction, for x > a + 1.
double gammaFraction(double a, double x) {
  const double weight = poissonWeight(a, x);
  if (weight == 0.0) {
    return 0.0;  // the fraction itself may overflow there
  }
  const double b0 = x + 1.0 - a;
  const double value = continuedFraction(b0, [=](double n, double* an, double* bn) {
    *an = -n * (n - a);
    *bn = b0 + 2.0 * n;
  });
  return weight * a / value;
}

// Where Temme's expansion (or, for small shapes, the special forms of the upper tail) is the
// method of choice.  Boost 1.74 takes an expansion for x far above the shape already from
// x > 1000 and x > a - 50 on, with errors of 0.002 at a = 5e7: such points stay out.
bool gammaByExpansion(double a, double x) {
  const bool temme = a > 50.0 && std::fabs(x - a) < 0.3 * a && !(x > 999.0 && x > a - 51.0);
  return temme || (a < 1.0 && x < 1.1);
}

double beyondFinite(double x, bool lower) { return std::isinf(x) == lower ? 1.0 : 0.0; }

Tails hugeGammaTails(double a, double x) {
  const long double shape = a;
  const long double difference = x - shape;
  const long double root = std::sqrt(shape);
  return uniformTails(difference / root, deviance(shape, x, difference), 1.0L / (3.0L * root));
}

// x with the given tail: Cornish and Fisher's expansion, then Newton steps.
double hugeGammaInverse(double a, double target, bool upper) {
  const double sign = upper ? -1.0 : 1.0;
  const double z = sign * normalInverse(target);
  const double root = std::sqrt(a);
  double x = a + (z * root + (z * z - 1.0) / 3.0 + z * (z * z - 7.0) / (36.0 * root));
  for (int i = 0; i < 2; ++i) {
    const double tail = upper ? gammaUpper(a, x) : gammaLower(a, x);
    const double step = sign * (tail - target) * (x / a) / poissonWeight(a, x);
    if (!(std::fabs(step) < 0.1 * root)) {
      break;  // the law is narrower than the distance of the doubles
    }
    x -= step;
  }
  return x;
}

}  // namespace

double gammaLower(double a, double x) {
  if (x <= 0.0) {
    return 0.0;
  }
  if (std::isinf(x) || std::isinf(a)) {
    return beyondFinite(x, true);
  }
  if (a >= hugeShape) {
    return hugeGammaTails(a, x).lower;
  }
  if (gammaByExpansion(a, x)) {
    return a < 1.0 ? gammaSeries(a, x) : x > a ? 1.0 - boostGammaQ(a, x) : boostGammaP(a, x);
  }
  return x < a + 1.0 ? gammaSeries(a, x) : 1.0 - gammaFraction(a, x);
}

double gammaUpper(double a, double x) {
  if (x <= 0.0) {
    return 1.0;
  }
  if (std::isinf(x) || std::isinf(a)) {
    return beyondFinite(x, false);
  }
  if (a >= hugeShape) {
    return hugeGammaTails(a, x).upper;
  }
  if (gammaByExpansion(a, x)) {
    // Far below the mean the expansion's upper tail is not quite the lower one's complement.
    return a > 50.0 && x < a ? 1.0 - boostGammaP(a, x) : boostGammaQ(a, x);
  }
  return x < a + 1.0 ? 1.0 - gammaSeries(a, x) : gammaFraction(a, x);
}

// Boost's inverse, then Newton steps with the tails above.
double gammaInverse(double a, double p, bool upperTail) {
  if (p <= 0.0 || p >= 1.0) {
    return (p <= 0.0) != upperTail ? 0.0 : std::numeric_limits<double>::infinity();
  }
  const bool upper = (p > 0.5) != upperTail;
  const double target = p > 0.5 ? 1.0 - p : p;
  if (a >= hugeShape) {
    return std::isinf(a) ? a : hugeGammaInverse(a, target, upper);
  }
  const double start = upper ? boostGammaQInverse(a, target) : boostGammaPInverse(a, target);
  const auto tail = [=](double x) { return upper ? gammaUpper(a, x) : gammaLower(a, x); };
  const auto density = [=](double x) { return poissonWeight(a, x) * (a / x); };
  return invertTail(tail, density, target, upper, start, {0.0, 1e308});
}

}  // namespace nag2
