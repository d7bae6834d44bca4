// The regularised incomplete gamma and beta functions, both tails, and their inverses.
//
// Series and continued fractions behind saddle-point prefixes (deviance.hpp).  Gamma with a large
// shape near its mean: Temme's uniform expansion.  Beta: the power series at small b x, otherwise
// the continued fraction of A. R. DiDonato and A. H. Morris, Significant Digit Computation of the
// Incomplete Beta Function Ratios, ACM TOMS 18 (1992), equation 9.

#include "incomplete_functions.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "bisection.hpp"
#include "boost_functions.hpp"
#include "deviance.hpp"

namespace nag2 {

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
// Enough for every finite argument that the branches let through; a guard, not a working limit.
constexpr int maxTerms = 200000;

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

// Q(a, x) by Legendre's continued fraction (modified Lentz), for x > a + 1.
double gammaFraction(double a, double x) {
  double b = x + 1.0 - a;
  double c = 1e300;
  double d = 1.0 / b;
  double value = d;
  for (int n = 1; n < maxTerms; ++n) {
    const double an = -n * (n - a);
    b += 2.0;
    d = 1.0 / (an * d + b);
    c = b + an / c;
    const double factor = c * d;
    value *= factor;
    if (std::fabs(factor - 1.0) < epsilon) {
      return poissonWeight(a, x) * a * value;
    }
  }
  return nan;
}

// Where Temme's expansion (or, for small shapes, the special forms of the upper tail) is the
// method of choice.  Boost 1.74 takes an expansion for x far above the shape already from
// x > 1000 and x > a - 50 on, with errors of 0.002 at a = 5e7: such points stay out.
bool gammaByExpansion(double a, double x) {
  const bool temme = a > 50.0 && std::fabs(x - a) < 0.3 * a && !(x > 999.0 && x > a - 51.0);
  return temme || (a < 1.0 && x < 1.1);
}

double beyondFinite(double a, double x, bool lower) {
  const bool certain = std::isinf(x) && !std::isinf(a);
  return certain == lower ? 1.0 : 0.0;
}

// I_x(a, b) by the series x^a / (a B(a, b)) sum (1 - b)_n a x^n / (n! (a + n)), for b x below 1.
double betaSeries(double a, double b, UnitPoint at) {
  const double x = static_cast<double>(at.x);
  double sum = 1.0;
  double term = 1.0;
  for (int n = 1; n < maxTerms; ++n) {
    term *= (n - b) / n * x;
    const double part = term * (a / (a + n));
    sum += part;
    if (std::fabs(part) < 0.25 * epsilon * std::fabs(sum)) {
      break;
    }
  }
  // x^a / (a B(a, b)) = [x^a y^b Gamma(a+b+1) / (Gamma(a+1) Gamma(b+1))] y^-b b / (a + b).
  const long double unscale = at.x < 0.5L
                                  ? std::exp(-static_cast<long double>(b) * std::log1p(-at.x))
                                  : std::pow(at.y, -static_cast<long double>(b));
  return static_cast<double>(binomialWeight(a, b, at.x, at.y) * unscale *
                             (b / (static_cast<long double>(a) + b)) * sum);
}

// I_x(a, b) by the continued fraction, for x below a / (a + b) or little above.
double betaFraction(double a, double b, UnitPoint at) {
  const double x = static_cast<double>(at.x);
  const double excess =
      static_cast<double>(static_cast<long double>(a) * at.y - static_cast<long double>(b) * at.x);
  const auto partialDenominator = [=](double m) {
    return m + m * (b - m) * x / (a + 2.0 * m - 1.0) +
           (a + m) * (excess + 1.0 + m * (2.0 - x)) / (a + 2.0 * m + 1.0);
  };
  constexpr double tiny = 1e-300;
  double f = partialDenominator(0.0);
  if (f == 0.0) {
    f = tiny;
  }
  double c = f;
  double d = 0.0;
  for (int n = 1; n < maxTerms; ++n) {
    const double m = n;
    const double scale = a + 2.0 * m - 1.0;
    const double numerator =
        ((a + m - 1.0) / scale) * ((a + b + m - 1.0) / scale) * m * (b - m) * x * x;
    const double denominator = partialDenominator(m);
    d = denominator + numerator * d;
    c = denominator + numerator / c;
    d = 1.0 / (d == 0.0 ? tiny : d);
    c = c == 0.0 ? tiny : c;
    const double factor = c * d;
    f *= factor;
    if (std::fabs(factor - 1.0) < epsilon) {
      break;
    }
  }
  // x^a y^b / B(a, b), the fraction's prefix.
  const double weight = binomialWeight(a, b, at.x, at.y);
  return weight * (a / (a + b)) * b / f;
}

struct Tails {
  double lower;
  double upper;
};

// Both tails, one of them computed and the other its complement: the computed one is below about
// 1/2 except at small parameters, where small says which tail is to keep its digits.
Tails betaTails(double a, double b, UnitPoint at) {
  if (std::isinf(a) || std::isinf(b)) {  // all mass at 1, or at 0
    return std::isinf(a) ? Tails{0.0, 1.0} : Tails{1.0, 0.0};
  }
  if (at.x <= 0.0L || at.y <= 0.0L) {
    return at.x <= 0.0L ? Tails{0.0, 1.0} : Tails{1.0, 0.0};
  }
  const bool swap = static_cast<long double>(a) * at.y < static_cast<long double>(b) * at.x;
  if (swap) {
    const Tails other = betaTails(b, a, {at.y, at.x});
    return {other.upper, other.lower};
  }
  const double x = static_cast<double>(at.x);
  const bool series = x <= 0.7 ? b * x <= 0.7 || b <= 1.0 : a <= 1.0 && b <= 1.0 && x <= 0.99;
  const double direct = series ? betaSeries(a, b, at) : betaFraction(a, b, at);
  if (direct > 0.7 && a <= 1.0 && at.y < 0.95L) {
    // Small a: nearly all mass lies below x, and the rest needs its own positive series.
    return {direct, betaSeries(b, a, {at.y, at.x})};
  }
  return {direct, 1.0 - direct};
}

double betaDensity(double a, double b, UnitPoint at) {
  return static_cast<double>(binomialWeight(a, b, at.x, at.y) *
                             (static_cast<long double>(a) * b / (static_cast<long double>(a) + b)) /
                             (at.x * at.y));
}

}  // namespace

