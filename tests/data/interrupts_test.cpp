// Entry points that read large arrays let the host look for an interrupt on the way, and end with
// it.  The host is asked through VexelEval, which this program's definition counts.

#include <dlfcn.h>
#include <nag2/nag2.h>

#include "kernel_test.hpp"

namespace {

int looks = 0;

}  // namespace

extern "C" ALGEB VexelEval(VKernelVector kv, ALGEB x) {
  using Function = ALGEB (*)(VKernelVector, ALGEB);
  static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "VexelEval"));
  ++looks;
  return next(kv, x);
}

namespace {

class InterruptsTest : public KernelTest {
 protected:
  static constexpr int kLooksExpected = 1;  // with five million elements

  InterruptsTest() {
    eval(
        "n := 5*10^6: E := Array(1 .. 0, datatype = float[8]): A := uniform(n, rng = 1):"
        " W := uniform(n, rng = 2): J := Array(1 .. n, datatype = integer[4]):"
        " S := Array(1 .. n, datatype = integer[1]): T := Array(1 .. n, datatype = float[8]):"
        " R := STATS_VexelRankSort_HW(A, 1, true):");
  }
};

TEST_F(InterruptsTest, LongCallsLookOnTheWayAndEnd) {
  for (const std::string statement : {
           "Sort_HW(uniform(10^7, rng = 3), true, false)",
           "Sort_HW(A, true, true)",
           "Sort_HW(J, true, false)",
           "Sort_HW(S, true, false)",
           "RankSort_HW(A, 1, true)",
           "Order_HW(A, A, true, false, R)",
           "Mean_HW(A, W, true, 1)",
           "TrimmedMean_HW(A, 10, 90, W, false, 0)",
           "WinsorizedMean_HW(A, 10, 90, E, false, 2)",
           "Moment_HW(A, W, [1, 2], 0.5, false)",
           "AbsoluteDeviation_HW(A, E, 0.5, false)",
           "Quantile_HW(A, [0.25, 0.5], W, false, 1, false)",
           "Quantile_HW(A, [seq(i/30, i = 1 .. 29)], E, false, 1, false)",
           "OrderStatistic_HW(A, [seq(i, i = 1 .. 29)], E, true)",
           "Median_HW(A, W, true, false)",
           "MedianDeviation_HW(A, E, false)",
           "FivePointSummary_HW(A, false)",
           "StatisticSummary_HW(A, W, false)",
           "Covariance_HW(A, W, A, 1)",
           "EmpiricalDeviate_HW(0.4, A, W, true)",
           "EmpiricalRandomSample_HW(10, T, W, true)",
           "Trim_HW(A, 10, 90)",
           "Winsorize_HW(S, 10, 90)",
           "Tally_HW(T, E)",
           "Tally_HW(J, E)",
           "TallyInto_HW(A, W, true, [0 .. 1], 2)",
           "FrequencyData_HW(A, E, false, 0 .. 1, 5)",
           "Cumulative_HW(A, E, E, 0)",
           "Count_HW(A, E, 1)",
           "SelectRemoveInRange_HW(A, 1/4, 3/4, 3)",
           "SelectRemoveNonNumeric_HW(A, true, true, false)",
           "EvaluateToFloat_HW(A)",
           "MovingMean_HW(A, 3, 1, E, false, 0, false)",
           "MovingMedian_HW(A, 3, 1, E, false, false)",
           "LinearFilter_HW(A, Array([0.5, 0.25], datatype = float[8]), E, true, true)",
           "KernelDensity_HW(A, E, 0, 0.1, 64, true, 0.0, 1.0)",
           "KernelBounds_HW(A)",
           "Discretize_HW(A, 16, 0.0, 1.0, 0, true, W)",
           "AliasUrnSample_HW(1, W)",
       }) {
    SCOPED_TRACE(statement);
    const std::string text = "proc() STATS_Vexel" + statement + " end";
    const vexel::Value call = eval(text);
    looks = 0;
    kernel.apply(call, {});
    EXPECT_GE(looks, kLooksExpected);
    vexel::Kernel::interrupt();
    EXPECT_THROW(kernel.apply(call, {}), vexel::Interrupted);
  }
}

int asked = 0;

void stopAtThird(void*, double) {
  if (++asked == 3) {
    throw asked;
  }
}

// What the numerical library's watch throws leaves its functions, whoever calls them.
TEST_F(InterruptsTest, WatchedNumericsEndWithWhatTheWatchThrows) {
  constexpr std::size_t n = 9000000;  // more than two steps of a sort
  std::vector<double> x = numbers(eval("uniform(9*10^6, rng = 3)"));
  std::vector<double> out(n);
  std::vector<std::uint32_t> ranks(n);
  std::vector<std::int8_t> small(n);
  double points[8];
  int count = 0;
  const std::function<void()> calls[] = {
      [&] { q43352(x.data(), n, Nag_Descending, nullptr); },
      [&] { nag2_sort_typed(x.data(), n, NAG2_FLOAT64, Nag_Ascending, out.data(), nullptr); },
      [&] {
        std::vector<std::int8_t> sorted(n);
        nag2_sort_typed(small.data(), n, NAG2_INT8, Nag_Ascending, sorted.data(), nullptr);
      },
      [&] { nag2_rank_typed(x.data(), n, NAG2_FLOAT64, Nag_Ascending, ranks.data(), nullptr); },
      [&] { q51748(n, x.data(), points, nullptr); },
      [&] {
        q15220(n, x.data(), x.data(), &count, points, points + 1, points + 2, points + 3,
               points + 4, points + 5, points + 6, nullptr);
      },
  };
  EXPECT_EQ(nag2_watch({stopAtThird, nullptr}).look, nullptr);
  for (const auto& call : calls) {
    asked = 0;
    EXPECT_THROW(call(), int) << &call - calls;
  }
  EXPECT_EQ(nag2_watch({}).look, stopAtThird);
  EXPECT_NO_THROW(calls[4]());
}

}  // namespace
