// Faure's sequence in s dimensions: base b, the smallest prime not below s; coordinate j has the
// digits C^j a of the index's digits a, C being Pascal's matrix modulo b.
// H. Faure, Discrepance de suites associees a un systeme de numeration (en dimension s), Acta
// Arithmetica 41 (1982).
//
// The lowest digit of the index touches the first digit of a coordinate only, so b points in a row
// have a common rest and a first digit that goes around in a circle.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernels/sequences/digits.hpp"
#include "kernels/sequences/scramble.hpp"

namespace vexel::kernels {

class FaureMatrices {
 public:
  explicit FaureMatrices(std::size_t dimension)
      : dimension_(dimension), base_(smallestPrimeFrom(dimension)), scale_(digitScale(base_)) {
    // Digits of indices below 2^62.
    for (std::uint64_t left = std::uint64_t{1} << 62; left != 0; left /= base_) {
      ++indexDigits_;
    }
    fillMatrices();
    const std::uint64_t first = scale_.power / base_;
    for (std::uint64_t weight = first; weights_.size() < static_cast<std::size_t>(scale_.digits);
         weight /= base_) {
      weights_.push_back(weight);
    }
    circle_.resize(2 * base_);
    for (std::size_t i = 0; i < circle_.size(); ++i) {
      circle_[i] = static_cast<double>(i % base_ * first);
    }
  }

  std::uint64_t base() const { return base_; }

  // Points first, first + 1, ... of all coordinates.
  void write(std::uint64_t first, std::size_t count, const PointLayout& at) const;

  // The digits of coordinate j of a point, the most significant first.
  void digits(std::uint64_t index, std::size_t j, std::vector<std::uint32_t>& out) const {
    const std::size_t rows = static_cast<std::size_t>(scale_.digits);
    std::vector<std::uint64_t> sums(rows, 0);
    for (std::size_t k = 0; index != 0; ++k, index /= base_) {
      const std::uint64_t a = index % base_;
      for (std::size_t i = 0; i < rows && i <= k; ++i) {
        sums[i] += a * entry(j, i, k);
      }
    }
    out.resize(rows);
    for (std::size_t i = 0; i < rows; ++i) {
      out[i] = static_cast<std::uint32_t>(sums[i] % base_);
    }
  }

  // The scrambled coordinate from its digits.
  double scrambled(const std::vector<std::uint32_t>& digits, std::uint64_t key) const {
    DigitScrambler scrambler(base_, key);
    std::uint64_t numerator = 0;
    for (const std::uint32_t digit : digits) {
      numerator = numerator * base_ + scrambler.image(digit);
    }
    return belowOne(static_cast<double>(numerator) + scrambler.imageOfZeros(1),
                    static_cast<double>(scale_.power));
  }
  double shifted(const std::vector<std::uint32_t>& digits, std::uint64_t key) const {
    std::uint64_t numerator = 0;
    for (const std::uint32_t digit : digits) {
      numerator = numerator * base_ + (multiplyHigh(key, base_, &key) + digit) % base_;
    }
    return quotient(numerator);
  }

 private:
  void advance(std::uint64_t row, std::vector<std::uint32_t>& state,
               std::vector<std::uint64_t>& rest) const;

  static std::uint64_t smallestPrimeFrom(std::size_t dimension) {
    const auto isPrime = [](std::uint64_t n) {
      for (std::uint64_t d = 2; d * d <= n; ++d) {
        if (n % d == 0) {
          return false;
        }
      }
      return true;
    };
    std::uint64_t p = dimension < 2 ? 2 : dimension;
    while (!isPrime(p)) {
      ++p;
    }
    return p;
  }

  double quotient(std::uint64_t numerator) const {
    return static_cast<double>(numerator) / static_cast<double>(scale_.power);
  }

  std::uint32_t entry(std::size_t j, std::size_t row, std::size_t column) const {
    return matrices_[(j * indexDigits_ + column) * static_cast<std::size_t>(scale_.digits) + row];
  }

