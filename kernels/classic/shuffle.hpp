// Shuffling elements as bytes.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vexel::kernels::classic {

// Elements as opaque bytes of a fixed width, so that an exchange is a few moves.
template <std::size_t Width>
void swapElements(char* a, char* b) {
  std::array<char, Width> scratch;
  std::memcpy(scratch.data(), a, Width);
  std::memmove(a, b, Width);
  std::memcpy(b, scratch.data(), Width);
}

// Draws run ahead of the exchanges by a batch, which hides the cache misses of large arrays; both
// keep their order.  A draw that is too large is written over by the next, without a branch that
// nobody could predict.
template <std::size_t Width, typename Uniforms>
void shuffleElements(Uniforms& uniforms, char* data, std::uint32_t n) {
  constexpr std::uint32_t kBatch = 64;
  std::array<std::uint32_t, kBatch> draws;
  std::uint32_t mask = 0xFFFFFFFFU;
  int shift = 0;
  for (std::uint32_t i = n - 1; i > 0;) {
    while (i < mask >> 1) {
      mask >>= 1;
      ++shift;
    }
    // As many elements as take draws of the same width: those down to mask >> 1.
    const std::uint32_t batch = std::min({kBatch, i, i - (mask >> 1) + 1});
    for (std::uint32_t k = 0; k < batch;) {
      const auto draw = static_cast<std::uint32_t>(uniforms.integer());
      const std::uint32_t j = draw >> shift;
      const std::uint32_t last = i - k;
      draws[k] = j;
      k += j <= last ? 1U : 0U;
      __builtin_prefetch(data + std::size_t{j <= last ? j : last} * Width, 1);
    }
    for (std::uint32_t k = 0; k < batch; ++k, --i) {
      swapElements<Width>(data + std::size_t{draws[k]} * Width, data + std::size_t{i} * Width);
    }
  }
}

// Puts the n elements of size bytes (1, 2, 4, 8 or 16) into random order: Fisher and Yates, from
// the last element down.
template <typename Uniforms>
void shuffle(Uniforms& uniforms, char* data, std::uint32_t n, std::uint32_t size) {
  if (n < 2) {
    return;
  }
  switch (size) {
    case 1:
      return shuffleElements<1>(uniforms, data, n);
    case 2:
      return shuffleElements<2>(uniforms, data, n);
    case 4:
      return shuffleElements<4>(uniforms, data, n);
    case 16:
      return shuffleElements<16>(uniforms, data, n);
    default:
      return shuffleElements<8>(uniforms, data, n);
  }
}

}  // namespace vexel::kernels::classic
