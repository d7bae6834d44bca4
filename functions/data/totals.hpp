// Totals of a sample: sums that are exact but for what sixteen lanes lose.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>

#include "functions/data/sample.hpp"
#include "kernels/exact_sum.hpp"
#include "kernels/vector/sums.hpp"

namespace vexel {

// Adds the lanes of a block to the sum; false, with nothing added, where they overflowed.
inline bool addLanes(kernels::ExactSum& sum, const double* lanes) {
  double check = 0.0;
  for (std::size_t i = 0; i < kernels::sumLanes; ++i) {
    check += lanes[i] * 0.0;
  }
  if (check != 0.0) {  // NaN
    return false;
  }
  for (std::size_t i = 0; i < kernels::sumLanes; ++i) {
    if (lanes[i] != 0.0) {  // most are 0 in small samples
      sum.add(lanes[i]);
    }
  }
  return true;
}

// Adds a block to the sum.
inline void addBlock(kernels::ExactSum& sum, const double* x, std::size_t n) {
  double lanes[kernels::sumLanes];
  if (n >= kernels::sumLanes) {
    kernels::sumInLanes(x, n, lanes);
    if (addLanes(sum, lanes)) {
      return;
    }
  }
  sum.add({x, n});
}

// Adds the products of two blocks to the sum.
inline void addProducts(kernels::ExactSum& sum, const double* x, const double* y, std::size_t n) {
  double products[kernels::sumLanes];
  double unused[kernels::sumLanes];
  kernels::weightedSumsInLanes(x, y, n, products, unused);
  if (!addLanes(sum, products)) {
    for (std::size_t i = 0; i < n; ++i) {
      const auto p = kernels::DoubleDouble::productOf(x[i], y[i]);
      sum.add(p.high);
      if (std::isfinite(p.high)) {
        sum.add(p.low);
      }
    }
  }
}

// Adds the weights of a block, or its size where there are none.
inline void addWeights(kernels::ExactSum& sum, const double* w, std::size_t n) {
  if (w == nullptr) {
    sum.add(static_cast<double>(n));
  } else {
    addBlock(sum, w, n);
  }
}

// Whether a sum of products lost digits at an end of the range of doubles, or may have.
inline bool isExtreme(const kernels::ExactSum& sum) {
  if (!sum.finite()) {
    return true;
  }
  const kernels::Scaled scaled = sum.scaled();
  return std::abs(scaled.exponent) > 900 || scaled.value.high == 0.0;
}

// A weighted sum and the total weight.
struct Totals {
  kernels::ExactSum sum;
  kernels::ExactSum weight;

  bool extreme() const { return isExtreme(sum) || isExtreme(weight); }
  double quotient() const {
    return sum.finite() ? sum.scaled() / weight.scaled() : sum.rounded() / weight.rounded();
  }
};

// The totals of terms: fill(x, high, low, n) writes what of each point is to be weighted and added,
// as the sum of two numbers.
template <typename Fill>
bool totalsOf(const Sample& sample, Totals& totals, Fill fill) {
  const auto high = std::make_unique_for_overwrite<std::array<double, Sample::block>>();
  const auto low = std::make_unique_for_overwrite<std::array<double, Sample::block>>();
  const auto found = sample.present([&](const double* x, const double* w, std::size_t n) {
    fill(x, high->data(), low->data(), n);
    for (double* const part : {high->data(), low->data()}) {
      if (w == nullptr) {
        addBlock(totals.sum, part, n);
      } else {
        addProducts(totals.sum, part, w, n);
      }
    }
    addWeights(totals.weight, w, n);
  });
  return !sample.undefined(found);
}

// The arithmetic mean of the sample in its scale, which this may change; none where it is NaN.
std::optional<kernels::DoubleDouble> meanInTwo(Sample& sample);

}  // namespace vexel
