// Non-central chi-square, F, beta and t, lower tails.
//
// The first three are Poisson mixtures of central tails.  The sum starts at its largest term and
// goes both ways; the central tail falls with the mixing index, so it is evaluated once at the
// upper end of the sum and then built up downwards by additions only, which keeps the digits of
// deep lower tails.  The t law is an integral over the chi variable by a doubly exponential
// trapezoidal rule, positive throughout, so that it has no cancellation on either side of zero.
//
// One step of the iteration, as counted by the limit, is 16 terms on either side of the largest
// one, or 16 nodes of the integral.

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "kernels/lookout.hpp"
#include "numerics/interface/deviance.hpp"
#include "numerics/interface/domain_check.hpp"
#include "numerics/interface/incomplete_functions.hpp"
#include "numerics/special/normal_functions.hpp"

using namespace nag2;

namespace {

constexpr double epsilon = std::numeric_limits<double>::epsilon();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr int termsPerStep = 16;

// Central chi-square part: tails P(a + j, y) and their decrements.
struct GammaFamily {
  double a;
  double y;
  double tail(double j) const { return gammaLower(a + j, y); }
  // tail(j) - tail(j + 1)
  double decrement(double j) const { return poissonWeight(a + j, y); }
  double ratio(double j) const { return y / (a + j + 1.0); }  // decrement(j + 1) / decrement(j)
  double tailFall(double j) const { return ratio(j); }        // at least tail(j + 1) / tail(j)
};

// Central beta part: tails I_x(a + j, b).
struct BetaFamily {
  double a;
  double b;
  UnitPoint at;
  double tail(double j) const { return betaLower(a + j, b, at); }
  double decrement(double j) const {
    return static_cast<double>(binomialWeight(a + j, b, at.x, at.y) * (b / (a + j + b)));
  }
  double ratio(double j) const { return static_cast<double>(at.x) * ((a + b + j) / (a + j + 1.0)); }
  // The ratios of the decrements go to x, from above or, for b < 1, from below.
  double tailFall(double j) const { return std::max(ratio(j), static_cast<double>(at.x)); }
};

// tail(j) within a factor of about two, from above: the geometric bound on the sum of decrements.
template <typename Family>
double tailBound(const Family& family, double j, double decrement) {
  const double ratio = family.tailFall(j);
  return ratio < 1.0 ? std::min(1.0, decrement / (1.0 - ratio)) : 1.0;
}

// Index of the largest product of weight and tail, by halving: the product is log-concave.
template <typename Family>
double largestTerm(const Family& family, double mean) {
  const auto grows = [&](double j) {
    const double here = family.tail(j);
    return here > 0.0 && mean / (j + 1.0) * (family.tail(j + 1.0) / here) > 1.0;
  };
  double low = -1.0;
  double high = std::floor(mean) + 1.0;
  if (family.tail(high) > 0.999) {
    return std::floor(mean);
  }
  while (high - low > 1.0 && high < 1e15) {
    const double middle = std::floor(0.5 * (low + high));
    (grows(middle) ? low : high) = middle;
  }
  return high;
}

// sum over j of Poisson(mean) weight times tail(j).
template <typename Family>
double poissonMixture(const Family& family, double mean, double tolerance, int maxIter,
                      DomainCheck& check) {
  const double stop = std::max(tolerance, epsilon) / 8.0;
  const double limit = static_cast<double>(maxIter) * termsPerStep;
  if (mean > 1e12) {  // beyond any limit, and indices would soon stop being exact
    return check.notConverged(tolerance, maxIter);
  }
  const double start = largestTerm(family, mean);
  const double startWeight = poissonWeight(start, mean);
  const double startDecrement = family.decrement(start);
  const double startTail = family.tail(start);
  if (startWeight * startTail == 0.0) {
    return 0.0;
  }
  // Upwards: weights and decrements, until what is left is negligible.
  double top = start;
  double weight = startWeight;
  double decrement = startDecrement;
  const double largest = startWeight * startTail;
  constexpr int kTermCost = 10;  // operations, near enough
  vexel::kernels::Lookout lookout;
  while (true) {
    lookout.done(kTermCost);
    const double rise = mean / (top + 1.0);  // of the weights
    const double fall = rise * std::min(1.0, family.tailFall(top));
    const double bound = weight * std::min(startTail, tailBound(family, top, decrement));
    if (fall < 1.0 && bound * (fall / (1.0 - fall)) <= stop * largest) {
      break;
    }
    if (top - start >= limit || !(bound >= 0.0)) {
      return check.notConverged(tolerance, maxIter);
    }
    decrement *= family.ratio(top);
    top += 1.0;
    weight *= rise;
  }
  // Downwards from there; the middle's own values are taken up again where it is passed.
  double tail = family.tail(top);
  double sum = weight * tail;
  for (double j = top - 1.0; j >= 0.0; j -= 1.0) {
    lookout.done(kTermCost);
    weight = j == start ? startWeight : weight * ((j + 1.0) / mean);
    decrement = j == start ? startDecrement : decrement / family.ratio(j);
    tail = j == start ? startTail : std::min(1.0, tail + decrement);
    const double term = weight * tail;
    sum += term;
    if (j < start) {
      const double fall = (j / mean) * std::min(1.0, 1.0 + decrement / tail);
      if (fall < 0.5 ? term * 2.0 * fall <= stop * sum : term * j <= stop * sum) {
        break;
      }
      if (start - j >= limit) {
        return check.notConverged(tolerance, maxIter);
      }
    }
  }
  return check.clamped(sum);
}

// P(Z <= x S - delta) with S = sqrt(chi-square(nu) / nu), written S = exp(u), u = v - exp(-v):
// the density of u is  C exp(nu u - nu (exp(2 u) - 1) / 2).
class ChiIntegral {
 public:
  ChiIntegral(double x, double nu, double delta) : x_(x), nu_(nu), delta_(delta) {
    // nu^(nu/2) exp(-nu/2) / (2^(nu/2 - 1) Gamma(nu/2)), through the Stirling error.
    constexpr double pi = 3.14159265358979323846;
    scale_ = static_cast<double>(std::exp(-stirlingError(0.5 * nu)) *
                                 std::sqrt(static_cast<long double>(nu) / pi));
  }