double gammaLower(double a, double x) {
  if (x <= 0.0) {
    return 0.0;
  }
  if (std::isinf(x) || std::isinf(a)) {
    return beyondFinite(a, x, true);
  }
  if (gammaByExpansion(a, x)) {
    return a < 1.0 ? gammaSeries(a, x) : boostGammaP(a, x);
  }
  return x < a + 1.0 ? gammaSeries(a, x) : 1.0 - gammaFraction(a, x);
}

double gammaUpper(double a, double x) {
  if (x <= 0.0) {
    return 1.0;
  }
  if (std::isinf(x) || std::isinf(a)) {
    return beyondFinite(a, x, false);
  }
  if (gammaByExpansion(a, x)) {
    return boostGammaQ(a, x);
  }
  return x < a + 1.0 ? 1.0 - gammaSeries(a, x) : gammaFraction(a, x);
}

// Boost's inverse, then Newton steps with the tails above.
double gammaInverse(double a, double p) {
  if (p <= 0.0 || p >= 1.0) {
    return p <= 0.0 ? 0.0 : std::numeric_limits<double>::infinity();
  }
  const bool upper = p > 0.5;
  const double target = upper ? 1.0 - p : p;
  const double start = upper ? boostGammaQInverse(a, target) : boostGammaPInverse(a, target);
  const auto tail = [=](double x) { return upper ? gammaUpper(a, x) : gammaLower(a, x); };
  const auto density = [=](double x) { return poissonWeight(a, x) * (a / x); };
  return invertTail(tail, density, target, upper, start, {0.0, 1e308});
}

double betaLower(double a, double b, UnitPoint at) { return betaTails(a, b, at).lower; }

double betaUpper(double a, double b, UnitPoint at) { return betaTails(a, b, at).upper; }

// The unknown of the iteration is the smaller of x and 1 - x, so that its digits are not lost.
UnitPoint betaInverse(double a, double b, double p, bool upperTail) {
  if (p <= 0.0 || p >= 1.0) {
    return (p <= 0.0) != upperTail ? UnitPoint{0.0L, 1.0L} : UnitPoint{1.0L, 0.0L};
  }
  double y = nan;
  const double x =
      upperTail ? boostBetaComplementInverse(a, b, p, &y) : boostBetaInverse(a, b, p, &y);
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

double normalLower(double x) { return 0.5 * std::erfc(-x * 0.70710678118654752440); }

double normalInverse(double p) {
  if (p <= 0.0 || p >= 1.0) {
    return p <= 0.0 ? -std::numeric_limits<double>::infinity()
                    : std::numeric_limits<double>::infinity();
  }
  return -1.41421356237309504880 * boostErfcInverse(2.0 * p);
}

}  // namespace nag2
