// Entry points of the central continuous distributions.

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "numerics/interface/deviance.hpp"
#include "numerics/interface/domain_check.hpp"
#include "numerics/interface/incomplete_functions.hpp"
#include "numerics/special/normal_functions.hpp"

using namespace nag2;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double rootHalf = std::numbers::sqrt2 / 2.0;
// From here on the t and F laws equal their limits (normal, chi-square) to the last bit; F's
// other degrees of freedom times that many.
constexpr double hugeFreedom = 1e17;

bool asIfInfinite(double nu, double other) { return nu >= hugeFreedom * std::max(1.0, other); }

// P(T > |x|), Student t.
double studentUpper(double x, double nu) {
  if (nu >= hugeFreedom) {
    return normalLower(-std::fabs(x));
  }
  const long double square = static_cast<long double>(x) * x;
  if (std::isinf(square)) {
    return 0.0;
  }
  const long double total = square + nu;
  const UnitPoint at{nu / total, square / total};
  return 0.5 * betaLower(0.5 * nu, 0.5, at);
}

// P(|T| <= |x|).
double studentCentral(double x, double nu) {
  if (nu >= hugeFreedom) {
    return std::erf(std::fabs(x) * rootHalf);
  }
  const long double square = static_cast<long double>(x) * x;
  if (std::isinf(square)) {
    return 1.0;
  }
  const long double total = square + nu;
  return betaLower(0.5, 0.5 * nu, {square / total, nu / total});
}

// x > 0 with P(T > x) = q for ordinary q and nu by Halley steps from G. W. Hill's approximation
// (Algorithm 396, CACM 13, 1970), 0 where they do not settle.  Near the centre the equation is that
// of the probability between 0 and x.
double studentQuantileByHalley(double q, double nu) {
  const double p = 2.0 * q;
  const double a = 1.0 / (nu - 0.5);
  const double b = 48.0 / (a * a);
  double c = ((20700.0 * a / b - 98.0) * a - 16.0) * a + 96.36;
  const double d =
      ((94.5 / (b + c) - 3.0) / b + 1.0) * std::sqrt(a * (std::numbers::pi / 2.0)) * nu;
  double y = std::pow(d * p, 2.0 / nu);
  if (y > 0.05 + a) {
    const double z = normalInverse(q);
    y = z * z;
    if (nu < 5.0) {
      c += 0.3 * (nu - 4.5) * (z + 0.6);
    }
    c += (((0.05 * d * z - 5.0) * z - 7.0) * z - 2.0) * z + b;
    y = (((((0.4 * y + 6.3) * y + 36.0) * y + 94.5) / c - y - 3.0) / b + 1.0) * z;
    y = std::expm1(a * y * y);
  } else {
    y = ((1.0 / (((nu + 6.0) / (nu * y) - 0.089 * d - 0.822) * (nu + 2.0) * 3.0) +
          0.5 / (nu + 4.0)) *
             y -
         1.0) *
            (nu + 1.0) / (nu + 2.0) +
        1.0 / y;
  }
  double x = std::sqrt(nu * y);
  // Density of T at 0; it steers the steps only.
  const double peak = static_cast<double>(
      inverseRootTwoPi * std::exp(stirlingError(0.5 * nu + 0.5) - stirlingError(0.5 * nu) +
                                  0.5L * nu * std::log1p(1.0L / nu) - 0.5L));
  const double power = -0.5 * (nu + 1.0);
  for (int i = 0; i < 6 && x > 0.0 && std::isfinite(x); ++i) {
    const double excess =
        q > 0.25 ? (0.5 - q) - 0.5 * studentCentral(x, nu) : studentUpper(x, nu) - q;
    const double newton = excess / (peak * std::exp(power * std::log1p(x * x / nu)));
    const double bend = 0.5 * (nu + 1.0) * x / (nu + x * x);
    const double step = newton / (1.0 - newton * bend);
    x += step;
    if (std::fabs(step) * (1.0 + (nu + 1.0) / (nu / x + x) / x) < 1e-5 * std::fabs(x)) {
      return x;
    }
    if (!(std::fabs(newton * bend) < 0.5)) {
      break;
    }
  }
  return 0.0;
}

// x > 0 with P(T > x) = q, q <= 1/2: from I(nu / 2, 1/2) = 2 q, or near the centre from the
// probability between -x and x, which 1 - 2 q gives without error.
double studentPositiveQuantile(double q, double nu) {
  if (q <= 0.0) {
    return infinity;
  }
  if (nu >= hugeFreedom) {
    return -normalInverse(q);
  }
  if (nu >= 1.0 && nu <= 1000.0 && q > 1e-12) {
    if (const double x = studentQuantileByHalley(q, nu); x > 0.0) {
      return x;
    }
  }
  const UnitPoint at = q > 0.25 ? betaInverse(0.5, 0.5 * nu, 1.0 - 2.0 * q, false)
                                : betaInverse(0.5, 0.5 * nu, 2.0 * q, true);
  if (at.y < 1e-250L) {
    // y itself may underflow where its root does not: 2 q = y^a / (a B(a, 1/2)) to first order.
    constexpr long double logRootPi = 0.5723649429247000870717L;  // log Gamma(1/2)
    const long double a = 0.5L * nu;
    const long double logScaledBeta = std::lgamma(a + 1.0L) + logRootPi - std::lgamma(a + 0.5L);
    const long double logY = (std::log(2.0L * q) + logScaledBeta) / a;
    return static_cast<double>(std::sqrt(static_cast<long double>(nu)) * std::exp(-0.5L * logY));
  }
  return static_cast<double>(std::sqrt(nu * at.x / at.y));
}

