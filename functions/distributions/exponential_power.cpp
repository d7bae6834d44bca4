// The exponential power law.
//
// Method  |z|^(2 / shape) / 2 has the gamma law of shape / 2; quantiles through its quantile of the
//         nearer tail. Fits solve the likelihood's equations.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 24.
// Draws   One gamma variate, then one draw for the sign.
// Error   Below 0.06 of 1e-14 max(1, condition) over 397 points of all methods
//         (docs/functions/accuracy.md).
#include <algorithm>
#include <cstddef>
#include <utility>

#include "functions/distributions/frame.hpp"
#include "functions/distributions/gamma_functions.hpp"
#include "functions/distributions/maximize.hpp"
#include "functions/distributions/precise.hpp"
#include "numerics/laws/gamma_law.hpp"
#include "vexel/distributions/gamma.hpp"

namespace vexel {

namespace detail {

// |z|^(2 / shape) / 2 has the gamma law of shape / 2.
template <>
struct Formulas<ExponentialPower> {
  const ExponentialPower& law;

  double scale() const { return law.parameters_.scale; }
  double half() const { return 0.5 * law.parameters_.shape; }
  const nag2::GammaLaw& gamma() const { return law.gamma_.get<nag2::GammaLaw>(); }
  // In units of the scale, but where that overflows or underflows.
  struct Place {
    double distance;
    double z;
    Place operator-() const { return {-distance, -z}; }
  };
  Place z(double x) const {
    const double distance = x - law.parameters_.location;
    return {distance, distance / scale()};
  }
  double power(Place at) const {
    const double r = 1.0 / half();
    if (std::isnormal(at.z) || at.distance == 0.0) {
      return 0.5 * std::pow(std::fabs(at.z), r);
    }
    const double unit = std::pow(scale(), r);
    const double distance = std::fabs(at.distance);
    return 0.5 * (unit > 0.0 && std::isfinite(unit)
                      ? std::pow(distance, r) / unit
                      : std::exp(r * (std::log(distance) - std::log(scale()))));
  }

  Interval support() const { return {-infinity, infinity}; }
  double pdf(double x) const {
    constexpr double most = 150.0;  // whose gamma function is a double
    const double bell = std::exp(-power(z(x)));
    return half() < most && bell > 1e-290
               ? bell / (std::exp2(half() + 1.0) * std::tgamma(half() + 1.0)) / scale()
               : std::exp(logpdf(x));
  }
  double logpdf(double x) const { return -power(z(x)) - law.logFactor_; }
  double cdf(double x) const { return upper(-z(x)); }
  double sf(double x) const { return upper(z(x)); }
  double logcdf(double x) const { return logUpper(-z(x)); }
  double logsf(double x) const { return logUpper(z(x)); }
  double quantile(double p) const { return law.parameters_.location - upperQuantile(p); }
  double isf(double q) const { return law.parameters_.location + upperQuantile(q); }

  double mean() const { return law.parameters_.location; }
  double var() const {
    const double h = half();
    return scale() * scale() / 3.0 *
           std::exp(2.0 * h * logTwo + logGamma(1.0 + 3.0 * h) - logGamma(1.0 + h));
  }
  double skewness() const { return 0.0; }
  double kurtosis() const {
    const double h = half();
    return 1.8 * std::exp(logGamma(1.0 + 5.0 * h) + logGamma(1.0 + h) -
                          2.0 * logGamma(1.0 + 3.0 * h)) -
           3.0;
  }

