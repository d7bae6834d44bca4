// Means of four kinds.
//
// Sums are good to 2^-100, so the arithmetic, harmonic and quadratic mean have about one rounding
// and the geometric mean that of exp.  Where products overflow or vanish the sample is scaled by
// powers of two and read again.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>

#include "functions/data/sample.hpp"
#include "functions/data/totals.hpp"
#include "kernels/vector/columns.hpp"
#include "kernels/vector/sums.hpp"
#include "kernels/watch.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

namespace {

using kernels::DoubleDouble;
using kernels::ExactSum;
using kernels::Scaled;

// Of floats: rows of them have exact sums in doubles, most often.
bool floatTotals(const float* x, std::size_t n, Totals& totals) {
  constexpr std::size_t width = 64;
  constexpr std::size_t most = kernels::sumBlock;
  static_assert(most / width <= kernels::foldedRows && kernels::pollInterval % most == 0);
  double numbers[most];
  double lanes[kernels::sumLanes];
  bool good = true;
  for (std::size_t begin = 0; begin < n && good; begin += most) {
    const std::size_t some = std::min(most, n - begin);
    const std::size_t folded = some / width * width;
    if (folded > 0 && kernels::foldFloats(x + begin, width, some / width, width, numbers)) {
      const double* const rest =
          asDoubles(Data(x, n), begin + folded, some - folded, numbers + width);
      kernels::sumInLanes(numbers, static_cast<std::size_t>(rest - numbers) + some - folded, lanes);
    } else {
      kernels::sumInLanes(asDoubles(Data(x, n), begin, some, numbers), some, lanes);
    }
    good = addLanes(totals.sum, lanes);
    if (begin % static_cast<std::size_t>(kernels::pollInterval) == 0 && begin > 0) {
      kernels::poll(static_cast<double>(begin) / static_cast<double>(n));
    }
  }
  totals.weight.add(static_cast<double>(n));
  return good;
}

// All that is there; false when it has to be looked at with care.
bool plainTotals(const Sample& sample, Totals& totals) {
  if (sample.floats() != nullptr && !sample.weighted() && sample.size() > 0) {
    return floatTotals(sample.floats(), sample.size(), totals);
  }
  bool good = sample.size() > 0;
  sample.raw([&](const double* x, const double* w, std::size_t n) {
    double lanes[kernels::sumLanes];
    double weights[kernels::sumLanes];
    if (!good) {
      return;
    }
    if (w == nullptr) {
      kernels::sumInLanes(x, n, lanes);
      good = addLanes(totals.sum, lanes);
      totals.weight.add(static_cast<double>(n));
    } else {
      good = !kernels::weightedSumsInLanes(x, w, n, lanes, weights) &&
             addLanes(totals.sum, lanes) && addLanes(totals.weight, weights);
    }
  });
  return good && !(sample.weighted() && totals.extreme());
}

// With scaling, and without what is missing.
bool carefulTotals(Sample& sample, Totals& totals) {
  totals = {};
  sample.scaleToOne();
  const auto found = sample.present([&](const double* x, const double* w, std::size_t n) {
    if (w == nullptr) {
      addBlock(totals.sum, x, n);
    } else {
      addProducts(totals.sum, x, w, n);
    }
    addWeights(totals.weight, w, n);
  });
  return !sample.undefined(found);
}

double arithmetic(Sample& sample) {
  Totals totals;
  if (plainTotals(sample, totals)) {
    if (sample.weighted()) {
      return totals.quotient();
    }
    int exponent = 0;  // of the number of points, which needs no sum
    const double fraction = std::frexp(static_cast<double>(sample.size()), &exponent);
    return totals.sum.scaled() / Scaled{fraction, exponent};
  }
  return carefulTotals(sample, totals) ? std::ldexp(totals.quotient(), sample.xExponent()) : kNaN;
}

double quadratic(Sample& sample, bool scaled = false) {
  const auto fill = [](const double* x, double* high, double* low, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      const DoubleDouble p = DoubleDouble::productOf(x[i], x[i]);
      high[i] = p.high;
      low[i] = std::isfinite(p.high) ? p.low : 0.0;
    }
  };
  Totals totals;
  if (!totalsOf(sample, totals, fill)) {
    return kNaN;
  }
  if (!scaled && totals.extreme()) {
    sample.scaleToOne();
    return quadratic(sample, true);
  }
  if (!totals.sum.finite()) {
    return totals.sum.rounded();
  }
  const Scaled sum = totals.sum.scaled();
  const Scaled weight = totals.weight.scaled();
  const int exponent = sum.exponent - weight.exponent;
  const DoubleDouble square = (sum.value / weight.value).timesTwoTo(exponent % 2);
  return std::ldexp(sqrt(square).high, exponent / 2 + sample.xExponent());
}

