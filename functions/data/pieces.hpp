// Long arrays of variates, filled piece by piece.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

#include "kernels/variates/lanes.hpp"
#include "kernels/watch.hpp"

namespace vexel {

// fill(piece) for consecutive pieces of out, with reports of the progress between them.  Doubles
// that are too many for the caches go through a piece that is not.
template <typename T, typename Fill>
void inPieces(std::span<T> out, Fill fill) {
  constexpr std::size_t piece = 2048;
  constexpr std::size_t tooMany = std::size_t{1} << 19;
  constexpr std::size_t polling = std::size_t{1} << 18;
  const auto total = static_cast<double>(out.size());
  std::size_t i = 0;
  if constexpr (std::is_same_v<T, double>) {
    if (out.size() >= tooMany) {
      const std::size_t lead =
          (0 - reinterpret_cast<std::uintptr_t>(out.data())) % 64 / sizeof(double);
      fill(out.first(lead));
      alignas(64) double near[piece];
      for (i = lead; i + piece <= out.size(); i += piece) {
        fill(std::span<double>(near));
        kernels::copyPastCaches(near, &out[i], piece);
        if ((i - lead) % polling == 0) {
          kernels::poll(static_cast<double>(i) / total);
        }
      }
      kernels::finishCopies();
      fill(out.subspan(i));
      return;
    }
  }
  for (; i < out.size(); i += polling) {
    kernels::poll(static_cast<double>(i) / total);
    fill(out.subspan(i, std::min(polling, out.size() - i)));
  }
}

}  // namespace vexel