  // Column k of C^j holds C(k, i) j^(k - i) in row i: from column k - 1 by Pascal's rule.
  void fillMatrices() {
    const auto rows = static_cast<std::size_t>(scale_.digits);
    matrices_.assign(dimension_ * indexDigits_ * rows, 0);
    for (std::size_t j = 0; j < dimension_; ++j) {
      std::uint32_t* const matrix = &matrices_[j * indexDigits_ * rows];
      matrix[0] = 1;
      for (std::size_t k = 1; k < indexDigits_; ++k) {
        const std::uint32_t* const before = matrix + (k - 1) * rows;
        std::uint32_t* const column = matrix + k * rows;
        for (std::size_t i = 0; i < rows; ++i) {
          const std::uint64_t left = i > 0 ? before[i - 1] : 0;
          column[i] = static_cast<std::uint32_t>((left + j % base_ * before[i]) % base_);
        }
      }
    }
  }

  std::size_t dimension_;
  std::uint64_t base_;
  DigitScale scale_;
  std::size_t indexDigits_ = 0;
  std::vector<std::uint32_t> matrices_;
  std::vector<std::uint64_t> weights_;  // of the digits of a coordinate
  std::vector<double> circle_;          // first digits' contributions, twice around
};

// Walks through the rows of b points.  From one row to the next the digits of the index that change
// all change by +1 modulo b (a digit b - 1 goes to 0), so that each adds its column to the digits
// of every coordinate.
inline void FaureMatrices::write(std::uint64_t first, std::size_t count,
                                 const PointLayout& at) const {
  const auto rows = static_cast<std::size_t>(scale_.digits);
  const auto divisor = static_cast<double>(scale_.power);
  std::vector<std::uint32_t> state(dimension_ * rows);
  std::vector<std::uint32_t> digitsOfOne;
  std::uint64_t low = first % base_;
  std::uint64_t row = first / base_;
  for (std::size_t j = 0; j < dimension_; ++j) {
    digits(row * base_, j, digitsOfOne);
    std::copy(digitsOfOne.begin(), digitsOfOne.end(), &state[j * rows]);
  }
  std::vector<std::uint64_t> rest(dimension_);  // of the digits after the first
  for (std::size_t j = 0; j < dimension_; ++j) {
    for (std::size_t i = 1; i < rows; ++i) {
      rest[j] = rest[j] * base_ + state[j * rows + i];
    }
  }
  double* out = at.out;
  for (;;) {
    const std::size_t length = std::min(count, static_cast<std::size_t>(base_ - low));
    for (std::size_t j = 0; j < dimension_; ++j) {
      const double* const circle = &circle_[state[j * rows] + low];
      const auto other = static_cast<double>(rest[j]);
      double* const to = out + static_cast<std::ptrdiff_t>(j) * at.coordinate;
      for (std::size_t i = 0; i < length; ++i) {
        to[static_cast<std::ptrdiff_t>(i) * at.point] = (circle[i] + other) / divisor;
      }
    }
    count -= length;
    if (count == 0) {
      return;
    }
    out += static_cast<std::ptrdiff_t>(length) * at.point;
    low = 0;
    advance(row++, state, rest);
  }
}

// The digits of the coordinates from row to row + 1.
inline void FaureMatrices::advance(std::uint64_t row, std::vector<std::uint32_t>& state,
                                   std::vector<std::uint64_t>& rest) const {
  const auto rows = static_cast<std::size_t>(scale_.digits);
  const auto base = static_cast<std::uint32_t>(base_);
  for (std::size_t k = 1;; ++k, row /= base_) {
    const std::size_t last = std::min(k, rows - 1);
    for (std::size_t j = 0; j < dimension_; ++j) {
      const std::uint32_t* const column = &matrices_[(j * indexDigits_ + k) * rows];
      std::uint32_t* const digit = &state[j * rows];
      const std::uint32_t sum = digit[0] + column[0];
      digit[0] = sum >= base ? sum - base : sum;
      for (std::size_t i = 1; i <= last; ++i) {
        const std::uint32_t moved = digit[i] + column[i];
        const std::uint32_t next = moved >= base ? moved - base : moved;
        rest[j] += (std::uint64_t{next} - digit[i]) * weights_[i];
        digit[i] = next;
      }
    }
    if (row % base_ != base_ - 1) {
      return;
    }
  }
}

}  // namespace vexel::kernels
