// What the entry points of the descriptive statistics do with missing values, odd arguments and
// errors; the numbers themselves are in reference_test.cpp.

#include <gmock/gmock.h>

#include "kernel_test.hpp"

namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsNan;
using testing::SizeIs;

class DescriptiveTest : public KernelTest {
 protected:
  DescriptiveTest() {
    eval(
        "A := proc(x) Array(x, datatype = float[8]) end:"
        "none := Array([], datatype = float[8]):"
        "ten := A([1, 2, 3, 4, 5, 6, 7, 8, 9, 10]):"
        "holed := A([1, undefined, 3, 5]):"
        "w4 := A([1, 1, undefined, 3]):"
        "lost := A([undefined, undefined]):");
  }
  double value(std::string_view text) { return number(eval(text)); }
  std::vector<double> values(std::string_view text) { return numbers(eval(text)); }
};

TEST_F(DescriptiveTest, MissingValuesAreDroppedOnRequestOnly) {
  static constexpr struct {
    const char* call;
    double expected;  // NaN: undefined
  } kCases[] = {
      {"STATS_VexelMean_HW(holed, none, true, 0)", 3.0},
      {"STATS_VexelMean_HW(holed, none, false, 0)", kNaN},
      {"STATS_VexelMean_HW(holed, w4, true, 0)", 4.0},  // (1 + 3 * 5) / 4
      {"STATS_VexelMean_HW(lost, none, true, 0)", kNaN},
      {"STATS_VexelMean_HW(none, none, false, 2)", kNaN},
      {"STATS_VexelMean_HW(holed, none, true, 99)", 3.0},
      {"STATS_VexelMean_HW(A([1, 4]), none, false, 1)", 2.0},
      {"STATS_VexelTrimmedMean_HW(holed, 0, 100, none, true, 0)", 3.0},
      {"STATS_VexelTrimmedMean_HW(holed, 0, 100, w4, true, 0)", 4.0},
      {"STATS_VexelWinsorizedMean_HW(holed, 0, 100, none, false, 0)", kNaN},
      {"STATS_VexelMoment_HW(holed, none, 2, 0, true)", 35.0 / 3.0},
      {"STATS_VexelAbsoluteDeviation_HW(holed, w4, 2, true)", 2.5},
      {"STATS_VexelExpectedValue_HW(holed, none, t -> 2*t, true)", 6.0},
      {"STATS_VexelMedian_HW(holed, none, true, false)", 3.0},
      {"STATS_VexelMedian_HW(holed, none, false, false)", 4.0},  // 1 3 5 NaN: (3 + 5) / 2
      {"STATS_VexelMedian_HW(lost, none, true, false)", kNaN},
      {"STATS_VexelMedianDeviation_HW(holed, none, true)", 2.0},
      {"STATS_VexelMedianDeviation_HW(none, none, true)", kNaN},
      {"STATS_VexelOrderStatistic_HW(holed, 4, none, false)", kNaN},
      {"STATS_VexelOrderStatistic_HW(holed, 3, none, true)", 5.0},
      {"STATS_VexelOrderStatistic_HW(lost, 7, none, true)", kNaN},
      {"STATS_VexelQuantile_HW(lost, 1/2, none, true, 1, false)", kNaN},
  };
  for (const auto& [text, expected] : kCases) {
    SCOPED_TRACE(text);
    EXPECT_THAT(value(text), testing::NanSensitiveDoubleEq(expected));
  }
  EXPECT_THAT(values("STATS_VexelQuantile_HW(lost, [0, 1], none, true, 1, false)"),
              AllOf(SizeIs(2), Each(IsNan())));
  EXPECT_THAT(values("STATS_VexelQuantile_HW(ten, [], none, true, 1, false)"), SizeIs(0));
  EXPECT_THAT(values("STATS_VexelCovariance_HW(A([1, undefined, 3]), A([1, 5, 3]), none, 1)"),
              ElementsAre(2, 2, 2, 2));
  EXPECT_THAT(values("STATS_VexelCovariance_HW(A([1, undefined, 3]), A([1, 5, 3]), none, 2)"),
              ElementsAre(IsNan(), IsNan(), testing::_, 3));
}

