// Exact sums of the powers 1 to 4 of numbers of like size, in integers of many words.
//
// A number is a multiple of 2^unit below 2^(unit + 63), so that its powers are whole multiples of
// powers of the unit.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace vexel::kernels {

template <int order>
class PowerSums {
  static_assert(order >= 1 && order <= 4);

 public:
  // The unit for finite numbers up to this size: those below 2^-10 of it may be too fine.
  static int unitFor(double largest) {
    return exponent(std::bit_cast<std::uint64_t>(largest)) - static_cast<int>(span);
  }

  // At most 2^32 numbers may be added.
  explicit PowerSums(int unit) : unit_(unit) {}

  // Adds a finite number; false, with nothing added, where it is too small or too large.
  bool add(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    const auto shift = static_cast<unsigned>(exponent(bits) - unit_);
    if (shift > span) [[unlikely]] {
      return false;
    }
    const std::uint64_t leading = std::uint64_t{(bits << 1 >> 53) != 0} << 52;
    const std::uint64_t size = ((bits & ((std::uint64_t{1} << 52) - 1)) | leading) << shift;
    const std::uint64_t sign = 0 - (bits >> 63);
    negatives_ -= sign;
    addSigned(first_[0], size, sign);
    if constexpr (order >= 2) {
      const Wide square = static_cast<Wide>(size) * size;
      const std::uint64_t low = word(square, 0);
      const std::uint64_t high = word(square, 1);
      second_[0].add(low);
      second_[1].add(high);
      if constexpr (order >= 3) {
        const Wide part = static_cast<Wide>(low) * size;
        const Wide rest = static_cast<Wide>(high) * size + word(part, 1);
        addSigned(third_[0], word(part, 0), sign);
        addSigned(third_[1], word(rest, 0), sign);
        addSigned(third_[2], word(rest, 1), sign);
      }
      if constexpr (order >= 4) {
        const Wide part = static_cast<Wide>(low) * low;
        const Wide middle = 2 * (static_cast<Wide>(low) * high) + word(part, 1);  // high < 2^62
        const Wide rest = static_cast<Wide>(high) * high + word(middle, 1);
        fourth_[0].add(word(part, 0));
        fourth_[1].add(word(middle, 0));
        fourth_[2].add(word(rest, 0));
        fourth_[3].add(word(rest, 1));
      }
    }
    return true;
  }

  // Calls use(k, word, exponent, negative) for summands +-word 2^exponent that make the sum of the
  // k-th powers.
  template <typename Use>
  void take(Use use) const {
    takeWords(1, first_, negatives_, use);
    takeWords(2, second_, 0, use);
    takeWords(3, third_, negatives_, use);
    takeWords(4, fourth_, 0, use);
  }

 private:
  using Wide = unsigned __int128;
  static constexpr unsigned span = 10;

  static std::uint64_t word(Wide x, int i) { return static_cast<std::uint64_t>(x >> (64 * i)); }
  static int exponent(std::uint64_t bits) {
    const auto biased = static_cast<int>(bits >> 52) & 0x7FF;
    return (biased != 0 ? biased : 1) - 1075;
  }
  // A sum of words; of two halves by themselves, which compilers keep better than a wide number.
  struct Sum {
    std::uint64_t low = 0;
    std::uint64_t high = 0;

    void add(std::uint64_t x, std::uint64_t xHigh = 0) {
      low += x;
      high += xHigh + static_cast<std::uint64_t>(low < x);
    }
    Wide value() const { return static_cast<Wide>(high) << 64 | low; }
  };
  // Adds the word or, for a sign of ones, its negative less one.
  static void addSigned(Sum& sum, std::uint64_t x, std::uint64_t sign) { sum.add(x ^ sign, sign); }
  template <std::size_t n, typename Use>
  void takeWords(int k, const Sum (&sums)[n], std::uint64_t missing, Use& use) const {
    for (int i = 0; k <= order && i < k; ++i) {
      const Wide sum = sums[i].value() + missing;
      const bool negative = (sum >> 127) != 0 && k % 2 != 0;
      const Wide size = negative ? -sum : sum;
      use(k, word(size, 0), k * unit_ + 64 * i, negative);
      use(k, word(size, 1), k * unit_ + 64 * (i + 1), negative);
    }
  }

  int unit_;
  std::uint64_t negatives_ = 0;
  // Word i of the powers, each added up in two.
  Sum first_[1] = {};
  Sum second_[2] = {};
  Sum third_[3] = {};
  Sum fourth_[4] = {};
};

}  // namespace vexel::kernels
