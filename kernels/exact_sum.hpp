// Exact sums: fixed-point numbers wide enough for every double (R. M. Neal, Fast exact summation
// using small and large superaccumulators, 2015).
//
// Cells of 64 bits hold digits of 32, so that 2^30 numbers can be added before carries are due.
// The result has one rounding and depends on nothing but the summands.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#include "kernels/double_double.hpp"

namespace vexel::kernels {

// value * 2^exponent, 1/2 <= |value| <= 1 or 0: for quotients of sums that no double can hold.
struct Scaled {
  DoubleDouble value;
  int exponent = 0;

  // The quotient, rounded.
  friend double operator/(const Scaled& a, const Scaled& b) {
    return std::ldexp((a.value / b.value).high, a.exponent - b.exponent);
  }
  // As two doubles, where it is in their range.
  DoubleDouble unscaled() const { return value.timesTwoTo(exponent); }
};

// A fixed-point number in cells that somebody else owns: digit i counts 2^(lowest + 32 i).
class FixedPoint {
 public:
  static constexpr std::int32_t mostPending = 1 << 30;

  FixedPoint(std::span<std::int64_t> cells, int lowest) : cells_(cells), lowest_(lowest) {}

  // Adds +-mantissa * 2^exponent.
  void add(std::uint64_t mantissa, int exponent, bool negative) {
    const auto place = static_cast<unsigned>(exponent - lowest_);
    const auto shifted = static_cast<unsigned __int128>(mantissa) << (place % 32);
    std::int64_t* const cell = cells_.data() + place / 32;
    const auto d0 = static_cast<std::int64_t>(shifted & kDigit);
    const auto d1 = static_cast<std::int64_t>((shifted >> 32) & kDigit);
    const auto d2 = static_cast<std::int64_t>(shifted >> 64);
    const std::int64_t sign = negative ? -1 : 0;  // (d ^ sign) - sign is +-d
    cell[0] += (d0 ^ sign) - sign;
    cell[1] += (d1 ^ sign) - sign;
    cell[2] += (d2 ^ sign) - sign;
  }
  // Adds a finite double.
  void add(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    const auto biased = static_cast<int>(bits >> 52) & 0x7FF;
    const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
    const std::uint64_t implied = std::uint64_t{biased != 0} << 52;
    add(fraction | implied, (biased != 0 ? biased : 1) - 1075, bits >> 63 != 0);
  }

  // Brings every digit into [0, 2^32); the last cell keeps the sign.
  void carry() {
    for (std::size_t i = 0; i + 1 < cells_.size(); ++i) {
      cells_[i + 1] += cells_[i] >> 32;
      cells_[i] &= kDigit;
    }
  }

  // The leading 128 bits of the carried number: (-1)^negative (top + rest) 2^exponent, 0 <= rest
  // < 1.
  struct Leading {
    unsigned __int128 top = 0;  // 0, or its bit 127 is set
    int exponent = 0;
    bool negative = false;
    bool more = false;  // rest > 0
  };
  Leading leading() const {
    // Of the many cells few are not 0; carries go at most two beyond them.
    std::size_t first = 0;
    std::size_t end = cells_.size();
    while (end - first >= 8 && noneOfEight(first)) {
      first += 8;
    }
    while (first < end && cells_[first] == 0) {
      ++first;
    }
    if (first == end) {
      return {};
    }
    while (end - first >= 8 && noneOfEight(end - 8)) {
      end -= 8;
    }
    while (cells_[end - 1] == 0) {
      --end;
    }
    const auto used = cells_.subspan(first, std::min(end + 2, cells_.size()) - first);
    std::array<std::int64_t, 80> few;
    std::vector<std::int64_t> many(used.size() > few.size() ? used.size() : 0);
    const std::span<std::int64_t> digits =
        many.empty() ? std::span(few).first(used.size()) : std::span(many);
    std::copy(used.begin(), used.end(), digits.begin());
    return FixedPoint(digits, lowest_ + 32 * static_cast<int>(first)).takeLeading();
  }

