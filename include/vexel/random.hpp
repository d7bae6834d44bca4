// Random numbers: a generator of eight interleaved lanes, urns, choices and permutations.
//
//   vexel::Random rng(42);                           the same draws everywhere and always
//   double u = rng.uniform();                        one value
//   rng.normal(out);                                 or a whole array: the same values, faster
//   vexel::Random other(42, 1);                      a block that never meets the first
//   std::vector<double> s = vexel::choice(x, 10, rng, {.replace = false});
//
// Each lane is xoshiro256++ (Blackman and Vigna 2021, Scrambled linear pseudorandom number
// generators); draw i is the next output of lane i mod 8.  What a seed gives stays the same within
// a major version.  A Random is used by one thread at a time.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <utility>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>

namespace vexel {

// Everything that decides the draws to come.  `lanes[l]` are the four words of lane l after the
// last whole round of eight draws, of which the next one has already given `position` (0 to 7).
struct RandomState {
  std::uint64_t seed = 0;
  std::uint64_t block = 0;
  std::uint32_t position = 0;
  std::array<std::array<std::uint64_t, 4>, 8> lanes{};

  friend bool operator==(const RandomState&, const RandomState&) = default;
};

struct ChoiceOptions {
  Data weights{};       // probabilities are proportional to them; equal if left out
  bool replace = true;  // false: no element twice
};

class VEXEL_API Random {
 public:
  Random();  // a seed from the operating system; seed() tells it
  // Block b starts 2^192 b draws of each lane further on, so blocks do not overlap.
  explicit Random(std::uint64_t seed, std::uint64_t block = 0);
  // std::invalid_argument for a position above 7 or a lane of four zeros.
  explicit Random(const RandomState& state);

  std::uint64_t seed() const { return seed_; }
  std::uint64_t block() const { return block_; }
  RandomState state() const;
  void jump();  // to the same place of the next block

  // 280 bytes, version first; from_bytes throws std::invalid_argument for anything else.
  std::vector<std::byte> to_bytes() const;
  static Random from_bytes(std::span<const std::byte> bytes);

  // Two generators are equal when all their draws to come are.
  friend bool operator==(const Random& a, const Random& b) {
    return a.state().lanes == b.state().lanes && a.state().position == b.state().position;
  }

  // 64 random bits; with the next three names also a standard uniform random bit generator.
  std::uint64_t bits() {
    if (next_ == bufferSize) {
      refill();
    }
    return buffer_[next_++];
  }
  using result_type = std::uint64_t;
  std::uint64_t operator()() { return bits(); }
  static constexpr std::uint64_t min() { return 0; }
  static constexpr std::uint64_t max() { return std::numeric_limits<std::uint64_t>::max(); }
  void bits(std::span<std::uint64_t> out);

  // Uniform on (0, 1): the top 52 bits of a draw and a half, times 2^-52.
  double uniform() {
    constexpr std::uint64_t one = 0x3FF0000000000000U;
    return std::bit_cast<double>(bits() >> 12 | one) - (1.0 - 0x1p-53);
  }
  void uniform(std::span<double> out);
  std::vector<double> uniform(std::size_t n);

  // Integers low <= k < high, each equally likely.  std::invalid_argument unless low < high.
  std::int64_t integers(std::int64_t low, std::int64_t high);
  void integers(std::int64_t low, std::int64_t high, std::span<std::int64_t> out);
  std::vector<std::int64_t> integers(std::int64_t low, std::int64_t high, std::size_t n);
  // One of 0 .. size-1; size is at least 1 and not checked.
  std::uint64_t below(std::uint64_t size) {
    auto product = static_cast<Wide>(bits()) * size;
    if (static_cast<std::uint64_t>(product) < size) [[unlikely]] {
      const std::uint64_t surplus = (0 - size) % size;
      while (static_cast<std::uint64_t>(product) < surplus) {
        product = static_cast<Wide>(bits()) * size;
      }
    }
    return static_cast<std::uint64_t>(product >> 64);
  }

