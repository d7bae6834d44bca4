// Kernel densities: B. W. Silverman (1986), Density estimation for statistics and data analysis.
#include "vexel/kernel_density.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <optional>

#include "functions/data/elements.hpp"
#include "functions/density/grid.hpp"
#include "functions/density/kernels.hpp"
#include "kernels/binning.hpp"
#include "kernels/watch.hpp"
#include "numerics/sorting/rank_words.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

}  // namespace

// The present pairs; in ascending order once somebody asks for a sum.
struct KernelDensity::Sample {
  std::vector<double> points;
  std::vector<double> weights;  // empty: all 1
  double total = 0;
  Interval range{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
  bool broken = false;

  mutable std::once_flag ordering;
  mutable std::vector<double> sorted;
  mutable std::vector<double> sortedWeights;
  mutable std::vector<double> below;  // total weight before each sorted point
  mutable std::optional<Urn> urn;     // of the weights
  mutable std::once_flag urnMaking;

  Sample(Data x, Data w, Missing missing) {
    if (!w.given() && x.dense() &&
        kernels::finiteRange(x.doubles().data(), x.size(), &range.low, &range.high)) {
      points = copyOf(x.doubles());
      total = static_cast<double>(points.size());
      return;
    }
    if (w.given()) {
      weights.reserve(x.size());
    }
    points.resize(x.size());
    std::size_t kept = 0;
    onElements(x, [&]<typename T>(std::span<const T> values) {
      for (std::size_t i = 0; i < values.size(); ++i) {
        const auto v = static_cast<double>(values[i]);
        const double weight = w.given() ? w[i] : 1;
        // The difference is NaN for infinities too.
        if (v - v == 0 && weight > 0) [[likely]] {
          points[kept++] = v;
          if (w.given()) {
            weights.push_back(weight);
          }
          total += weight;
        } else {
          leaveOut(v, weight, missing);
        }
      }
    });
    points.resize(kept);
    kernels::finiteRange(points.data(), kept, &range.low, &range.high);
    if (points.empty() && w.given() && x.size() > 0 && !broken) {
      throw std::invalid_argument("weights must have a positive total, got 0");
    }
  }

  void leaveOut(double v, double weight, Missing missing) {
    if (weight == 0) {
      return;
    }
    if (std::isinf(v) && !isMissing(weight)) {
      throw std::invalid_argument(mustBe("x", "finite numbers", number(v)));
    }
    if (missing == Missing::raise) {
      throwMissing("kde");
    }
    broken |= missing == Missing::propagate;
  }

  bool empty() const { return broken || points.empty(); }
  double weight(std::size_t i) const { return weights.empty() ? 1 : weights[i]; }

  void order() const {
    std::call_once(ordering, [this] {
      double sum = 0;
      nag2::visitSorted(points.data(), points.size(), false,
                        [&](std::size_t, nag2::TiedPositions tied) {
                          for (std::size_t i = 0; i < tied.size(); ++i) {
                            sorted.push_back(points[tied[i]]);
                            below.push_back(sum);
                            sum += weight(tied[i]);
                            if (!weights.empty()) {
                              sortedWeights.push_back(weights[tied[i]]);
                            }
                          }
                        });
    });
  }

  std::size_t before(double t) const {
    return static_cast<std::size_t>(std::lower_bound(sorted.begin(), sorted.end(), t) -
                                    sorted.begin());
  }
  // The sum of w f((t - x) / h) over the points between the ends.
  template <typename F>
  double sum(double t, double h, Interval ends, F f) const {
    double all = 0;
    for (std::size_t i = before(ends.low); i < sorted.size() && sorted[i] <= ends.high; ++i) {
      all += (sortedWeights.empty() ? 1 : sortedWeights[i]) * f((t - sorted[i]) / h);
    }
    return all;
  }
};

double KernelDensity::operator()(double t) const {
  if (std::isnan(bandwidth_) || std::isnan(t)) {
    return kNan;
  }
  const Sample& s = *sample_;
  s.order();
  const double h = bandwidth_;
  const auto within = [&](double reach) {
    return s.sum(t, h, {t - reach * h, t + reach * h},
                 [this](double u) { return kernelDensity(kernel_, u); });
  };
  const double reach = kernelReach(kernel_);
  double sum = within(std::min(reach, kFarKernel));
  // Far out in a tail what was left out is all there is.
  if (reach > kFarKernel && sum < 1e-3) {
    sum = within(reach);
  }
  return sum / (s.total * h);
}

double KernelDensity::cdf(double t) const {
  if (std::isnan(bandwidth_) || std::isnan(t)) {
    return kNan;
  }
  const Sample& s = *sample_;
  s.order();
  const double h = bandwidth_;
  const double reach = kernelReach(kernel_);
  const double near = std::min(reach, kFarKernel);
  const auto probability = [this](double u) { return kernelProbability(kernel_, u); };
  const std::size_t first = s.before(t - near * h);
  const double full = first == 0 ? 0 : first < s.below.size() ? s.below[first] : s.total;
  double sum = full + s.sum(t, h, {t - near * h, t + near * h}, probability);
  if (reach > kFarKernel && sum < 1e-3) {
    sum = s.sum(t, h, {t - reach * h, t + reach * h}, probability);
  }
  return std::min(1.0, sum / s.total);
}

void KernelDensity::operator()(std::span<const double> t, std::span<double> out) const {
  requireSize("out", out.size(), t.size());
  for (std::size_t i = 0; i < t.size(); ++i) {
    kernels::poll(static_cast<double>(i) / static_cast<double>(t.size()));
    out[i] = (*this)(t[i]);
  }
}

void KernelDensity::cdf(std::span<const double> t, std::span<double> out) const {
  requireSize("out", out.size(), t.size());
  for (std::size_t i = 0; i < t.size(); ++i) {
    kernels::poll(static_cast<double>(i) / static_cast<double>(t.size()));
    out[i] = cdf(t[i]);
  }
}

void KernelDensity::sample(std::span<double> out, Random& rng) const {
  const Sample& s = *sample_;
  if (s.empty()) {
    std::fill(out.begin(), out.end(), kNan);
    return;
  }
  if (!s.weights.empty()) {
    std::call_once(s.urnMaking, [&] { s.urn.emplace(s.weights); });
  }
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (i % kernels::pollInterval == 0) {
      kernels::poll(static_cast<double>(i) / static_cast<double>(out.size()));
    }
    const std::size_t at = s.weights.empty() ? rng.below(s.points.size())
                                             : static_cast<std::size_t>(s.urn->sample(rng));
    out[i] = s.points[at] + bandwidth_ * kernelVariate(kernel_, rng);
  }
}

