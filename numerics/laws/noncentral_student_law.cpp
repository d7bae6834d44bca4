// On delta's side of 0 two Poisson mixtures of beta tails, all terms positive; beyond 0 on the
// other side the same terms alternate: there an integral over the logarithm of the chi variable,
// whose integrand is smooth, by the trapezoidal rule around its peak, which is known.
//
// D. Benton and K. Krishnamoorthy, Computing discrete mixtures of continuous distributions:
// noncentral chisquare, noncentral t and the distribution of the square of the sample multiple
// correlation coefficient, Computational Statistics and Data Analysis 43 (2003), for the mixtures.

#include "numerics/laws/noncentral_student_law.hpp"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <limits>
#include <numbers>

#include "kernels/lookout.hpp"
#include "numerics/laws/mixture_families.hpp"
#include "numerics/laws/noncentral_mixture.hpp"
#include "numerics/laws/student_extremes.hpp"
#include "numerics/laws/student_law.hpp"
#include "numerics/special/inversion.hpp"
#include "numerics/special/normal_functions.hpp"

namespace nag2 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double hugeFreedom = 1e17;
constexpr double greatArgument = 1e150;   // squares would overflow
constexpr double leastArgument = 1e-140;  // below it, as at 0: squares would underflow

Tail other(Tail which) { return which == Tail::lower ? Tail::upper : Tail::lower; }

// v - (exp(v) - 1), grown being exp(v).
double minusExpm1(double v, double grown) {
  if (std::fabs(v) > 0.4) {
    return v - (grown - 1.0);
  }
  // -v^2 times the sum of v^k / (k + 2)!, by halves.
  const double v2 = v * v;
  const double v4 = v2 * v2;
  const double low = (1.0 / 2.0 + v * (1.0 / 6.0)) + v2 * (1.0 / 24.0 + v * (1.0 / 120.0));
  const double middle =
      (1.0 / 720.0 + v * (1.0 / 5040.0)) + v2 * (1.0 / 40320.0 + v * (1.0 / 362880.0));
  const double high = (1.0 / 3628800.0 + v * (1.0 / 39916800.0)) +
                      v2 * (1.0 / 479001600.0 + v * (1.0 / 6227020800.0));
  return -v2 * (low + v4 * (middle + v4 * high));
}

// P(T > x) and the density at x for x > 0 and noncentrality -d, d >= 0: with s = exp(u) the chi
// variable over sqrt(nu), the integral over u of  C exp(nu u - nu (s^2 - 1) / 2) times the normal
// tail beyond x s + d.  Its exponent has its peak at s0 with (nu + x^2) s0^2 + x d s0 = nu; around
// it, with a and b these two terms, it falls like  a (v - (exp(2 v) - 1) / 2) + b (v - (exp(v) -
// 1)).
class OppositeSide {
 public:
  OppositeSide(double x, double nu, double d) : x_(x), nu_(nu), d_(d) {
    const double xd = x * d;
    s0_ = 2.0 * nu / (xd + std::hypot(xd, 2.0 * std::sqrt(nu) * std::sqrt(nu + x * x)));
    b_ = xd * s0_;
    a_ = std::max(0.0, nu - b_);
    if (a_ < 0.5 * nu) {
      a_ = (nu + x * x) * s0_ * s0_;
    }
    const double q = (s0_ - 1.0) * (s0_ + 1.0);
    const double chi =
        std::fabs(q) < 0.4 ? 0.5 * nu * minusLog1pmx(q) : nu * (0.5 * q - std::log(s0_));
    const double z = x * s0_ + d;
    logScale_ = 0.5 * std::log(nu / std::numbers::pi) - stirlingRest(0.5 * nu) - chi - 0.5 * z * z -
                logRootTwoPi;
    scale_ = std::sqrt(nu / std::numbers::pi) / rootTwoPi *
             std::exp(-(stirlingRest(0.5 * nu) + chi + 0.5 * z * z));
  }

  double logScale() const { return logScale_; }
  double scale() const { return scale_; }

