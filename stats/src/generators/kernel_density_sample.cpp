// A random sample of a density tabulated on an equally spaced grid: the linear interpolant is
// integrated by the trapezoid rule and inverted cell by cell.

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "distributions/random_sample.hpp"
#include "kernel/conversions.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/uniform_source.hpp"
#include "rootfinding/given_names.hpp"

namespace {

// Values at a, a + h, ...; in one cell more at either end the density falls linearly to 0.
struct Grid {
  std::vector<double> density;  // one value more than given: 0 beyond the end
  double a;
  double h;

  std::size_t size() const { return density.size() - 1; }

  std::vector<double> cumulative() const {
    const std::size_t g = size();
    std::vector<double> c(g + 1);
    c[0] = density[0] * 0.5 * h;
    for (std::size_t i = 1; i < g; ++i) {
      c[i] = c[i - 1] + (density[i] + density[i - 1]) * 0.5 * h;
    }
    c[g] = c[g - 1] + 0.5 * density[g - 1] * h;
    return c;
  }

  // The point of cell k, the one that ends at a + k h, with u of the mass below it.  A flat cell
  // divides by zero: its points are NaN.
  double pointAt(double u, std::size_t k, const std::vector<double>& c) const {
    double x;
    if (k != 0) {
      const double r = u - c[k - 1];
      const double p = density[k - 1];
      const double q = density[k];
      const double s = std::sqrt(2.0 * h * r * (q - p) + p * p * (h * h));
      x = h - (h * p - s) / (p - q);
    } else {
      x = h - std::sqrt(2.0 * h * u / density[0]);
    }
    return static_cast<double>(k) * h + a - x;
  }
};

// The density's values; the array must be a dense float[8] array with elements.
std::vector<double> densityValues(VKernelVector kv, ALGEB array) {
  const RTableSettings settings = STATS_SettingsOf_HW(kv, array);
  const V_INT n = RTableNumElements(kv, array);
  if (!STATS_IsDense_HW(settings, RTABLE_FLOAT64) || n < 1 ||
      n >= std::numeric_limits<std::int32_t>::max()) {
    VexelRaiseError1(kv, "expected: non-empty array of float[8] as density, received %1", array);
  }
  const auto* values = static_cast<const double*>(RTableDataBlock(kv, array));
  std::vector<double> density(values, values + n);
  density.push_back(0.0);
  return density;
}

}  // namespace

// (density, a, b, n): n variates of the density tabulated from a to b.
//
// Only more than four arguments are counted; fewer fail in the host when one is looked for.
STATS_ENTRY(STATS_VexelKernelDensitySample_HW) {
  const Arguments arg(kv, args);
  if (arg.count() > 4) {
    VexelRaiseError1(kv, "expected 4 arguments, received: %1", args);
  }
  const ALGEB densityArray = arg[1];
  const double a = arg.real(2);
  const double b = arg.real(3);
  const std::int32_t n = arg.integer32(4);
  Grid grid{densityValues(kv, densityArray), a, 0.0};
  grid.h = (b - a) / (static_cast<double>(grid.size()) - 1.0);

  const ALGEB sample = STATS_CreateRandomSample_HW(kv, n, ToVexelNULL(kv));
  auto* out = static_cast<double*>(RTableDataBlock(kv, sample));
  const std::vector<double> cumulative = grid.cumulative();
  const auto probability = [&](double x) {
    return cumulative[static_cast<std::size_t>(STATS_DoubleToInteger_HW(x))];
  };
  const auto last = static_cast<std::int32_t>(grid.size());
  constexpr int kSteps = 100;  // bisection of 2^31 cells takes 31
  for (std::int32_t j = 0; j < n; ++j) {
    const double u = STATS_VexelRandomStream_HW::NextDouble() * cumulative.back();
    const std::int32_t k = STATS_DiscreteInterpolation_HW(kv, u, probability, 0, last, kSteps);
    out[j] = grid.pointAt(u, static_cast<std::size_t>(k), cumulative);
  }
  return sample;
}
