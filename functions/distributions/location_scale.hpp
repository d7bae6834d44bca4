// Laws of z = (x - location) / scale, from their standard form.
#pragma once

#include <cmath>

#include "functions/distributions/frame.hpp"

namespace vexel::detail {

// S has the standard law's pdf, logpdf, the tails and quantiles as static functions, and its
// moments as constants; the member is the logarithm of the scale.
template <typename L, typename S, double L::*logScale>
struct LocationScale {
  const L& law;

  double z(double x) const {
    const auto& [location, scale] = law.parameters();
    return (x - location) / scale;
  }
  double x(double z) const {
    const auto& [location, scale] = law.parameters();
    return location + scale * z;
  }

  Interval support() const { return {-infinity, infinity}; }
  double pdf(double t) const {
    const auto& [location, scale] = law.parameters();
    return S::pdf(z(t)) / scale;
  }
  double logpdf(double t) const { return S::logpdf(z(t)) - law.*logScale; }
  double cdf(double t) const { return S::cdf(z(t)); }
  double sf(double t) const { return S::sf(z(t)); }
  double logcdf(double t) const { return S::logcdf(z(t)); }
  double logsf(double t) const { return S::logsf(z(t)); }
  double quantile(double p) const { return x(S::quantile(p)); }
  double isf(double q) const { return x(S::isf(q)); }

  double mean() const { return x(S::mean); }
  double var() const {
    const auto& [location, scale] = law.parameters();
    return scale * scale * S::var;
  }
  double skewness() const { return S::skewness; }
  double kurtosis() const { return S::kurtosis; }
};

}  // namespace vexel::detail
