#include "functions/descriptive/power_means.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "functions/data/totals.hpp"
#include "kernels/vector/powers.hpp"

namespace vexel {

namespace {

using kernels::DoubleDouble;
using kernels::ExactSum;

// Sums of w (x - center)^k about one center.
class PowerSums {
 public:
  PowerSums(int order, double center, bool weighted)
      : center_(center), sums_(static_cast<std::size_t>(order)) {
    if (weighted) {
      weights_.emplace();
    }
  }

  // With rounding errors kept: for orders 1 and 2.
  void takeSquares(const double* x, const double* w, std::size_t n) {
    double first[kernels::sumLanes];
    double second[kernels::sumLanes];
    kernels::squaresInLanes(x, w, n, center_, first, second);
    finite_ &= addLanes(sums_[0], first) && addLanes(sums_[1], second);
    addWeight(w, n);
  }

  void take(const double* x, const double* w, std::size_t n) {
    if (w != nullptr || sums_.size() > 4 || !takeFour(x, n)) {
      takeMany(x, w, n);
    }
    addWeight(w, n);
  }

  // Sets the means; whether nothing overflowed and the last sum of even order is far from where its
  // terms vanish.
  bool meansTo(PowerMeans& result, int weightExponent) const {
    const DoubleDouble total = weights_ ? weights_->inTwo() : DoubleDouble(count_);
    bool inRange = finite_ && !(weights_ && isExtreme(*weights_));
    result.weight = total.timesTwoTo(weightExponent);
    result.mean.assign(1, 1.0);
    result.mean.reserve(sums_.size() + 1);
    const std::size_t lastEven = sums_.size() / 2 * 2 - 1;
    for (std::size_t k = 0; k < sums_.size(); ++k) {
      if (!sums_[k].finite()) {
        result.mean.emplace_back(sums_[k].rounded());
        continue;
      }
      const kernels::Scaled sum = sums_[k].scaled();
      result.mean.push_back(sum.unscaled() / total);
      if (k == lastEven) {
        inRange &= sum.value.high != 0.0 && sum.exponent > -600;
      }
    }
    return inRange;
  }

 private:
  // False, with nothing taken, where powers overflow.
  bool takeFour(const double* x, std::size_t n) {
    double lanes[4 * kernels::powerLanes];
    kernels::powersInLanes(x, n, center_, lanes);
    const std::span<const double> used(lanes, sums_.size() * kernels::powerLanes);
    if (!std::all_of(used.begin(), used.end(), [](double v) { return std::isfinite(v); })) {
      return false;
    }
    for (std::size_t k = 0; k < sums_.size(); ++k) {
      sums_[k].add(used.subspan(k * kernels::powerLanes, kernels::powerLanes));
    }
    return true;
  }

  void takeMany(const double* x, const double* w, std::size_t n) {
    double d[Sample::block];
    double power[Sample::block];
    for (std::size_t i = 0; i < n; ++i) {
      d[i] = x[i] - center_;
      power[i] = w == nullptr ? 1.0 : w[i];
    }
    for (ExactSum& sum : sums_) {
      for (std::size_t i = 0; i < n; ++i) {
        power[i] *= d[i];
      }
      addBlock(sum, power, n);
      finite_ &= sum.finite();
    }
  }

  void addWeight(const double* w, std::size_t n) {
    if (weights_) {
      addWeights(*weights_, w, n);
    } else {
      count_ += static_cast<double>(n);
    }
  }

