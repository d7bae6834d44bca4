// Eight lanes of xoshiro256++, 2^128 steps apart, and their jumps.
//
// D. Blackman and S. Vigna, Scrambled linear pseudorandom number generators, ACM Transactions on
// Mathematical Software 47(4), 2021; the seeding by SplitMix64 is from G. Steele, D. Lea and C.
// Flood, Fast splittable pseudorandom number generators, OOPSLA 2014.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::kernels {

inline constexpr std::size_t laneCount = 8;
using Lanes = std::uint64_t[4][laneCount];  // word w of lane l at [w][l]

// The lanes of block `block` of a seed.
void seedLanes(Lanes& lanes, std::uint64_t seed, std::uint64_t block);

// Each lane 2^192 steps on.
void jumpToNextBlock(Lanes& lanes);

// `rounds` outputs of each lane: draw i of lane i mod 8 to out[i], 8 * rounds in all.
void drawBits(Lanes& lanes, std::uint64_t* out, std::size_t rounds);

// The same as uniforms on (0, 1).
void drawUniforms(Lanes& lanes, double* out, std::size_t rounds);

// Normal and exponential variates of as many of the n draws, from the first one on, as they wish,
// but not of one that ziggurat.hpp would answer with another draw; their number.  May write all of
// out.
std::size_t acceptNormals(const std::uint64_t* bits, double* out, std::size_t n);
std::size_t acceptExponentials(const std::uint64_t* bits, double* out, std::size_t n);

// n doubles to out, which begins a cache line, without reading out's lines first: what is too long
// for the caches takes a third of the time.
void copyPastCaches(const double* from, double* out, std::size_t n);
// The same to any place.
inline void copyPastCachesAnywhere(const double* from, double* out, std::size_t n) {
  std::size_t lead = (0 - reinterpret_cast<std::uintptr_t>(out)) % 64 / sizeof(double);
  lead = lead < n ? lead : n;
  for (std::size_t i = 0; i < lead; ++i) {
    out[i] = from[i];
  }
  copyPastCaches(from + lead, out + lead, n - lead);
}
// Before another thread may read what was copied so.
void finishCopies();

}  // namespace vexel::kernels
