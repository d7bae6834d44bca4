// Halton's points.
//
// A coordinate is a sum over the digits of the index, least significant first, whose rounding is
// part of the result.  Points that agree in their high digits share the last terms of that sum and
// runs of indices walk through its first terms, so a run tabulates the sum's beginning for every
// value of the low digits and adds the terms of the high digits to all its points at once: the same
// additions in the same order, without a division per digit.

#include "kernels/classic/halton_points.hpp"

#include <algorithm>
#include <array>
#include <vector>

#include "kernels/watch.hpp"

namespace vexel::kernels::classic {
namespace {

// Points are made in blocks of this many; a block of ten coordinates stays in the cache.
constexpr int kBlock = 256;

// Cells of the tables of one call, all coordinates together, and of one coordinate.
constexpr std::size_t kTotalCells = std::size_t{1} << 17;
constexpr std::size_t kCoordinateCells = 1024;

// The digit sum continued from value with the digits of n, the first of which has weight factor.
double addDigits(double value, std::uint32_t n, std::uint32_t base, double factor) {
  for (; n != 0; n /= base) {
    value += static_cast<double>(n % base) * factor;
    factor /= base;
  }
  return value;
}

double radicalInverse(std::uint32_t n, std::uint32_t base) {
  return addDigits(0.0, n, base, 1.0 / base);
}

// Radical inverses in one base, by a table of the sums over the low digits.
class DigitTable {
 public:
  // At most maxCells cells, but at least one.
  DigitTable(std::uint32_t base, std::size_t maxCells) : base_(base), factor_(1.0 / base) {
    sums_.push_back(0.0);
    while (sums_.size() <= maxCells / base) {
      const std::size_t size = sums_.size();
      for (std::uint32_t digit = 1; digit < base; ++digit) {
        for (std::size_t i = 0; i < size; ++i) {
          sums_.push_back(sums_[i] + digit * factor_);
        }
      }
      factor_ /= base;
    }
  }

  // The radical inverses of first, first + 1, ... into out[0], out[stride], ...
  void write(std::uint32_t first, int count, double* out, std::ptrdiff_t stride) const {
    const auto cells = static_cast<std::uint32_t>(sums_.size());
    std::uint32_t high = first / cells;
    std::uint32_t low = first % cells;
    while (count > 0) {
      const int length = std::min(count, static_cast<int>(std::min<std::uint32_t>(
                                             cells - low, static_cast<std::uint32_t>(kBlock))));
      writeRun(std::span(sums_).subspan(low, static_cast<std::size_t>(length)), high, out, stride);
      out += length * stride;
      count -= length;
      low += static_cast<std::uint32_t>(length);
      if (low == cells) {
        low = 0;
        ++high;
      }
    }
  }

 private:
  void writeRun(std::span<const double> sums, std::uint32_t high, double* out,
                std::ptrdiff_t stride) const {
    std::array<double, kBlock> values;
    std::copy(sums.begin(), sums.end(), values.begin());
    double factor = factor_;
    for (std::uint32_t n = high; n != 0; n /= base_) {
      const double term = static_cast<double>(n % base_) * factor;
      for (std::size_t i = 0; i < sums.size(); ++i) {
        values[i] += term;
      }
      factor /= base_;
    }
    for (std::size_t i = 0; i < sums.size(); ++i) {
      out[static_cast<std::ptrdiff_t>(i) * stride] = values[i];
    }
  }

  std::uint32_t base_;
  double factor_;  // weight of the first digit beyond the table
  std::vector<double> sums_;
};

}  // namespace

bool isPrime(int n) {
  if (n < 9) {
    return true;
  }
  if (n % 3 == 0) {
    return false;
  }
  for (int d = 5; static_cast<std::int64_t>(d) * d <= n; d += 2) {
    if (n % d == 0) {
      return false;
    }
  }
  return true;
}

void writeHaltonPoints(std::span<const int> bases, std::uint32_t& index, int count, double* out,
                       std::ptrdiff_t pointStride, std::ptrdiff_t coordStride) {
  constexpr std::uint32_t kFirstNegative = 0x80000000U;
  const std::size_t dimension = bases.size();

  // A table pays for itself when the call walks through it a few times.
  std::vector<DigitTable> tables;
  const std::size_t cells = std::min({kCoordinateCells, kTotalCells / dimension,
                                      static_cast<std::size_t>(std::max(count, 0)) / 4});
  if (cells > 1) {
    tables.reserve(dimension);
    for (std::size_t j = 0; j < dimension; ++j) {
      tables.emplace_back(static_cast<std::uint32_t>(bases[j]), cells);
    }
  }

  for (int done = 0; done < count;) {
    const bool negative = index >= kFirstNegative;
    const std::uint32_t untilTurn = negative ? 0U - index : kFirstNegative - index;
    const int length = static_cast<int>(std::min(
        {static_cast<std::uint32_t>(count - done), untilTurn, static_cast<std::uint32_t>(kBlock)}));
    double* const block = out + done * pointStride;
    for (std::size_t j = 0; j < dimension; ++j) {
      double* const coordinate = block + static_cast<std::ptrdiff_t>(j) * coordStride;
      if (!negative && !tables.empty()) {
        tables[j].write(index, length, coordinate, pointStride);
        continue;
      }
      const auto base = static_cast<std::uint32_t>(bases[j]);
      for (int i = 0; i < length; ++i) {
        const std::uint32_t n = index + static_cast<std::uint32_t>(i);
        coordinate[i * pointStride] =
            negative ? -radicalInverse(0U - n, base) : radicalInverse(n, base);
      }
    }
    index += static_cast<std::uint32_t>(length);
    done += length;
    poll(0);
  }
}

}  // namespace vexel::kernels::classic
