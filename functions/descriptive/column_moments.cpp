// Means and variances of several variables at once, where they are columns side by side.
//
// The sums run in the lanes that those of one variable run in, or are as good, and a result is
// taken only where no error of the sums can change its rounding: it is that of the variable alone,
// to the last bit.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "functions/data/sample.hpp"
#include "functions/data/totals.hpp"
#include "functions/descriptive/column_tiles.hpp"
#include "kernels/double_double.hpp"
#include "kernels/exact_product.hpp"
#include "kernels/exact_sum.hpp"
#include "vexel/columns.hpp"

namespace vexel {

namespace {

using kernels::DoubleDouble;

constexpr std::size_t kMost = kernels::columnsTogether;
constexpr std::size_t kBlock = kernels::sumBlock;

std::size_t padded(std::size_t width) { return (width + 7) / 8 * 8; }

// x + y where that has no more digits than a double, or else NaN.
double exactly(double x, double y) {
  const DoubleDouble sum = DoubleDouble::sumOf(x, y);
  return sum.low == 0.0 ? sum.high : kNaN;
}

// The mean of n elements where it has no more digits than two doubles, as those in the middle of
// two neighbours have; false where it seems to have more, or is out of range.
bool exactMean(const double* x, std::ptrdiff_t stride, std::size_t n, double& mean) {
  double sum = 0.0;
  double rest = 0.0;
  for (std::size_t i = 0; i < n; ++i, x += stride) {
    const DoubleDouble next = DoubleDouble::sumOf(sum, *x);
    sum = next.high;
    rest = exactly(rest, next.low);
  }
  const DoubleDouble all = DoubleDouble::sumOf(sum, rest);
  const auto count = static_cast<double>(n);
  const double first = all.high / count;
  const double product = first * count;
  const double error = kernels::exactProductError(first, count, product);
  const double left = exactly(exactly(exactly(all.high, -product), -error), all.low);
  const double second = left / count;
  if (second * count != left || kernels::exactProductError(second, count, left) != 0.0 ||
      !(std::fabs(first) > 0x1p-800 && std::fabs(first) < 0x1p800)) {
    return false;
  }
  mean = first + second;
  return true;
}

class ColumnMeans {
 public:
  explicit ColumnMeans(std::size_t n) : n_(n) {}

  void operator()(ColumnTile& tile, double* out, std::uint8_t* sure) {
    const std::size_t width = tile.width();
    if (n_ <= kernels::columnLanes / 2) {  // a row is a lane
      const auto rows = tile.rows(0, n_);
      kernels::meansOfLanes(rows.x, width, rows.stride, n_, out, sure);
      for (std::size_t j = 0; j < width; ++j) {
        if (sure[j] == 0) {
          sure[j] = static_cast<std::uint8_t>(exactMean(rows.x + j, rows.stride, n_, out[j]));
        }
      }
      return;
    }
    pitch_ = tile.dense() ? width : padded(width);
    if (n_ <= kBlock) {
      addBlock(tile, 0, n_);
      kernels::meansOfLanes(lanes_, width, static_cast<std::ptrdiff_t>(pitch_), n_, out, sure);
      return;
    }
    totals_.assign(width, {});
    std::fill(sure, sure + width, std::uint8_t{1});
    for (std::size_t begin = 0; begin < n_; begin += kBlock) {
      addBlock(tile, begin, std::min(begin + kBlock, n_));
      for (std::size_t j = 0; j < width; ++j) {
        double lanes[kernels::columnLanes];
        for (std::size_t row = 0; row < kernels::columnLanes; ++row) {
          lanes[row] = lanes_[row * pitch_ + j];
        }
        sure[j] &= static_cast<std::uint8_t>(addLanes(totals_[j], lanes));
      }
      kernels::poll();
    }
    int exponent = 0;
    const double fraction = std::frexp(static_cast<double>(n_), &exponent);
    for (std::size_t j = 0; j < width; ++j) {
      out[j] = totals_[j].scaled() / kernels::Scaled{fraction, exponent};
    }
  }

