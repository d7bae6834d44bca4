// Tiles of points of the sequences in base 2.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::kernels {

// Writes n numerators over 2^52 as numbers on [0, 1) and takes them to the next tile.  The three
// blocks share nothing.
void advanceTile(std::uint64_t* numerators, const std::uint64_t* changes, std::size_t n,
                 double* out);

}  // namespace vexel::kernels