  // Standard normal and standard exponential.
  double normal();
  void normal(std::span<double> out);
  std::vector<double> normal(std::size_t n);
  double exponential();
  void exponential(std::span<double> out);
  std::vector<double> exponential(std::size_t n);

  // choice(), permutation() and shuffle() below, with this generator.
  std::vector<double> choice(Data x, std::size_t n, const ChoiceOptions& options = {});
  std::vector<std::int64_t> choice(std::size_t size, std::size_t n,
                                   const ChoiceOptions& options = {});
  std::vector<std::int64_t> permutation(std::size_t n);
  template <typename Elements>
  void shuffle(Elements&& x);

 private:
  __extension__ using Wide = unsigned __int128;
  static constexpr std::uint32_t bufferSize = 128;

  void refill();
  template <typename Accept, typename One>
  void ziggurat(std::span<double> out, Accept accept, One one);

  std::uint64_t lanes_[4][8];   // word w of lane l, after the buffered draws
  std::uint64_t before_[4][8];  // the same before them
  std::uint64_t buffer_[bufferSize];
  std::uint32_t next_ = bufferSize;  // buffered draws already given
  std::uint64_t seed_;
  std::uint64_t block_;
};

// Indices 0 .. size-1 with probabilities proportional to weights, by the alias method: built once
// in O(size), one draw a sample (two from 65537 cells on).
class VEXEL_API Urn {
 public:
  // std::invalid_argument unless the weights are finite, not negative and not all zero.
  explicit Urn(Data weights);

  std::size_t size() const { return cells_.size(); }
  std::int64_t sample(Random& rng) const;
  void sample(std::span<std::int64_t> out, Random& rng) const;
  std::vector<std::int64_t> sample(std::size_t n, Random& rng) const;

 private:
  struct Cell {
    std::uint64_t threshold;  // the cell's own index below it, else the alias
    std::uint64_t alias;
  };
  std::vector<Cell> cells_;
};

// n indices out of 0 .. size-1, in the order drawn.  Without replacement each is drawn with
// probabilities proportional to the weights of those that are left.  std::invalid_argument when
// there are fewer (of positive weight) than n to draw without replacement, or none.
VEXEL_API std::vector<std::int64_t> choice(std::size_t size, std::size_t n, Random& rng,
                                           const ChoiceOptions& options = {});
// n elements of x.
VEXEL_API std::vector<double> choice(Data x, std::size_t n, Random& rng,
                                     const ChoiceOptions& options = {});

// 0 .. n-1 in random order, and x in random order.  Fisher and Yates: from the last place down,
// each swapped with one of the places up to it.
VEXEL_API std::vector<std::int64_t> permutation(std::size_t n, Random& rng);
VEXEL_API void shuffle(std::span<double> x, Random& rng);
VEXEL_API void shuffle(std::span<float> x, Random& rng);
VEXEL_API void shuffle(std::span<std::int32_t> x, Random& rng);
VEXEL_API void shuffle(std::span<std::int64_t> x, Random& rng);
template <typename T>
void shuffle(std::span<T> x, Random& rng) {
  for (std::size_t i = x.size(); i > 1; --i) {
    using std::swap;
    swap(x[i - 1], x[rng.below(i)]);
  }
}
template <typename T>
void shuffle(std::vector<T>& x, Random& rng) {
  shuffle(std::span<T>(x), rng);
}

inline std::vector<double> Random::choice(Data x, std::size_t n, const ChoiceOptions& options) {
  return vexel::choice(x, n, *this, options);
}
inline std::vector<std::int64_t> Random::choice(std::size_t size, std::size_t n,
                                                const ChoiceOptions& options) {
  return vexel::choice(size, n, *this, options);
}
inline std::vector<std::int64_t> Random::permutation(std::size_t n) {
  return vexel::permutation(n, *this);
}
template <typename Elements>
void Random::shuffle(Elements&& x) {
  vexel::shuffle(x, *this);
}

}  // namespace vexel