 private:
  void addBlock(ColumnTile& tile, std::size_t begin, std::size_t end) {
    std::fill_n(lanes_, kernels::columnLanes * pitch_, 0.0);
    if (tile.floats(0) != nullptr && tile.width() >= 32) {
      addFloats(tile, begin, end);
      return;
    }
    addRows(tile, begin, end);
  }

  // Some rows of floats have exact sums most often, and count as one.
  void addFloats(ColumnTile& tile, std::size_t begin, std::size_t end) {
    const std::size_t width = tile.width();
    folded_.resize(width);
    for (std::size_t i = begin; i < end; i += kernels::foldedRows) {
      const std::size_t n = std::min(kernels::foldedRows, end - i);
      if (kernels::foldFloats(tile.floats(i), tile.stride(), n, width, folded_.data())) {
        kernels::addColumns(folded_.data(), static_cast<std::ptrdiff_t>(width), 1, width, pitch_,
                            lanes_);
      } else {
        addRows(tile, i, i + n);
      }
    }
  }

  void addRows(ColumnTile& tile, std::size_t begin, std::size_t end) {
    tile.forRows(begin, end, [&](ColumnTile::Rows rows, std::size_t n) {
      kernels::addColumns(rows.x, rows.stride, n, tile.width(), pitch_, lanes_);
    });
  }

  std::size_t n_;
  std::size_t pitch_ = 0;
  double lanes_[kernels::columnLanes * kMost];
  std::vector<double> folded_;
  std::vector<kernels::ExactSum> totals_;
};

// Sums of rows of columns about centers, any number of them.
class ColumnSquares {
 public:
  explicit ColumnSquares(std::size_t n) : n_(n) {}

  // Centers near the means, most often.
  void center(ColumnTile& tile) {
    const std::size_t width = tile.width();
    const std::size_t some = std::min(n_, std::size_t{16});
    const bool atOnce = n_ <= tile.step();
    const ColumnTile::Rows all = tile.rows(0, atOnce ? n_ : 1);
    std::fill_n(center_, width, 0.0);
    for (std::size_t i = 0; i < some; ++i) {
      const std::size_t row = i * (n_ / some);
      const double* const x =
          atOnce ? all.x + static_cast<std::ptrdiff_t>(row) * all.stride : tile.rows(row, 1).x;
      for (std::size_t j = 0; j < width; ++j) {
        center_[j] += x[j];
      }
    }
    for (std::size_t j = 0; j < width; ++j) {
      center_[j] /= static_cast<double>(some);
    }
  }

  void add(ColumnTile& tile) {
    const std::size_t width = tile.width();
    pitch_ = padded(width);
    std::fill_n(sums_, kernels::squareLanes * pitch_, 0.0);
    folded_ = tile.dense() && width * kFold <= kMost && n_ >= 8 * kFold;
    for (std::size_t k = 0; folded_ && k < kFold; ++k) {
      std::copy_n(center_, width, foldedCenter_ + k * width);
    }
    first_.assign(n_ > kBlock ? width : 0, {});
    second_.assign(first_.size(), {});
    for (std::size_t begin = 0; begin < n_; begin += kBlock) {
      addBlock(tile, begin, std::min(begin + kBlock, n_));
      if (!first_.empty()) {
        keep(width);
        kernels::poll();
      }
    }
    for (std::size_t j = 0; j < first_.size(); ++j) {
      put(j, first_[j], second_[j]);
    }
  }

  const double* sums() const { return sums_; }
  std::size_t pitch() const { return pitch_; }

 private:
  static constexpr std::size_t kFold = 8;  // rows of narrow matrices taken as one

  DoubleDouble at(const double* sums, std::size_t pitch, std::size_t row, std::size_t j) const {
    return DoubleDouble::sumOf(sums[row * pitch + j], sums[(row + 1) * pitch + j]);
  }
  void put(std::size_t j, DoubleDouble first, DoubleDouble second) {
    const double values[] = {first.high, first.low, second.high, second.low};
    for (std::size_t row = 0; row < kernels::squareLanes; ++row) {
      sums_[row * pitch_ + j] = values[row];
    }
  }
  void keep(std::size_t width) {
    for (std::size_t j = 0; j < width; ++j) {
      first_[j] = first_[j] + at(sums_, pitch_, 0, j);
      second_[j] = second_[j] + at(sums_, pitch_, 2, j);
    }
    std::fill_n(sums_, kernels::squareLanes * pitch_, 0.0);
  }