  double scale() const { return scale_; }

  // The integrand over u without its constant factor.
  double at(double u) const {
    const long double z = x_ * std::exp(static_cast<long double>(u)) - delta_;
    return static_cast<double>(std::exp(0.5L * nu_ * excess(2.0L * u))) * normalLower(z);
  }

  // Ternary search on the logarithm, which has one maximum.
  double peak() const {
    double low = -700.0;
    double high = 30.0;
    for (int i = 0; i < 90; ++i) {
      const double third = (high - low) / 3.0;
      const bool rises = logAt(low + third) < logAt(high - third);
      (rises ? low : high) += rises ? third : -third;
    }
    return 0.5 * (low + high);
  }

 private:
  // The logarithm, good to a few digits where the normal tail underflows.
  double logAt(double u) const {
    const double z = x_ * std::exp(u) - delta_;
    constexpr double logRootTwoPi = 0.9189385332046727;
    const double logTail =
        z > -30.0 ? std::log(normalLower(z)) : -0.5 * z * z - std::log(-z) - logRootTwoPi;
    return 0.5 * nu_ * static_cast<double>(excess(2.0L * u)) + logTail;
  }

  // w - (exp(w) - 1), without cancellation near w = 0.
  static long double excess(long double w) {
    if (std::fabs(w) >= 0.2L) {
      return w - std::expm1(w);
    }
    long double sum = 1.0L;
    for (int k = 14; k > 2; --k) {
      sum = 1.0L + w / k * sum;
    }
    return -0.5L * w * w * sum;
  }

  double x_;
  double nu_;
  double delta_;
  double scale_;
};

// The same probability over the normal variable z, for a noncentrality of x's sign and an |x| so
// large that the chi variable S spreads it over many units: density of z times P(S >= (z + d)/x),
// or for x < 0 (z turned) times P(S <= (z + d)/|x|), d = |delta|.
class NormalIntegral {
 public:
  NormalIntegral(double x, double nu, double delta)
      : upper_(x > 0.0), x_(std::fabs(x)), nu_(nu), delta_(std::fabs(delta)) {}

  static bool serves(double x, double nu, double delta) {
    return x * delta > 0.0 && std::fabs(delta) >= 9.0 && x * x >= 32.0 * nu;
  }

