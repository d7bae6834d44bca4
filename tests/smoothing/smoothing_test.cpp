// The linear filter and moving statistics: examples, slow twins, odd ends and messages.

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <random>

#include "descriptive/quantiles.hpp"
#include "kernel_test.hpp"
#include "smoothing/linear_filter.hpp"
#include "smoothing/moving_mean.hpp"
#include "smoothing/moving_median.hpp"

namespace {

using Doubles = std::vector<double>;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::IsNan;
using testing::NanSensitiveDoubleEq;
using testing::Pointwise;

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

MATCHER(SameNumber, "") {
  const auto& [x, y] = arg;
  return (x == y && std::signbit(x) == std::signbit(y)) || (std::isnan(x) && std::isnan(y));
}

// Series of n values with ties, an infinity and NaNs now and then.
Doubles randomSeries(std::mt19937& random, int n, bool odd) {
  Doubles x(static_cast<std::size_t>(n));
  for (double& v : x) {
    v = static_cast<double>(1 + random() % 30) / 7.0;
    if (odd && random() % 11 == 0) v = kNotANumber;
    if (odd && random() % 13 == 0) v = -std::numeric_limits<double>::infinity();
  }
  return x;
}

TEST(MovingMedianKernel, AgreesWithTheMedianOfEachWindow) {
  std::mt19937 random(5);
  for (int round = 0; round < 2000; ++round) {
    const int n = 1 + static_cast<int>(random() % 150);  // windows kept in order, and heaps
    const int w = 1 + static_cast<int>(random() % static_cast<unsigned>(n));
    const int offset = static_cast<int>(random() % static_cast<unsigned>(n));
    const bool recursive = round % 2 == 1;
    Doubles series = randomSeries(random, n, round % 3 == 0);
    if (round % 5 == 0) {
      for (double& v : series) v = std::copysign(v > 4.0 ? 1.0 : 0.0, random() % 2 ? 1.0 : -1.0);
    }
    series.resize(static_cast<std::size_t>(2 * n), 0.0);
    Doubles slowSeries = series;
    Doubles slow;
    for (int s = 0; s <= n - w; ++s) {
      Doubles window(slowSeries.begin() + s, slowSeries.begin() + s + w);
      slow.push_back(STATS_SimpleMedian_HW(window.data(), w));
      if (recursive) slowSeries[static_cast<std::size_t>(offset + s)] = slow.back();
    }
    Doubles fast(slow.size());
    STATS_MovingMedian_HW(nullptr, series.data(), n, w, offset, recursive, fast.data());
    ASSERT_THAT(fast, Pointwise(SameNumber(), slow)) << "n " << n << ", w " << w;
    ASSERT_THAT(series, Pointwise(SameNumber(), slowSeries)) << "offset " << offset;
  }
}

TEST(MovingMeanKernel, IsTheMeanOfEachWindowToTheLastBit) {
  std::mt19937 random(6);
  for (int round = 0; round < 400; ++round) {
    const int n = 1 + static_cast<int>(random() % 90);
    const int w = 1 + static_cast<int>(random() % static_cast<unsigned>(n));
    const auto type = static_cast<STATS_MEAN_TYPE_HW>(round % 4);
    const Doubles series = randomSeries(random, n, round % 7 == 0);
    const Doubles weights = randomSeries(random, w, false);
    Doubles out(static_cast<std::size_t>(n - w + 1));
    for (const double* given : {static_cast<const double*>(nullptr), weights.data()}) {
      STATS_MovingMean_HW(nullptr, series.data(), given, n, w, type, out.data());
      for (std::size_t s = 0; s < out.size(); ++s) {
        const double mean = STATS_Mean_HW(nullptr, series.data() + s, given, w, type);
        ASSERT_TRUE(out[s] == mean || (std::isnan(out[s]) && std::isnan(mean)))
            << "window " << s << ", kind " << type;
      }
    }
  }
}

TEST(LinearFilterKernel, SumsEachOutputFromTheOldestTerm) {
  std::mt19937 random(8);
  for (int n = 0; n < 60; ++n) {
    const int k = 1 + static_cast<int>(random() % 20);
    Doubles series = randomSeries(random, n + k - 1, false);
    const Doubles taps = randomSeries(random, k, false);
    Doubles out(static_cast<std::size_t>(n));
    STATS_LinearFilter_HW(nullptr, series.data(), taps.data(), n, k, false, out.data());
    for (int i = 0; i < n; ++i) {
      double sum = 0.0;
      for (int j = 0; j < k; ++j) {
        sum += series[static_cast<std::size_t>(i + j)] * taps[static_cast<std::size_t>(j)];
      }
      ASSERT_EQ(out[static_cast<std::size_t>(i)], sum);
    }
  }
}

class SmoothingTest : public KernelTest {
 protected:
  SmoothingTest() {
    eval(
        "A := proc(x) Array(x, datatype = float[8]) end:"
        "none := Array([], datatype = float[8]):"
        "four := A([1, 2, 3, 4]):"
        "holed := A([1, undefined, undefined, 4]):");
  }
};

TEST_F(SmoothingTest, ResultsOfSmallSeries) {
  static const struct {
    const char* call;
    Doubles expected;
  } kCases[] = {
      {"STATS_VexelLinearFilter_HW(A([1, 2, 3]), A([0.5, 0.5]), none, false, false)",
       {0.5, 1.5, 2.5}},
      {"STATS_VexelLinearFilter_HW(A([1, 2, 3]), A([0.5, 0.5]), A([1, 9]), false, false)",
       {1, 1.5, 2.5}},
      {"STATS_VexelLinearFilter_HW(A([1, 1, 1]), A([1, 1]), none, true, false)", {1, 2, 3}},
      {"STATS_VexelLinearFilter_HW(A([1, 1, 1]), A([1, 10, 100]), A([7]), false, false)",
       {71, 711, 111}},
      {"STATS_VexelLinearFilter_HW(four, A([1, 0, 0, 0]), none, false, false)", {1, 2, 3, 4}},
      {"STATS_VexelLinearFilter_HW(four, none, four, true, false)", {0, 0, 0, 0}},
      {"STATS_VexelLinearFilter_HW(none, none, four, false, true)", {}},
      {"STATS_VexelLinearFilter_HW(holed, A([1, 1]), none, false, true)", {1, 5}},
      {"STATS_VexelMovingMean_HW(four, 2, 0, none, false, 0, false)", {1.5, 2.5, 3.5}},
      {"STATS_VexelMovingMean_HW(four, 2, 1, none, false, 0, false)", {1, 1.5, 2.5, 3.5}},
      {"STATS_VexelMovingMean_HW(four, 2, 1, none, false, 0, true)", {1, 1.5, 2.25, 3.125}},
      {"STATS_VexelMovingMean_HW(four, 2, 0, A([1, 3]), false, 0, false)", {1.75, 2.75, 3.75}},
      {"STATS_VexelMovingMean_HW(four, 4, 3, none, false, 0, true)", {1, 2, 3, 2.5}},
      {"STATS_VexelMovingMean_HW(four, 1, 3, none, false, 0, true)", {1, 2, 3, 1, 2, 3, 1}},
      {"STATS_VexelMovingMedian_HW(four, 2, 1, none, false, false)", {1, 1.5, 2.5, 3.5}},
      {"STATS_VexelMovingMedian_HW(A([5, 1, 4, 2]), 3, 1, none, false, true)", {5, 4, 4}},
      {"STATS_VexelMovingMedian_HW(A([5, 1, 4, 2]), 3, 0, A([1, 1, 1]), false, false)", {4, 2}},
      // Two values are left, and the offset reaches beyond them.
      {"STATS_VexelMovingMean_HW(holed, 2, 3, none, true, 0, false)", {1, 4, kNotANumber, 2.5}},
      {"STATS_VexelMovingMedian_HW(holed, 2, 3, none, true, true)", {1, 4, kNotANumber, 2.5}},
      {"STATS_VexelMovingMedian_HW(holed, 3, 0, none, true, false)", {}},
      {"STATS_VexelMovingMedian_HW(holed, 4, 3, none, true, true)", {1, 4}},
      {"STATS_VexelMoving_HW(four, 2, x -> x[1])", {1, 2, 3}},
      {"STATS_VexelMoving_HW(four, 2, (x, a, b) -> x[2] + 10*a + b, 1, 5)", {17, 18, 19}},
      // From index 0 there is a place too many, from 2 on too few.
      {"STATS_VexelMoving_HW(Array(0..2, [1, 2, 3]), 2, x -> x[0])", {1, 2, 0, 0}},
      {"STATS_VexelMoving_HW(Array(2..5, [1, 2, 3, 4]), 2, x -> x[2])", {1}},
      {"STATS_VexelMoving_HW(Array(1..3, [1, 2, 3], storage = sparse), 2, x -> x[2])", {2, 3}},
      {"STATS_VexelLinearFilter_HW(Array(-2^63..1 - 2^63, [undefined, undefined]), A([1]), none, "
       "false, true)",
       {}},
  };
  for (const auto& [text, expected] : kCases) {
    EXPECT_THAT(numbers(eval(std::string(text) + ":")), Pointwise(SameNumber(), expected)) << text;
  }
  EXPECT_THAT(numbers(eval("four")), ElementsAre(1, 2, 3, 4)) << "the input has changed";
  EXPECT_EQ(eval("STATS_VexelLinearFilter_HW(Array(3..4, [1, 2]), A([1]), none, false, false)[4]")
                .number(),
            2.0);
  EXPECT_EQ(eval("STATS_VexelMovingMean_HW(Array(3..4, [1, 2]), 1, 0, none, false, 0, false)[2]")
                .number(),
            2.0);
}

TEST_F(SmoothingTest, MovingHandsTheProcedureTheDataInTheirOwnType) {
  for (const char* type : {"anything", "complex", "integer[1]", "integer[2]", "integer[4]",
                           "integer[8]", "float[8]", "complex[8]", "float[4]"}) {
    for (const char* layout : {"", ", order = row", ", storage = sparse"}) {
      const std::string data =
          std::string("Array(1..4, [3, 1, 4, 1], datatype = ") + type + layout + ")";
      SCOPED_TRACE(data);
      const vexel::Value value = [&] {
        try {
          return eval("STATS_VexelMoving_HW(" + data + ", 2, x -> abs(x[1] + x[2])):");
        } catch (const vexel::Error&) {
          return vexel::Value();  // no such combination in this host
        }
      }();
      if (!value.isNull()) {
        EXPECT_THAT(numbers(value), ElementsAre(4, 5, 5));
      }
    }
  }
}

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

TEST_F(SmoothingTest, EveryMessageIsSpelledAsHostsKnowIt) {
  static constexpr struct {
    const char* call;
    const char* text;  // filled
  } kCases[] = {
      {"STATS_VexelLinearFilter_HW(1, 2)", "expected 5 arguments, received: 1, 2"},
      {"STATS_VexelLinearFilter_HW(four, A([1, 2, 3, 4, 5]), none, false, false)",
       "the size of the filter cannot exceed the size of the data set"},
      {"STATS_VexelMovingMean_HW(1, 2)", "VexelMovingMean expects 7 arguments, received: 1, 2"},
      {"STATS_VexelMovingMedian_HW(1, 2)", "VexelMovingMedian expects 6 arguments, received: 1, 2"},
      {"STATS_VexelMovingMean_HW(four, 0, 0, none, false, 0, false)",
       "invalid size of the moving window, expected: integer between 1 and 4, received: 0"},
      {"STATS_VexelMovingMedian_HW(four, 5, 0, none, false, false)",
       "invalid size of the moving window, expected: integer between 1 and 4, received: 5"},
      {"STATS_VexelMovingMean_HW(four, 2, 4, none, false, 0, false)",
       "invalid offset for the moving window, expected: integer between 0 and 3, received: 4"},
      {"STATS_VexelMovingMedian_HW(four, 2, -1, none, false, false)",
       "invalid offset for the moving window, expected: integer between 0 and 3, received: -1"},
      {"STATS_VexelMovingMean_HW(four, 3, 0, A([1, 2]), false, 0, false)",
       "the number of elements in the weights array must be equal to the size of the moving "
       "window"},
      {"STATS_VexelMovingMedian_HW(four, 3, 0, A([1, 2]), false, false)",
       "the number of elements in the weights array must be equal to the size of the moving "
       "window"},
      {"STATS_VexelMoving_HW(1, 2)", "VexelMoving expects at least 3 arguments, received: 1, 2"},
      {"STATS_VexelMoving_HW(1, 2, x -> x)",
       "invalid data sample, expected: one-dimensional array, received 1"},
      {"STATS_VexelMoving_HW(four, 5, x -> x)",
       "invalid size of the moving window, expected: integer between 1 and 4, received: 5"},
      {"STATS_VexelMoving_HW(Array(-2^63..2 - 2^63), 2, x -> x)", "not enough memory"},
      {"STATS_VexelMoving_HW(four, 1, proc(x) error(\"no %1\", x[1]) end)", "no 1.0"},
  };
  for (const auto& [text, message] : kCases) {
    EXPECT_EQ(hostErrorText([&, given = text] { eval(given); }), message) << text;
  }
}

}  // namespace
