// What the entry points of the descriptive statistics do beside computing; the numbers and messages
// are in tests/models.

#include <gmock/gmock.h>

#include "kernel_test.hpp"

namespace {

using testing::ElementsAre;
using testing::IsNan;

class DescriptiveTest : public KernelTest {
 protected:
  DescriptiveTest() {
    eval(
        "A := proc(x) Array(x, datatype = float[8]) end:"
        "none := Array([], datatype = float[8]):"
        "ten := A([1, 2, 3, 4, 5, 6, 7, 8, 9, 10]):");
  }
  double value(std::string_view text) { return number(eval(text)); }
  std::vector<double> values(std::string_view text) { return numbers(eval(text)); }
};

// Moving both at once would undo every exchange.
TEST_F(DescriptiveTest, AnArrayAsItsOwnWeightsStaysAsItIs) {
  EXPECT_EQ(value("x := A([3, 1, 2]): STATS_VexelMedian_HW(x, x, false, true)"), 3.0);
  EXPECT_THAT(values("x"), ElementsAre(3, 1, 2));
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