// Unequal cuts leave out one value more than they say, and cuts by weight share the boundary point.
TEST_F(DescriptiveTest, CutsBehaveAtTheirEnds) {
  static constexpr struct {
    const char* arguments;
    double trimmed;
    double winsorized;
  } kCases[] = {
      {"ten, 10, 90, none, false, 0", 5.5, 5.5},
      {"ten, 0, 100, none, false, 0", 5.5, 5.5},
      {"ten, 10, 80, none, false, 0", 4.5, 5.0},
      {"ten, 50, 50, none, false, 0", kNaN, 6.0},
      {"ten, 0, 0, none, false, 0", -0.0, 5.5},
      {"ten, 100, 100, none, false, 0", -0.0, 5.4},
      {"ten, 50, 50, A([1, 1, 1, 1, 1, 1, 1, 1, 1, 1]), false, 0", kNaN, 5.5},
      {"none, 10, 90, none, false, 0", kNaN, kNaN},
      {"A([7]), 0, 0, none, false, 0", -0.0, 7.0},
      {"A([2, 1]), 25, 75, A([1, 1]), false, 0", 1.5, 1.5},
      {"A([3, 1, 2]), 25, 75, A([1, 1, 2]), false, 0", 2.0, 2.0},
  };
  for (const auto& [arguments, trimmed, winsorized] : kCases) {
    SCOPED_TRACE(arguments);
    const auto call = [&, given = arguments](const char* entry) {
      return value(std::string(entry) + "(" + given + ")");
    };
    EXPECT_THAT(call("STATS_VexelTrimmedMean_HW"), testing::NanSensitiveDoubleEq(trimmed));
    EXPECT_THAT(call("STATS_VexelWinsorizedMean_HW"), testing::NanSensitiveDoubleEq(winsorized));
  }
}

TEST_F(DescriptiveTest, QuantilesInPlaceMayReorderOnlyWhatTheyWereGiven) {
  EXPECT_EQ(value("x := A([3, 1, 2]): STATS_VexelMedian_HW(x, none, false, true)"), 2.0);
  EXPECT_THAT(values("x"), ElementsAre(1, 2, 3));
  EXPECT_EQ(value("x := A([3, 1, 2]): STATS_VexelMedian_HW(x, none, true, true)"), 2.0);
  EXPECT_THAT(values("x"), ElementsAre(3, 1, 2));
  EXPECT_EQ(value("STATS_VexelQuantile_HW(x, 1, none, false, 1, false)"), 3.0);
  EXPECT_THAT(values("x"), ElementsAre(3, 1, 2));
  // One array as its own weights: moving both at once would undo every exchange.
  EXPECT_EQ(value("STATS_VexelMedian_HW(x, x, false, true)"), 3.0);
  EXPECT_THAT(values("x"), ElementsAre(3, 1, 2));
}

TEST_F(DescriptiveTest, EveryMessageIsSpelledAsHostsKnowIt) {
  static constexpr struct {
    const char* call;
    const char* message;
  } kCases[] = {
      {"STATS_VexelMean_HW(ten)", "expected 4 arguments, received: %1"},
      {"STATS_VexelMean_HW(1, none, true, 0)",
       "invalid data sample, expected: rtable, received %1"},
      {"STATS_VexelMean_HW(ten, holed, true, 0)",
       "vector of points and vector of weights are expected to have the same size, received %1, "
       "%2"},
      {"STATS_VexelTrimmedMean_HW(ten)", "expected 6 arguments, received: %1"},
      {"STATS_VexelWinsorizedMean_HW(ten)", "expected 6 arguments, received: %1"},
      {"STATS_VexelTrimmedMean_HW(ten, -1, 101, none, true, 0)",
       "expected second argument (lower percentile) to be a numeric constant between 0 and 100, "
       "received: %1"},
      {"STATS_VexelTrimmedMean_HW(ten, undefined, 90, none, true, 0)",
       "expected second argument (lower percentile) to be a numeric constant between 0 and 100, "
       "received: %1"},
      {"STATS_VexelWinsorizedMean_HW(ten, 1, 101, none, true, 0)",
       "expected third argument (upper percentile) to be a numeric constant between 0 and 100, "
       "received: %1"},
      {"STATS_VexelTrimmedMean_HW(ten, 60, 40, none, true, 0)",
       "the value of lower percentile is expected to be smaller than the value of upper "
       "percentile, received: %1, %2"},
      {"STATS_VexelTrimmedMean_HW(ten, q, 40, none, true, 0)",
       "unable to evaluate %1 to floating-point"},
      {"STATS_VexelMoment_HW(ten)", "VexelMoment expects 5 arguments, received: %1"},
      {"STATS_VexelMoment_HW(ten, none, 0, 0, true)",
       "expected: list of positive integers, received %1"},
      {"STATS_VexelMoment_HW(ten, none, [1, 2.5], 0, true)",
       "expected: list of positive integers, received %1"},
      {"STATS_VexelAbsoluteDeviation_HW(ten)",
       "VexelAbsoluteDeviation expects 4 arguments, received: %1"},
      {"STATS_VexelExpectedValue_HW(ten)", "VexelExpectedValue expects 4 arguments, received: %1"},
      {"STATS_VexelQuantile_HW(ten)", "expected 6 arguments, received: %1"},
      {"STATS_VexelQuantile_HW(ten, 1.5, none, true, 1, false)",
       "expected: numeric constant or a list of numeric constants between 0 and 1, received %1"},
      {"STATS_VexelQuantile_HW(ten, undefined, none, true, 1, false)",
       "expected: numeric constant or a list of numeric constants between 0 and 1, received %1"},
      {"STATS_VexelQuantile_HW(ten, p, none, true, 1, false)",
       "expected: numeric constant or a list of numeric constants between 0 and 1, received %1"},
      {"STATS_VexelQuantile_HW(ten, [0.5, p], none, true, 1, false)",
       "expected: list of numeric constants between 0 and 1, received %1"},
      {"STATS_VexelOrderStatistic_HW(ten)",
       "VexelOrderStatistic expects 4 arguments, received: %1"},
      {"STATS_VexelOrderStatistic_HW(ten, 2.0, none, true)",
       "expected: integer or list of integers, received %1"},
      {"STATS_VexelOrderStatistic_HW(ten, [1, 11], none, true)", "index out of range: %1"},
      {"STATS_VexelOrderStatistic_HW(ten, 0, none, true)", "index out of range: %1"},
      {"STATS_VexelOrderStatistic_HW(ten, [1, 2^40], none, true)", "index out of range: %1"},
      {"STATS_VexelMedian_HW(ten)", "expected 4 arguments, received: %1"},
      {"STATS_VexelMedianDeviation_HW(ten)",
       "VexelAbsoluteDeviation expects 3 arguments, received: %1"},
      {"STATS_VexelFivePointSummary_HW(ten)", "expected two arguments, received: %1"},
      {"STATS_VexelFivePointSummary_HW(holed, false)",
       "data sample must contain at least five elements"},
      {"STATS_VexelStatisticSummary_HW(ten)", "expected 3 arguments, received: %1"},
      {"STATS_VexelStatisticSummary_HW(lost, none, true)",
       "the data set contains only missing data"},
      {"STATS_VexelStatisticSummary_HW(A([1, 2]), A([1, -1]), false)",
       "data weights can not be negative"},
      {"STATS_VexelStatisticSummary_HW(A([1, 2]), A([0, 0]), false)",
       "cumulative data weight must be strictly positive"},
      {"STATS_VexelStatisticSummary_HW(A([1, 2]), A([1, 0]), false)",
       "data sample must contain at least two elements of non-zero weight"},
      {"STATS_VexelCovariance_HW(ten)", "expected 4 arguments, received: %1"},
      {"STATS_VexelCovariance_HW(ten, holed, none, 1)",
       "data samples are expected to have the same size"},
      {"STATS_VexelCovariance_HW(ten, ten, holed, 1)",
       "array of weights is expected to be of the same size as both data samples"},
  };
  for (const auto& [text, message] : kCases) {
    EXPECT_EQ(hostError([&, given = text] { eval(given); }), message) << text;
  }
}

