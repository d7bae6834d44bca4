// Normal and exponential variates from a source of 64 random bits.
//
// G. Marsaglia and W. W. Tsang, The ziggurat method for generating random variables, Journal of
// Statistical Software 5(8), 2000, with layer, sign and abscissa from different bits of the draw
// (J. A. Doornik, An improved ziggurat method to generate normal random samples, 2005): bits 0 to 8
// the layer, bit 11 the sign, bits 12 to 63 the abscissa.  One draw in 150 needs more than one.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

#include "kernels/variates/ziggurat_layers.hpp"

namespace vexel::kernels {

// Uniform on (0, 1): the top 52 bits and a half, times 2^-52; exact.
inline double unitInterval(std::uint64_t bits) {
  constexpr std::uint64_t one = 0x3FF0000000000000U;
  return std::bit_cast<double>(bits >> 12 | one) - (1.0 - 0x1p-53);
}

template <typename Source>
double normalVariate(Source& source);
template <typename Source>
double exponentialVariate(Source& source);

// What a draw that fell outside its layer's sure part becomes.  Out of line: the quick paths below
// keep their registers.
//
// The tail beyond the last layer is by Marsaglia's method of 1964.
template <typename Source>
[[gnu::noinline, gnu::cold]] double normalOutsideLayer(Source& source, std::uint64_t bits) {
  const std::uint64_t layer = bits % zigguratLayers;
  const double sign = (bits & 0x800U) != 0 ? -1.0 : 1.0;
  if (layer == 0) {
    constexpr double r = normalEdges[1];
    double beyond = 0;
    double y = 0;
    do {
      beyond = -std::log(unitInterval(source.bits())) / r;
      y = -std::log(unitInterval(source.bits()));
    } while (y + y < beyond * beyond);
    return sign * (r + beyond);
  }
  // The corner of the layer, heights relative to the density at its right edge.
  const double edge = normalEdges[layer];
  const double above = normalEdges[layer + 1];
  const double x = unitInterval(bits) * edge;
  const double top = std::exp(0.5 * (edge - above) * (edge + above));
  const double height = 1.0 + unitInterval(source.bits()) * (top - 1.0);
  return height < std::exp(0.5 * (edge - x) * (edge + x)) ? sign * x : normalVariate(source);
}

// Beyond the last layer the exponential law begins anew, having no memory.
template <typename Source>
[[gnu::noinline, gnu::cold]] double exponentialOutsideLayer(Source& source, std::uint64_t bits) {
  const std::uint64_t layer = bits % zigguratLayers;
  const double edge = exponentialEdges[layer];
  if (layer == 0) {
    return exponentialEdges[1] + exponentialVariate(source);
  }
  const double x = unitInterval(bits) * edge;
  const double top = std::exp(edge - exponentialEdges[layer + 1]);
  const double height = 1.0 + unitInterval(source.bits()) * (top - 1.0);
  return height < std::exp(edge - x) ? x : exponentialVariate(source);
}

// Standard normal.
template <typename Source>
inline double normalVariate(Source& source) {
  const std::uint64_t bits = source.bits();
  const std::uint64_t layer = bits % zigguratLayers;
  const double x = unitInterval(bits) * normalEdges[layer];
  if (x < normalEdges[layer + 1]) [[likely]] {
    const std::uint64_t sign = (bits & 0x800U) << 52;
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) | sign);
  }
  return normalOutsideLayer(source, bits);
}

// Standard exponential.
template <typename Source>
inline double exponentialVariate(Source& source) {
  const std::uint64_t bits = source.bits();
  const std::uint64_t layer = bits % zigguratLayers;
  const double x = unitInterval(bits) * exponentialEdges[layer];
  return x < exponentialEdges[layer + 1] ? x : exponentialOutsideLayer(source, bits);
}

}  // namespace vexel::kernels
