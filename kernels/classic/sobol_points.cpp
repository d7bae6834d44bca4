// Sobol points in runs: consecutive Gray codes differ in one bit, so that one exclusive or takes a
// point to the next (Antonov and Saleev 1979), for all coordinates of a point at once or, where
// the points of a coordinate are contiguous, for aligned groups of points at once.

#include "kernels/classic/sobol_points.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <vector>

namespace vexel::kernels::classic {
namespace {

using Numbers = SobolNumbers;

// Bits of the Gray code of a 32-bit index that can be set: the index is signed and shifted
// arithmetically, so its sign cancels.
constexpr int kGrayBits = 31;

// From here on it pays to go through the table of direction numbers once before the points.
constexpr int kManyPoints = 16;

int usedBits(const Numbers& n) { return std::min(n.precision, kGrayBits); }

// x / 2^precision, unit being 2^-precision.  Exact but for the rounding of x to a double, which the
// small kind, below 2^52, does not need: its bits are those of 2^52 + x.
template <bool kSmall>
double toUnit(std::uint64_t x, double unit) {
  if constexpr (kSmall) {
    return (std::bit_cast<double>(x | 0x4330000000000000U) - 0x1p52) * unit;
  }
  return static_cast<double>(static_cast<std::int64_t>(x)) * unit;
}

bool allSmall(const Numbers& n) {
  std::uint64_t any = 0;
  for (int j = 0; j < n.dimension; ++j) {
    for (int k = 0; k < usedBits(n); ++k) {
      any |= n.v[j * n.rowLength + k];
    }
  }
  return any >> 52 == 0;
}

// The numerator of coordinate j, from the definition.
std::uint64_t numerator(const Numbers& n, int j, std::uint32_t index) {
  const std::uint32_t gray = index ^ (index >> 1);
  std::uint64_t x = 0;
  for (int k = 0; k < usedBits(n); ++k) {
    if ((gray >> k & 1U) != 0) {
      x ^= n.v[j * n.rowLength + k];
    }
  }
  return x;
}

// What takes coordinate j from index - 1 to index.
std::uint64_t change(const Numbers& n, int j, std::uint32_t index) {
  const int k = std::countr_zero(index);
  return k < usedBits(n) ? n.v[j * n.rowLength + k] : 0;
}

// Points whose coordinates are contiguous: all coordinates go from point to point together.  The
// numbers of the low bits, which nearly all steps need, are laid out by bit first.
template <bool kSmall>
void writePoints(const Numbers& n, std::uint32_t index, int count, double* out,
                 std::ptrdiff_t pointStride) {
  constexpr int kLevels = 8;
  const auto d = static_cast<std::size_t>(n.dimension);
  const double unit = std::ldexp(1.0, -n.precision);
  std::vector<std::uint64_t> x(d);
  std::vector<std::uint64_t> changes((kLevels + 1) * d);  // the last level is any higher one
  const auto fill = [&](std::size_t level, std::uint32_t at) {
    for (std::size_t j = 0; j < d; ++j) {
      changes[level * d + j] = change(n, static_cast<int>(j), at);
    }
  };
  for (std::size_t j = 0; j < d; ++j) {
    x[j] = numerator(n, static_cast<int>(j), index);
  }
  for (std::size_t level = 0; level < kLevels; ++level) {
    fill(level, 1U << level);
  }
  for (int i = 0; i < count; ++i) {
    const int k = std::min(std::countr_zero(++index), kLevels);
    if (k == kLevels) {
      fill(kLevels, index);
    }
    const std::uint64_t* const step = &changes[static_cast<std::size_t>(k) * d];
    double* const point = out + i * pointStride;
    for (std::size_t j = 0; j < d; ++j) {
      point[j] = toUnit<kSmall>(x[j], unit);
      x[j] ^= step[j];
    }
  }
}

// Points of one coordinate.  A group that starts at a multiple of its size differs from its first
// point by the same numbers as the group at 0.
template <bool kSmall>
void writeCoordinate(const Numbers& n, int j, std::uint32_t index, int count, double* out,
                     std::ptrdiff_t stride) {
  constexpr int kGroup = 16;
  const double unit = std::ldexp(1.0, -n.precision);
  std::array<std::uint64_t, kGroup> group{};
  for (std::uint32_t i = 1; i < kGroup; ++i) {
    group[i] = group[i - 1] ^ change(n, j, i);
  }
  std::uint64_t x = numerator(n, j, index);
  for (int i = 0; i < count;) {
    if (index % kGroup == 0 && count - i >= kGroup) {
      double* const to = out + i * stride;
      if (stride == 1) {
        for (int g = 0; g < kGroup; ++g) {
          to[g] = toUnit<kSmall>(x ^ group[static_cast<std::size_t>(g)], unit);
        }
      } else {
        for (int g = 0; g < kGroup; ++g) {
          to[g * stride] = toUnit<kSmall>(x ^ group[static_cast<std::size_t>(g)], unit);
        }
      }
      i += kGroup;
      index += kGroup;
      x ^= group.back() ^ change(n, j, index);
    } else {
      out[i * stride] = toUnit<kSmall>(x, unit);
      ++i;
      x ^= change(n, j, ++index);
    }
  }
}

template <bool kSmall>
void write(const Numbers& n, std::uint32_t index, int count, double* out,
           std::ptrdiff_t pointStride, std::ptrdiff_t coordStride) {
  if (coordStride == 1 && count >= kManyPoints) {
    writePoints<kSmall>(n, index, count, out, pointStride);
    return;
  }
  for (int j = 0; j < n.dimension; ++j) {
    writeCoordinate<kSmall>(n, j, index, count, out + j * coordStride, pointStride);
  }
}

}  // namespace

void writeSobolPoints(const Numbers& numbers, std::uint32_t index, int count, double* out,
                      std::ptrdiff_t pointStride, std::ptrdiff_t coordStride) {
  const auto writer = count >= kManyPoints && allSmall(numbers) ? write<true> : write<false>;
  writer(numbers, index, count, out, pointStride, coordStride);
}

// m_k = 2 a_1 m_(k-1) ^ 4 a_2 m_(k-2) ^ ... ^ 2^(s-1) a_(s-1) m_(k-s+1) ^ 2^s m_(k-s) ^ m_(k-s),
// where a_1 is the highest of the s - 1 bits of the coefficient code.
void continueDirections(std::uint64_t* m, SobolPolynomial polynomial, int precision) {
  const int s = polynomial.degree;
  for (int k = s; k < precision; ++k) {
    std::uint64_t sum = m[k - s] << s ^ m[k - s];
    std::int32_t code = polynomial.code;
    for (int t = 1; t < s; ++t, code >>= 1) {
      if ((code & 1) != 0) {
        sum ^= m[k - s + t] << (s - t);
      }
    }
    m[k] = sum;
  }
}

void toDirectionNumbers(std::uint64_t* m, int precision) {
  for (int k = 0; k < precision; ++k) {
    m[k] <<= precision - 1 - k;
  }
}

void leadingBits(const std::int64_t* m, SobolPolynomial polynomial, int n, std::int32_t* bits) {
  const int s = polynomial.degree;
  for (int k = 0; k < s; ++k) {
    bits[k] = k < 63 && m[k] >= std::int64_t{1} << k ? 1 : 0;
  }
  for (int k = s; k < n; ++k) {
    std::int32_t bit = bits[k - s];
    std::int32_t code = polynomial.code;
    for (int t = 1; t < s; ++t, code >>= 1) {
      bit ^= (code & 1) & bits[k - s + t];
    }
    bits[k] = bit;
  }
}

}  // namespace vexel::kernels::classic
