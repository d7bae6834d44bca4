// P(T > x) is the mean of P(S < W / x) over W = max(0, Z + delta), and P(S < s) a power series that
// begins with s^nu: what counts is the nu-th moment of W, an integral over log W by the trapezoidal
// rule around its peak.

#include "numerics/laws/student_extremes.hpp"

#include <cmath>
#include <initializer_list>
#include <limits>

#include "numerics/special/normal_functions.hpp"
#include "numerics/special/special.hpp"

namespace nag2 {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// The peak w of w^(nu + 1) phi(w - delta): w (w - delta) = nu + 1.
double peakOf(double nu, double delta) {
  const double a = nu + 1.0;
  const double root = std::hypot(delta, 2.0 * std::sqrt(a));
  return delta > 0.0 ? 0.5 * (delta + root) : 2.0 * a / (root - delta);
}

}  // namespace

bool StudentPowerTail::reached(double x, double nu, double delta) {
  const double w = (peakOf(nu, delta) + 4.0) / x;
  return nu * w * w < 8e-9;
}

StudentPowerTail::StudentPowerTail(double x, double nu, double delta) : x_(x), nu_(nu) {
  const double a = nu + 1.0;
  const double w = peakOf(nu, delta);
  // Towards 0 the integrand falls the more slowly the fewer degrees of freedom.
  const double step = (nu < 1.0 ? 0.18 : 0.25) / std::sqrt(a + w * w);
  double sum = 0.0;
  double squares = 0.0;
  for (const double side : {step, -step}) {
    for (int i = side > 0.0 ? 0 : 1; i < 4000; ++i) {
      const double v = i * side;
      const double grown = std::expm1(v);
      const double rise = w * grown;
      const double term = std::exp(a * (v - grown) - 0.5 * rise * rise);
      sum += term;
      squares += term * (1.0 + grown) * (1.0 + grown);
      if (term < 1e-18 * sum) {
        break;
      }
    }
  }
  const double ratio = w / x;
  less_ = nu * (nu / (2.0 * (nu + 2.0))) * ratio * ratio * (squares / sum);
  const double z = a / w;
  constexpr double rootOfE = 1.6487212707001281468;
  const PowerPiece atPeak(0.5 * nu);
  const Piece first = atPeak.atPeak();
  scale_ = first.factor * std::exp(-first.exponent - 0.5 * z * z) * inverseRootTwoPi * w *
           (sum * step) * std::pow(rootOfE * ratio, nu);
  logScale_ = atPeak.logAtPeak() - 0.5 * z * z - logRootTwoPi + std::log(w * (sum * step)) +
              nu * (0.5 + (std::log(w) - std::log(x)));
  if (!(scale_ > 1e-290)) {
    scale_ = std::exp(logScale_);
  }
}

// The mean of P(S >= W / x) over W > 0, without cancellation.
double StudentPowerTail::inside(double x, double nu, double delta) {
  const double h = 0.5 * nu;
  const double w = peakOf(0.0, delta);
  const double step = 0.18 / std::hypot(1.0, w);
  const double logAtPeak = h * (std::log(h) + 2.0 * (std::log(w) - std::log(x))) - logGamma1p(h);
  const double square = h * (w / x) * (w / x) * (h / (h + 1.0));
  double sum = 0.0;
  for (const double side : {step, -step}) {
    for (int i = side > 0.0 ? 0 : 1; i < 4000; ++i) {
      const double v = i * side;
      const double grown = std::expm1(v);
      const double rise = w * grown;
      const double weight = std::exp(v - grown - 0.5 * rise * rise);
      const double beside = square * (1.0 + grown) * (1.0 + grown);
      sum -= weight * std::expm1(logAtPeak + nu * v - beside);
      if (weight < 1e-19) {
        break;
      }
    }
  }
  return inverseRootTwoPi * std::exp(-0.5 / (w * w)) * w * (sum * step);
}

double StudentPowerTail::upper() const { return scale_ * (1.0 - less_); }
double StudentPowerTail::density() const {
  const double value = scale_ / x_ * (nu_ - (nu_ + 2.0) * less_);
  return value > 1e-290 ? value : std::exp(logDensity());
}
double StudentPowerTail::logDensity() const {
  return logScale_ - std::log(x_) + std::log(nu_ - (nu_ + 2.0) * less_);
}

// Half of nu s^2 at s = delta / x.
double StudentDistant::argument(double x) const {
  const double s = delta_ / x;
  return 0.5 * nu_ * s * s;
}

// Above it the normal variable counts nowhere.
constexpr double logSure = -650.0;

bool StudentDistant::close(double x) const { return x < 1e4 * std::sqrt(nu_) * std::sqrt(delta_); }

double StudentDistant::tail(double x, Tail which) const {
  return !(nu_ <= mostFreedom)
             ? nan
             : gamma_.tail(argument(x), which == Tail::lower ? Tail::upper : Tail::lower);
}

double StudentDistant::logTail(double x, Tail which) const {
  const double log = gamma_.logTail(argument(x), which == Tail::lower ? Tail::upper : Tail::lower);
  const bool sure = which == Tail::upper || log > logSure || !close(x);
  return nu_ <= mostFreedom && sure ? log : nan;
}

double StudentDistant::density(double x) const {
  return nu_ <= mostFreedom ? std::exp(plainLogDensity(x)) : nan;
}

double StudentDistant::logDensity(double x) const {
  const double log = plainLogDensity(x);
  return nu_ <= mostFreedom && (log > logSure || !close(x)) ? log : nan;
}

double StudentDistant::plainLogDensity(double x) const {
  return gamma_.logWeight(argument(x)) + std::log(nu_) - std::log(x);
}

double StudentDistant::quantile(double p, Tail which) const {
  const double y = gamma_.quantile(p, which == Tail::lower ? Tail::upper : Tail::lower);
  return !(nu_ <= mostFreedom) ? nan : delta_ / std::sqrt(y / (0.5 * nu_));
}

}  // namespace nag2
