// The Moyal law: -2 log |Z| for a standard normal Z.
//
// Method  The normal law of exp(-z / 2); near the middle of |Z|, the error function. Fits solve the
//         likelihood's equations.
// Source  C. Walck, Hand-book on Statistical Distributions for Experimentalists, Stockholm (1996),
//         chapter 26.
// Draws   One normal variate.
// Error   Below 0.05 of 1e-14 max(1, condition) over 422 points of all methods
//         (docs/functions/accuracy.md).
#include <numbers>

#include "functions/distributions/location_scale.hpp"
#include "functions/distributions/normal_tails.hpp"
#include "functions/distributions/precise.hpp"
#include "functions/distributions/tilted_fit.hpp"
#include "numerics/special/normal_functions.hpp"
#include "vexel/distributions/normal.hpp"

namespace vexel {

namespace detail {

namespace {

// P(Z > z) doubles into P(|Z| > u), u = exp(-z / 2).
struct StandardMoyal {
  static constexpr double mean = std::numbers::egamma + logTwo;
  static constexpr double var = std::numbers::pi * std::numbers::pi / 2.0;
  static constexpr double skewness = 1.53514159072290597519;  // 28 sqrt(2) zeta(3) / pi^3
  static constexpr double kurtosis = 4.0;

  static double pdf(double z) { return std::exp(logpdf(z)); }
  static double logpdf(double z) {
    const double e = std::exp(-z);
    return std::isinf(e) ? -infinity : -0.5 * (z + e) - logRootTwoPi;
  }
  static double cdf(double z) { return 2.0 * nag2::normalLower(-std::exp(-0.5 * z)); }
  static double sf(double z) { return normalCentral(std::exp(-0.5 * z)); }
  static double logcdf(double z) {
    const double u = std::exp(-0.5 * z);
    return u > 0.5 ? logTwo + logNormalUpper(u) : std::log1p(-normalCentral(u));
  }
  static double logsf(double z) {
    const double u = std::exp(-0.5 * z);
    // P(|Z| < u) is u sqrt(2 / pi) (1 - u^2 / 6 + ...).
    return u < 1e-9   ? -0.5 * z + (logTwo - logRootTwoPi)
           : u < 0.67 ? std::log(normalCentral(u))
                      : std::log1p(-2.0 * nag2::normalLower(-u));
  }
  static double quantile(double p) { return -2.0 * std::log(normalCentralInverse(1.0 - p, p)); }
  static double isf(double q) { return -2.0 * std::log(normalCentralInverse(q, 1.0 - q)); }
};

}  // namespace

template <>
struct Formulas<Moyal> : LocationScale<Moyal, StandardMoyal, &Moyal::logScale_> {};

}  // namespace detail

Moyal::Moyal(const Parameters& parameters)
    : parameters_(parameters), logScale_(std::log(parameters.scale)) {
  detail::requireFinite(name, "location", parameters.location);
  detail::requirePositive(name, "scale", parameters.scale);
}

Moyal Moyal::fit(Data x, const FitOptions& options) {
  const auto [location, scale] = detail::fitTilted(
      name, detail::observe(name, x, options, {-detail::infinity, detail::infinity}), 2.0);
  return Moyal(location, scale);
}

VEXEL_CONTINUOUS_LAW(Moyal)

}  // namespace vexel
