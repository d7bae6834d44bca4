// Randomisation of digital sequences: nested uniform scrambling and digital shifts.
//
// A coordinate is a row of digits x_1 x_2 ... in base b, the most significant first, held as the
// integer x_1 b^(m-1) + ... + x_m.  Nested uniform scrambling (A. B. Owen, Randomly permuted
// (t,m,s)-nets and (t,s)-sequences, 1995) replaces digit x_k by a random permutation of it that
// depends on x_1 .. x_(k-1).  Here the permutation of a node of that tree is x -> c + a x mod b
// with random c and a <> 0: for prime b pairs of different digits go to every pair of different
// digits with the same probability, as they do under uniform permutations, so that means and
// variances of estimates are those of Owen's scrambling (for b = 2 it is his, exactly).  Nothing is
// stored: the random numbers of a node are hashes of the path to it.  A path is the places and
// values of its digits other than 0; one hash serves the images of all zeros that follow, for they
// lie at different depths of the tree.
#pragma once

#include <bit>
#include <cstdint>

namespace vexel::kernels {

// The finaliser of SplitMix64 (Steele, Lea and Flood 2014, with Stafford's constants).
constexpr std::uint64_t mix64(std::uint64_t z) {
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
  return z ^ (z >> 31);
}

// The high half of a 64 by 64 bit product; *low takes the other.
inline std::uint64_t multiplyHigh(std::uint64_t a, std::uint64_t b, std::uint64_t* low) {
  const std::uint64_t a0 = a & 0xFFFFFFFFU;
  const std::uint64_t a1 = a >> 32;
  const std::uint64_t b0 = b & 0xFFFFFFFFU;
  const std::uint64_t b1 = b >> 32;
  const std::uint64_t middle = a1 * b0 + (a0 * b0 >> 32);
  const std::uint64_t cross = a0 * b1 + (middle & 0xFFFFFFFFU);
  *low = a * b;
  return a1 * b1 + (middle >> 32) + (cross >> 32);
}

constexpr std::uint64_t nextNode(std::uint64_t node, std::uint64_t place, std::uint64_t digit) {
  return mix64(node ^ (place << 32 | digit)) + 0x9E3779B97F4A7C15U;
}

// Base 2: x has `bits` digits.
inline std::uint64_t scrambleBits(std::uint64_t x, int bits, std::uint64_t key) {
  std::uint64_t node = key;
  const int unused = 64 - bits;
  std::uint64_t images = mix64(node) >> unused;
  for (std::uint64_t left = x; left != 0;) {
    const int place = 63 - std::countl_zero(left);
    const std::uint64_t below = (std::uint64_t{1} << place) - 1;
    images ^= std::uint64_t{1} << place;
    node = nextNode(node, static_cast<std::uint64_t>(place) + 1, 1);
    images = (images & ~below) | (mix64(node) >> unused & below);
    left &= below;
  }
  return images;
}

// Takes the digits of a number in base b, the most significant first, and gives those of its image.
class DigitScrambler {
 public:
  DigitScrambler(std::uint64_t base, std::uint64_t key)
      : base_(base), node_(key), zeros_(mix64(key)) {}

  std::uint64_t image(std::uint64_t digit) {
    ++place_;
    std::uint64_t result = multiplyHigh(zeros_, base_, &zeros_);
    if (digit != 0) {
      std::uint64_t rest = 0;
      const std::uint64_t slope = 1 + multiplyHigh(mix64(node_ + place_), base_ - 1, &rest);
      result = (result + slope * digit) % base_;
      node_ = nextNode(node_, place_, digit);
      zeros_ = mix64(node_);
    }
    return result;
  }

  // The images of all digits that follow when they are 0: a uniform number below scale, a power of
  // b.
  double imageOfZeros(std::uint64_t scale) const {
    std::uint64_t fraction = 0;
    const std::uint64_t whole = multiplyHigh(zeros_, scale, &fraction);
    return static_cast<double>(whole) + static_cast<double>(fraction >> 11) * 0x1p-53;
  }

 private:
  std::uint64_t base_;
  std::uint64_t node_;
  std::uint64_t zeros_;  // a uniform fraction: its digits are the images of the zeros to come
  std::uint64_t place_ = 0;
};

}  // namespace vexel::kernels
