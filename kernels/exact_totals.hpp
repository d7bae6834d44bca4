// Exact totals of non-negative numbers, one for each of many cells (values of a tally, bins).
//
// A cell is the unevaluated sum of two doubles, exact while what the second one loses to rounding
// is 0: 106 bits hold the weights of ordinary tables.  What it does lose is kept in a list of
// non-overlapping doubles (J. R. Shewchuk, Adaptive precision floating-point arithmetic and fast
// robust geometric predicates, 1997), so that a total has one rounding and does not depend on the
// order of its summands or of merging.  Cells come in blocks, and a block is there from its first
// addition on: of many cells with few that are used, only those cost memory and time.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <span>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vexel::kernels {

// a + b as the rounded sum and its error.
inline std::pair<double, double> twoSum(double a, double b) {
  const double sum = a + b;
  const double partOfB = sum - a;
  return {sum, (a - (sum - partOfB)) + (b - partOfB)};
}

// Adds x to non-overlapping doubles in order of increasing size.
inline void growExpansion(std::vector<double>& parts, double x) {
  std::size_t kept = 0;
  for (const double part : parts) {
    const auto [sum, error] = twoSum(x, part);
    if (error != 0) {
      parts[kept++] = error;
    }
    x = sum;
  }
  parts.resize(kept);
  parts.push_back(x);
}

// The sum of non-overlapping doubles, rounded once, ties to even.
inline double roundedExpansion(std::span<const double> parts) {
  if (parts.empty()) {
    return 0;
  }
  double sum = parts.back();
  std::size_t left = parts.size() - 1;
  double error = 0;
  while (left > 0 && error == 0) {
    std::tie(sum, error) = twoSum(sum, parts[--left]);
  }
  // A tie was rounded to even without looking further down; what is below decides it.
  if (left > 0 && (error < 0) == (parts[left - 1] < 0)) {
    const double twice = 2 * error;
    const double other = sum + twice;
    if (other - sum == twice) {
      sum = other;
    }
  }
  return sum;
}

class ExactTotals {
 public:
  ExactTotals() = default;
  explicit ExactTotals(std::size_t cells) { resize(cells); }

  std::size_t size() const { return size_; }
  void resize(std::size_t cells) {
    size_ = cells;
    blocks_.resize((cells + kBlock - 1) / kBlock);
  }

  bool isZero(std::size_t i) const { return cell(i).high == 0; }

  // Adds a finite number; none of the totals so far may have been negative.
  void add(std::size_t i, double x) {
    Cell& cell = reached(i);
    const auto [high, error] = twoSum(cell.high, x);
    const auto [low, lost] = twoSum(cell.low, error);
    if (lost == 0) [[likely]] {
      cell = {high, low};
    } else {
      addLost(i, high, low, lost);
    }
  }

  void merge(std::size_t i, const ExactTotals& other, std::size_t j) {
    if (other.isOne(j)) {
      add(i, other.cell(j).high);
      return;
    }
    for (const double part : other.parts(j)) {
      add(i, part);
    }
  }

  // Cell by cell, of as many.
  void merge(const ExactTotals& other) {
    other.forEach(0, other.size(), [&](std::size_t i) {
      merge(i, other, i);
      return true;
    });
  }

  void assign(std::size_t i, const ExactTotals& other, std::size_t j) {
    lost_.erase(i);
    reached(i) = {};
    merge(i, other, j);
  }

  double total(std::size_t i) const {
    return isOne(i) ? cell(i).high : roundedExpansion(expansion(i));
  }

  // The total as doubles, each the rounded rest of the ones before it: the same for every way in
  // which the summands came.  None for 0.
  std::vector<double> parts(std::size_t i) const {
    if (std::isinf(cell(i).high)) {
      return {cell(i).high};
    }
    std::vector<double> rest = expansion(i);
    std::vector<double> parts;
    for (double next = roundedExpansion(rest); next != 0; next = roundedExpansion(rest)) {
      parts.push_back(next);
      growExpansion(rest, -next);
    }
    return parts;
  }

  // Whether the total is one double, which total gives: counts are, and infinite totals.
  bool isOne(std::size_t i) const {
    const Cell& c = cell(i);
    return std::isinf(c.high) || (c.low == 0 && (lost_.empty() || !lost_.contains(i)));
  }

  // visit(i) for the cells from begin to before end that are not 0, until one says false.
  template <typename Visit>
  void forEach(std::size_t begin, std::size_t end, Visit visit) const {
    for (std::size_t first = begin; first < end; first = (first / kBlock + 1) * kBlock) {
      const std::vector<Cell>& block = blocks_[first / kBlock];
      const std::size_t offset = first / kBlock * kBlock;
      const std::size_t last = std::min(end, offset + block.size());
      for (std::size_t i = first; i < last; ++i) {
        if (block[i - offset].high != 0 && !visit(i)) {
          return;
        }
      }
    }
  }

 private:
  static constexpr std::size_t kBlock = 256;

  struct Cell {
    double high = 0;
    double low = 0;
  };

  const Cell& cell(std::size_t i) const {
    static constexpr Cell zero;
    const std::vector<Cell>& block = blocks_[i / kBlock];
    return i % kBlock < block.size() ? block[i % kBlock] : zero;
  }
  Cell& reached(std::size_t i) {
    std::vector<Cell>& block = blocks_[i / kBlock];
    if (i % kBlock >= block.size()) [[unlikely]] {
      block.resize(std::min(kBlock, size_ - i / kBlock * kBlock));
    }
    return block[i % kBlock];
  }

  std::vector<double> expansion(std::size_t i) const {
    std::vector<double> parts;
    if (const auto found = lost_.find(i); found != lost_.end()) {
      parts = found->second;
    }
    growExpansion(parts, cell(i).low);
    growExpansion(parts, cell(i).high);
    return parts;
  }

  // Totals beyond the largest double are infinite: what comes is not negative.
  void addLost(std::size_t i, double high, double low, double lost) {
    if (std::isinf(high)) {
      reached(i) = {std::numeric_limits<double>::infinity(), 0};
      return;
    }
    reached(i) = {high, low};
    growExpansion(lost_[i], lost);
  }

  std::vector<std::vector<Cell>> blocks_;
  std::size_t size_ = 0;
  std::unordered_map<std::size_t, std::vector<double>> lost_;
};

}  // namespace vexel::kernels
