// Variates of weighted points of which some are equal.

#include "kernels/descriptive/tied_points.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>

#include "kernels/lookout.hpp"
#include "kernels/sorting/sorting.hpp"
#include "kernels/watch.hpp"

namespace vexel::kernels {

namespace {

constexpr std::size_t at(int i) { return static_cast<std::size_t>(i); }

}  // namespace

RepeatedSort::RepeatedSort(const double* points, const double* weights, int n)
    : weights_(weights, weights + n), cycleOf_(at(n)), placeInOrder_(at(n)) {
  std::vector<double> x(points, points + n);
  std::vector<double> from(at(n));  // the place that each place takes its weight from
  std::iota(from.begin(), from.end(), 0.0);
  sortData(x.data(), from.data(), n);
  movesPoints_ = std::memcmp(x.data(), points, at(n) * sizeof(double)) != 0;

  constexpr int kPlaceCost = 10;  // operations, near enough
  Lookout lookout;
  std::vector<bool> seen(at(n));
  for (int first = 0; first < n; ++first) {
    lookout.done(kPlaceCost);
    const auto begin = static_cast<int>(order_.size());
    for (int i = first; !seen[at(i)]; i = static_cast<int>(from[at(i)])) {
      seen[at(i)] = true;
      placeInOrder_[at(i)] = static_cast<int>(order_.size());
      order_.push_back(i);
    }
    const auto end = static_cast<int>(order_.size());
    if (end == begin + 1) {
      order_.pop_back();
      continue;
    }
    for (int t = begin; t < end; ++t) {
      cycleOf_[at(order_[at(t)])] = {begin, end};
    }
  }
}

double RepeatedSort::weightAfter(std::int64_t sorts, int place) const {
  const Cycle& cycle = cycleOf_[at(place)];
  if (cycle.begin == cycle.end) {
    return weights_[at(place)];
  }
  const std::int64_t t = placeInOrder_[at(place)] - cycle.begin + sorts;
  const auto step = static_cast<int>(t % (cycle.end - cycle.begin));
  return weights_[at(order_[at(cycle.begin + step)])];
}

void RepeatedSort::weightsAfter(std::int64_t sorts, double* weights) const {
  forEach(weights_.size(),
          [&](std::size_t i) { weights[i] = weightAfter(sorts, static_cast<int>(i)); });
}

TiedPoints::TiedPoints(const double* points, const double* weights, int n, const RepeatedSort& sort)
    : points_(points), sort_(sort) {
  double sum = 0.0;
  forEach(n, [&](int i) {
    if (i == 0 || points[i] != points[i - 1]) {
      starts_.push_back(i);
      sums_.push_back(0.0);
    }
    sum += weights[i];
    sums_.back() = sum;
  });
  doubt_ = 4.0 * n * std::numeric_limits<double>::epsilon() * sum;
}

// The lower value is the one before the first weight that leads beyond h, or the very first.
bool TiedPoints::quantile(double u, std::int64_t sorts, double& result) const {
  const double h = sums_.back() * u;
  const auto run =
      static_cast<std::size_t>(std::upper_bound(sums_.begin(), sums_.end(), h) - sums_.begin());
  if (run == sums_.size() || !(sums_[run] - h > doubt_)) {
    return false;
  }
  int k = 0;
  if (run > 0) {
    const double before = sums_[run - 1];
    const double first = before + sort_.weightAfter(sorts, starts_[run]);
    if (!(h - before > doubt_ && std::abs(first - h) > doubt_)) {
      return false;
    }
    k = starts_[run] - (first > h ? 1 : 0);
  }
  result = points_[k] + (points_[k + 1] - points_[k]);
  return true;
}

}  // namespace vexel::kernels
