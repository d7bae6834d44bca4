// Order statistics of samples drawn with replacement: how often each element of the sorted sample
// is drawn tells them without sorting again.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "kernels/variates/resample.hpp"
#include "vexel/data.hpp"

namespace vexel {

class OrderReplicates {
 public:
  static bool serves(Statistic statistic, std::size_t n) {
    const bool ordered = statistic == Statistic::median || statistic == Statistic::min ||
                         statistic == Statistic::max || statistic == Statistic::iqr;
    return ordered && n < std::size_t{1} << 31;
  }

  OrderReplicates(Statistic statistic, std::span<const double> x)
      : statistic_(statistic), sorted_(x.begin(), x.end()), rank_(x.size()), count_(x.size(), 1) {
    std::vector<std::uint32_t> order(x.size());
    std::iota(order.begin(), order.end(), std::uint32_t{0});
    std::sort(order.begin(), order.end(),
              [&](std::uint32_t a, std::uint32_t b) { return x[a] < x[b]; });
    for (std::uint32_t k = 0; k < order.size(); ++k) {
      rank_[order[k]] = k;
      sorted_[k] = x[order[k]];
    }
    estimate_ = value();
  }

  double estimate() const { return estimate_; }

  template <typename Source>
  double next(const kernels::Positions& positions, Source& source) {
    std::fill(count_.begin(), count_.end(), 0U);
    positions.visit(source, rank_.size(),
                    [this](std::uint64_t i, std::size_t) { ++count_[rank_[i]]; });
    return value();
  }

 private:
  double value() {
    const std::size_t last = sorted_.size() - 1;
    switch (statistic_) {
      case Statistic::min:
        return from(0).first;
      case Statistic::max:
        return from(last).first;
      case Statistic::median:
        return quantile(0.5);
      default:
        return quantile(0.75) - quantile(0.25);
    }
  }

  // "linear"
  double quantile(double q) {
    const double h = static_cast<double>(sorted_.size() - 1) * q;
    const auto k = static_cast<std::size_t>(h);
    const auto [below, above] = from(k);
    const double part = h - static_cast<double>(k);
    return part == 0 || below == above ? below : below + part * (above - below);
  }

  // Values number k and k + 1 of the drawn sample, from 0; the last one twice at its end.
  std::pair<double, double> from(std::size_t k) const {
    std::size_t upTo = 0;
    std::size_t i = 0;
    while (upTo + count_[i] <= k) {
      upTo += count_[i++];
    }
    const double value = sorted_[i];
    if (upTo + count_[i] > k + 1 || k + 1 == sorted_.size()) {
      return {value, value};
    }
    do {
      ++i;
    } while (count_[i] == 0);
    return {value, sorted_[i]};
  }

  Statistic statistic_;
  std::vector<double> sorted_;
  std::vector<std::uint32_t> rank_;   // of each element in the sorted sample
  std::vector<std::uint32_t> count_;  // of each element of the sorted sample
  double estimate_ = 0;
};

}  // namespace vexel
