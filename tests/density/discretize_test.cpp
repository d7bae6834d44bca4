// Linear binning: its grid's ends, interrupts and messages.  Its values are compared with the
// models.

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "host_call.hpp"
#include "kernel/interrupt.hpp"
#include "kernel_test.hpp"
#include "kernels/density/linear_binning.hpp"

namespace {

using DiscretizeTest = KernelTest;
using Numbers = std::vector<double>;

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

TEST_F(DiscretizeTest, ManyDataCanBeInterrupted) {
  const Numbers x(1000000);
  const auto discretize = [&](V_INT n) {
    inHost(kernel, [&] {
      const STATS_InterruptWatch_HW watch(kernel.vector());
      double grid[3] = {};
      vexel::Kernel::interrupt();
      vexel::kernels::binLinearly(3, 0.0, 1.0, 0.0, n, x.data(), nullptr, grid);
      vexel::Kernel::clearInterrupt();
    });
  };
  discretize(1000);
  EXPECT_THROW(discretize(1000000), vexel::Interrupted);
}

TEST_F(DiscretizeTest, TellsOfMissingDataUnlessQuiet) {
  std::vector<std::string> told;
  kernel.onUserInfo([&](int, const std::string& channel, const std::string& text) {
    told.push_back(channel + ": " + text);
  });
  const auto run = [&](double extra, bool quiet) {
    call("STATS_VexelDiscretize_HW", array({1.0, extra}), 5, 0.0, 4.0, 0.0, quiet, none());
  };
  run(kNaN, false);  // nobody listens
  kernel.infoLevel("Statistics", 1);
  run(99.0, false);
  run(kNaN, true);
  EXPECT_TRUE(told.empty());
  run(kNaN, false);
  EXPECT_EQ(told, std::vector<std::string>{
                      "Statistics: missing data has been detected in the dataset, discarded."});
}

}  // namespace
