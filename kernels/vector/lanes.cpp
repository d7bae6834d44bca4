// The outputs of the eight lanes.
#include "kernels/variates/lanes.hpp"

#include <bit>

#include "kernels/variates/ziggurat.hpp"

namespace vexel::kernels {

namespace {

template <typename Out, typename Map>
void draw(Lanes& lanes, Out* out, std::size_t rounds, Map map) {
  for (std::size_t r = 0; r < rounds; ++r, out += laneCount) {
    for (std::size_t l = 0; l < laneCount; ++l) {
      const std::uint64_t a = lanes[0][l];
      const std::uint64_t b = lanes[1][l];
      const std::uint64_t c = lanes[2][l] ^ a;
      const std::uint64_t d = lanes[3][l] ^ b;
      out[l] = map(std::rotl(a + lanes[3][l], 23) + a);
      lanes[0][l] = a ^ d;
      lanes[1][l] = b ^ c;
      lanes[2][l] = c ^ b << 17;
      lanes[3][l] = std::rotl(d, 45);
    }
  }
}

}  // namespace

void drawBits(Lanes& lanes, std::uint64_t* out, std::size_t rounds) {
  draw(lanes, out, rounds, [](std::uint64_t bits) { return bits; });
}

void drawUniforms(Lanes& lanes, double* out, std::size_t rounds) {
  draw(lanes, out, rounds, unitInterval);
}

}  // namespace vexel::kernels
