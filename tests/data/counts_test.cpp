// The output array of cumulative values.

#include <vector>

#include "kernel_test.hpp"

namespace {

using CountsTest = KernelTest;

TEST_F(CountsTest, CumulativeValuesFillTheArrayGiven) {
  const auto x = array({1.0, 2.0, 3.0});
  std::vector<double> out(4, 9.0);
  const auto output = kernel.wrap(out);
  EXPECT_EQ(call("STATS_VexelCumulative_HW", x, none(), output, 0), output);
  EXPECT_EQ(out, (std::vector<double>{1, 3, 6, 9}));
  const auto readOnly = readOnlyArray({0.0, 0.0, 0.0});
  EXPECT_EQ(hostError([&] { call("STATS_VexelCumulative_HW", x, none(), readOnly, 0); }),
            "output array is read-only: %1");
}

TEST_F(CountsTest, DoublesOfReadOnlyDataAreTheCallersOwn) {
  const auto copy = call("STATS_VexelEvaluateToFloat_HW", readOnlyArray({1.0}));
  RTableSettings settings;
  RTableGetSettings(kernel.vector(), &settings, copy.handle());
  EXPECT_EQ(settings.read_only, 0);
}

}  // namespace
