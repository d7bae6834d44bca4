// The inverse Gaussian law.
//
// Method  With a = (x - mean) / mean sqrt(shape / x) and b = a + 2 sqrt(shape / x), the
//         distribution function is Phi(a) + exp(2 shape / mean) Phi(-b), and the factor is phi(a) /
//         phi(b): in Mills' ratio R, phi(a) (R(-a) + R(b)) below the mean, and above it the upper
//         tail is phi(a) (R(a) - R(b)). Quantiles by inversion on logarithmic scales.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         1, 2nd edition (1994), chapter 15.
// Draws   One normal variate, then one uniform that chooses the root.
// Error   Below 0.06 of 1e-14 max(1, condition) over 312 points of all methods
//         (docs/functions/accuracy.md).
#include <cmath>
#include <numbers>

#include "functions/distributions/frame.hpp"
#include "functions/distributions/normal_tails.hpp"
#include "functions/distributions/precise.hpp"
#include "numerics/special/inversion.hpp"
#include "numerics/special/normal_functions.hpp"
#include "vexel/distributions/normal.hpp"

namespace vexel {

namespace detail {

namespace {

// R(a) - R(a + 2 half) for a, half >= 0.  Near each other it is the integral of -R' = 1 - z R, by
// Gauss and Legendre's rule of ten points.
double millsDifference(double a, double half) {
  if (2.0 * half > 0.3 * a + 0.5) {
    return mills(a).ratio - mills(a + 2.0 * half).ratio;
  }
  constexpr double nodes[] = {0.14887433898163121088, 0.43339539412924719080,
                              0.67940956829902440623, 0.86506336668898451073,
                              0.97390652851717172008};
  constexpr double weights[] = {0.29552422471475287017, 0.26926671930999635509,
                                0.21908636251598204400, 0.14945134915058059315,
                                0.06667134430868813759};
  const double middle = a + half;
  double sum = 0.0;
  for (int i = 0; i < 5; ++i) {
    sum +=
        weights[i] * (mills(middle - half * nodes[i]).rest + mills(middle + half * nodes[i]).rest);
  }
  return half * sum;
}

}  // namespace

template <>
struct Formulas<InverseGaussian> {
  const InverseGaussian& law;

  double mu() const { return law.parameters_.mean; }
  double shape() const { return law.parameters_.shape; }
  double root(double x) const {
    const double quotient = shape() / x;
    return std::isnormal(quotient) ? std::sqrt(quotient) : std::sqrt(shape()) / std::sqrt(x);
  }
  double a(double x) const { return (x - mu()) / mu() * root(x); }

  Interval support() const { return {0.0, infinity}; }
  double pdf(double x) const {
    const double at = a(x);
    const double bell = std::exp(-0.5 * at * at) / rootTwoPi;
    return bell > 1e-290 ? bell * (root(x) / x) : x == 0.0 ? 0.0 : std::exp(logpdf(x));
  }
  double logpdf(double x) const {
    if (x == 0.0) {
      return -infinity;
    }
    const double at = a(x);
    return std::isinf(at) ? -infinity
                          : std::log(root(x)) - std::log(x) - logRootTwoPi - 0.5 * at * at;
  }
  double cdf(double x) const { return x < turn() ? tail(x, true) : 1.0 - sf(x); }
  double sf(double x) const { return x < turn() ? 1.0 - cdf(x) : std::fmin(1.0, tail(x, false)); }
  double logcdf(double x) const { return x < turn() ? logTail(x, true) : std::log1p(-sf(x)); }
  double logsf(double x) const { return x < turn() ? std::log1p(-cdf(x)) : logTail(x, false); }
  double quantile(double p) const { return inverse(p, false); }
  double isf(double q) const { return inverse(q, true); }

  double mean() const { return mu(); }
  double var() const { return mu() * mu() * (mu() / shape()); }
  double skewness() const { return 3.0 * std::sqrt(mu() / shape()); }
  double kurtosis() const { return 15.0 * (mu() / shape()); }

 private:
  // Where the upper tail is computed instead of the lower: at the mean, or below it where the law
  // has little drift and the upper tail is small long before.
  double turn() const { return std::fmin(mu(), 25.0 * shape()); }
  // The lower tail up to there, the upper one from there on, over phi(a).
  double factor(double x, bool left) const {
    const double at = a(x);
    return left ? mills(-at).ratio + mills((x + mu()) / mu() * root(x)).ratio
                : millsDifference(at, root(x));
  }
  double tail(double x, bool left) const {
    const double at = a(x);
    const double bell = std::exp(-0.5 * at * at) / rootTwoPi;
    return bell > 1e-290 ? bell * factor(x, left) : std::exp(logTail(x, left));
  }
  double logTail(double x, bool left) const {
    const double at = a(x);
    const double exponent = -0.5 * at * at - logRootTwoPi;
    return std::isinf(exponent) ? exponent : exponent + std::log(factor(x, left));
  }
  double inverse(double p, bool upper) const {
    // By the tail that is below the turn's, or above it.
    const double below = cdf(turn());
    const bool left = upper ? p >= 1.0 - below : p <= below;
    const double target = left != upper ? p : 1.0 - p;
    const auto at = [&](double x) {
      const double log = logTail(x, left);
      const double slope = root(x) / factor(x, left);
      const double bend = -0.5 + 0.5 * shape() * (1.0 / x - x / mu() / mu());
      return nag2::TailSlope{log - std::log(target), left ? slope : -slope, bend};
    };
    // Where a(x) is the normal law's point: with r^2 = x / mean, r - 1 / r = z sqrt(mean / shape).
    // Beyond the mean both this and the point of the law without drift, whose upper tail is at most
    // sqrt(2 shape / (pi x)), are too far out.
    const double z = std::fabs(nag2::normalInverse(target)) * std::sqrt(mu() / shape());
    const double r = 0.5 * z + std::sqrt(0.25 * z * z + 1.0);
    if (left) {
      return nag2::invertTail(at, true, std::fmin(std::nextafter(turn(), 0.0), mu() / r / r), 0.0,
                              turn());
    }
    const double still = 2.0 / std::numbers::pi * (shape() / target) / target;
    return nag2::invertTail(
        at, false, std::fmax(std::nextafter(turn(), infinity), std::fmin(mu() * r * r, still)),
        turn(), infinity);
  }
};

}  // namespace detail

InverseGaussian::InverseGaussian(const Parameters& parameters) : parameters_(parameters) {
  detail::requirePositive(name, "mean", parameters.mean);
  detail::requirePositive(name, "shape", parameters.shape);
}

InverseGaussian InverseGaussian::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {detail::leastPositive, detail::infinity});
  data.requireSpread(name);
  const double center = data.mean();
  // mean(1 / x) - 1 / center, of positive terms.
  const double gap = data.mean([=](double t) {
    const double d = (t - center) / center;
    return d * d / t;
  });
  return InverseGaussian(center, 1.0 / gap);
}

VEXEL_CONTINUOUS_LAW(InverseGaussian)

}  // namespace vexel
