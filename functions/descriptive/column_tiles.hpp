// Columns of a matrix as their kernels want them: some neighbours at a time, as rows of doubles.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

#include "kernels/vector/columns.hpp"
#include "kernels/watch.hpp"
#include "vexel/columns.hpp"

namespace vexel {

// Up to most() columns.
class ColumnTile {
 public:
  // Rows copied at a time, of few columns more of them; multiples of the lanes of sums.
  static constexpr std::size_t copied = 32;
  static constexpr std::size_t copiedLanes = 128;

  explicit ColumnTile(const Columns& columns);

  // The most columns to look at at a time: fewer where they are lanes of elements one behind the
  // other, so that all of a lane that memory delivers is taken.
  std::size_t most() const {
    return lanes_ ? kernels::columnsTogether / 4 : kernels::columnsTogether;
  }

  // The width columns from `begin` on are looked at from now on.
  void moveTo(std::size_t begin, std::size_t width);

  std::size_t width() const { return width_; }
  // Whether the rows come without a gap.
  bool dense() const { return !direct_ || stride_ == static_cast<std::ptrdiff_t>(width_); }

  struct Rows {
    const double* x;
    std::ptrdiff_t stride;
  };
  // n rows, which the next call may write over; n <= step() unless direct().
  Rows rows(std::size_t begin, std::size_t n);
  bool direct() const { return direct_; }
  // Row `begin` of floats side by side; null of others.
  const float* floats(std::size_t begin) const {
    const Data& first = columns_.first();
    return first.element() != Element::float32 || columns_.apart() != 1
               ? nullptr
               : static_cast<const float*>(first.data()) + begin_ +
                     static_cast<std::ptrdiff_t>(begin) * stride_;
  }
  std::ptrdiff_t stride() const { return stride_; }
  std::size_t step() const { return lanes_ ? copiedLanes : copied; }

  // use(Rows, n) for rows begin to end - 1 in their order, a multiple of step() at a time but for
  // the last ones.
  template <typename Use>
  void forRows(std::size_t begin, std::size_t end, Use use) {
    const std::size_t most = direct_ ? end - begin : step();
    for (std::size_t i = begin; i < end; i += most) {
      const std::size_t n = std::min(most, end - i);
      use(rows(i, n), n);
    }
  }

 private:
  const Columns& columns_;
  bool direct_;
  bool lanes_;
  std::ptrdiff_t stride_;
  std::size_t begin_ = 0;
  std::size_t width_ = 0;
  std::size_t held_ = 0;  // rows, from the first on, that the copies are of; 0: others
  std::unique_ptr<double[]> copies_;
};

// Calls work(tile, out) for all columns, and one(column) for those whose `sure` it leaves 0.
template <typename Work, typename One>
void onTiles(const char* function, const Columns& columns, std::span<double> out, Work work,
             One one) {
  if (out.size() != columns.count()) {
    throw std::length_error(
        std::string(function) + ": out must have as many elements as there are columns, " +
        std::to_string(columns.count()) + ", got " + std::to_string(out.size()));
  }
  ColumnTile tile(columns);
  const std::size_t most = tile.most();
  const std::size_t tiles = (columns.count() + most - 1) / most;
  const std::size_t even = tiles == 0 ? 0 : (columns.count() + tiles - 1) / tiles;
  const std::size_t width = tiles < 2 ? even : std::min(most, (even + 7) / 8 * 8);
  std::uint8_t sure[kernels::columnsTogether];
  for (std::size_t begin = 0; begin < columns.count(); begin += width) {
    const std::size_t n = std::min(width, columns.count() - begin);
    tile.moveTo(begin, n);
    std::fill(sure, sure + n, std::uint8_t{0});
    work(tile, &out[begin], static_cast<std::uint8_t*>(sure));
    for (std::size_t j = 0; j < n; ++j) {
      if (sure[j] == 0) {
        out[begin + j] = one(columns[begin + j]);
      }
    }
    kernels::poll(static_cast<double>(begin + n) / static_cast<double>(columns.count()));
  }
}

}  // namespace vexel