  static double scale() { return inverseRootTwoPi; }

  double at(double z) const {
    const double w = (z + delta_) / x_;
    const double square = 0.5 * nu_ * w * w;
    const double tail = w <= 0.0 ? (upper_ ? 1.0 : 0.0)
                        : upper_ ? gammaUpper(0.5 * nu_, square)
                                 : gammaLower(0.5 * nu_, square);
    return std::exp(-0.5 * z * z) * tail;
  }

  // Of exp(-z^2/2) where S has its bulk; else, from the tail of S, z (z + d) = nu (1 - w^2).
  double peak() const {
    if (upper_ == (delta_ <= x_)) {
      return 0.0;
    }
    const double r = nu_ / x_ / x_;
    const double b = delta_ * (1.0 + 2.0 * r);
    const double c = nu_ * (delta_ / x_ - 1.0) * (delta_ / x_ + 1.0);
    return -2.0 * c / (b + std::sqrt(b * b - 4.0 * (1.0 + r) * c));
  }

 private:
  bool upper_;
  double x_;
  double nu_;
  double delta_;
};

// The trapezoidal rule with step h around the peak; nodes counts the evaluations.  A NaN where the
// integrand has not faded within limit nodes to a side.
template <typename Integral>
double trapezoid(const Integral& f, double peak, double spread, double h, double limit,
                 double* nodes) {
  // v = 0 is the peak; u = peak + spread * (v - (exp(-v) - 1) / 8): slow left tails are cut short.
  const auto node = [&](double v) {
    const double pull = std::exp(-v) / 8.0;
    return f.at(peak + spread * (v - pull + 0.125)) * (1.0 + pull);
  };
  double sum = node(0.0);
  constexpr int kNodeCost = 1000;  // operations, near enough
  vexel::kernels::Lookout lookout;
  for (const double direction : {1.0, -1.0}) {
    for (double i = 1.0;; i += 1.0) {
      lookout.done(kNodeCost);
      const double value = node(direction * i * h);
      sum += value;
      *nodes += 1.0;
      if (value <= 0.01 * epsilon * sum) {
        break;
      }
      if (!(i < limit)) {
        return notANumber;
      }
    }
  }
  return sum * h * spread;
}

// Probability with the integral, refined until two rules agree.
template <typename Integral>
double studentLower(const Integral& f, double tolerance, int maxIter, DomainCheck& check) {
  const double peak = f.peak();
  const double top = f.at(peak);
  if (!(top > 0.0)) {
    return 0.0;
  }
  // Width at which the integrand has fallen by a factor of two, to the right (the steep side).
  double spread = 1.0;
  while (f.at(peak + spread) < 0.5 * top && spread > 1e-10) {
    spread *= 0.5;
  }
  const double stop = std::max(tolerance, epsilon);
  double nodes = 0.0;
  double h = 0.5;
  const double limit = static_cast<double>(maxIter) * termsPerStep;
  double lastError = std::numeric_limits<double>::infinity();
  double last = trapezoid(f, peak, spread, h, limit, &nodes);
  while (nodes < limit) {
    h *= 0.5;
    const double next = trapezoid(f, peak, spread, h, limit, &nodes);
    // The rule's error is about squared by each halving, or at a sharp edge falls as it did before:
    // agreement to 1e-11 is enough where the one before was worse by 1e4.
    const double error = std::fabs(next - last) / next;
    const bool subnormal = f.scale() * next < 1e-305;  // it cannot become more accurate
    const bool settled = error < 1e-14 || (error < 1e-11 && error * error < 1e-15 * lastError);
    if (settled || error < stop || subnormal) {
      return check.clamped(f.scale() * next);
    }
    last = next;
    lastError = error;
  }
  return check.notConverged(tolerance, maxIter);
}

bool validLimits(DomainCheck& check, double tolerance, int maxIter) {
  return check.nonNegative("the tolerance", tolerance) &&
         check.positiveLimit("the iteration limit", maxIter);
}

}  // namespace

