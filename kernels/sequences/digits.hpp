// What the sequences in a prime base share: how many digits a coordinate has, and writing places.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace vexel::kernels {

// Coordinates are integers over b^m < 2^52, so that they and their quotient are exact or rounded
// once, and below 1.
inline constexpr int coordinateBits = 52;

// The largest m >= 1 with b^m <= 2^52, and that power.
struct DigitScale {
  int digits;
  std::uint64_t power;
};
constexpr DigitScale digitScale(std::uint64_t base) {
  DigitScale scale{1, base};
  while (scale.power <= (std::uint64_t{1} << coordinateBits) / base) {
    scale.power *= base;
    ++scale.digits;
  }
  return scale;
}

// numerator / power, at most the largest double below 1.
inline double belowOne(double numerator, double power) {
  return std::min(numerator / power, 1 - 0x1p-53);
}

// Where coordinate j of point i goes: out[i * point + j * coordinate].
struct PointLayout {
  double* out;
  std::ptrdiff_t point;
  std::ptrdiff_t coordinate;
};

// The first n primes.
inline std::vector<std::uint32_t> firstPrimes(std::size_t n) {
  std::vector<std::uint32_t> primes;
  primes.reserve(n);
  for (std::uint32_t candidate = 2; primes.size() < n; ++candidate) {
    bool prime = true;
    for (const std::uint32_t p : primes) {
      if (p * p > candidate) {
        break;
      }
      if (candidate % p == 0) {
        prime = false;
        break;
      }
    }
    if (prime) {
      primes.push_back(candidate);
    }
  }
  return primes;
}

}  // namespace vexel::kernels
