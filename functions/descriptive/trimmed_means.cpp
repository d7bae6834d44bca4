// Trimmed and winsorized means: the ends of what stays by selection, then one sum over the points
// between.

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "functions/data/sample.hpp"
#include "functions/data/text.hpp"
#include "functions/data/totals.hpp"
#include "functions/descriptive/selection.hpp"
#include "kernels/vector/selection.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

namespace {

using kernels::BracketCounts;
using kernels::DoubleDouble;
using kernels::ExactSum;

// What lies strictly between two values, and the weight up to the lower and below the upper one.
class Middle {
 public:
  Middle(double low, double high) : low_(low), high_(high) {}

  void take(const double* x, const double* w, std::size_t n) {
    if (w == nullptr) {
      double lanes[kernels::sumLanes];
      kernels::sumBetween(x, n, low_, high_, counts_, lanes);
      sum.add({lanes, kernels::sumLanes});
      return;
    }
    masked_.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
      masked_[i] = x[i] <= low_ ? w[i] : 0.0;
    }
    addBlock(toLow_, masked_.data(), n);
    for (std::size_t i = 0; i < n; ++i) {
      masked_[i] = x[i] < high_ ? w[i] : 0.0;
    }
    addBlock(belowHigh_, masked_.data(), n);
    values_.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
      const bool inside = x[i] > low_ && x[i] < high_;
      values_[i] = inside ? x[i] : 0.0;  // not infinity * 0
      masked_[i] = inside ? w[i] : 0.0;
    }
    addProducts(sum, values_.data(), masked_.data(), n);
  }

  DoubleDouble toLow() const {
    return toLow_.inTwo() + DoubleDouble(static_cast<double>(counts_.toLow));
  }
  DoubleDouble belowHigh() const {
    return belowHigh_.inTwo() + DoubleDouble(static_cast<double>(counts_.belowHigh));
  }

  ExactSum sum;

 private:
  double low_;
  double high_;
  BracketCounts counts_;
  ExactSum toLow_;
  ExactSum belowHigh_;
  std::vector<double> values_;
  std::vector<double> masked_;
};

void addProduct(ExactSum& sum, double x, DoubleDouble w) {
  if (std::isinf(x)) {
    sum.add(x);
    return;
  }
  const DoubleDouble p = DoubleDouble(x) * w;
  sum.add(p.high);
  sum.add(p.low);
}

double meanOfMiddle(const char* function, Data x, Cut cut, const WeightedOptions& options,
                    bool winsorized) {
  if (!(cut.lower >= 0.0 && cut.upper >= 0.0 && cut.lower + cut.upper <= 1.0)) {
    throw std::domain_error(std::string(function) +
                            ": cut must be fractions of at least 0, together at most 1, got " +
                            number(cut.lower) + " and " + number(cut.upper));
  }
  Sample sample(function, x, options.weights, options.missing);
  double n = 0.0;
  double below = 0.0;
  double above = 0.0;
  const auto ends = Selection(sample).values([&](double total) {
    n = total;
    below = std::floor(cut.lower * n);
    above = std::floor(cut.upper * n);
    return std::vector<Target>{{below, true}, {n - above}};
  });
  if (!ends || below + above >= n) {
    return kNaN;
  }
  std::vector<double> v = *ends;
  if (v[0] == v[1]) {
    return v[0];
  }
  const double size = std::max(std::fabs(v[0]), std::fabs(v[1]));
  if (std::isfinite(size) && std::abs(exponentOf(size)) > 900) {
    sample.scale(exponentOf(size), 0);
    v = {std::ldexp(v[0], -sample.xExponent()), std::ldexp(v[1], -sample.xExponent())};
  }
  Middle middle(v[0], v[1]);
  sample.present(
      [&](const double* p, const double* w, std::size_t size_) { middle.take(p, w, size_); });
  const double out = winsorized ? 0.0 : below;
  const double outAbove = winsorized ? 0.0 : above;
  addProduct(middle.sum, v[0], middle.toLow() - DoubleDouble(out));
  addProduct(middle.sum, v[1], DoubleDouble(n) - DoubleDouble(outAbove) - middle.belowHigh());
  if (!middle.sum.finite()) {
    return middle.sum.rounded();
  }
  const DoubleDouble mean =
      middle.sum.inTwo() / (DoubleDouble(n) - DoubleDouble(out) - DoubleDouble(outAbove));
  return std::ldexp(mean.high, sample.xExponent());
}

}  // namespace

double trimmed_mean(Data x, Cut cut, const WeightedOptions& options) {
  return meanOfMiddle("trimmed_mean", x, cut, options, false);
}

double winsorized_mean(Data x, Cut cut, const WeightedOptions& options) {
  return meanOfMiddle("winsorized_mean", x, cut, options, true);
}

}  // namespace vexel
