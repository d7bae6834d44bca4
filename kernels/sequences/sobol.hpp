// Sobol's sequence in Gray-code order.
// I. M. Sobol, On the distribution of points in a cube and the approximate evaluation of integrals,
// USSR Computational Mathematics and Mathematical Physics 7 (1967); I. A. Antonov and V. M. Saleev,
// An economic method of computing LP-tau sequences, same journal 19 (1979).
//
// Coordinates are integers over 2^52; direction numbers are cut to those bits, which exclusive or
// allows.  Consecutive points differ by one direction number, whose place is the number of trailing
// zeros of the new index.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "kernels/sequences/digits.hpp"
#include "kernels/vector/points.hpp"

namespace vexel::kernels {

class SobolNumbers {
 public:
  SobolNumbers(std::size_t dimension, int bits)
      : dimension_(dimension), bits_(bits), v_(static_cast<std::size_t>(bits) * dimension) {}

  // Dimension j from the inner coefficients of its primitive polynomial of degree s, a number of
  // s - 1 bits with a_1 the highest, and its first s direction integers; s = 0 is van der Corput's
  // sequence.  m_k = 2 a_1 m_(k-1) ^ ... ^ 2^(s-1) a_(s-1) m_(k-s+1) ^ 2^s m_(k-s) ^ m_(k-s).
  void setDimension(std::size_t j, int degree, std::uint32_t coefficients,
                    std::span<const std::uint64_t> initial) {
    std::vector<std::uint64_t> m(static_cast<std::size_t>(bits_), 1);
    const auto s = static_cast<std::size_t>(degree);
    std::copy_n(initial.begin(), std::min(s, m.size()), m.begin());
    for (std::size_t k = s; s > 0 && k < m.size(); ++k) {
      m[k] = m[k - s] << s ^ m[k - s];
      for (std::size_t t = 1; t < s; ++t) {
        if ((coefficients >> (s - 1 - t) & 1U) != 0) {
          m[k] ^= m[k - t] << t;
        }
      }
    }
    for (std::size_t k = 0; k < m.size(); ++k) {
      const int shift = coordinateBits - 1 - static_cast<int>(k);
      number(k, j) = shift >= 0 ? m[k] << shift : m[k] >> -shift;
    }
  }

  int bits() const { return bits_; }

  // The coordinate as an integer over 2^52.
  std::uint64_t numerator(std::uint64_t index, std::size_t j) const {
    std::uint64_t x = 0;
    for (std::uint64_t gray = index ^ (index >> 1); gray != 0; gray &= gray - 1) {
      x ^= number(static_cast<std::size_t>(std::countr_zero(gray)), j);
    }
    return x;
  }

  // What takes coordinate j from point index - 1 to point index.
  std::uint64_t change(std::uint64_t index, std::size_t j) const {
    const int k = std::countr_zero(index);
    return k < bits_ ? number(static_cast<std::size_t>(k), j) : 0;
  }

  static double toUnit(std::uint64_t x) {
    return (std::bit_cast<double>(x | 0x4330000000000000U) - 0x1p52) * 0x1p-52;
  }

  void write(std::uint64_t first, std::size_t count, const PointLayout& at) const {
    if (at.coordinate == 1 && at.point == static_cast<std::ptrdiff_t>(dimension_) &&
        count >= manyPoints) {
      writeRows(first, count, at.out);
    } else {
      for (std::size_t j = 0; j < dimension_; ++j) {
        writeCoordinate(first, count, j, at.out + static_cast<std::ptrdiff_t>(j) * at.coordinate,
                        at.point);
      }
    }
  }

 private:
  static constexpr std::size_t manyPoints = 32;
  static constexpr std::size_t group = 16;      // points of a coordinate that are made together
  static constexpr std::size_t levels = 10;     // changes between groups that are laid out
  static constexpr std::size_t tileSize = 256;  // numbers of a tile of whole points, about

  std::uint64_t& number(std::size_t k, std::size_t j) { return v_[k * dimension_ + j]; }
  std::uint64_t number(std::size_t k, std::size_t j) const { return v_[k * dimension_ + j]; }

