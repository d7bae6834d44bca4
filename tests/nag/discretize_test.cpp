// Linear binning.

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "kernel_test.hpp"

namespace {

using DiscretizeTest = KernelTest;
using Numbers = std::vector<double>;

TEST_F(DiscretizeTest, SharesWeightsBetweenNeighbours) {
  const auto bins = [&](const Numbers& x, const vexel::Value& weights, double c) {
    return numbers(call("STATS_VexelDiscretize_HW", array(x), 5, 0.0, 4.0, c, true, weights));
  };
  EXPECT_EQ(bins({1.5}, none(), 1.0), (Numbers{0, 0.5, 0.5, 0, 0}));
  EXPECT_EQ(bins({0.0, 4.0, 2.25, 9.0, -1.0, kNaN}, none(), 3.0), (Numbers{1, 0, 0.75, 0.25, 1}));
  EXPECT_EQ(bins({1.0, 3.0}, array({kNaN, 3.0}), 4.0), (Numbers{0, 1, 0, 3, 0}));
  EXPECT_EQ(bins({2.0}, none(), 0.0), (Numbers{0, 0, 1.25, 0, 0}));  // M / (b - a)
}

TEST_F(DiscretizeTest, NeverLeavesItsGrid) {
  // Positions that rounding, subnormal widths and overflowing widths push past the ends.
  for (int M : {1, 2, 3, 1000003}) {
    for (auto [a, b] : {std::pair{0.1, 0.7}, std::pair{0.0, 5e-324}, std::pair{-1.7e308, 1.7e308},
                        std::pair{1.0, std::nextafter(1.0, 2.0)}}) {
      const auto out = call("STATS_VexelDiscretize_HW", array({a, b, a / 2 + b / 2}), M, a, b, 1.0,
                            true, none());
      EXPECT_EQ(out.size(), static_cast<std::size_t>(M));
      for (double weight : numbers(out)) {
        ASSERT_FALSE(std::isnan(weight)) << M << " points over " << a << " .. " << b;
      }
    }
  }
}

TEST_F(DiscretizeTest, TellsOfMissingDataUnlessQuiet) {
  std::vector<std::string> told;
  kernel.onUserInfo([&](int, const std::string& channel, const std::string& text) {
    told.push_back(channel + ": " + text);
  });
  kernel.infoLevel("Statistics", 1);
  const auto run = [&](double extra, bool quiet) {
    call("STATS_VexelDiscretize_HW", array({1.0, extra}), 5, 0.0, 4.0, 0.0, quiet, none());
  };
  run(99.0, false);
  run(kNaN, true);
  EXPECT_TRUE(told.empty());
  run(kNaN, false);
  EXPECT_EQ(told, std::vector<std::string>{
                      "Statistics: missing data has been detected in the dataset, discarded."});
}

}  // namespace