 private:
  // P(|Z| <= |z|) and its complement; where the power underflows by the density at the middle.
  double within(Place at) const {
    const double g = power(at);
    return g > 1e-290 ? gamma().lower(g)
                      : std::fabs(at.z) * std::exp(-half() * logTwo - logGamma(1.0 + half()));
  }
  double beyond(Place at) const {
    const double g = power(at);
    return g > 1e-290 ? gamma().upper(g) : 1.0 - within(at);
  }
  double logBeyond(Place at) const {
    const double g = power(at);
    return g > 1e-290 ? gamma().logTail(g, nag2::Tail::upper) : std::log1p(-within(at));
  }
  double upper(Place at) const {
    return at.distance < 0.0 ? 0.5 + 0.5 * within(at) : 0.5 * beyond(at);
  }
  double logUpper(Place at) const {
    if (at.distance < 0.0) {
      return std::log1p(-0.5 * beyond(at));
    }
    const double inside = within(at);
    return (inside < 0.5 ? std::log1p(-inside) : logBeyond(at)) - logTwo;
  }
  // The distance from the location.
  double upperQuantile(double q) const {
    if (q == 0.5) {
      return 0.0;
    }
    const double side = q < 0.5 ? 1.0 : -1.0;
    const double middle = std::fabs(1.0 - 2.0 * q);  // P(|Z| < |z|)
    const double t = middle < 0.5
                         ? gamma().quantile(middle, nag2::Tail::lower)
                         : gamma().quantile(2.0 * std::fmin(q, 1.0 - q), nag2::Tail::upper);
    return side * (t > 1e-290
                       ? scaledPower(scale(), 2.0 * t, half())
                       : scale() * middle * std::exp(half() * logTwo + logGamma(1.0 + half())));
  }
};

namespace {

// The location of least mean |x - location|^r, r > 0, of sorted data.  From r = 1 on the sum is
// convex; below, its minima are values of the sample, and the best of those around the median is
// taken.
double centerOfPower(const Observations& data, double r) {
  const auto spread = [&](double at) {
    return data.mean([=](double t) { return std::pow(std::fabs(t - at), r); });
  };
  if (r <= 1.0) {
    const std::size_t n = data.x.size();
    const std::size_t reach = 100;
    const std::size_t middle = n / 2;
    double best = data.median();
    double least = spread(best);
    for (std::size_t i = middle > reach ? middle - reach : 0; i < std::min(n, middle + reach);
         ++i) {
      if (const double value = spread(data.x[i]); value < least) {
        least = value;
        best = data.x[i];
      }
    }
    return best;
  }
  const double middle = data.median();
  const auto slope = [&](double at) {
    const double first = data.mean([=](double t) {
      const double d = at - middle - (t - middle);
      return std::copysign(std::pow(std::fabs(d), r - 1.0), d);
    });
    return std::pair(first, nan);  // halving: the second derivative is infinite at the values
  };
  return increasingRoot(slope, data.x.front(), data.x.back(), middle);
}

}  // namespace

}  // namespace detail

ExponentialPower::ExponentialPower(const Parameters& parameters) : parameters_(parameters) {
  detail::requireFinite(name, "location", parameters.location);
  detail::requirePositive(name, "scale", parameters.scale);
  detail::requirePositive(name, "shape", parameters.shape);
  const double half = 0.5 * parameters.shape;
  logFactor_ =
      std::log(parameters.scale) + (half + 1.0) * detail::logTwo + detail::logGamma(half + 1.0);
  gamma_.set(nag2::GammaLaw(half));
}

// The largest likelihood among shapes of 1/50 to 5; for ever larger ones it grows without bound at
// each value.  Location and scale follow from the shape; the shape by a golden section of its
// logarithm around the best of a grid.
ExponentialPower ExponentialPower::fit(Data x, const FitOptions& options) {
  detail::Observations data =
      detail::observe(name, x, options, {-detail::infinity, detail::infinity});
  data.sortByValue();
  if (!(data.x.front() < data.x.back())) {
    detail::refuseEqual(name, data.x.front());
  }
  const auto lawOf = [&](double logShape) {
    const double shape = std::exp(logShape);
    const double r = 2.0 / shape;
    const double center = detail::centerOfPower(data, r);
    const double unit = std::fmax(data.x.back() - center, center - data.x.front());
    const double power =
        data.mean([=](double t) { return std::pow(std::fabs(t - center) / unit, r); });
    return ExponentialPower(center, unit * std::pow(0.5 * r * power, 1.0 / r), shape);
  };
  const auto likelihood = [&](double logShape) {
    const ExponentialPower law = lawOf(logShape);
    return data.mean([&](double t) { return law.logpdf(t); });
  };
  constexpr int grid = 24;
  const double low = std::log(0.02);
  const double step = (std::log(5.0) - low) / grid;
  double best = low;
  double highest = -detail::infinity;
  for (int i = 0; i <= grid; ++i) {
    if (const double value = likelihood(low + step * i); value > highest) {
      highest = value;
      best = low + step * i;
    }
  }
  return lawOf(detail::goldenMaximum(likelihood, best - step, best + step));
}

VEXEL_CONTINUOUS_LAW(ExponentialPower)

}  // namespace vexel
