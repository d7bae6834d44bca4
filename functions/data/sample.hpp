// A sample as the functions read it: in blocks of doubles, without what is missing.
//
// No function on data looks at a Data by itself: this file converts elements, follows strides,
// checks weights, applies the policy for missing values and lets long work be interrupted.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "kernels/vector/presence.hpp"
#include "kernels/vector/sums.hpp"
#include "kernels/watch.hpp"
#include "vexel/data.hpp"

namespace vexel {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Elements begin to begin + n - 1 as doubles: where they lie, or in buffer.
const double* asDoubles(Data x, std::size_t begin, std::size_t n, double* buffer);

// Of a finite number; 0 of 0.
inline int exponentOf(double x) { return x == 0.0 ? 0 : std::ilogb(x); }

class Sample {
 public:
  static constexpr std::size_t block = kernels::sumBlock;

  // Throws std::length_error unless there are as many weights as points, or none.
  Sample(const char* function, Data x, Data weights, Missing missing);

  // From now on the points come multiplied by 2^-xExponent, the weights by 2^-wExponent, so that
  // sums of powers neither overflow nor vanish; within +-1022.
  void scale(int xExponent, int wExponent);
  // Scales the largest finite point and the largest weight to about 1.
  void scaleToOne();
  int xExponent() const { return xExponent_; }
  int wExponent() const { return wExponent_; }

  std::size_t size() const { return x_.size(); }
  bool weighted() const { return weights_.given(); }
  const char* function() const { return function_; }
  // The points where they are floats one after the other, as they are given; else null.
  const float* floats() const {
    const bool dense = x_.element() == Element::float32 && x_.stride() == 1 && xExponent_ == 0;
    return dense ? static_cast<const float*>(x_.data()) : nullptr;
  }

  // Element i and its weight, 1 without weights; NaN or not.
  double point(std::size_t i) const { return x_[i] * xFactor_; }
  double weight(std::size_t i) const { return weighted() ? weights_[i] * wFactor_ : 1.0; }

  // The mean of some finite points, at equal distances: near the mean most often.
  double roughMean() const;

  // What a look at the sample found.
  struct Presence {
    std::size_t points = 0;   // present, of positive weight
    std::size_t pairs = 0;    // present, of any weight
    std::size_t missing = 0;  // pairs with a NaN, but for points of weight 0
  };

  // Calls use(x, w, n) for the present points of positive weight, n <= block at a time, every block
  // but the last one full; w is null without weights.  The n-th present point is element n mod
  // block of a block, whatever else is in the data.
  //
  // Throws std::invalid_argument for a negative or infinite weight, and for a missing pair where
  // the policy is to raise.  pass of passes: how much of the whole work this is.
  template <typename Use>
  Presence present(Use use, int pass = 0, int passes = 1) const;

  // Calls use(x, w, n) for all that is there, n <= block at a time, NaN or not.
  template <typename Use>
  void raw(Use use, int pass = 0, int passes = 1) const;

  // Whether the result is NaN, after a look at the sample: there is nothing, or something is
  // missing and counts.  Throws std::invalid_argument where there are points of weight 0 only.
  bool undefined(const Presence& found) const;

  // Counts the pairs and checks them as present() does.
  Presence look() const {
    return present([](const double*, const double*, std::size_t) {});
  }

 private:
  struct Buffers {
    double x[block];
    double w[block];
    double presentX[block];
    double presentW[block];
    std::size_t filled = 0;
  };

  // Appends the present points of positive weight among n to the buffers, from element at of x on,
  // until they are full; the elements read.
  std::size_t keep(const double* x, const double* w, std::size_t n, std::size_t begin, Buffers& to,
                   Presence& found) const;
  static const double* scaled(const double* from, std::size_t n, double factor, double* buffer);
  const double* points(std::size_t begin, std::size_t n, double* buffer) const {
    const double* const x = asDoubles(x_, begin, n, buffer);
    return xExponent_ == 0 ? x : scaled(x, n, xFactor_, buffer);
  }
  const double* weights(std::size_t begin, std::size_t n, double* buffer) const {
    if (!weighted()) {
      return nullptr;
    }
    const double* const w = asDoubles(weights_, begin, n, buffer);
    return wExponent_ == 0 ? w : scaled(w, n, wFactor_, buffer);
  }
  void poll(std::size_t done, int pass, int passes) const;

  const char* function_;
  Data x_;
  Data weights_;
  Missing missing_;
  int xExponent_ = 0;
  int wExponent_ = 0;
  double xFactor_ = 1.0;  // 2^-xExponent
  double wFactor_ = 1.0;
};

inline void Sample::poll(std::size_t done, int pass, int passes) const {
  static_assert(kernels::pollInterval % block == 0);
  if (done % kernels::pollInterval == 0 && done > 0) {
    kernels::poll((pass + static_cast<double>(done) / static_cast<double>(size())) / passes);
  }
}

template <typename Use>
void Sample::raw(Use use, int pass, int passes) const {
  const std::size_t most = std::min(block, size());
  const auto buffers = std::make_unique_for_overwrite<double[]>(2 * most);
  for (std::size_t i = 0; i < size(); i += block) {
    poll(i, pass, passes);
    const std::size_t n = std::min(block, size() - i);
    use(points(i, n, buffers.get()), weights(i, n, buffers.get() + most), n);
  }
}

template <typename Use>
Sample::Presence Sample::present(Use use, int pass, int passes) const {
  const auto buffers = std::make_unique_for_overwrite<Buffers>();
  buffers->filled = 0;
  Presence found;
  for (std::size_t i = 0; i < size(); i += block) {
    poll(i, pass, passes);
    const std::size_t n = std::min(block, size() - i);
    const double* const x = points(i, n, buffers->x);
    const double* const w = weights(i, n, buffers->w);
    if (buffers->filled == 0 &&
        (w == nullptr ? kernels::allPresent(x, n) : kernels::allPresent(x, w, n))) {
      found.points += n;
      found.pairs += n;
      use(x, w, n);
      if (n < block) {
        return found;
      }
      continue;
    }
    for (std::size_t read = 0; read < n;) {
      read += keep(x + read, w == nullptr ? w : w + read, n - read, i + read, *buffers, found);
      if (buffers->filled == block) {
        use(buffers->presentX, w == nullptr ? w : buffers->presentW, block);
        buffers->filled = 0;
      }
    }
  }
  if (buffers->filled > 0) {
    use(buffers->presentX, weighted() ? buffers->presentW : nullptr, buffers->filled);
  }
  return found;
}

}  // namespace vexel
