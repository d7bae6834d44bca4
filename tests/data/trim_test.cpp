// Trimmed and winsorized data.

#include <algorithm>
#include <vector>

#include "arrays_test.hpp"

namespace {

using TrimTest = ArraysTest;

TEST_F(TrimTest, TrimAndWinsorizeCutAtTruncatedPositions) {
  const std::vector<double> x = {5, 1, 4, 2, 3, 6, 8, 7, 10, 9};
  for (int type = RTABLE_DAG; type <= RTABLE_FLOAT32; ++type) {
    for (const int storage : {RTABLE_RECTANGULAR, RTABLE_SPARSE}) {
      if (type == RTABLE_DAG && storage == RTABLE_SPARSE) {
        continue;  // host objects of a sparse array keep their index as position
      }
      const vexel::Value data = make(type, x, 0, storage);
      const auto cut = [&](const char* what, double lower, double upper) {
        std::vector<double> r = elements(call(what, data, lower, upper), type);
        std::sort(r.begin(), r.end());
        return r;
      };
      EXPECT_EQ(cut("STATS_VexelTrim_HW", 10, 90), (std::vector<double>{2, 3, 4, 5, 6, 7, 8, 9}));
      EXPECT_EQ(cut("STATS_VexelTrim_HW", 0, 100).size(), 10U);
      EXPECT_EQ(cut("STATS_VexelTrim_HW", 50, 50).size(), 0U);
      EXPECT_EQ(cut("STATS_VexelWinsorize_HW", 10, 80),
                (std::vector<double>{2, 2, 3, 4, 5, 6, 7, 8, 9, 9}));
      EXPECT_EQ(cut("STATS_VexelWinsorize_HW", 100, 100), (std::vector<double>(10, 10.0)));
    }
    EXPECT_EQ(elements(call("STATS_VexelTrim_HW", make(type, {}), 0, 100), type).size(), 0U);
    EXPECT_EQ(elements(call("STATS_VexelWinsorize_HW", make(type, {}), 0, 100), type).size(), 0U);
  }
  // NaNs rank last, so an upper cut below them removes them.
  EXPECT_EQ(numbers(call("STATS_VexelTrim_HW", array({kNaN, 2, kNaN, 1}), 25, 50)),
            (std::vector<double>{2}));
}

TEST_F(TrimTest, MessagesToTheLetter) {
  const vexel::Value v = array({1, 2, 3});
  expectRefusals({
      {"VexelTrim expects 3 arguments, received: %1", [&] { call("STATS_VexelWinsorize_HW", v); }},
      {"expected second argument (lower percentile) to be a numeric constant between 0 and 100, "
       "received: %1",
       [&] { call("STATS_VexelTrim_HW", v, 100.5, 50); }},
      {"expected third argument (upper percentile) to be a numeric constant between 0 and 100, "
       "received: %1",
       [&] { call("STATS_VexelWinsorize_HW", v, 0, kNaN); }},
      {"the value of lower percentile is expected to be smaller than the value of upper "
       "percentile, received: %1, %2",
       [&] { call("STATS_VexelTrim_HW", v, 60, 40); }},
  });
}

}  // namespace