std::vector<double> KernelDensity::sample(std::size_t n, Random& rng) const {
  std::vector<double> out(n);
  sample(out, rng);
  return out;
}

namespace {

double ruleOfThumb(const std::vector<double>& points, const std::vector<double>& pointWeights,
                   double total, BandwidthRule rule) {
  const Data weights = pointWeights.empty() ? Data() : Data(pointWeights);
  const double sd = std(points, {.weights = weights});
  const double robust = iqr(points, {.weights = weights}) / 1.34;
  const double least = robust > 0 ? std::min(sd, robust) : sd;
  if (!(least > 0) || std::isinf(least)) {
    throw std::invalid_argument("bandwidth: a sample without spread needs one");
  }
  return (rule == BandwidthRule::silverman ? 0.9 : 1.06) * least * std::pow(total, -0.2);
}

}  // namespace

KernelDensity kde(Data x, const KdeOptions& options) {
  constexpr std::size_t mostPoints = std::size_t{1} << 24;
  requireWeights(options.weights, x.size());
  if (options.points < 2 || options.points > mostPoints) {
    throw std::invalid_argument(mustBe("points", "2 to 2^24", std::to_string(options.points)));
  }
  if (options.bandwidth.given() &&
      !(options.bandwidth.value() > 0 && std::isfinite(options.bandwidth.value()))) {
    throw std::invalid_argument(
        mustBe("bandwidth", "a positive number", number(options.bandwidth.value())));
  }
  KernelDensity d;
  d.kernel_ = options.kernel;
  const auto sample =
      std::make_shared<const KernelDensity::Sample>(x, options.weights, options.missing);
  d.sample_ = sample;
  if (sample->empty()) {
    d.bandwidth_ = kNan;
    d.x_.assign(options.points, kNan);
    d.y_ = d.x_;
    return d;
  }
  const double h = options.bandwidth.given() ? options.bandwidth.value()
                                             : ruleOfThumb(sample->points, sample->weights,
                                                           sample->total, options.bandwidth.rule());
  d.bandwidth_ = h;
  const Interval bounds =
      options.bounds.value_or(Interval{sample->range.low - 3 * h, sample->range.high + 3 * h});
  if (!(bounds.low < bounds.high) || std::isinf(bounds.high - bounds.low)) {
    throw std::invalid_argument(mustBe("bounds", "finite ends that rise",
                                       number(bounds.low) + " and " + number(bounds.high)));
  }
  const Grid grid(bounds, options.points);
  d.x_.resize(options.points);
  for (std::size_t i = 0; i < d.x_.size(); ++i) {
    d.x_[i] = grid.point(i);
  }
  d.y_ = densityOnGrid(sample->points, sample->weights, sample->total, bounds, options.points,
                       options.kernel, h);
  return d;
}

}  // namespace vexel
