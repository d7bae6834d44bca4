// The beta law.
//
// Method  The incomplete beta function of numerics/laws/beta_law.hpp; the lower tail of small whole
//         parameters by a finite sum. Fits solve the likelihood's equations.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 25.
// Draws   Two gamma variates, that of a first.
// Error   Below 0.08 of 1e-14 max(1, condition) over 392 points of all methods
//         (docs/functions/accuracy.md).
#include "vexel/distributions/beta.hpp"

#include <algorithm>
#include <cmath>

#include "functions/distributions/frame.hpp"
#include "functions/distributions/gamma_functions.hpp"
#include "functions/distributions/maximize.hpp"
#include "numerics/laws/beta_law.hpp"

namespace vexel {

namespace detail {

namespace {

// The lower tail for small whole parameters, a finite sum of positive terms:
// x^a (1 + a y + a (a + 1) / 2 y^2 + ... b terms), y = 1 - x.  N. L. Johnson, A. W. Kemp and
// S. Kotz, Univariate Discrete Distributions, 3rd edition (2005), section 5.6.
class WholeBetaTail {
 public:
  static constexpr double most = 16.0;  // a + b

  static bool serves(double a, double b) {
    return a + b <= most && a == std::floor(a) && b == std::floor(b);
  }

  WholeBetaTail(double a, double b) : power_(static_cast<int>(a)), terms_(static_cast<int>(b)) {
    factor_[0] = 1.0;
    for (int j = 1; j < terms_; ++j) {
      factor_[j] = factor_[j - 1] * (a + j - 1) / j;  // a binomial coefficient
    }
  }
  double operator()(double x, double y) const {
    double sum = factor_[terms_ - 1];
    for (int j = terms_ - 1; j-- > 0;) {
      sum = sum * y + factor_[j];
    }
    for (int i = 0; i < power_; ++i) {
      sum *= x;
    }
    return std::fmin(sum, 1.0);
  }

 private:
  int power_;
  int terms_;
  double factor_[static_cast<int>(most)];
};

}  // namespace

template <>
struct Formulas<Beta> {
  const Beta& law;

  double a() const { return law.parameters_.a; }
  double b() const { return law.parameters_.b; }
  const nag2::BetaLaw& beta() const { return law.beta_.get<nag2::BetaLaw>(); }
  static nag2::UnitPair at(double x) { return nag2::BetaLaw::at(x); }

  Interval support() const { return {0.0, 1.0}; }
  double pdf(double x) const { return x == 0.0 || x == 1.0 ? end(x) : beta().density(at(x)); }
  double logpdf(double x) const {
    return x == 0.0 || x == 1.0 ? std::log(end(x)) : beta().logDensity(at(x));
  }
  bool whole() const { return WholeBetaTail::serves(a(), b()); }
  double cdf(double x) const {
    return whole() ? WholeBetaTail(a(), b())(x, 1.0 - x) : beta().tail(at(x), nag2::Tail::lower);
  }
  double sf(double x) const {
    return whole() ? WholeBetaTail(b(), a())(1.0 - x, x) : beta().tail(at(x), nag2::Tail::upper);
  }
  void cdf(std::span<const double> x, std::span<double> out) const {
    if (!whole()) {
      std::transform(x.begin(), x.end(), out.begin(), [&](double t) { return law.cdf(t); });
      return;
    }
    const WholeBetaTail tail(a(), b());
    std::transform(x.begin(), x.end(), out.begin(), [&](double t) {
      return tailAt(*this, t, 0.0, 1.0, [&](double u) { return tail(u, 1.0 - u); });
    });
  }
  double logcdf(double x) const { return beta().logTail(at(x), nag2::Tail::lower); }
  double logsf(double x) const { return beta().logTail(at(x), nag2::Tail::upper); }
  double quantile(double p) const { return beta().quantile(p, nag2::Tail::lower).x; }
  double isf(double q) const { return beta().quantile(q, nag2::Tail::upper).x; }

  double mean() const { return a() / (a() + b()); }
  double var() const {
    const double n = a() + b();
    return (a() / n) * (b() / n) / (n + 1.0);
  }
  double skewness() const {
    const double n = a() + b();
    return 2.0 * ((b() - a()) / (n + 2.0)) * std::sqrt((n + 1.0) / a() / b());
  }
  double kurtosis() const {
    const double n = a() + b();
    const double d = a() - b();
    return 6.0 * (d / a() * (d / b()) * ((n + 1.0) / (n + 2.0)) - 1.0) / (n + 3.0);
  }

 private:
  // The density at an end of the support.
  double end(double x) const {
    const double own = x == 0.0 ? a() : b();
    return own < 1.0 ? infinity : own > 1.0 ? 0.0 : x == 0.0 ? b() : a();
  }
};

}  // namespace detail

Beta::Beta(const Parameters& parameters) : parameters_(parameters) {
  detail::requirePositive(name, "a", parameters.a);
  detail::requirePositive(name, "b", parameters.b);
  beta_.set(nag2::BetaLaw(parameters.a, parameters.b));
}

// By Newton's steps in the logarithms of the parameters, from the moments.
Beta Beta::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {detail::leastPositive, 1.0 - 0x1p-53});
  const double center = data.mean();
  const double deviation = data.deviation(center);
  if (!(deviation > 0.0)) {
    detail::refuseEqual(name, center);
  }
  const double first = data.mean([](double t) { return std::log(t); });
  const double second = data.mean([](double t) { return std::log1p(-t); });
  const auto likelihood = [=](const std::array<double, 2>& at) {
    const double a = std::exp(at[0]);
    const double b = std::exp(at[1]);
    const double both = detail::digamma(a + b);
    const double bend = detail::trigamma(a + b);
    detail::Local<2> local;
    local.value = (a - 1.0) * first + (b - 1.0) * second - detail::logGamma(a) -
                  detail::logGamma(b) + detail::logGamma(a + b);
    local.gradient = {a * (first - detail::digamma(a) + both),
                      b * (second - detail::digamma(b) + both)};
    local.hessian = {local.gradient[0] + a * a * (bend - detail::trigamma(a)), a * b * bend,
                     local.gradient[1] + b * b * (bend - detail::trigamma(b))};
    return local;
  };
  const double total = std::fmax(0.1, center * (1.0 - center) / (deviation * deviation) - 1.0);
  const auto best = detail::maximize<2>(
      name, likelihood, {std::log(total * center), std::log(total * (1.0 - center))});
  return Beta(std::exp(best[0]), std::exp(best[1]));
}

VEXEL_CONTINUOUS_LAW(Beta)

}  // namespace vexel
