// The normal law.
//
// Method  Tails from a table of kernels/normal.hpp near the middle and from
//         numerics/special/normal_functions.hpp beyond; quantiles from there.
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         1, 2nd edition (1994), chapter 13.
// Draws   One draw of 64 bits, more than one in one case of 150: the ziggurat of
//         kernels/variates/ziggurat.hpp.
// Error   Below 0.06 of 1e-14 max(1, condition) over 401 points of all methods
//         (docs/functions/accuracy.md).
#include "vexel/distributions/normal.hpp"

#include <algorithm>

#include "functions/distributions/location_scale.hpp"
#include "functions/distributions/normal_tails.hpp"
#include "functions/distributions/precise.hpp"
#include "kernels/normal.hpp"
#include "numerics/special/normal_functions.hpp"

namespace vexel {

namespace detail {

namespace {

struct StandardNormal {
  static constexpr double mean = 0.0;
  static constexpr double var = 1.0;
  static constexpr double skewness = 0.0;
  static constexpr double kurtosis = 0.0;

  static double pdf(double z) { return std::exp(-0.5 * z * z) / rootTwoPi; }
  static double logpdf(double z) { return -0.5 * z * z - logRootTwoPi; }
  static double cdf(double z) {
    return std::fabs(z) < kernels::NormalTable::range ? kernels::normalCdf(z)
                                                      : nag2::normalLower(z);
  }
  static double sf(double z) { return cdf(-z); }
  static double logcdf(double z) { return logNormalUpper(-z); }
  static double logsf(double z) { return logNormalUpper(z); }
  static double quantile(double p) { return kernels::normalQuantile(p); }
  static double isf(double q) { return -kernels::normalQuantile(q); }
};

}  // namespace

template <>
struct Formulas<Normal> : LocationScale<Normal, StandardNormal, &Normal::logScale_> {
  using Plain = LocationScale<Normal, StandardNormal, &Normal::logScale_>;
  using Plain::cdf, Plain::sf, Plain::quantile, Plain::isf;
  using In = std::span<const double>;

  void cdf(In t, std::span<double> out) const { tails(t, out, false); }
  void sf(In t, std::span<double> out) const { tails(t, out, true); }
  void quantile(In p, std::span<double> out) const { quantiles(p, out, "p", false); }
  void isf(In q, std::span<double> out) const { quantiles(q, out, "q", true); }

 private:
  static constexpr std::size_t kChunk = 512;
  static constexpr std::size_t kFew = 4;  // not worth the eight lanes

  void tails(In t, std::span<double> out, bool upper) const {
    if (t.size() < kFew) {
      std::transform(t.begin(), t.end(), out.begin(),
                     [&](double x) { return upper ? Plain::sf(x) : Plain::cdf(x); });
      return;
    }
    double zs[kChunk];
    for (std::size_t i = 0; i < t.size(); i += kChunk) {
      const std::size_t n = std::min(kChunk, t.size() - i);
      standardize(t.data() + i, n, upper, zs);
      if (!kernels::normalCdfs(zs, n, out.data() + i)) {
        std::transform(zs, zs + n, out.data() + i, StandardNormal::cdf);
      }
    }
  }

  void standardize(const double* t, std::size_t n, bool upper, double* zs) const {
    const auto& [location, scale] = law.parameters();
    const double sign = upper ? -1.0 : 1.0;
    if (location == 0.0 && scale == 1.0) {
      for (std::size_t j = 0; j < n; ++j) {
        zs[j] = sign * t[j];
      }
      return;
    }
    for (std::size_t j = 0; j < n; ++j) {
      zs[j] = sign * ((t[j] - location) / scale);
    }
  }

  void quantiles(In p, std::span<double> out, const char* parameter, bool upper) const {
    const auto inside = [](double q) { return q > 0.0 && q < 1.0; };
    const auto& [location, scale] = law.parameters();
    for (std::size_t i = 0; i < p.size(); i += kChunk) {
      const In part = p.subspan(i, std::min(kChunk, p.size() - i));
      double* const to = out.data() + i;
      if (part.size() < kFew || !std::all_of(part.begin(), part.end(), inside)) {
        std::transform(part.begin(), part.end(), to, [&](double q) {
          return quantileAt<Normal>(parameter, *this, q, upper,
                                    [&](double r) { return upper ? isf(r) : quantile(r); });
        });
        continue;
      }
      kernels::normalQuantiles(part.data(), part.size(), to);
      for (std::size_t j = 0; j < part.size(); ++j) {
        to[j] = location + scale * (upper ? -to[j] : to[j]);
      }
    }
  }
};

}  // namespace detail

Normal::Normal(const Parameters& parameters)
    : parameters_(parameters), logScale_(parameters.sd == 1.0 ? 0.0 : std::log(parameters.sd)) {
  detail::requireFinite(name, "mean", parameters.mean);
  detail::requirePositive(name, "sd", parameters.sd);
}

Normal Normal::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {-detail::infinity, detail::infinity});
  data.requireSpread(name);
  const double center = data.mean();
  return Normal(center, data.deviation(center));
}

VEXEL_CONTINUOUS_LAW(Normal)

}  // namespace vexel
