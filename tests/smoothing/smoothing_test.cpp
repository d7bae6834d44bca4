// Ends of the linear filter and moving statistics that a script seldom comes to; the numbers and
// messages are in tests/models/smoothing_model.py.

#include <gmock/gmock.h>

#include "kernel_test.hpp"

namespace {

using Doubles = std::vector<double>;

class SmoothingTest : public KernelTest {
 protected:
  SmoothingTest() { eval("A := proc(x) Array(x, datatype = float[8]) end:"); }
};

TEST_F(SmoothingTest, LongCallsCanBeInterrupted) {
  const auto series = array(Doubles(500000));
  const auto taps = array(Doubles(200, 1.0));
  const auto isInterrupted = [&](const char* entry, auto... arguments) {
    vexel::Kernel::interrupt();
    EXPECT_THROW(call(entry, series, arguments...), vexel::Interrupted) << entry;
  };
  for (bool recursive : {false, true}) {
    isInterrupted("STATS_VexelLinearFilter_HW", taps, none(), recursive, false);
    isInterrupted("STATS_VexelMovingMean_HW", 200, 0, none(), false, 0, recursive);
    isInterrupted("STATS_VexelMovingMean_HW", 200, 0, taps, false, 2, recursive);
    isInterrupted("STATS_VexelMovingMedian_HW", 3, 0, none(), false, recursive);
    isInterrupted("STATS_VexelMovingMedian_HW", 200, 0, taps, false, recursive);
  }
}

// The lowest bound that there is leaves no room for an empty result below it, nor for a result of
// another lower bound.
TEST_F(SmoothingTest, BoundsEndWhereIntegersDo) {
  EXPECT_THAT(
      numbers(eval("STATS_VexelLinearFilter_HW(Array(-2^63..1 - 2^63, [undefined, undefined]),"
                   " A([1]), A([]), false, true)")),
      testing::IsEmpty());
  EXPECT_EQ(hostErrorText([&] { eval("STATS_VexelMoving_HW(Array(-2^63..2 - 2^63), 2, x -> x)"); }),
            "not enough memory");
}

TEST_F(SmoothingTest, ResultsOfReadOnlyDataCanBeWritten) {
  const auto mean =
      call("STATS_VexelMovingMean_HW", readOnlyArray({1.0, 2.0}), 1, 0, none(), false, 0, false);
  RTableSettings settings;
  RTableGetSettings(kernel.vector(), &settings, mean.handle());
  EXPECT_EQ(settings.read_only, 0);
}

TEST_F(SmoothingTest, AnErrorOfTheProcedureIsTheErrorOfTheCall) {
  EXPECT_EQ(hostErrorText([&] {
              eval("STATS_VexelMoving_HW(A([1, 2]), 1, proc(x) error(\"no %1\", x[1]) end)");
            }),
            "no 1.0");
}

}  // namespace