  void addBlock(ColumnTile& tile, std::size_t begin, std::size_t end) {
    const std::size_t width = tile.width();
    const std::size_t wide = kFold * width;
    if (folded_) {
      std::fill_n(foldedSums_, kernels::squareLanes * wide, 0.0);
    }
    tile.forRows(begin, end, [&](ColumnTile::Rows rows, std::size_t n) {
      const std::size_t whole = folded_ ? n / kFold * kFold : 0;
      if (folded_) {
        kernels::addSquaresOfColumns(rows.x, static_cast<std::ptrdiff_t>(wide), n / kFold, wide,
                                     wide, foldedCenter_, foldedSums_);
      }
      kernels::addSquaresOfColumns(rows.x + static_cast<std::ptrdiff_t>(whole) * rows.stride,
                                   rows.stride, n - whole, width, pitch_, center_, sums_);
    });
    for (std::size_t j = 0; folded_ && j < width; ++j) {
      DoubleDouble first = at(sums_, pitch_, 0, j);
      DoubleDouble second = at(sums_, pitch_, 2, j);
      for (std::size_t k = 0; k < kFold; ++k) {
        first = first + at(foldedSums_, wide, 0, k * width + j);
        second = second + at(foldedSums_, wide, 2, k * width + j);
      }
      put(j, first, second);
    }
  }

  std::size_t n_;
  std::size_t pitch_ = 0;
  bool folded_ = false;
  double center_[kMost];
  double sums_[kernels::squareLanes * kMost];
  double foldedCenter_[kMost];
  double foldedSums_[kernels::squareLanes * kMost];
  std::vector<DoubleDouble> first_;
  std::vector<DoubleDouble> second_;
};

// Whether all elements are one finite number.
bool isConstant(const Data& x) {
  const double first = x[0];
  for (std::size_t i = 1; i < x.size(); ++i) {
    if (x[i] != first) {
      return false;
    }
  }
  return std::isfinite(first);
}

template <typename One>
void variances(const char* function, const Columns& columns, std::span<double> out,
               const VarianceOptions& options, bool root, One one) {
  const std::size_t n = columns.first().size();
  const DoubleDouble divisor = DoubleDouble(static_cast<double>(n)) - DoubleDouble(options.ddof);
  const bool possible =
      n > 0 && !options.weights.given() && divisor.high > 0.0 && divisor.low == 0.0;
  ColumnSquares squares(n);
  onTiles(
      function, columns, out,
      [&](ColumnTile& tile, double* to, std::uint8_t* sure) {
        if (possible) {
          squares.center(tile);
          squares.add(tile);
          kernels::variancesOfSums(squares.sums(), tile.width(), squares.pitch(),
                                   static_cast<double>(n), divisor.high, root, to, sure);
        }
      },
      [&](const Data& x) { return possible && isConstant(x) ? 0.0 : one(x); });
}

}  // namespace

void mean(const Columns& columns, std::span<double> out, const MeanOptions& options) {
  const bool possible =
      options.kind == Mean::arithmetic && !options.weights.given() && !columns.first().empty();
  ColumnMeans means(columns.first().size());
  onTiles(
      "mean", columns, out,
      [&](ColumnTile& tile, double* to, std::uint8_t* sure) {
        if (possible) {
          means(tile, to, sure);
        }
      },
      [&](const Data& x) { return mean(x, options); });
}

void var(const Columns& columns, std::span<double> out, const VarianceOptions& options) {
  variances("var", columns, out, options, false, [&](const Data& x) { return var(x, options); });
}

void std(const Columns& columns, std::span<double> out, const VarianceOptions& options) {
  variances("std", columns, out, options, true,
            [&](const Data& x) { return vexel::std(x, options); });
}

}  // namespace vexel
