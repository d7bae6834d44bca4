// Absolute deviations from a center.

#include <cmath>

#include "functions/data/sample.hpp"
#include "functions/data/totals.hpp"
#include "functions/descriptive/quantiles.hpp"
#include "functions/descriptive/selection.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

namespace {

using kernels::DoubleDouble;

// The mean of |x - center| in the scale of the sample; infinite also where a sum overflows.
double meanDistance(const Sample& sample, DoubleDouble center) {
  Totals totals;
  const bool defined =
      totalsOf(sample, totals, [&](const double* x, double* high, double* low, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) {
          const DoubleDouble d = DoubleDouble(x[i]) - center;
          const bool finite = std::isfinite(d.high);
          high[i] = finite ? std::fabs(d.high) : std::fabs(x[i] - center.high);
          low[i] = !finite ? 0.0 : std::signbit(d.high) ? -d.low : d.low;
        }
      });
  return defined ? totals.quotient() : kNaN;
}

double meanDeviation(Sample& sample, Center kind) {
  if (kind == Center::mean) {
    const auto center = meanInTwo(sample);
    return center && std::isfinite(center->high) ? meanDistance(sample, *center) : kNaN;
  }
  const double center = medianOf(Selection(sample));
  return std::isnan(center) ? kNaN : meanDistance(sample, center);
}

}  // namespace

double mean_absolute_deviation(Data x, const MeanDeviationOptions& options) {
  Sample sample("mean_absolute_deviation", x, options.weights, options.missing);
  const double mean = meanDeviation(sample, options.center);
  if (!std::isinf(mean) && !(mean < 0x1p-900)) {
    return std::ldexp(mean, sample.xExponent());
  }
  sample.scaleToOne();
  return std::ldexp(meanDeviation(sample, options.center), sample.xExponent());
}

double median_absolute_deviation(Data x, const MedianDeviationOptions& options) {
  const Sample sample("median_absolute_deviation", x, options.weights, options.missing);
  const double center = medianOf(Selection(sample));
  if (std::isnan(center)) {
    return kNaN;
  }
  return options.scale * medianOf(Selection(sample, center));
}

}  // namespace vexel