// The smallest points decide, so those are scaled to 1.
double harmonic(Sample& sample, bool scaled = false) {
  double smallest = std::numeric_limits<double>::infinity();
  const auto fill = [&](const double* x, double* high, double* low, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      smallest = std::min(smallest, x[i]);
      const double q = 1.0 / x[i];
      const DoubleDouble one = DoubleDouble::productOf(q, x[i]);
      high[i] = q;
      low[i] = std::isnormal(q) && std::isnormal(x[i]) ? ((1.0 - one.high) - one.low) * q : 0.0;
    }
  };
  Totals totals;
  if (!totalsOf(sample, totals, fill) || smallest < 0.0) {
    return kNaN;
  }
  if (smallest == 0.0 || std::isinf(smallest)) {
    return smallest;
  }
  if (!scaled && totals.extreme()) {
    sample.scaleToOne();
    sample.scale(exponentOf(smallest), sample.wExponent());
    return harmonic(sample, true);
  }
  return std::ldexp(totals.weight.scaled() / totals.sum.scaled(), sample.xExponent());
}

// 2 to the mean of log2 x, which is an integer and a remainder of at most 1/2, so that nothing
// cancels.
double geometric(Sample& sample, bool scaled = false) {
  double smallest = 1.0;
  double largest = 1.0;
  const auto fill = [&](const double* x, double* exponents, double* logarithms, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      smallest = std::min(smallest, x[i]);
      largest = std::max(largest, x[i]);
      int exponent = 0;
      double mantissa = std::frexp(x[i], &exponent);
      if (!(mantissa >= 0.5 && mantissa < 1.0)) {  // 0, negative or infinite: not used
        mantissa = 1.0;
        exponent = 0;
      }
      const bool low = mantissa < 0.70710678118654752;
      exponents[i] = low ? exponent - 1 : exponent;
      logarithms[i] = std::log2(low ? 2.0 * mantissa : mantissa);
    }
  };
  Totals totals;
  if (!totalsOf(sample, totals, fill) || smallest < 0.0 ||
      (smallest == 0.0 && std::isinf(largest))) {
    return kNaN;
  }
  if (smallest == 0.0 || std::isinf(largest)) {
    return smallest == 0.0 ? 0.0 : largest;
  }
  if (!scaled && (!totals.sum.finite() || isExtreme(totals.weight))) {
    sample.scaleToOne();
    return geometric(sample, true);
  }
  const DoubleDouble logarithm = totals.sum.inTwo() / totals.weight.inTwo();
  const double whole = std::nearbyint(logarithm.high);
  const DoubleDouble rest = logarithm - DoubleDouble(whole);
  constexpr double ln2 = 0.69314718055994531;
  const double mean = std::exp2(rest.high);
  return std::ldexp(mean + mean * (rest.low * ln2), static_cast<int>(whole) + sample.xExponent());
}

}  // namespace

std::optional<DoubleDouble> meanInTwo(Sample& sample) {
  Totals totals;
  if (!plainTotals(sample, totals) && !carefulTotals(sample, totals)) {
    return std::nullopt;
  }
  if (!totals.sum.finite()) {
    return totals.sum.rounded();
  }
  const Scaled sum = totals.sum.scaled();
  const Scaled weight = totals.weight.scaled();
  return (sum.value / weight.value).timesTwoTo(sum.exponent - weight.exponent);
}

double mean(Data x, const MeanOptions& options) {
  Sample sample("mean", x, options.weights, options.missing);
  switch (options.kind) {
    case Mean::geometric:
      return geometric(sample);
    case Mean::harmonic:
      return harmonic(sample);
    case Mean::quadratic:
      return quadratic(sample);
    default:
      return arithmetic(sample);
  }
}

}  // namespace vexel
