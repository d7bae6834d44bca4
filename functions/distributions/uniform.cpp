// The uniform law on an interval.
//
// Method  Closed forms from the nearer end.
// Source  The definition.
// Draws   One uniform.
// Error   Below 0.03 of 1e-14 max(1, condition) over 480 points of all methods
//         (docs/functions/accuracy.md).
#include <numeric>

#include "functions/data/text.hpp"
#include "functions/distributions/frame.hpp"
#include "functions/distributions/precise.hpp"
#include "vexel/distributions/elementary.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<Uniform> {
  const Uniform& law;

  double width() const { return law.parameters_.b - law.parameters_.a; }
  Interval support() const { return {law.parameters_.a, law.parameters_.b}; }
  double pdf(double) const { return 1.0 / width(); }
  double logpdf(double) const { return -std::log(width()); }
  double cdf(double x) const { return (x - law.parameters_.a) / width(); }
  double sf(double x) const { return (law.parameters_.b - x) / width(); }
  double logcdf(double x) const { return logPart(x - law.parameters_.a, sf(x)); }
  double logsf(double x) const { return logPart(law.parameters_.b - x, cdf(x)); }
  // From the nearer end, so that no point lies beyond the other one.
  double quantile(double p) const {
    return p <= 0.5 ? law.parameters_.a + p * width() : law.parameters_.b - (1.0 - p) * width();
  }
  double isf(double q) const {
    return q <= 0.5 ? law.parameters_.b - q * width() : law.parameters_.a + (1.0 - q) * width();
  }
  double mean() const { return std::midpoint(law.parameters_.a, law.parameters_.b); }
  double var() const { return width() * width() / 12.0; }
  double skewness() const { return 0.0; }
  double kurtosis() const { return -1.2; }

 private:
  double logPart(double part, double rest) const {
    return rest < 0.5 ? std::log1p(-rest) : logRatio(part, width());
  }
};

}  // namespace detail

Uniform::Uniform(const Parameters& parameters) : parameters_(parameters) {
  detail::requireFinite(name, "a", parameters.a);
  detail::requireFinite(name, "b", parameters.b);
  if (!(parameters.a < parameters.b) || std::isinf(parameters.b - parameters.a)) {
    const std::string allowed =
        "greater than a, " + number(parameters.a) + ", at a finite distance";
    detail::refuse(name, "b", allowed.c_str(), parameters.b);
  }
}

Uniform Uniform::fit(Data x, const FitOptions& options) {
  const detail::Observations data =
      detail::observe(name, x, options, {-detail::infinity, detail::infinity});
  data.requireSpread(name);
  return Uniform(data.min(), data.max());
}

VEXEL_CONTINUOUS_LAW(Uniform)

}  // namespace vexel
