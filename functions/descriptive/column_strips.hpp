// Columns of a matrix eight at a time, as rows of doubles in memory of their own, to be sorted by a
// network that compares whole rows.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

#include "kernels/vector/column_order.hpp"
#include "vexel/columns.hpp"

namespace vexel {

class ColumnStrip {
 public:
  static constexpr std::size_t width = kernels::stripWidth;
  // Whether columns are better sorted so than one by one: not long ones, nor so few that making the
  // network takes longer.
  static bool serves(const Columns& columns) {
    constexpr std::size_t longest = 1024;
    const std::size_t n = columns.first().size();
    return n > 0 && n <= longest && n <= 8 * columns.count() + 64;
  }

  explicit ColumnStrip(const Columns& columns);

  // Reads columns begin to begin + width - 1, as many of them as there are.
  void moveTo(std::size_t begin);

  std::size_t columns() const { return there_; }
  std::size_t missing(std::size_t j) const { return static_cast<std::size_t>(facts_.missing[j]); }
  bool anyMissing() const;
  bool hasNegativeZero(std::size_t j) const { return facts_.negativeZeros[j] > 0.0; }

  // Missing elements count as infinity.
  void exchange(std::span<const kernels::Exchange> network) {
    kernels::exchangeInStrip(rows_, network);
  }
  // As above, with places of the rows, in memory of the caller.
  void exchange(std::span<const kernels::Exchange> network, double* places) {
    kernels::exchangeWithPlaces(rows_, places, network);
  }
  double* row(std::size_t i) { return rows_ + width * i; }

 private:
  void copy(std::size_t begin);

  const Columns& from_;
  std::size_t there_ = 0;
  kernels::StripFacts facts_{};
  std::unique_ptr<double[]> memory_;
  double* rows_;
};

}  // namespace vexel
