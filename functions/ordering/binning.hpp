// Where an element falls among the edges of bins: the part that functions and states share.
//
// Bin i is [edges[i], edges[i+1]), the last one closed.  Among equal bins a product guesses the
// bin; where it comes near a whole number the edges themselves decide, so that the result is that
// of comparing with them, to the last element.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <type_traits>
#include <vector>

#include "functions/data/elements.hpp"
#include "kernels/binning.hpp"
#include "kernels/exact_totals.hpp"
#include "kernels/watch.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

// Edges from low to high as NumPy's linspace makes them.
std::vector<double> equalEdges(Interval range, std::size_t bins);

// Throws unless there are at least two, none is NaN and none is below the one before it;
// `parameter` is what the caller calls them.
std::vector<double> checkedEdges(Data edges, const char* parameter);

class Binning {
 public:
  static constexpr std::size_t outside = static_cast<std::size_t>(-1);

  // equal: edges are equalEdges of their ends.
  Binning(std::span<const double> edges, bool equal);

  std::size_t bins() const { return bins_; }

  // The bin of x, or outside (where NaN is).
  template <typename T>
  std::size_t operator()(T x) const {
    if (!(static_cast<double>(x) >= edges_[0] && static_cast<double>(x) <= edges_[bins_]) ||
        isBelow(x, edges_[0]) || isAbove(x, edges_[bins_])) {
      return outside;
    }
    std::size_t i = equal_ ? guess(static_cast<double>(x)) : search(x);
    while (i > 0 && isBelow(x, edges_[i])) {
      --i;
    }
    while (i + 1 < bins_ && !isBelow(x, edges_[i + 1])) {
      ++i;
    }
    return i;
  }

  // Adds the elements to counts, one for each bin; those outside are skipped.  Returns how many are
  // missing.
  template <typename T>
  std::size_t count(std::span<const T> x, std::span<std::uint64_t> counts) const;

 private:
  // Equal cells finer than the bins: the bin that a cell lies in, the number of bins where an edge
  // does.  None where that does not pay.
  struct BinsOfCells {
    kernels::BinGuess cells{};
    std::vector<std::int32_t> bin;
  };
  BinsOfCells binsOfCells(std::size_t elements) const;

  // A large integer may be rounded to an edge that it is not on.
  template <typename T>
  static bool isBelow(T x, double edge) {
    const auto rounded = static_cast<double>(x);
    if constexpr (std::is_same_v<T, std::int64_t>) {
      if (rounded == edge && std::abs(edge) >= 0x1p53) {
        return edge >= 0x1p63 || x < static_cast<std::int64_t>(edge);
      }
    }
    return rounded < edge;
  }
  template <typename T>
  static bool isAbove(T x, double edge) {
    if constexpr (std::is_same_v<T, std::int64_t>) {
      if (static_cast<double>(x) == edge && std::abs(edge) >= 0x1p53) {
        return edge < 0x1p63 && x > static_cast<std::int64_t>(edge);
      }
    }
    return static_cast<double>(x) > edge;
  }

  std::size_t guess(double x) const {
    const double t = (x - low_) * scale_;
    return t > 0 ? std::min(static_cast<std::size_t>(t), bins_ - 1) : 0;
  }
  template <typename T>
  std::size_t search(T x) const {
    const double* first = edges_.data();
    for (std::size_t n = bins_; n > 1;) {
      const std::size_t half = n / 2;
      first = isBelow(x, first[half]) ? first : first + half;
      n -= half;
    }
    return static_cast<std::size_t>(first - edges_.data());
  }

  std::span<const double> edges_;
  std::size_t bins_;
  bool equal_;
  double low_ = 0;
  double scale_ = 0;
  double doubt_ = 1;  // guesses this near to a whole number are looked up
};

// Adds the weights of the pairs that are there to totals; returns how many pairs are missing.
template <typename T>
std::size_t addWeights(const Binning& binning, std::span<const T> x, Data weights,
                       kernels::ExactTotals& totals) {
  std::size_t missing = 0;
  kernels::forEach(x.size(), [&](std::size_t i) {
    const double w = weights[i];
    if (w == 0) {
      return;
    }
    if (isMissing(x[i]) || isMissing(w)) {
      ++missing;
      return;
    }
    const std::size_t bin = binning(x[i]);
    if (bin != Binning::outside) {
      totals.add(bin, w);
    }
  });
  return missing;
}

// What fd, scott, sturges and automatic make of the present pairs between low and high.
std::size_t ruleBins(Data x, BinRule rule, Interval range, const HistogramOptions& options);

}  // namespace vexel