// The lower-tail probability at which the quantile of a symmetric law is wanted, as a signed
// half: x = sign * (quantile with upper tail q).
struct Symmetric {
  double q;
  double sign;
};

Symmetric halves(Nag_TailProbability tail, double p) {
  switch (tail) {
    case Nag_TwoTailSignif:
      return {0.5 * p, 1.0};
    case Nag_TwoTailConfid:
      return {0.5 * (1.0 - p), 1.0};
    case Nag_UpperTail:
      return p <= 0.5 ? Symmetric{p, 1.0} : Symmetric{1.0 - p, -1.0};
    default:
      return p < 0.5 ? Symmetric{p, -1.0} : Symmetric{1.0 - p, 1.0};
  }
}

double signedQuantile(double magnitude, double sign) {
  return magnitude == 0.0 ? 0.0 : sign * magnitude;
}

// x^0 split of F's argument: nu1 x / (nu1 x + nu2) and its complement.
UnitPoint fPoint(double x, double nu1, double nu2) {
  const long double scaled = static_cast<long double>(nu1) * x;
  const long double total = scaled + nu2;
  return {scaled / total, nu2 / total};
}

}  // namespace

extern "C" {

double nag2_normal_probability(Nag_TailProbability tail, double x, NagError* fail) {
  DomainCheck check("nag2_normal_probability", fail);
  if (!check.anyTail(tail) || !check.number("x", x)) {
    return notANumber;
  }
  switch (tail) {
    case Nag_LowerTail:
      return normalLower(x);
    case Nag_UpperTail:
      return normalLower(-x);
    case Nag_TwoTailSignif:
      return std::erfc(std::fabs(x) * rootHalf);
    default:
      return std::erf(std::fabs(x) * rootHalf);
  }
}

double nag2_normal_quantile(Nag_TailProbability tail, double p, NagError* fail) {
  DomainCheck check("nag2_normal_quantile", fail);
  if (!check.anyTail(tail) || !check.probability("the probability p", p)) {
    return notANumber;
  }
  const Symmetric at = halves(tail, p);
  return check.computed(signedQuantile(-normalInverse(at.q), at.sign));
}

double nag2_student_t_probability(Nag_TailProbability tail, double x, double nu, NagError* fail) {
  DomainCheck check("nag2_student_t_probability", fail);
  if (!check.anyTail(tail) || !check.positive("the degrees of freedom nu", nu) ||
      !check.number("x", x)) {
    return notANumber;
  }
  switch (tail) {
    case Nag_TwoTailSignif:
      return check.clamped(2.0 * studentUpper(x, nu));
    case Nag_TwoTailConfid:
      return check.clamped(studentCentral(x, nu));
    default: {
      const double beyond = studentUpper(x, nu);
      const bool outer = (tail == Nag_LowerTail) == (x < 0.0);
      return check.clamped(outer ? beyond : 1.0 - beyond);
    }
  }
}

double nag2_student_t_quantile(Nag_TailProbability tail, double p, double nu, NagError* fail) {
  DomainCheck check("nag2_student_t_quantile", fail);
  if (!check.anyTail(tail) || !check.positive("the degrees of freedom nu", nu) ||
      !check.probability("the probability p", p)) {
    return notANumber;
  }
  const Symmetric at = halves(tail, p);
  return check.computed(signedQuantile(studentPositiveQuantile(at.q, nu), at.sign));
}

double nag2_chi_square_probability(Nag_TailProbability tail, double x, double nu, NagError* fail) {
  DomainCheck check("nag2_chi_square_probability", fail);
  if (!check.oneOfTwoTails(tail) || !check.positive("the degrees of freedom nu", nu) ||
      !check.number("x", x)) {
    return notANumber;
  }
  return check.clamped(tail == Nag_LowerTail ? gammaLower(0.5 * nu, 0.5 * x)
                                             : gammaUpper(0.5 * nu, 0.5 * x));
}

double nag2_chi_square_quantile(double p, double nu, NagError* fail) {
  DomainCheck check("nag2_chi_square_quantile", fail);
  if (!check.positive("the degrees of freedom nu", nu) ||
      !check.probability("the probability p", p)) {
    return notANumber;
  }
  return check.computed(2.0 * gammaInverse(0.5 * nu, p));
}

double nag2_f_probability(Nag_TailProbability tail, double x, double nu1, double nu2,
                          NagError* fail) {
  DomainCheck check("nag2_f_probability", fail);
  if (!check.oneOfTwoTails(tail) || !check.positive("the numerator degrees of freedom nu1", nu1) ||
      !check.positive("the denominator degrees of freedom nu2", nu2) || !check.number("x", x)) {
    return notANumber;
  }
  const bool lower = tail == Nag_LowerTail;
  if (x <= 0.0 || std::isinf(x)) {
    return (x > 0.0) == lower ? 1.0 : 0.0;
  }
  if (std::isinf(nu1) && std::isinf(nu2)) {  // all mass at 1
    return (x >= 1.0) == lower ? 1.0 : 0.0;
  }
  if (asIfInfinite(nu2, nu1)) {
    return check.clamped(lower ? gammaLower(0.5 * nu1, 0.5 * nu1 * x)
                               : gammaUpper(0.5 * nu1, 0.5 * nu1 * x));
  }
  if (asIfInfinite(nu1, nu2)) {
    return check.clamped(lower ? gammaUpper(0.5 * nu2, 0.5 * nu2 / x)
                               : gammaLower(0.5 * nu2, 0.5 * nu2 / x));
  }
  const UnitPoint at = fPoint(x, nu1, nu2);
  return check.clamped(lower ? betaLower(0.5 * nu1, 0.5 * nu2, at)
                             : betaUpper(0.5 * nu1, 0.5 * nu2, at));
}

double nag2_f_quantile(double p, double nu1, double nu2, NagError* fail) {
  DomainCheck check("nag2_f_quantile", fail);
  if (!check.positive("the numerator degrees of freedom nu1", nu1) ||
      !check.positive("the denominator degrees of freedom nu2", nu2) ||
      !check.probability("the probability p", p)) {
    return notANumber;
  }
  if (p == 0.0 || p == 1.0) {
    return p == 0.0 ? 0.0 : infinity;
  }
  if (std::isinf(nu1) && std::isinf(nu2)) {
    return 1.0;
  }
  if (asIfInfinite(nu2, nu1)) {
    return check.computed(gammaInverse(0.5 * nu1, p) / (0.5 * nu1));
  }
  if (asIfInfinite(nu1, nu2)) {
    return check.computed(0.5 * nu2 / gammaInverse(0.5 * nu2, p, true));
  }
  const UnitPoint at = p > 0.5 ? betaInverse(0.5 * nu1, 0.5 * nu2, 1.0 - p, true)
                               : betaInverse(0.5 * nu1, 0.5 * nu2, p, false);
  return check.computed(static_cast<double>(nu2 * at.x / (nu1 * at.y)));
}

double nag2_gamma_probability(Nag_TailProbability tail, double x, double shape, double scale,
                              NagError* fail) {
  DomainCheck check("nag2_gamma_probability", fail);
  if (!check.oneOfTwoTails(tail) || !check.positive("the shape", shape) ||
      !check.positive("the scale", scale) || !check.number("x", x)) {
    return notANumber;
  }
  const double reduced = std::isinf(x) ? x : x / scale;
  return check.clamped(tail == Nag_LowerTail ? gammaLower(shape, reduced)
                                             : gammaUpper(shape, reduced));
}

double nag2_gamma_quantile(double p, double shape, double scale, double /*tolerance*/,
                           NagError* fail) {
  DomainCheck check("nag2_gamma_quantile", fail);
  if (!check.positive("the shape", shape) || !check.positive("the scale", scale) ||
      !check.probability("the probability p", p)) {
    return notANumber;
  }
  return check.computed(p == 0.0 ? 0.0 : scale * gammaInverse(shape, p));
}

double nag2_beta_probability(double x, double a, double b, double /*tolerance*/, NagError* fail) {
  DomainCheck check("nag2_beta_probability", fail);
  if (!check.positive("the parameter a", a) || !check.positive("the parameter b", b) ||
      !check.number("x", x)) {
    return notANumber;
  }
  const long double exact = x;
  return x <= 0.0 ? 0.0 : x >= 1.0 ? 1.0 : check.clamped(betaLower(a, b, {exact, 1.0L - exact}));
}

double nag2_beta_quantile(double p, double a, double b, double /*tolerance*/, NagError* fail) {
  DomainCheck check("nag2_beta_quantile", fail);
  if (!check.positive("the parameter a", a) || !check.positive("the parameter b", b) ||
      !check.probability("the probability p", p)) {
    return notANumber;
  }
  if (std::isinf(a) || std::isinf(b)) {  // all mass at 1, at 0 or, both infinite, at 1/2
    const double place = !std::isinf(a) ? 0.0 : std::isinf(b) ? 0.5 : 1.0;
    return p > 0.0 ? place : 0.0;
  }
  const UnitPoint at = p > 0.5 ? betaInverse(a, b, 1.0 - p, true) : betaInverse(a, b, p, false);
  return check.computed(static_cast<double>(at.x));
}

}  // extern "C"