  // The two integrals over their scale.
  struct Sums {
    double tail;
    double density;
    double bend;  // 1 + x f' / f
  };
  Sums integrate() const {
    // The rule's error is that of a normal law's width for large nu; else the integrand's growth up
    // to pi / 4 off the real line counts.  For small nu the left side falls slowly and is cut short
    // by v = w + pull (1 - exp(-w)).
    const bool slow = nu_ < 8.0;
    const double pull = slow ? 0.125 : 0.0;
    const double square = a_ + 0.5 * b_;
    const double step = slow            ? std::min(0.08, 4.0 / (38.0 + 0.9 * square))
                        : square < 45.0 ? 4.4 / (38.0 + 0.9 * square)
                                        : 0.42 / std::sqrt(square);
    Sums sums{0.0, 0.0, 0.0};
    // One node; grown is exp(v), pulled the derivative of v.
    const auto add = [&](double v, double grown, double pulled) {
      const double exponent =
          0.5 * a_ * minusExpm1(2.0 * v, grown * grown) + b_ * minusExpm1(v, grown);
      const double weight = std::exp(exponent) * pulled;
      const double xs = x_ * s0_ * grown;
      const double tail = weight * millsRatio(xs + d_);
      sums.tail += tail;
      sums.density += weight * grown;
      sums.bend += weight * grown * xs * (xs + d_);
      return tail > 1e-17 * sums.tail || weight * grown > 1e-17 * sums.density;
    };
    add(0.0, 1.0, 1.0 + pull);
    for (const double side : {step, -step}) {
      double factor = 1.0;  // exp(-w) or exp(v)
      const double ratio = std::exp(slow ? -side : side);
      for (int i = 1; i < 4000; ++i) {
        factor *= ratio;
        const double w = i * side;
        const double v = slow ? w + pull * (1.0 - factor) : w;
        if (!add(v, slow ? std::exp(v) : factor, slow ? 1.0 + pull * factor : 1.0)) {
          break;
        }
      }
    }
    return {sums.tail * step, sums.density * step * s0_, 1.0 - sums.bend / sums.density};
  }

 private:
  double x_;
  double nu_;
  double d_;
  double s0_;
  double a_;
  double b_;
  double logScale_;
  double scale_;
};

struct Families {
  Families(double x, double nu) : at(FLaw::point(x * x, 1.0, nu)), half(0.5 * nu) {}
  BetaFamily even() const { return {0.5, half, at, 0.0}; }
  BetaFamily odd() const { return {1.0, half, at, 0.5}; }
  // y^(nu / 2), the upper tail of the odd terms' central law.
  double oddUpper() const {
    return at.y > 0.5 ? std::exp(half * std::log1p(-at.x)) : std::pow(at.y, half);
  }
  UnitPair at;
  double half;
};

// Both mixtures at once for small noncentralities, upwards from the index 0, where everything is
// known; central upper tails grow by additions.
constexpr double mostUpward = 32.0;
constexpr int mostUpwardTerms = 200;
constexpr double mostCancelled = 0.9;  // half the logarithm of the sums' ratio, about

struct UpwardSums {
  double tail[2];
  double density[2];
  double moment[2];

  // False where the first terms underflow or the terms are too many.
  bool add(const Families& f, const StudentLaw& central, double x, double mean) {
    static const auto reciprocals = [] {  // of j + 1, j + 3/2, j + 2
      std::array<double, 2 * mostUpwardTerms + 4> all{};
      for (std::size_t i = 1; i < all.size(); ++i) {
        all[i] = 2.0 / static_cast<double>(i);
      }
      return all;
    }();
    const double above = f.oddUpper();
    const double weight = std::exp(-mean);
    double q[2] = {2.0 * central.tail(x, Tail::upper), above};
    double d[2] = {2.0 * x * central.density(x), f.half * f.at.x * above};
    double w[2] = {weight, weight * std::sqrt(mean) * 2.0 * std::numbers::inv_sqrtpi};
    if (!(d[0] > 1e-280 && d[1] > 1e-280)) {
      return false;
    }
    double a[2] = {0.5, 1.0};
    for (int k = 0; k < 2; ++k) {
      tail[k] = density[k] = moment[k] = 0.0;
    }
    for (int j = 0; j < mostUpwardTerms; ++j) {
      // 1 / (j + 1), 1 / (j + 3/2) for the weights, 1 / (j + 3/2), 1 / (j + 2) for the decrements.
      const double* r = &reciprocals[2 * static_cast<std::size_t>(j) + 2];
      for (int k = 0; k < 2; ++k) {
        const double product = w[k] * d[k] * a[k];
        density[k] += product;
        moment[k] += product * a[k];
        tail[k] += w[k] * q[k];
        q[k] += d[k];
        w[k] *= mean * r[k];
        d[k] *= f.at.x * (a[k] + f.half) * r[k + 1];
        a[k] += 1.0;
      }
      // Past the largest products the terms fall at least by half once they are this small.
      if (w[1] * q[1] < 1e-17 * tail[1] && w[0] * q[0] < 1e-17 * tail[0] &&
          w[1] * d[1] * a[1] < 1e-17 * density[1] && w[0] * d[0] * a[0] < 1e-17 * density[0]) {
        return true;
      }
    }
    return false;
  }
};

