// Halton stream: its bases and its index.

#include "lds/HaltonQRStream.hpp"

#include <algorithm>
#include <cassert>
#include <cstddef>

#include "kernel/interrupt.hpp"
#include "kernels/classic/halton_points.hpp"

namespace {

constexpr std::array<int, HaltonQRStream::kTabledPrimes> firstPrimes() {
  std::array<int, HaltonQRStream::kTabledPrimes> primes{};
  std::size_t found = 0;
  for (int n = 2; found < primes.size(); ++n) {
    bool prime = true;
    for (std::size_t i = 0; i < found && primes[i] * primes[i] <= n; ++i) {
      prime = prime && n % primes[i] != 0;
    }
    if (prime) {
      primes[found++] = n;
    }
  }
  return primes;
}

}  // namespace

const std::array<int, HaltonQRStream::kTabledPrimes> HaltonQRStream::primes_table = firstPrimes();

HaltonQRStream::HaltonQRStream(VKernelVector kv, int dimension) {
  dimension_ = dimension;
  primes_ = primes_table.data();
  if (dimension > kTabledPrimes) {
    ownedPrimes_.resize(static_cast<std::size_t>(dimension));
    generate_primes(kv, ownedPrimes_.data(), dimension);
    primes_ = ownedPrimes_.data();
  }
}

void HaltonQRStream::generate_primes(VKernelVector kv, int* out, int nn) {
  assert(nn > ((int)190));
  std::copy(primes_table.begin(), primes_table.end(), out);
  int found = kTabledPrimes;
  for (int candidate = primes_table.back() + 2; found < nn; candidate += 2) {
    if (isprime(candidate) != 0) {
      out[found++] = candidate;
      if (found % 4096 == 0) {
        STATS_LookForInterrupt_HW(kv);
      }
    }
  }
}

int HaltonQRStream::isprime(int n) { return vexel::kernels::classic::isPrime(n) ? 1 : 0; }

int HaltonQRStream::reset(VKernelVector /*kv*/) {
  index_ = 1;
  return 1;
}

int HaltonQRStream::skip(VKernelVector /*kv*/, V_INT k) {
  index_ += static_cast<std::uint32_t>(k);
  return 1;
}

int HaltonQRStream::next(VKernelVector kv, double* out, int pointStride, int coordStride,
                         int count) {
  const STATS_InterruptWatch_HW watch(kv);
  vexel::kernels::classic::writeHaltonPoints({primes_, static_cast<std::size_t>(dimension_)},
                                             index_, count, out, pointStride, coordStride);
  return 1;
}

const char* HaltonQRStream::getType(VKernelVector /*kv*/) const { return "Halton"; }