TEST_F(DescriptiveTest, SummariesHoldTheirStatisticsInOrder) {
  EXPECT_THAT(values("STATS_VexelFivePointSummary_HW(ten, false)"), ElementsAre(1, 3, 5.5, 8, 10));
  EXPECT_THAT(values("STATS_VexelStatisticSummary_HW(A([1, 3]), none, false)"),
              ElementsAre(2, testing::DoubleEq(std::sqrt(2.0)), 0, testing::_, 1, 3, 2));
  EXPECT_THAT(values("STATS_VexelStatisticSummary_HW(holed, none, false)"),
              AllOf(SizeIs(7), Each(IsNan())));
}

TEST_F(DescriptiveTest, CovarianceTellsWhatItDoes) {
  std::vector<std::string> told;
  kernel.onUserInfo([&](int level, const std::string& channel, const std::string& text) {
    told.push_back(std::to_string(level) + " " + channel + ": " + text);
  });
  kernel.infoLevel("Statistics", 2);
  EXPECT_THAT(values("STATS_VexelCovariance_HW(A([1, 2, 3]), A([2, 4, 6]), none, 0)"),
              ElementsAre(4, 2, 8, 3));
  EXPECT_THAT(values("STATS_VexelCovariance_HW(A([1, 2]), A([2, 4]), A([0, 0]), 1)"),
              ElementsAre(IsNan(), IsNan(), IsNan(), 0));
  EXPECT_THAT(told, ElementsAre("2 Statistics: instructed not to ignore missing data",
                                "2 Statistics: instructed to igore missing data",
                                "2 Statistics: cumulative weight is equal to 0"));
}

TEST_F(DescriptiveTest, AnErrorOfTheProcedureIsTheErrorOfTheCall) {
  EXPECT_EQ(hostErrorText([&] {
              eval(
                  "STATS_VexelExpectedValue_HW(ten, none,"
                  " proc(t) if t > 3 then error(\"too far: %1\", t) end; t end, false)");
            }),
            "too far: 4.0");
  EXPECT_EQ(value("STATS_VexelExpectedValue_HW(ten, ten, t -> 1/3, true)"), 1.0 / 3.0);
}

// The procedure of a nested call takes the outer one's place, and must outlive the call that
// brought it.
TEST_F(DescriptiveTest, ANestedExpectedValueLeavesItsProcedureAlive) {
  eval("inner := proc(x) STATS_VexelExpectedValue_HW(A([7]), none, y -> 10*x + y, false) end:");
  kernel.stress(true);
  // inner(1) = 17, then 10 + y at 2 and 3.
  EXPECT_EQ(value("STATS_VexelExpectedValue_HW(A([1, 2, 3]), none, inner, false)"), 14.0);
}

}  // namespace
