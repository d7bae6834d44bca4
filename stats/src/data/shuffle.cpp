// Shuffle: a permuted copy of an array, elements moved as bytes.

#include "data/shuffle.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>

#include "data/data_argument.hpp"
#include "data/element_types.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/uniform_source.hpp"

namespace {

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
template <std::size_t Width>
void shuffleElements(char* data, std::uint32_t n) {
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
      const auto draw = static_cast<std::uint32_t>(STATS_VexelRandomStream_HW::NextInteger());
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

}  // namespace

void STATS_Shuffle_HW(VKernelVector /*kv*/, char* data, std::uint32_t n, std::uint32_t size) {
  if (n < 2) {
    return;
  }
  switch (size) {
    case 1:
      return shuffleElements<1>(data, n);
    case 2:
      return shuffleElements<2>(data, n);
    case 4:
      return shuffleElements<4>(data, n);
    case 16:
      return shuffleElements<16>(data, n);
    default:
      return shuffleElements<8>(data, n);
  }
}

// STATS_VexelShuffle_HW(data): a new dense array from 1 with the elements of a dense
// one-dimensional array in random order.
STATS_ENTRY(STATS_VexelShuffle_HW) {
  const Arguments arg(kv, args, 1, "VexelShuffle expects 1 argument, received: %1");
  const ALGEB data = arg[1];
  STATS_RequireVector_HW(kv, data, STATS_kInvalidVector_HW);
  const V_INT n = RTableNumElements(kv, data);
  if (n > std::numeric_limits<std::uint32_t>::max()) {
    VexelRaiseError1(kv, "too many elements to shuffle: %1", ToVexelInteger(kv, n));
  }
  RTableSettings settings = STATS_SettingsOf_HW(kv, data);
  const void* const block = RTableDataBlock(kv, data);  // raises for other than dense storage
  settings.storage = RTABLE_RECTANGULAR;
  const ALGEB result = STATS_CreateLike_HW(kv, settings, 1, n, block);
  STATS_Shuffle_HW(kv, static_cast<char*>(RTableDataBlock(kv, result)),
                   static_cast<std::uint32_t>(n),
                   static_cast<std::uint32_t>(STATS_RTableDataSize_HW(kv, settings.data_type)));
  return result;
}