  void writeRows(std::uint64_t first, std::size_t count, double* out) const;
  void writeCoordinate(std::uint64_t first, std::size_t count, std::size_t j, double* out,
                       std::ptrdiff_t stride) const;

  std::size_t dimension_;
  int bits_;
  std::vector<std::uint64_t> v_;  // number k of all dimensions, then number k + 1
};

// Whole points one after the other.  A tile holds 2^t points from a multiple of 2^t; from a tile to
// the next every point of it changes by the same numbers.
inline void SobolNumbers::writeRows(std::uint64_t first, std::size_t count, double* out) const {
  const std::size_t d = dimension_;
  const std::size_t points = std::bit_floor(std::max<std::size_t>(1, tileSize / d));
  const std::size_t before =
      std::min<std::size_t>(count, static_cast<std::size_t>((points - first % points) % points));
  if (before > 0) {
    for (std::size_t j = 0; j < d; ++j) {
      writeCoordinate(first, before, j, out + j, static_cast<std::ptrdiff_t>(d));
    }
    first += before;
    count -= before;
    out += before * d;
  }
  const std::size_t size = points * d;
  std::vector<std::uint64_t> tile(size);
  for (std::size_t j = 0; j < d; ++j) {
    tile[j] = numerator(first, j);
  }
  for (std::size_t i = 1; i < points; ++i) {
    for (std::size_t j = 0; j < d; ++j) {
      tile[i * d + j] = tile[(i - 1) * d + j] ^ change(first + i, j);
    }
  }
  // The change into tile number n, by the trailing zeros of n; the last level is any higher one.
  std::vector<std::uint64_t> changes((levels + 1) * size);
  const auto layOut = [&](std::size_t level, std::uint64_t at) {
    for (std::size_t j = 0; j < d; ++j) {
      const std::uint64_t moved = numerator(at, j) ^ numerator(at - points, j);
      for (std::size_t i = 0; i < points; ++i) {
        changes[level * size + i * d + j] = moved;
      }
    }
  };
  for (std::size_t level = 0; level < levels; ++level) {
    if ((points << level) < (std::uint64_t{1} << bits_)) {
      layOut(level, static_cast<std::uint64_t>(points) << level);
    }
  }
  while (count >= points) {
    first += points;
    std::size_t level = static_cast<std::size_t>(std::countr_zero(first / points));
    if (level >= levels) {
      level = levels;
      if (first >> bits_ == 0) {
        layOut(level, first);
      }
    }
    advanceTile(tile.data(), &changes[level * size], size, out);
    count -= points;
    out += size;
  }
  for (std::size_t i = 0; i < count * d; ++i) {
    out[i] = toUnit(tile[i]);
  }
}

// One coordinate.  A group from a multiple of its size differs from its first point by the same
// numbers as the group from 0.
inline void SobolNumbers::writeCoordinate(std::uint64_t first, std::size_t count, std::size_t j,
                                          double* out, std::ptrdiff_t stride) const {
  std::uint64_t pattern[group] = {};
  for (std::uint64_t i = 1; i < group; ++i) {
    pattern[i] = pattern[i - 1] ^ change(i, j);
  }
  std::uint64_t x = numerator(first, j);
  std::uint64_t index = first;
  while (count > 0) {
    if (index % group == 0 && count >= group) {
      if (stride == 1) {
        for (std::size_t g = 0; g < group; ++g) {
          out[g] = toUnit(x ^ pattern[g]);
        }
      } else {
        for (std::size_t g = 0; g < group; ++g) {
          out[static_cast<std::ptrdiff_t>(g) * stride] = toUnit(x ^ pattern[g]);
        }
      }
      out += static_cast<std::ptrdiff_t>(group) * stride;
      count -= group;
      index += group;
      x ^= pattern[group - 1] ^ change(index, j);
    } else {
      *out = toUnit(x);
      out += stride;
      --count;
      x ^= change(++index, j);
    }
  }
}

}  // namespace vexel::kernels