// Sum of both mixtures' logarithms.
double logBoth(const Families& f, double mean, Tail which, double MixtureSums::*part) {
  const MixtureSums even = mixtureSums(f.even(), mean, which, true);
  const MixtureSums odd = mixtureSums(f.odd(), mean, which, true);
  double sum = logSum(logInUnits(even.*part, even), logInUnits(odd.*part, odd));
  const bool wantUpper = which == Tail::upper && part == &MixtureSums::tail;
  if (wantUpper && !even.whole) {
    sum = logSum(sum, f.even().logCentralUpper());
  }
  if (wantUpper && !odd.whole) {
    sum = logSum(sum, f.odd().logCentralUpper() + std::log(std::erf(std::sqrt(mean))));
  }
  return sum;
}

}  // namespace

// The probability between 0 and x with what lies below 0, or the one beyond x; for a negative delta
// always the latter.
NoncentralStudentLaw::Point NoncentralStudentLaw::pointAt(double x, double delta,
                                                          bool wantUpper) const {
  if (StudentPowerTail::reached(x, nu_, delta)) {
    const StudentPowerTail far(x, nu_, delta);
    const double upper = far.upper();
    if (upper < 0.5 || wantUpper) {
      return {1.0 - upper, upper, far.density(), -nu_};
    }
    if (nu_ < 1e-6 || !(x < greatArgument)) {
      const double lower = normalLower(-delta) + StudentPowerTail::inside(x, nu_, delta);
      return {lower, upper, far.density(), -nu_};
    }
  }
  const double mean = 0.5 * delta * delta;
  // On the other side the difference of the two sums, where it keeps its digits.
  const bool gentle =
      delta > 0.0 || -delta * (x * std::sqrt((nu_ + 1.0) / (nu_ + x * x)) + 0.8) < mostCancelled;
  const Families f(x, nu_);
  if (wantUpper && mean < mostUpward && gentle) {
    UpwardSums sums;
    if (sums.add(f, StudentLaw(nu_), x, mean)) {
      const double sign = delta > 0.0 ? 1.0 : -1.0;
      const double upper = 0.5 * (sums.tail[0] + sign * sums.tail[1]);
      const double scaled = sums.density[0] + sign * sums.density[1];
      const double power = (sums.moment[0] + sign * sums.moment[1]) / scaled;
      return {1.0 - upper, upper, scaled / x, 2.0 * (power * f.at.y - f.half * f.at.x)};
    }
  }
  if (delta < 0.0) {
    const OppositeSide side(x, nu_, -delta);
    const OppositeSide::Sums sums = side.integrate();
    const double upper = side.scale() * sums.tail;
    return {1.0 - upper, upper, side.scale() * sums.density, sums.bend};
  }
  const Tail which = wantUpper ? Tail::upper : Tail::lower;
  const MixtureSums even = mixtureSums(f.even(), mean, which, false);
  const MixtureSums odd = mixtureSums(f.odd(), mean, which, false);
  double tail = inUnits(even.tail, even) + inUnits(odd.tail, odd);
  const double first = inUnits(even.density, even);
  const double second = inUnits(odd.density, odd);
  const double density = (first + second) / x;
  const double power =
      (first * (0.5 + even.meanIndex) + second * (1.0 + odd.meanIndex)) / (first + second);
  const double bend = 2.0 * (power * f.at.y - f.half * f.at.x);
  if (wantUpper) {
    tail += (even.whole ? 0.0 : 2.0 * StudentLaw(nu_).tail(x, Tail::upper)) +
            (odd.whole ? 0.0 : std::erf(delta / std::numbers::sqrt2) * f.oddUpper());
    return {1.0 - 0.5 * tail, 0.5 * tail, density, bend};
  }
  const double lower = normalLower(-delta) + 0.5 * tail;
  return {lower, 1.0 - lower, density, bend};
}