extern "C" {

double nag2_noncentral_t_probability(double x, double nu, double delta, double tolerance,
                                     int max_iter, NagError* fail) {
  DomainCheck check("nag2_noncentral_t_probability", fail);
  if (!check.positive("the degrees of freedom nu", nu) ||
      !check.number("the noncentrality delta", delta) || !check.number("x", x) ||
      !validLimits(check, tolerance, max_iter)) {
    return notANumber;
  }
  if (std::isinf(x) || std::isinf(delta)) {
    return std::isinf(x) ? (x > 0.0 ? 1.0 : 0.0) : (delta < 0.0 ? 1.0 : 0.0);
  }
  if (delta == 0.0) {
    return nag2_student_t_probability(Nag_LowerTail, x, nu, fail);
  }
  if (x == 0.0) {
    return normalLower(-delta);
  }
  if (nu > 1e17) {
    return normalLower(x - delta);
  }
  return NormalIntegral::serves(x, nu, delta)
             ? studentLower(NormalIntegral(x, nu, delta), tolerance, max_iter, check)
             : studentLower(ChiIntegral(x, nu, delta), tolerance, max_iter, check);
}

double nag2_noncentral_chi_square_probability(double x, double nu, double delta, double tolerance,
                                              int max_iter, NagError* fail) {
  DomainCheck check("nag2_noncentral_chi_square_probability", fail);
  if (!check.positive("the degrees of freedom nu", nu) ||
      !check.nonNegative("the noncentrality delta", delta) || !check.number("x", x) ||
      !validLimits(check, tolerance, max_iter)) {
    return notANumber;
  }
  if (x <= 0.0 || std::isinf(x)) {
    return x <= 0.0 ? 0.0 : 1.0;
  }
  if (delta == 0.0) {
    return check.clamped(gammaLower(0.5 * nu, 0.5 * x));
  }
  return poissonMixture(GammaFamily{0.5 * nu, 0.5 * x}, 0.5 * delta, tolerance, max_iter, check);
}

double nag2_noncentral_f_probability(double x, double nu1, double nu2, double delta,
                                     double tolerance, int max_iter, NagError* fail) {
  DomainCheck check("nag2_noncentral_f_probability", fail);
  if (!check.positive("the numerator degrees of freedom nu1", nu1) ||
      !check.positive("the denominator degrees of freedom nu2", nu2) ||
      !check.nonNegative("the noncentrality delta", delta) || !check.number("x", x) ||
      !validLimits(check, tolerance, max_iter)) {
    return notANumber;
  }
  if (x <= 0.0 || std::isinf(x)) {
    return x <= 0.0 ? 0.0 : 1.0;
  }
  if (std::isinf(nu1)) {  // X is 1
    return std::isinf(nu2) ? (x < 1.0 ? 0.0 : 1.0)
                           : check.clamped(gammaUpper(0.5 * nu2, 0.5 * nu2 / x));
  }
  if (std::isinf(nu2)) {  // Y is 1
    return nag2_noncentral_chi_square_probability(nu1 * x, nu1, delta, tolerance, max_iter, fail);
  }
  const long double scaled = static_cast<long double>(nu1) * x;
  const long double total = scaled + nu2;
  const BetaFamily family{0.5 * nu1, 0.5 * nu2, {scaled / total, nu2 / total}};
  return delta == 0.0 ? check.clamped(family.tail(0.0))
                      : poissonMixture(family, 0.5 * delta, tolerance, max_iter, check);
}

double nag2_noncentral_beta_probability(double x, double a, double b, double delta,
                                        double tolerance, int max_iter, NagError* fail) {
  DomainCheck check("nag2_noncentral_beta_probability", fail);
  if (!check.positive("the parameter a", a) || !check.positive("the parameter b", b) ||
      !check.nonNegative("the noncentrality delta", delta) || !check.number("x", x) ||
      !validLimits(check, tolerance, max_iter)) {
    return notANumber;
  }
  if (x <= 0.0 || x >= 1.0) {
    return x <= 0.0 ? 0.0 : 1.0;
  }
  if (std::isinf(a) || std::isinf(b)) {  // all mass at 1, at 0 or, both infinite, at 1/2
    return nag2_beta_probability(x, a, b, 0.0, fail);
  }
  const long double exact = x;
  const BetaFamily family{a, b, {exact, 1.0L - exact}};
  return delta == 0.0 ? check.clamped(family.tail(0.0))
                      : poissonMixture(family, 0.5 * delta, tolerance, max_iter, check);
}

}  // extern "C"