  // To nearest, ties to even; infinite beyond the doubles.
  static double rounded(const Leading& x) {
    if (x.top == 0) {
      return 0.0;
    }
    const int bits = std::min(53, x.exponent + 128 + 1074);  // fewer below the normal numbers
    if (bits < 0) {
      return x.negative ? -0.0 : 0.0;
    }
    const int drop = 128 - bits;
    unsigned __int128 kept = drop < 128 ? x.top >> drop : 0;
    const unsigned __int128 rest = drop < 128 ? x.top - (kept << drop) : x.top;
    const unsigned __int128 half = static_cast<unsigned __int128>(1) << (drop - 1);
    if (rest > half || (rest == half && (x.more || (kept & 1) != 0))) {
      ++kept;
    }
    const double size = std::ldexp(static_cast<double>(kept), x.exponent + drop);
    return x.negative ? -size : size;
  }
  static Scaled inTwo(const Leading& x) {
    const auto high = static_cast<double>(static_cast<std::uint64_t>(x.top >> 75));  // 53 bits
    const auto rest = x.top & ((static_cast<unsigned __int128>(1) << 75) - 1);
    const DoubleDouble value =
        DoubleDouble::ordered(std::ldexp(high, -53), std::ldexp(static_cast<double>(rest), -128));
    return {x.negative ? -value : value, x.exponent + 128};
  }

 private:
  static constexpr std::int64_t kDigit = 0xFFFFFFFF;

  bool noneOfEight(std::size_t from) const {
    std::int64_t any = 0;
    for (std::size_t i = 0; i < 8; ++i) {
      any |= cells_[from + i];
    }
    return any == 0;
  }

  // Of this number, which is changed.
  Leading takeLeading() {
    Leading result;
    carry();
    if (cells_.back() < 0) {
      result.negative = true;
      for (std::int64_t& d : cells_) {
        d = -d;
      }
      carry();
    }
    std::size_t last = cells_.size();
    while (last > 0 && cells_[last - 1] == 0) {
      --last;
    }
    if (last == 0) {
      return result;
    }
    // Five digits hold 128 bits behind any leading one.
    const auto digit = [&](std::size_t back) {
      return back <= last ? static_cast<unsigned __int128>(cells_[last - back]) : 0;
    };
    const int zeros = std::countl_zero(static_cast<std::uint32_t>(cells_[last - 1]));
    result.top = (digit(1) << 96 | digit(2) << 64 | digit(3) << 32 | digit(4)) << zeros;
    result.top |= (digit(5) << zeros) >> 32;
    result.exponent = lowest_ + 32 * (static_cast<int>(last) - 4) - zeros;
    result.more = (static_cast<std::uint32_t>(digit(5)) << zeros) != 0;
    for (std::size_t i = 0; i + 5 < last && !result.more; ++i) {
      result.more = cells_[i] != 0;
    }
    return result;
  }

  std::span<std::int64_t> cells_;
  int lowest_;
};

// The sum of doubles.
class ExactSum {
 public:
  void add(double x) {
    if (!std::isfinite(x)) [[unlikely]] {
      special_ += x;
      return;
    }
    if (++pending_ == FixedPoint::mostPending) {
      fixed().carry();
      pending_ = 0;
    }
    fixed().add(x);
  }
  void add(std::span<const double> all) {
    for (const double x : all) {
      add(x);
    }
  }

  // Whether something infinite or NaN was added; rounded() tells what then.
  bool finite() const { return special_ == 0.0; }
  double rounded() const {
    return finite() ? FixedPoint::rounded(constFixed().leading()) : special_;
  }
  // Of a finite sum.
  Scaled scaled() const { return FixedPoint::inTwo(constFixed().leading()); }
  DoubleDouble inTwo() const { return finite() ? scaled().unscaled() : DoubleDouble(special_); }

 private:
  static constexpr int kLowest = -1088;
  static constexpr std::size_t kCells = (1024 + 64 - kLowest) / 32 + 3;

  FixedPoint fixed() { return {cells_, kLowest}; }
  FixedPoint constFixed() const {
    return {{const_cast<std::int64_t*>(cells_.data()), cells_.size()}, kLowest};
  }

  std::array<std::int64_t, kCells> cells_{};
  std::int32_t pending_ = 0;
  double special_ = 0.0;  // the sum of what is not finite
};

}  // namespace vexel::kernels