double NoncentralStudentLaw::positiveTail(double x, double delta, Tail which) const {
  if (delta > StudentDistant::from) {
    return StudentDistant(nu_, delta).tail(x, which);
  }
  if (delta < -greatArgument) {
    return which == Tail::upper ? 0.0 : 1.0;
  }
  if (delta < 0.0) {
    const Point at = pointAt(x, delta, true);
    return which == Tail::upper ? at.upper : at.lower;
  }
  // The upper tail's sum is the cheaper one: it serves up to some 0.9.
  const bool wantUpper = x > delta - 1.2;
  const Point at = pointAt(x, delta, wantUpper);
  const double computed = wantUpper ? at.upper : at.lower;
  if (computed < 0.9) {
    return which == Tail::upper ? at.upper : at.lower;
  }
  const Point turned = pointAt(x, delta, !wantUpper);
  return which == Tail::upper ? turned.upper : turned.lower;
}

double NoncentralStudentLaw::logPositiveTail(double x, double delta, Tail which) const {
  if (delta > StudentDistant::from) {
    return StudentDistant(nu_, delta).logTail(x, which);
  }
  if (delta < -greatArgument) {
    return which == Tail::upper ? nan : 0.0;
  }
  const double rest = positiveTail(x, delta, other(which));
  if (rest < 0.5) {
    return std::log1p(-rest);
  }
  const double value = positiveTail(x, delta, which);
  if (value > 1e-290) {
    return std::log(value);
  }
  if (which == Tail::upper && StudentPowerTail::reached(x, nu_, delta)) {
    return StudentPowerTail(x, nu_, delta).logUpper();
  }
  if (delta < 0.0) {
    const OppositeSide side(x, nu_, -delta);
    return side.logScale() + std::log(side.integrate().tail);
  }
  const double sum =
      logBoth(Families(x, nu_), 0.5 * delta * delta, which, &MixtureSums::tail) - std::numbers::ln2;
  return which == Tail::upper ? sum : logSum(sum, logNormalLower(-delta));
}

double NoncentralStudentLaw::positiveDensity(double x, double delta, bool log) const {
  if (delta > StudentDistant::from) {
    const StudentDistant law(nu_, delta);
    return log ? law.logDensity(x) : law.density(x);
  }
  if (delta < -greatArgument) {
    return log ? nan : 0.0;
  }
  if (log && StudentPowerTail::reached(x, nu_, delta)) {
    return StudentPowerTail(x, nu_, delta).logDensity();
  }
  if (delta < 0.0 && !log) {
    return pointAt(x, delta, true).density;
  }
  if (delta < 0.0) {
    const OppositeSide side(x, nu_, -delta);
    const double sum = side.integrate().density;
    return side.logScale() + std::log(sum);
  }
  if (log) {
    return logBoth(Families(x, nu_), 0.5 * delta * delta, x > delta ? Tail::upper : Tail::lower,
                   &MixtureSums::density) -
           std::log(x);
  }
  return pointAt(x, delta, x > delta).density;
}

double NoncentralStudentLaw::tail(double x, Tail which) const {
  if (delta_ == 0.0) {
    return StudentLaw(nu_).tail(x, which);
  }
  const double sign = which == Tail::lower ? 1.0 : -1.0;
  if (std::fabs(x) < leastArgument) {
    return normalLower(-sign * delta_);
  }
  if (nu_ >= hugeFreedom) {
    return normalLower(sign * (x - delta_));
  }
  if (!std::isfinite(x)) {
    return std::isnan(x) ? nan : (x > 0.0) == (which == Tail::lower) ? 1.0 : 0.0;
  }
  const double value =
      x > 0.0 ? positiveTail(x, delta_, which) : positiveTail(-x, -delta_, other(which));
  return std::clamp(value, 0.0, 1.0);
}

double NoncentralStudentLaw::logTail(double x, Tail which) const {
  if (delta_ == 0.0) {
    return StudentLaw(nu_).logTail(x, which);
  }
  const double sign = which == Tail::lower ? 1.0 : -1.0;
  if (std::fabs(x) < leastArgument) {
    return logNormalLower(-sign * delta_);
  }
  if (nu_ >= hugeFreedom) {
    return logNormalLower(sign * (x - delta_));
  }
  if (!std::isfinite(x)) {
    return std::log(tail(x, which));
  }
  const double value =
      x > 0.0 ? logPositiveTail(x, delta_, which) : logPositiveTail(-x, -delta_, other(which));
  return std::min(value, 0.0);
}

double NoncentralStudentLaw::density(double x) const {
  if (delta_ == 0.0) {
    return StudentLaw(nu_).density(x);
  }
  if (nu_ >= hugeFreedom) {
    return inverseRootTwoPi * std::exp(-0.5 * (x - delta_) * (x - delta_));
  }
  if (std::fabs(x) < leastArgument) {
    return StudentLaw(nu_).density(0.0) * std::exp(-0.5 * delta_ * delta_);
  }
  if (!std::isfinite(x)) {
    return std::isnan(x) ? nan : 0.0;
  }
  return x > 0.0 ? positiveDensity(x, delta_, false) : positiveDensity(-x, -delta_, false);
}

