// Order: rows moved to their ranks.

#include <vector>

#include "arrays_test.hpp"

namespace {

using OrderTest = ArraysTest;

TEST_F(OrderTest, OrderMovesRowsInEveryTypeAndLayout) {
  const std::vector<double> x = {10, 20, 30};
  for (int type = RTABLE_DAG; type <= RTABLE_FLOAT32; ++type) {
    const vexel::Value target = make(type, {}, 5);
    const vexel::Value source = make(type, x, 0, type == 3 ? RTABLE_SPARSE : RTABLE_RECTANGULAR);
    const vexel::Value ranks =
        make(type == RTABLE_DAG ? RTABLE_FLOAT64 : RTABLE_INTEGER32, {2, 3, 1});
    if (type != RTABLE_DAG) {
      EXPECT_EQ(elements(call("STATS_VexelOrder_HW", source, target, true, false, ranks), type, 5),
                (std::vector<double>{30, 10, 20}));
      EXPECT_EQ(elements(call("STATS_VexelOrder_HW", source, target, false, false, ranks), type, 5),
                (std::vector<double>{20, 10, 30}));
    }
    // The later row stays, and position 2 drops out.
    EXPECT_EQ(elements(call("STATS_VexelOrder_HW", source, target, true, true, integers({1, 3, 1})),
                       type, 5),
              (std::vector<double>{30, 20}));
  }
  // 3 x 2, each layout to each layout.
  for (const int from : {RTABLE_COLUMN_MAJOR, RTABLE_ROW_MAJOR}) {
    for (const int to : {RTABLE_COLUMN_MAJOR, RTABLE_ROW_MAJOR}) {
      RTableSettings s;
      RTableGetDefaults(kernel.vector(), &s);
      s.data_type = RTABLE_INTEGER16;
      s.num_dimensions = 2;
      s.order = from;
      const V_INT bounds[] = {1, 3, 1, 2};
      const vexel::Value source = kernel.array(s, nullptr, bounds);
      for (V_INT i = 1; i <= 3; ++i) {
        for (V_INT j = 1; j <= 2; ++j) {
          const V_INT at[] = {i, j};
          RTableAssign(kernel.vector(), source.handle(), at,
                       element(RTABLE_INTEGER16, static_cast<double>(10 * i + j)));
        }
      }
      s.order = to;
      const vexel::Value target = kernel.array(s, nullptr, bounds);
      const vexel::Value result =
          call("STATS_VexelOrder_HW", source, target, true, false, integers({3, 1, 2}));
      const int expected[] = {2, 3, 1};
      for (V_INT i = 1; i <= 3; ++i) {
        for (V_INT j = 1; j <= 2; ++j) {
          const V_INT at[] = {i, j};
          EXPECT_EQ(RTableSelect(kernel.vector(), result.handle(), at).int16,
                    10 * expected[i - 1] + j);
        }
      }
    }
  }
}

TEST_F(OrderTest, MessagesToTheLetter) {
  const vexel::Value v = array({1, 2, 3});
  const auto ordered = [&](const vexel::Value& ranks, bool unique) {
    call("STATS_VexelOrder_HW", v, v, true, unique, ranks);
  };
  expectRefusals({
      {"expected 4 arguments, received: %1", [&] { call("STATS_VexelOrder_HW", v, v, true, v); }},
      {"expected rtables as the source, received: %1",
       [&] { call("STATS_VexelOrder_HW", 1, v, true, true, v); }},
      {"expected rtables as the target, received: %1",
       [&] { call("STATS_VexelOrder_HW", v, 1, true, true, v); }},
      {"invalid ranks data, expected: one-dimensional array, received %1",
       [&] { ordered(kernel.integer(1), true); }},
      {"data sample and ranks table are expected to have the same number of rows/elements",
       [&] { ordered(integers({1}), true); }},
      {"the source and the target must have the same datatype",
       [&] {
         call("STATS_VexelOrder_HW", v, integers({1}), true, true, integers({1, 2, 3}));
       }},
      {"invalid rank: %1",
       [&] {
         ordered(integers({1, 0, 2}), false);
       }},
      {"invalid rank: %1",
       [&] {
         ordered(integers({1, 4, 2}), true);
       }},
      {"there are no %1 indices from %2",
       [&] {
         const vexel::Value last = eval("Array(9223372036854775806..9223372036854775807);");
         call("STATS_VexelOrder_HW", objects({last, last, last}), last, true, false,
              integers({1, 2, 3}));
       }},
      {"invalid rank: %1",
       [&] {
         const vexel::Value noColumns = eval("Array(1..2, 1..0, order = row);");
         call("STATS_VexelOrder_HW", noColumns, noColumns, true, false, integers({1, 3}));
       }},
      {"duplicate rank: %1",
       [&] {
         ordered(integers({1, 1, 2}), false);
       }},
  });
}

}  // namespace