  double center_;
  bool finite_ = true;
  std::vector<ExactSum> sums_;
  double count_ = 0.0;
  std::optional<ExactSum> weights_;  // of weighted samples
};

// Looks at the sample about the center; false when powers overflow or vanish.
bool lookAbout(const Sample& sample, double center, int order, bool squares, PowerMeans& result) {
  PowerSums sums(order, center, sample.weighted());
  result.found = sample.present([&](const double* x, const double* w, std::size_t n) {
    if (squares) {
      sums.takeSquares(x, w, n);
    } else {
      sums.take(x, w, n);
    }
  });
  result.defined = !sample.undefined(result.found);
  if (!result.defined) {
    return true;
  }
  result.exponent = sample.xExponent();
  result.center = center;
  return sums.meansTo(result, sample.wExponent());
}

// Whether the center is so far from the mean that cancellation costs digits.
bool isFar(const PowerMeans& means, bool squares) {
  const double shift = means.mean[1].high;
  if (squares && 4 * shift * shift < means.mean[2].high) {
    return false;  // as nearly always: the variance is more than three quarters of that mean
  }
  const double spread = squares ? 0x1p20 * means.central(2).high : means.mean[2].high / 64.0;
  return shift * shift > spread;
}

PowerMeans lookTwice(const Sample& sample, int order, bool squares, bool& inRange) {
  double center = sample.roughMean();
  PowerMeans result;
  inRange = lookAbout(sample, center, order, squares, result);
  for (int again = 0; again < 2 && inRange && result.defined && isFar(result, squares); ++again) {
    center += result.mean[1].high;
    inRange = lookAbout(sample, center, order, squares, result);
  }
  return result;
}

struct Spread {
  double min = std::numeric_limits<double>::infinity();
  double max = -std::numeric_limits<double>::infinity();
};

// Extremes of the present points in their own scale, which the sample has again afterwards.
Spread spreadOf(Sample& sample) {
  Spread spread;
  sample.scale(0, sample.wExponent());
  sample.present([&](const double* x, const double*, std::size_t n) {
    const kernels::Range range = kernels::rangeOf(x, n);
    spread = {std::min(spread.min, range.min), std::max(spread.max, range.max)};
  });
  return spread;
}

}  // namespace

DoubleDouble PowerMeans::central(int k) const {
  // The binomial theorem for (d - shift)^k.
  const DoubleDouble shift = -mean[1];
  DoubleDouble sum = mean[static_cast<std::size_t>(k)];
  DoubleDouble term = 1.0;
  for (int j = 1; j <= k; ++j) {
    term = term * shift * DoubleDouble(k - j + 1) / DoubleDouble(j);
    sum = sum + term * mean[static_cast<std::size_t>(k - j)];
  }
  if (k % 2 == 0 && sum.high < 0.0) {
    return 0.0;  // rounding, of a point that outweighs all others beyond 10^32 times
  }
  return sum;
}

double PowerMeans::inUnits(DoubleDouble x, int k) const { return std::ldexp(x.high, k * exponent); }

PowerMeans powerMeans(Sample& sample, int order) {
  const bool squares = order <= 2;
  order = std::max(order, 2);
  bool inRange = true;
  PowerMeans result = lookTwice(sample, order, squares, inRange);
  if (!result.defined || inRange) {
    return result;
  }
  sample.scaleToOne();
  const Spread spread = spreadOf(sample);
  if (std::isinf(spread.min) || std::isinf(spread.max)) {
    result.defined = false;
    return result;
  }
  if (spread.min == spread.max) {
    result.mean.assign(static_cast<std::size_t>(order) + 1, DoubleDouble());
    result.mean[0] = 1.0;
    result.exponent = 0;
    result.center = spread.min;
    return result;
  }
  // Halves only of what would overflow: the least double's half is 0.
  const double width = spread.max - spread.min;
  sample.scale(
      std::isfinite(width) ? exponentOf(width) : exponentOf(spread.max / 2 - spread.min / 2) + 1,
      sample.wExponent());
  return lookTwice(sample, order, squares, inRange);
}

PowerMeans powerMeans(Sample& sample, int order, double center) {
  PowerMeans result;
  order = std::max(order, 2);
  if (lookAbout(sample, center, order, false, result)) {
    return result;
  }
  sample.scaleToOne();
  const Spread spread = spreadOf(sample);
  const double size = std::max({std::fabs(spread.min), std::fabs(spread.max), std::fabs(center)});
  if (std::isfinite(size)) {
    sample.scale(exponentOf(size) + 1, sample.wExponent());
  }
  lookAbout(sample, std::ldexp(center, -sample.xExponent()), order, false, result);
  return result;
}

}  // namespace vexel
