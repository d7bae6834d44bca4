// Eight columns side by side, in rows of eight doubles: what is missing in them, and their order.
// Rows begin at multiples of 64 bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "kernels/sorting/network.hpp"

namespace vexel::kernels {

inline constexpr std::size_t stripWidth = 8;

struct StripFacts {
  double missing[stripWidth];        // how many
  double negativeZeros[stripWidth];  // more than 0 where there are some
};

// Counts, and puts infinity for what is missing.
void lookAtStrip(double* rows, std::size_t n, StripFacts& facts);

// All exchanges in each column.  Of zeros of both signs one may come out twice.
void exchangeInStrip(double* rows, std::span<const Exchange> exchanges);

// Moves rows of places, whole numbers, along with the elements; equal elements, zeros of either
// sign too, get into the order of their places.
void exchangeWithPlaces(double* rows, double* places, std::span<const Exchange> exchanges);

}  // namespace vexel::kernels
