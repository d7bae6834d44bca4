// Halton stream: coordinate j of point i is the radical inverse of i in the j-th prime base.
// J. H. Halton, On the efficiency of certain quasi-random sequences of points in evaluating
// multi-dimensional integrals, Numerische Mathematik 2 (1960).
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "lds/VexelQRStream.hpp"

class HaltonQRStream : public VexelQRStream {
 public:
  static constexpr int kTabledPrimes = 190;

  // Primes below 2^31, and so the number of bases that an int can hold.
  static constexpr int kMaxDimension = 105097565;

  // 1 <= dimension <= kMaxDimension.  Beyond kTabledPrimes the bases are searched for, which takes
  // seconds from a million on; the host may interrupt that.
  HaltonQRStream(VKernelVector kv, int dimension);

  // The origin (index 0) is left out: the first point has index 1.
  int reset(VKernelVector kv) override;

  // The index wraps around in 32 bits; a negative index gives the negated point of its magnitude.
  int next(VKernelVector kv, double* out, int pointStride, int coordStride, int count) override;
  int skip(VKernelVector kv, V_INT k) override;
  const char* getType(VKernelVector kv) const override;

  // The first n primes, n > kTabledPrimes, into out.
  static void generate_primes(VKernelVector kv, int* out, int n);

  // Primality of n = 2 or n odd, by trial division.  Even numbers are not tested for.
  static int isprime(int n);

  static const std::array<int, kTabledPrimes> primes_table;

 private:
  std::uint32_t index_ = 1;
  const int* primes_ = nullptr;
  std::vector<int> ownedPrimes_;  // filled when the table is too short
};
