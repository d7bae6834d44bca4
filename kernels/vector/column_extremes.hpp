// The least or greatest element of each of many variables, and whether any is missing.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::kernels {

enum class End : std::uint8_t { least, greatest };

// Of what is not missing: goes on from extremes[j] and missing[j], an infinity and 0 at first.  Of
// two zeros either one comes out.
//
// Columns side by side: n rows of width elements, each `stride` behind the one before it.
void extremesOfRows(End end, const double* x, std::ptrdiff_t stride, std::size_t n,
                    std::size_t width, double* extremes, std::uint8_t* missing);
void extremesOfRows(End end, const float* x, std::ptrdiff_t stride, std::size_t n,
                    std::size_t width, float* extremes, std::uint8_t* missing);

// Lanes of n elements one behind the other, each lane `apart` behind the one before it.
void extremesOfLanes(End end, const double* x, std::ptrdiff_t apart, std::size_t n,
                     std::size_t count, double* extremes, std::uint8_t* missing);
void extremesOfLanes(End end, const float* x, std::ptrdiff_t apart, std::size_t n,
                     std::size_t count, float* extremes, std::uint8_t* missing);

}  // namespace vexel::kernels
