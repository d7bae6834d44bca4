// Halton's sequence: coordinate j of point n is the radical inverse of n in the j-th prime.
// J. H. Halton, On the efficiency of certain quasi-random sequences of points in evaluating
// multi-dimensional integrals, Numerische Mathematik 2 (1960).
//
// A radical inverse is an integer over b^m, divided once.  Runs of indices share their high digits,
// so the integers of all values of the low digits are tabulated and those of the high digits added
// to a whole run.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "kernels/sequences/digits.hpp"
#include "kernels/sequences/scramble.hpp"

namespace vexel::kernels {

class RadicalInverse {
 public:
  // A table of at most maxCells values of the low digits.
  RadicalInverse(std::uint32_t base, std::size_t maxCells) : base_(base), scale_(digitScale(base)) {
    std::uint64_t weight = scale_.power / base_;
    table_.push_back(0);
    tableDigits_ = 0;
    while (table_.size() <= maxCells / base_ && tableDigits_ < scale_.digits) {
      const std::size_t size = table_.size();
      for (std::uint32_t digit = 1; digit < base_; ++digit) {
        for (std::size_t i = 0; i < size; ++i) {
          table_.push_back(table_[i] + static_cast<double>(digit * weight));
        }
      }
      weight /= base_;
      ++tableDigits_;
    }
    highest_ = scale_.power / table_.size();
  }

  // Indices first, first + 1, ... into out[0], out[stride], ...
  void write(std::uint64_t first, std::size_t count, double* out, std::ptrdiff_t stride) const {
    const std::uint64_t cells = table_.size();
    std::uint64_t high = first / cells;
    std::size_t low = static_cast<std::size_t>(first % cells);
    const auto divisor = static_cast<double>(scale_.power);
    while (count > 0) {
      const std::size_t length = std::min(count, static_cast<std::size_t>(cells) - low);
      const double rest = reversedHigh(high);
      const double* const sums = table_.data() + low;
      if (high >= highest_) {  // digits beyond the last place
        for (std::size_t i = 0; i < length; ++i) {
          out[static_cast<std::ptrdiff_t>(i) * stride] = belowOne(sums[i] + rest, divisor);
        }
      } else if (stride == 1) {
        for (std::size_t i = 0; i < length; ++i) {
          out[i] = (sums[i] + rest) / divisor;
        }
      } else {
        for (std::size_t i = 0; i < length; ++i) {
          out[static_cast<std::ptrdiff_t>(i) * stride] = (sums[i] + rest) / divisor;
        }
      }
      out += static_cast<std::ptrdiff_t>(length) * stride;
      count -= length;
      low = 0;
      ++high;
    }
  }

  // The same point with the digits' images under nested uniform scrambling.
  double scrambled(std::uint64_t index, std::uint64_t key) const {
    DigitScrambler scrambler(base_, key);
    std::uint64_t numerator = 0;
    std::uint64_t rest = scale_.power;
    for (; index != 0 && rest > 1; index /= base_) {
      rest /= base_;
      numerator = numerator * base_ + scrambler.image(index % base_);
    }
    return belowOne(static_cast<double>(numerator * rest) + scrambler.imageOfZeros(rest),
                    static_cast<double>(scale_.power));
  }

  // The same point with fixed random digits, those of the fraction key / 2^64, added to its own.
  double shifted(std::uint64_t index, std::uint64_t key) const {
    std::uint64_t numerator = 0;
    for (int k = 0; k < scale_.digits; ++k, index /= base_) {
      numerator = numerator * base_ + (multiplyHigh(key, base_, &key) + index % base_) % base_;
    }
    return static_cast<double>(numerator) / static_cast<double>(scale_.power);
  }

 private:
  // What the digits beyond the table add, for the index high * table size.
  double reversedHigh(std::uint64_t high) const {
    std::uint64_t sum = 0;
    std::uint64_t weight = highest_;
    for (; high != 0 && weight > 1; high /= base_) {
      weight /= base_;
      sum += high % base_ * weight;
    }
    double fraction = 0;
    for (double place = 1; high != 0; high /= base_) {
      place /= static_cast<double>(base_);
      fraction += static_cast<double>(high % base_) * place;
    }
    return static_cast<double>(sum) + fraction;
  }

  std::uint64_t base_;
  DigitScale scale_;
  std::vector<double> table_;
  int tableDigits_;
  std::uint64_t
      highest_;  // from here on the high part of an index has digits beyond the last place
};

}  // namespace vexel::kernels
