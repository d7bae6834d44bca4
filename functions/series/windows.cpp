#include "functions/series/windows.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "functions/data/elements.hpp"
#include "kernels/binning.hpp"
#include "kernels/moving_sums.hpp"

namespace vexel {

namespace {

constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
constexpr std::size_t kShortest = std::size_t{1} << 15;  // of stretches, but the last one

// Which element stands at place i, which may lie beyond the ends.
std::size_t source(std::int64_t i, std::size_t size, Edges edges) {
  const auto n = static_cast<std::int64_t>(size);
  if (i >= 0 && i < n) {
    return static_cast<std::size_t>(i);
  }
  switch (edges) {
    case Edges::nearest:
      return i < 0 ? 0 : size - 1;
    case Edges::reflect: {
      const std::int64_t turned = ((i % (2 * n)) + 2 * n) % (2 * n);
      return static_cast<std::size_t>(std::min(turned, 2 * n - 1 - turned));
    }
    default:
      return kNowhere;
  }
}

}  // namespace

WindowPlan::WindowPlan(std::size_t n, std::size_t wanted, const MovingOptions& given)
    : size(n), window(wanted), options(given) {
  if (wanted == 0) {
    throw std::invalid_argument(mustBe("window", "at least 1", "0"));
  }
  requireWeights(given.weights, n);
  left = given.align == Align::center ? wanted / 2 : given.align == Align::right ? wanted - 1 : 0;
  right = wanted - 1 - left;
  beyondLeft = left;
  beyondRight = right;
  if (given.edges == Edges::shrink || given.edges == Edges::nan) {
    left = std::min(left, n);
    right = std::min(right, n);
    window = left + right + 1;
  } else if (wanted > std::max(16 * n, std::size_t{1} << 24)) {
    throw std::length_error(
        mustBe("window", "at most 16 times the series", std::to_string(wanted)));
  }
}

std::size_t WindowPlan::stretch() const {
  const std::size_t group = kernels::movingSumsGroup(window);
  return std::max(kShortest / group, std::size_t{1}) * group;
}

// Windows that leave the series have stretches of their own, and the others come in whole groups.
std::size_t WindowPlan::stretchEnd(std::size_t first) const {
  const std::size_t end = std::min(size, first + stretch());
  const std::size_t inner = size - std::min(size, right);
  if (first < left || first >= inner) {
    return first < left ? std::min(end, left) : end;
  }
  const std::size_t group = kernels::movingSumsGroup(window);
  const std::size_t results = std::min(end, inner) - first;
  return first + (results > group ? results / group * group : results);
}

bool WindowPlan::holdsWindows(std::size_t first, std::size_t last) const {
  return first >= left && last + right <= size;
}

Stretch::Stretch(const WindowPlan& plan, std::span<const double> x, std::size_t first,
                 std::size_t last)
    : results_(last - first), window_(plan.window) {
  const std::size_t size = results_ + window_ - 1;
  const Data weights = plan.options.weights;
  if (!weights.given() && plan.holdsWindows(first, last)) {
    double low = 0;
    double high = 0;
    view_ = x.subspan(first - plan.left, size);
    if (kernels::finiteRange(view_.data(), size, &low, &high)) {
      return;
    }
  }
  values_.resize(size);
  kinds_.resize(size);
  if (weights.given()) {
    weights_.resize(size);
    plain_ = false;
  }
  for (std::size_t i = 0; i < size; ++i) {
    const auto place = static_cast<std::int64_t>(first + i) - static_cast<std::int64_t>(plan.left);
    const std::size_t from = source(place, plan.size, plan.options.edges);
    if (from == kNowhere) {
      classify(plan, i, 0, 0);
    } else {
      classify(plan, i, x[from], weights.given() ? weights[from] : 1);
    }
  }
  view_ = values_;
}

void Stretch::classify(const WindowPlan& plan, std::size_t i, double value, double weight) {
  Kind kind = Kind::finite;
  if (weight == 0) {
    kind = Kind::absent;
  } else if (isMissing(value) || isMissing(weight)) {
    if (plan.options.missing == Missing::raise) {
      throwMissing("moving");
    }
    kind = plan.options.missing == Missing::omit ? Kind::absent : Kind::missing;
  } else if (std::isinf(value)) {
    kind = value > 0 ? Kind::plusInfinity : Kind::minusInfinity;
  }
  const bool there = kind < Kind::absent;
  kinds_[i] = kind;
  values_[i] = there ? value : std::numeric_limits<double>::quiet_NaN();
  if (!weights_.empty()) {
    weights_[i] = there ? weight : 0;
  }
  plain_ &= kind == Kind::finite;
}

double WindowCounts::infiniteSum() const {
  constexpr double inf = std::numeric_limits<double>::infinity();
  return of(Kind::minusInfinity) == 0  ? inf
         : of(Kind::plusInfinity) == 0 ? -inf
                                       : std::numeric_limits<double>::quiet_NaN();
}

void movingDirect(const Stretch& stretch, const PresentStatistic& f, std::size_t minCount,
                  double* out) {
  WindowCounts counts(stretch);
  const bool weighted = !stretch.weights().empty();
  std::vector<double> values;
  std::vector<double> weights;
  for (std::size_t j = 0; j < stretch.results(); ++j) {
    pollWindow(stretch, j);
    if (j > 0) {
      counts.slide();
    }
    out[j] = std::numeric_limits<double>::quiet_NaN();
    if (!counts.answers(minCount)) {
      continue;
    }
    const double* const from = stretch.values().data() + j;
    if (stretch.plain()) {
      out[j] = f({from, stretch.window()}, {});
      continue;
    }
    values.clear();
    weights.clear();
    for (std::size_t i = j; i < j + stretch.window(); ++i) {
      if (stretch.kind(i) < Kind::absent) {
        values.push_back(stretch.values()[i]);
        if (weighted) {
          weights.push_back(stretch.weights()[i]);
        }
      }
    }
    out[j] = f(values, weights);
  }
}

}  // namespace vexel
