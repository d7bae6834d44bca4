// The lanes and the ziggurats give the same bits with every set of instructions.
#include "kernels/variates/lanes.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

#include "kernels/variates/ziggurat.hpp"

#ifdef VEXEL_HAVE_HIGHWAY
#include <hwy/targets.h>
#endif

namespace {

using namespace vexel::kernels;

struct Words {
  const std::vector<std::uint64_t>& words;
  std::size_t at = 0;
  std::uint64_t bits() { return words.at(at++); }
};

constexpr std::size_t rounds = 20000;

std::vector<std::uint64_t> steppedBits() {
  Lanes lanes;
  seedLanes(lanes, 5, 6);
  std::vector<std::uint64_t> out;
  for (std::size_t i = 0; i < rounds * laneCount; ++i) {
    std::uint64_t* const a = &lanes[0][i % laneCount];
    std::uint64_t* const b = &lanes[1][i % laneCount];
    std::uint64_t* const c = &lanes[2][i % laneCount];
    std::uint64_t* const d = &lanes[3][i % laneCount];
    out.push_back(std::rotl(*a + *d, 23) + *a);
    const std::uint64_t t = *b << 17;
    *c ^= *a;
    *d ^= *b;
    *b ^= *c;
    *a ^= *d;
    *c ^= t;
    *d = std::rotl(*d, 45);
  }
  return out;
}

// What `accept` takes, in runs of all lengths and alignments, is what `one` gives for these draws.
template <typename Accept, typename One>
void expectRuns(const std::vector<std::uint64_t>& words, Accept accept, One one) {
  Words source{words};
  std::vector<double> out(64);
  std::size_t length = 1;
  while (source.at + 100 < words.size()) {
    length = length * 5 % 61 + 1;
    const std::size_t run = accept(&words[source.at], out.data(), length);
    ASSERT_LE(run, length);
    for (std::size_t i = 0; i < run; ++i) {
      const std::size_t before = source.at;
      ASSERT_EQ(one(source), out[i]);
      ASSERT_EQ(source.at, before + 1);
    }
    one(source);
  }
}

TEST(Lanes, HaveTheSameBitsOnEveryTarget) {
  const std::vector<std::uint64_t> expected = steppedBits();
  const auto check = [&] {
    Lanes bitLanes;
    Lanes uniformLanes;
    seedLanes(bitLanes, 5, 6);
    seedLanes(uniformLanes, 5, 6);
    std::vector<std::uint64_t> bits(expected.size());
    std::vector<double> uniforms(expected.size());
    std::size_t step = 1;
    for (std::size_t r = 0; r < rounds; r += step, step = step * 3 % 701) {
      step = std::min(step, rounds - r);
      drawBits(bitLanes, &bits[r * laneCount], step);
      drawUniforms(uniformLanes, &uniforms[r * laneCount], step);
    }
    EXPECT_EQ(bits, expected);
    EXPECT_EQ(std::memcmp(bitLanes, uniformLanes, sizeof bitLanes), 0);
    for (std::size_t i = 0; i < bits.size(); ++i) {
      ASSERT_EQ(uniforms[i], unitInterval(expected[i]));
    }
    expectRuns(expected, acceptNormals, normalVariate<Words>);
    expectRuns(expected, acceptExponentials, exponentialVariate<Words>);
    alignas(64) double copy[320];
    copyPastCaches(&uniforms[3], copy, 320);
    finishCopies();
    EXPECT_EQ(std::memcmp(copy, &uniforms[3], sizeof copy), 0);
  };
  check();
#ifdef VEXEL_HAVE_HIGHWAY
  const std::int64_t supported = hwy::SupportedTargets();
  for (std::int64_t rest = supported; rest != 0; rest &= rest - 1) {
    const std::int64_t target = rest & -rest;
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(target);
    check();
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
#endif
}

}  // namespace
