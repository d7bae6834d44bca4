// The built-in direction integers of Sobol's sequence, written into the build from
// functions/sequences/direction_numbers.csv, which tools/direction_numbers.cpp made.
#pragma once

#include <array>
#include <cstdint>

namespace vexel {

struct SobolDirections {
  std::uint16_t degree;
  std::uint16_t coefficients;
  std::uint16_t initial[13];  // as many as the degree
};

extern const std::array<SobolDirections, 1111> sobolDirections;

}  // namespace vexel
