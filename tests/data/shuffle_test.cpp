// Shuffle, on scripted draws and against the textbook loop.

#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

#include "arrays_test.hpp"

namespace {

using ShuffleTest = ArraysTest;

TEST_F(ShuffleTest, ShuffleDrawsTopBitsAndRejects) {
  // i = 3: 3 bits, 7 is refused, then 1; i = 2: 2 bits, 3 is refused, then 0; i = 1: 2 bits, 1.
  const auto top = [](unsigned value, int bits) {
    return static_cast<std::int32_t>(value << (32 - bits));
  };
  for (int type = RTABLE_DAG; type <= RTABLE_FLOAT32; ++type) {
    const vexel::Value data = make(type, {10, 20, 30, 40}, 0);
    scriptIntegers({top(7, 3), top(1, 3), top(3, 2), top(0, 2), top(1, 2)});
    EXPECT_EQ(elements(call("STATS_VexelShuffle_HW", data), type),
              (std::vector<double>{30, 40, 10, 20}));
    kernel.unscriptRandom();
    EXPECT_EQ(elements(data, type, 0), (std::vector<double>{10, 20, 30, 40}));
  }
  const std::uint64_t before = kernel.drawsTaken();
  EXPECT_EQ(call("STATS_VexelShuffle_HW", array({7})).size(), 1U);
  EXPECT_EQ(call("STATS_VexelShuffle_HW", array({})).size(), 0U);
  EXPECT_EQ(kernel.drawsTaken(), before);

  // The textbook loop on the same draws.
  std::vector<double> x(1000);
  std::iota(x.begin(), x.end(), 0.0);
  kernel.seed(5);
  const std::vector<double> shuffled = numbers(call("STATS_VexelShuffle_HW", array(x)));
  kernel.seed(5);
  for (std::uint32_t i = 999; i > 0; --i) {
    int bits = 0;
    while (bits < 32 && (i + 1) >> bits != 0) {
      ++bits;
    }
    std::uint32_t j;
    do {
      j = static_cast<std::uint32_t>(VexelRandomInt32(kernel.vector())) >> (32 - bits);
    } while (j > i);
    std::swap(x[i], x[j]);
  }
  EXPECT_EQ(shuffled, x);
}

TEST_F(ShuffleTest, MessagesToTheLetter) {
  const vexel::Value sparse = make(RTABLE_FLOAT64, {1, 2}, 1, RTABLE_SPARSE);
  expectRefusals({
      {"VexelShuffle expects 1 argument, received: %1", [&] { call("STATS_VexelShuffle_HW"); }},
  });
  EXPECT_NE(hostError([&] { call("STATS_VexelShuffle_HW", sparse); }), "no error");
}

}  // namespace
