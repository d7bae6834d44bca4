// Seeding and jumping: a jump of k steps is a polynomial in the step, x^k modulo the step's
// characteristic polynomial, so that jumps multiply as polynomials over the field of two elements
// do.
#include "kernels/variates/lanes.hpp"

#include <bit>

namespace vexel::kernels {

namespace {

struct Lane {
  std::uint64_t word[4];

  void step() {
    const std::uint64_t t = word[1] << 17;
    word[2] ^= word[0];
    word[3] ^= word[1];
    word[1] ^= word[2];
    word[0] ^= word[3];
    word[2] ^= t;
    word[3] = std::rotl(word[3], 45);
  }
};

// Coefficients of degree 0 to 255, the lowest first.
struct Polynomial {
  std::uint64_t word[4];
};

// The characteristic polynomial less its leading x^256, from 512 output bits by Berlekamp and
// Massey; the jumps of 2^128 and 2^192 steps, as published with the generator, are powers of x
// modulo it.
constexpr Polynomial characteristic = {
    {0x9D116F2BB0F0F001, 0x0280002BCEFD1A5E, 0x04B4EDCF26259F85, 0x0003C03C3F3ECB19}};
constexpr Polynomial jumpOfLane = {
    {0x180EC6D33CFD0ABA, 0xD5A61266F0C9392C, 0xA9582618E03FC9AA, 0x39ABDC4529B1661C}};
constexpr Polynomial jumpOfBlock = {
    {0x76E15D3EFEFDCBBF, 0xC5004E441C522FB3, 0x77710069854EE241, 0x39109BB02ACBE635}};

bool coefficient(const Polynomial& p, int degree) {
  return (p.word[degree / 64] >> (degree % 64) & 1) != 0;
}

Polynomial product(const Polynomial& a, const Polynomial& b) {
  Polynomial result{};
  for (int degree = 255; degree >= 0; --degree) {
    const std::uint64_t carry = 0 - (result.word[3] >> 63);
    const std::uint64_t take = 0 - static_cast<std::uint64_t>(coefficient(b, degree));
    std::uint64_t below = 0;
    for (int w = 0; w < 4; ++w) {
      const std::uint64_t word = result.word[w];
      result.word[w] = (word << 1 | below) ^ (characteristic.word[w] & carry) ^ (a.word[w] & take);
      below = word >> 63;
    }
  }
  return result;
}

Polynomial power(Polynomial base, std::uint64_t exponent) {
  Polynomial result{{1, 0, 0, 0}};
  for (; exponent != 0; exponent >>= 1) {
    if ((exponent & 1) != 0) {
      result = product(result, base);
    }
    base = product(base, base);
  }
  return result;
}

Lane jumped(Lane lane, const Polynomial& jump) {
  Lane result{};
  for (int degree = 0; degree < 256; ++degree) {
    const std::uint64_t take = 0 - static_cast<std::uint64_t>(coefficient(jump, degree));
    for (int w = 0; w < 4; ++w) {
      result.word[w] ^= lane.word[w] & take;
    }
    lane.step();
  }
  return result;
}

}  // namespace

void seedLanes(Lanes& lanes, std::uint64_t seed, std::uint64_t block) {
  Lane lane{};
  for (std::uint64_t& word : lane.word) {
    seed += 0x9E3779B97F4A7C15;  // SplitMix64
    std::uint64_t z = seed;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    word = z ^ z >> 31;
  }
  if (block != 0) {
    lane = jumped(lane, power(jumpOfBlock, block));
  }
  for (std::size_t l = 0; l < laneCount; ++l) {
    for (std::size_t w = 0; w < 4; ++w) {
      lanes[w][l] = lane.word[w];
    }
    lane = jumped(lane, jumpOfLane);
  }
}

void jumpToNextBlock(Lanes& lanes) {
  for (std::size_t l = 0; l < laneCount; ++l) {
    const Lane lane = jumped({{lanes[0][l], lanes[1][l], lanes[2][l], lanes[3][l]}}, jumpOfBlock);
    for (std::size_t w = 0; w < 4; ++w) {
      lanes[w][l] = lane.word[w];
    }
  }
}

}  // namespace vexel::kernels
