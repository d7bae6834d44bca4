// A short sliding window kept in order.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

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
