#include "functions/spread.hpp"

#include <cmath>
#include <vector>

#include "kernels/running_sum.hpp"
#include "numerics/rank_words.hpp"

namespace vexel {

namespace {

// The k-th smallest, k from 1, with weights the smallest whose cumulative weight reaches k.
class OrderStatistics {
 public:
  OrderStatistics(std::span<const double> points, std::span<const double> weights) {
    nag2::visitSorted(points.data(), points.size(), false,
                      [&](std::size_t, nag2::TiedPositions tied) {
                        for (std::size_t i = 0; i < tied.size(); ++i) {
                          total_.add(weights.empty() ? 1 : weights[tied[i]]);
                        }
                        values_.push_back(points[tied[0]]);
                        upTo_.push_back(total_.value());
                      });
  }
  double total() const { return total_.value(); }
  double operator()(double k) const {
    const auto at = std::lower_bound(upTo_.begin(), upTo_.end(), k) - upTo_.begin();
    return values_[std::min(static_cast<std::size_t>(at), values_.size() - 1)];
  }
  double quantile(double q) const {
    const double h = std::max(0.0, (total() - 1) * q);
    const double low = (*this)(std::floor(h) + 1);
    const double high = (*this)(std::floor(h) + 2);
    return low + (h - std::floor(h)) * (high - low);
  }

 private:
  kernels::RunningSum total_;
  std::vector<double> values_;
  std::vector<double> upTo_;
};

}  // namespace

Spread spreadOf(std::span<const double> points, std::span<const double> weights) {
  const OrderStatistics ordered(points, weights);
  const auto weight = [&](std::size_t i) { return weights.empty() ? 1 : weights[i]; };
  kernels::RunningSum sum;
  for (std::size_t i = 0; i < points.size(); ++i) {
    sum.addProduct(weight(i), points[i]);
  }
  const double mean = sum.value() / ordered.total();
  kernels::RunningSum squares;
  for (std::size_t i = 0; i < points.size(); ++i) {
    squares.addProduct(weight(i) * (points[i] - mean), points[i] - mean);
  }
  return {ordered.total(), std::sqrt(squares.value() / ordered.total()),
          ordered.quantile(0.75) - ordered.quantile(0.25)};
}

}  // namespace vexel