double NoncentralStudentLaw::logDensity(double x) const {
  if (delta_ == 0.0) {
    return StudentLaw(nu_).logDensity(x);
  }
  if (nu_ >= hugeFreedom) {
    return -0.5 * (x - delta_) * (x - delta_) - logRootTwoPi;
  }
  if (std::fabs(x) < leastArgument) {
    return StudentLaw(nu_).logDensity(0.0) - 0.5 * delta_ * delta_;
  }
  if (!std::isfinite(x)) {
    return std::isnan(x) ? nan : -infinity;
  }
  return x > 0.0 ? positiveDensity(x, delta_, true) : positiveDensity(-x, -delta_, true);
}

// N. L. Johnson and B. L. Welch, Applications of the non-central t-distribution, Biometrika 31
// (1940): x S - Z is nearly normal.
double NoncentralStudentLaw::start(double p, Tail which) const {
  if (std::fabs(delta_) > 50.0 && delta_ * delta_ > 2.0 * nu_) {
    const Tail ofChi = (delta_ > 0.0) == (which == Tail::lower) ? Tail::upper : Tail::lower;
    return delta_ / std::sqrt(GammaLaw(0.5 * nu_).quantile(p, ofChi) / (0.5 * nu_));
  }
  const double z = which == Tail::lower ? normalInverse(p) : -normalInverse(p);
  const double variance = std::min(0.5 / nu_, 0.5);  // of S
  const double square = 1.0 - variance;
  const double divisor = square - z * z * variance;
  const double root = square + variance * (delta_ * delta_ - z * z);
  if (divisor > 0.1 && root > 0.0) {
    return (delta_ * std::sqrt(square) + z * std::sqrt(root)) / divisor;
  }
  return delta_ +
         StudentLaw(nu_).quantile(p, which) * std::sqrt(1.0 + delta_ * delta_ / (2.0 * nu_));
}

double NoncentralStudentLaw::quantile(double p, Tail which) const {
  if (delta_ == 0.0 || !(p > 0.0) || p >= 1.0) {
    return StudentLaw(nu_).quantile(p, which);
  }
  if (nu_ >= hugeFreedom) {
    return delta_ + (which == Tail::lower ? normalInverse(p) : -normalInverse(p));
  }
  if (p > 0.5) {
    p = 1.0 - p;
    which = other(which);
  }
  if (std::fabs(delta_) > StudentDistant::from) {
    const StudentDistant law(nu_, std::fabs(delta_));
    return delta_ > 0.0 ? law.quantile(p, which) : -law.quantile(p, other(which));
  }
  const double from = start(p, which);
  // The side of 0, and the law turned to it.
  const double atZero = tail(0.0, which);
  if (p == atZero) {
    return 0.0;
  }
  const bool positive = (p > atZero) == (which == Tail::lower);
  const Tail turned = positive ? which : other(which);
  const double delta = positive ? delta_ : -delta_;
  const double first = positive ? from : -from;
  const double sign = turned == Tail::lower ? 1.0 : -1.0;
  constexpr int stepCost = 1000000;  // operations where degrees of freedom are few, near enough
  vexel::kernels::Lookout lookout;
  double gap = 0.0;  // of the last step
  const auto at = [&](double x) {
    lookout.done(stepCost);
    if (x < leastArgument) {
      gap = logQuotient(atZero, p);
      return TailSlope{gap, 0.0, 0.0};
    }
    const Point point = pointAt(x, delta, x > delta);
    double value = turned == Tail::upper ? point.upper : point.lower;
    if (value < 0.3 && delta > 0.0 && (x > delta) != (turned == Tail::upper)) {
      value = positiveTail(x, delta, turned);
    }
    gap = logQuotient(value, p);
    return TailSlope{gap, sign * x * point.density / value, point.bend};
  };
  const double root =
      invertTail(at, turned == Tail::lower, first > 0.0 ? first : 0.1, 0.0, infinity);
  if (!(std::fabs(gap) < 0.01)) {
    // NOLINTNEXTLINE(bugprone-narrowing-conversions): both are doubles
    const double beyond = root > 1e300 ? infinity : nan;  // no double is that far out
    return positive ? beyond : -beyond;
  }
  return positive ? root : -root;
}

}  // namespace nag2
