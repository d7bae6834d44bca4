// Medians of a sliding window of fixed size, NaN last: two heaps for any window, a window kept in
// order for short ones.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace vexel::kernels {

// Two heaps that meet at the median, a max-heap of the lower half below a min-heap of the upper one
// (after Haerdle and Steiger, Optimal Median Smoothing, Applied Statistics 44, 1995, AS 296).
// Replacing a value costs O(log w).
class RunningMedian {
 public:
  // Starts with values[0..w-1] in slots 0..w-1, w >= 1.
  RunningMedian(const double* values, int w);

  // Puts another value into a slot.
  void replace(int slot, double value);

  // What sorting the window would give: its middle value, or (u + v) 0.5 of the middle two.
  double median() const;

 private:
  struct Node {
    double value;
    int slot;
  };

  // Places are counted from the heap's root; the lower heap lies first in nodes_.
  template <bool kLower>
  Node& node(int place);
  template <bool kLower>
  void settle(int place);
  void put(Node& at, Node node);

  int lowerSize_;
  int upperSize_;
  std::vector<Node> nodes_;
  std::vector<int> where_;  // the index in nodes_ of each slot's node
};

// A short window kept in order.
//
// Replacing a value rewrites the whole window, with a minimum and a maximum for each place and no
// branches: O(w), and yet faster than heaps for windows of up to kLongest values.
//
// Values are numbers other than -0.0: the arithmetic below would lose NaNs and signs of zero.
class SortedWindow {
 public:
  static constexpr int kLongest = 64;

  SortedWindow(const double* values, int w)
      : values_(values, values + w),
        others_(values_.size() + 1, std::numeric_limits<double>::infinity()) {
    std::sort(values_.begin(), values_.end());
    others_.front() = -others_.back();
  }

  // Puts value in place of leaving, which is in the window.
  void replace(double leaving, double value) {
    const std::size_t w = values_.size();
    double* __restrict ordered = values_.data();
    double* __restrict others = others_.data();  // without leaving, between two infinities
    for (std::size_t k = 0; k + 1 < w; ++k) {
      const double at = ordered[k];
      const double after = ordered[k + 1];
      others[k + 1] = at < leaving ? at : after;
    }
    for (std::size_t k = 0; k < w; ++k) {
      const double lesser = others[k + 1] < value ? others[k + 1] : value;
      ordered[k] = lesser < others[k] ? others[k] : lesser;
    }
  }

  // As RunningMedian has it.
  double median() const {
    const std::size_t w = values_.size();
    return w % 2 != 0 ? values_[w / 2] : (values_[w / 2 - 1] + values_[w / 2]) * 0.5;
  }

 private:
  std::vector<double> values_;
  std::vector<double> others_;
};

}  // namespace vexel::kernels
