// Cumulative values, counts and conversion to floats.

#include <cmath>
#include <vector>

#include "kernel_test.hpp"

namespace {

using CountsTest = KernelTest;
using Numbers = std::vector<double>;

TEST_F(CountsTest, CumulativeSumsAndProducts) {
  const auto x = array({1.0, 2.0, 3.0});
  const auto w = array({2.0, 1.0, 1.0});
  const auto cumulative = [&](const vexel::Value& weights, int product) {
    return numbers(call("STATS_VexelCumulative_HW", x, weights, none(), product));
  };
  EXPECT_EQ(cumulative(none(), 0), (Numbers{1, 3, 6}));
  EXPECT_EQ(cumulative(none(), 1), (Numbers{1, 2, 6}));
  EXPECT_EQ(cumulative(w, 0), (Numbers{2, 4, 7}));
  EXPECT_EQ(cumulative(w, -1), (Numbers{2, 4, 12}));
  EXPECT_TRUE(cumulative(none(), 0).size() == 3);

  Numbers out(4, 9.0);
  const auto output = kernel.wrap(out);
  EXPECT_EQ(call("STATS_VexelCumulative_HW", x, none(), output, 0), output);
  EXPECT_EQ(out, (Numbers{1, 3, 6, 9}));
  call("STATS_VexelCumulative_HW", none(), none(), output, 0);  // an empty sample writes nothing
  EXPECT_EQ(out, (Numbers{1, 3, 6, 9}));
}

TEST_F(CountsTest, CumulativeChecksItsOutputArray) {
  const auto into = [&](const vexel::Value& output) {
    return hostError([&] {
      call("STATS_VexelCumulative_HW", array({1.0, 2.0, 3.0}), none(), output, 0);
    });
  };
  const std::vector<std::int32_t> integers = {0, 0, 0};
  EXPECT_EQ(into(kernel.real(1.0)), "invalid 3rd argument, expected rtable, received: %1");
  EXPECT_EQ(into(array({0.0, 0.0})), "output array has insufficient number of elements: %1");
  EXPECT_EQ(into(kernel.array(std::span<const std::int32_t>(integers))),
            "output array has invalid data type: %1");
  EXPECT_EQ(into(readOnlyArray({0.0, 0.0, 0.0})), "output array is read-only: %1");
}

TEST_F(CountsTest, CountsAndWeightsOfPresentAndMissingValues) {
  const auto x = array({1.0, kNaN, 3.0});
  const auto w = array({1.0, 2.0, 4.0});
  const auto count = [&](const vexel::Value& weights, int ignore) {
    return call("STATS_VexelCount_HW", x, weights, ignore);
  };
  EXPECT_EQ(count(none(), 0), kernel.integer(3));
  EXPECT_EQ(count(none(), 1), kernel.integer(2));
  EXPECT_EQ(count(none(), 2), kernel.integer(3));
  EXPECT_EQ(count(w, 0), kernel.real(7.0));
  EXPECT_EQ(count(w, 1), kernel.real(5.0));
  EXPECT_TRUE(std::isnan(number(count(array({1.0, 1.0, kNaN}), 0))));
  EXPECT_EQ(call("STATS_VexelCountMissing_HW", x, none()), kernel.integer(1));
  EXPECT_EQ(call("STATS_VexelCountMissing_HW", x, w), kernel.real(2.0));
  EXPECT_EQ(call("STATS_VexelCountMissing_HW", x, array({1.0, kNaN, 1.0})), kernel.real(0.0));
}

TEST_F(CountsTest, EvaluateToFloatKeepsIndices) {
  const std::int32_t values[] = {3, 1, 2};
  RTableSettings settings{RTABLE_INTEGER32, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {-1, 1};
  const auto out = call("STATS_VexelEvaluateToFloat_HW", kernel.array(settings, values, bounds));
  EXPECT_EQ(numbers(out), (Numbers{3, 1, 2}));
  EXPECT_EQ(RTableLowerBound(kernel.vector(), out.handle(), 1), -1);
  RTableGetSettings(kernel.vector(), &settings, out.handle());
  EXPECT_EQ(settings.data_type, RTABLE_FLOAT64);
}

}  // namespace
