// Whole samples of distributions whose quantile is an integer search: the numbers that one search
// per uniform would give, most of them without a search.
//
// For fixed values of the distribution function, whatever they are, the steps of a search depend on
// u only through comparisons of u with such values.  So if two uniforms end at the same integer,
// they took the same steps, and every uniform between them ends there too, without an error.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "kernels/classic/uniforms.hpp"

namespace vexel::kernels::classic {

// The size of the tables for a sample of n, as a power of two: short ones are not worth large
// tables.
inline int cacheBits(std::int32_t n) {
  return std::clamp(static_cast<int>(std::bit_width(static_cast<std::uint32_t>(n))), 4, 14);
}

// A table of integers with a value for each; one that falls into the same place displaces another.
template <typename Value>
class IntegerCache {
 public:
  struct Entry {
    std::int32_t k;
    bool used;
    Value value;
    bool holds(std::int32_t i) const { return used && k == i; }
  };

  explicit IntegerCache(std::int32_t n)
      : shift_(32 - cacheBits(n)), entries_(std::size_t{1} << cacheBits(n)) {}

  // Fibonacci hashing: bisection of a power of two visits multiples of powers of two.
  Entry& at(std::int32_t k) {
    return entries_[(static_cast<std::uint32_t>(k) * 2654435769U) >> shift_];
  }

 private:
  int shift_;
  std::vector<Entry> entries_;
};

// A distribution function of integers that remembers its values.
template <typename F>
class Remembered {
 public:
  Remembered(std::int32_t n, F f) : f_(std::move(f)), values_(n) {}

  double operator()(double x) {
    const auto k = static_cast<std::int32_t>(x);
    auto& entry = values_.at(k);
    if (!entry.holds(k)) {
      entry = {k, true, f_(x)};
    }
    return entry.value;
  }

 private:
  F f_;
  IntegerCache<double> values_;
};

// The uniforms that were found to end at each integer: all from the least to the largest do.
class SearchGuide {
 public:
  explicit SearchGuide(std::int32_t n)
      : found_(n),
        last_(std::size_t{1} << (cacheBits(n) - 1)),
        cells_(static_cast<double>(last_.size())) {}

  // search(u), or its result as far as earlier searches prove it: the integer that the last uniform
  // of u's cell ended at, or one close by.
  template <typename Search>
  std::int32_t find(double u, Search search) {
    if (!(u >= 0.0 && u < 1.0)) {
      return search(u);
    }
    std::int32_t& last = last_[static_cast<std::size_t>(u * cells_)];
    std::int32_t k = last;
    for (int tries = 0; tries < kTries; ++tries) {
      const auto& entry = found_.at(k);
      if (!entry.holds(k)) {
        break;
      }
      const auto [least, largest] = entry.value;
      if (least <= u && u <= largest) {
        return last = k;
      }
      k = static_cast<std::int32_t>(static_cast<std::uint32_t>(k) + (u > largest ? 1U : ~0U));
    }
    k = search(u);
    auto& entry = found_.at(k);
    const Range range = entry.holds(k) ? entry.value : Range{u, u};
    entry = {k, true, {std::min(range.least, u), std::max(range.largest, u)}};
    return last = k;
  }

 private:
  struct Range {
    double least;
    double largest;
  };
  static constexpr int kTries = 8;

  IntegerCache<Range> found_;
  std::vector<std::int32_t> last_;  // by equal cells of the unit interval
  double cells_;
};

// n variates by inversion: data[i] = search(u, F) for the next uniform u, with F(x) =
// probability(x).
template <typename Uniforms, typename Probability, typename Search>
void fillBySearch(Uniforms& uniforms, double* data, std::int32_t n, Probability probability,
                  Search search) {
  if (n < 1) {
    return;
  }
  Remembered F(n, probability);
  SearchGuide guide(n);
  for (std::int32_t i = 0; i < n; ++i) {
    data[i] = guide.find(uniforms.unit(), [&](double u) { return search(u, F); });
  }
}

}  // namespace vexel::kernels::classic
