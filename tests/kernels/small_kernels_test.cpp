// Kernels on their own where whole functions seldom lead: sums and numbers beyond the doubles,
// positions in arrays that no memory holds, densities that fail after a while, ranks in any order.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "kernels/cell_number.hpp"
#include "kernels/classic/rejection_envelope.hpp"
#include "kernels/descriptive/quantiles.hpp"
#include "kernels/power_sums.hpp"
#include "kernels/refusal.hpp"
#include "kernels/running_sum.hpp"
#include "kernels/variates/resample.hpp"

namespace vexel::kernels {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

struct Source {
  std::mt19937_64 engine{7};
  std::uint64_t bits() { return engine(); }
  std::int32_t integer() { return static_cast<std::int32_t>(engine()); }
  classic::Unit unit() {
    return classic::Unit(static_cast<double>(engine() >> 11) * 0x1p-53 + 0x1p-54);
  }
};

// From six positions of a draw down to one: all below the size, none left out, spread evenly.
TEST(SmallKernels, PositionsFillArraysOfEverySize) {
  std::size_t before = Positions::mostAtOnce;
  for (const std::uint64_t size :
       {std::uint64_t{3}, std::uint64_t{1} << 12, (std::uint64_t{1} << 17) + 1,
        (std::uint64_t{1} << 22) + 3, (std::uint64_t{1} << 40) + 5, (std::uint64_t{1} << 63) + 9}) {
    const Positions positions(size);
    EXPECT_LE(positions.atOnce(), before);
    before = positions.atOnce();
    Source source;
    constexpr std::size_t n = 9001;
    std::size_t visited = 0;
    long double sum = 0;
    positions.visit(source, n, [&](std::uint64_t position, std::size_t place) {
      EXPECT_LT(position, size);
      EXPECT_LT(place, positions.atOnce());
      ++visited;
      sum += position;
    });
    EXPECT_EQ(visited, n);
    const auto width = static_cast<long double>(size);
    EXPECT_NEAR(static_cast<double>(sum / n / width), static_cast<double>(0.5L - 0.5L / width),
                0.02)
        << size;
  }
  EXPECT_EQ(before, 1U);
}

TEST(SmallKernels, RunningSumsComeBackFromBeyondTheDoubles) {
  RunningSum sum;
  sum.addProduct(1e160, 1e160);
  EXPECT_EQ(sum.value(), infinity);
  sum.addProduct(-1e160, 1e160);
  sum.addProduct(0.5, 3.0);
  EXPECT_EQ(sum.value(), 1.5);
  RunningSum twice;
  for (const double x : {1e308, 1e308, -1e308, -1e308, 0.25}) {
    twice.add(x);
  }
  EXPECT_EQ(twice.value(), 0.25);
}

TEST(SmallKernels, PowerSumsRefuseWhatTheirUnitDoesNotHold) {
  PowerSums<2> sums(PowerSums<2>::unitFor(1.0));
  EXPECT_TRUE(sums.add(1.0));
  EXPECT_FALSE(sums.add(1e30));
  EXPECT_FALSE(sums.add(1e-30));
}

TEST(SmallKernels, CellsHoldNumbersThatNoDoubleHolds) {
  const struct {
    const char* cell;
    double value;
  } rows[] = {{"1e400", infinity}, {"-1e400", -infinity}, {"1e-400", 0.0}, {" +2.5 ", 2.5}};
  for (const auto& [cell, value] : rows) {
    double x = nan;
    EXPECT_TRUE(cellNumber(cell, x)) << cell;
    EXPECT_EQ(x, value) << cell;
  }
  double x = 0.0;
  EXPECT_FALSE(cellNumber("1e400x", x));
}

TEST(SmallKernels, RanksMayComeInAnyOrder) {
  std::vector<double> x(200);
  std::iota(x.begin(), x.end(), 1.0);
  std::shuffle(x.begin(), x.end(), std::mt19937_64(3));
  const std::vector<int> ranks = {100, 7, 7, 150, 0, 149, 200, 1, 201, -3, 150};
  std::vector<double> values(ranks.size());
  orderStatistic(values.data(), x.data(), nullptr, ranks.data(), static_cast<int>(x.size()),
                 static_cast<int>(ranks.size()));
  for (std::size_t i = 0; i < ranks.size(); ++i) {
    if (ranks[i] < 1 || ranks[i] > 200) {
      EXPECT_TRUE(std::isnan(values[i])) << ranks[i];
    } else {
      EXPECT_EQ(values[i], ranks[i]);
    }
  }
}

// A split asks the density once more, at its middle: one that fails there ends the sample, and one
// that fails everywhere makes no envelope.
TEST(SmallKernels, EnvelopesEndWhereTheDensityDoes) {
  bool fails = false;
  int asked = 0;
  const auto h = [&](double x) { return fails && ++asked % 2 == 0 ? nan : std::exp(-0.5 * x * x); };
  const auto slope = [](double x) { return -x * std::exp(-0.5 * x * x); };
  const double points[] = {-3.0, -0.5, 0.5, 3.0};
  classic::RejectionEnvelope envelope(50);
  Source source;
  EXPECT_THROW(envelope.next(source, h, slope), Refusal);  // before any points
  ASSERT_TRUE(envelope.reset(points, h, slope));
  for (int i = 0; i < 100; ++i) {
    const double x = envelope.next(source, h, slope);
    EXPECT_TRUE(x >= -3.0 && x <= 3.0);
  }
  ASSERT_TRUE(envelope.reset(points, h, slope));
  fails = true;
  EXPECT_THROW(
      {
        for (int i = 0; i < 1000; ++i) {
          envelope.next(source, h, slope);
        }
      },
      Refusal);
  const auto nowhere = [](double) { return nan; };
  EXPECT_FALSE(envelope.reset(points, nowhere, slope));
}

}  // namespace

}  // namespace vexel::kernels
