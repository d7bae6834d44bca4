// Tables of the distinct values of a sample.

#include <algorithm>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "arrays_test.hpp"

namespace {

using TallyTest = ArraysTest;

TEST_F(TallyTest, TallyCountsEveryType) {
  const std::vector<double> x = {1, 2, 2, 0, 2, 1, -3};
  const std::vector<double> w = {0.5, 1, 1, 2, 4, 8, 16};
  const std::map<double, std::pair<int, double>> expected = {
      {1.0, {2, 8.5}}, {2.0, {3, 6.0}}, {0.0, {1, 2.0}}, {-3.0, {1, 16.0}}};
  for (int type = RTABLE_DAG; type <= RTABLE_FLOAT32; ++type) {
    for (const int storage : {RTABLE_RECTANGULAR, RTABLE_SPARSE}) {
      const vexel::Value data = make(type, x, -1, storage);
      const vexel::Value counts = call("STATS_VexelTally_HW", data, none());
      const vexel::Value sums = call("STATS_VexelTally_HW", data, array(w));
      for (const auto& [v, result] : expected) {
        if (v == 0.0 && storage == RTABLE_SPARSE) {
          continue;  // an absent element is the host's own zero
        }
        const bool whole = type >= RTABLE_INTEGER8 && type <= RTABLE_INTEGER64;
        vexel::Value key = whole ? kernel.integer(static_cast<int>(v)) : kernel.real(v);
        if (type == RTABLE_COMPLEX || type == RTABLE_COMPLEX_DAG) {
          const RTableData e = element(type, v);
          key = vexel::Value(
              kernel, type == RTABLE_COMPLEX
                          ? ToVexelComplex(kernel.vector(), v, 0.0)
                          : ToVexelComplexFloat(kernel.vector(), e.complexdag.re, e.complexdag.im));
        }
        EXPECT_EQ(entry(counts, key), kernel.integer(result.first)) << type << ": " << v;
        ASSERT_FALSE(entry(sums, key).isNull()) << type << ": " << v;
        EXPECT_EQ(entry(sums, key).number(), result.second) << type << ": " << v;
      }
    }
  }
  const vexel::Value nans = call("STATS_VexelTally_HW", array({kNaN, -kNaN, 1}), none());
  EXPECT_EQ(entry(nans, kernel.real(kNaN)), kernel.integer(2));
  // More distinct values than the first table holds.
  std::vector<double> many(20000);
  for (std::size_t i = 0; i < many.size(); ++i) {
    many[i] = static_cast<double>(i % 5000) * 4096.0;
  }
  const vexel::Value table = call("STATS_VexelTally_HW", array(many), none());
  for (int i = 0; i < 5000; i += 499) {
    EXPECT_EQ(entry(table, kernel.real(i * 4096.0)), kernel.integer(4));
  }
  // Integers close together, at the ends of their type, and too far apart for a counter each.
  RTableSettings s;
  RTableGetDefaults(kernel.vector(), &s);
  s.data_type = RTABLE_INTEGER64;
  s.num_dimensions = 1;
  for (const std::vector<std::int64_t>& v :
       std::vector<std::vector<std::int64_t>>{{7, 5, 7, 6, 7},
                                              {INT64_MAX, INT64_MAX - 1, INT64_MAX, INT64_MAX},
                                              {INT64_MIN, INT64_MIN + 2, INT64_MIN},
                                              {INT64_MIN, INT64_MAX, -1, INT64_MAX, 0},
                                              {INT64_MIN}}) {
    const V_INT bounds[] = {1, static_cast<V_INT>(v.size())};
    const vexel::Value whole =
        call("STATS_VexelTally_HW", kernel.array(s, v.data(), bounds), none());
    for (const std::int64_t x64 : v) {
      EXPECT_EQ(entry(whole, kernel.integer(x64)),
                kernel.integer(std::count(v.begin(), v.end(), x64)))
          << x64;
    }
  }
}

// Every run but the last: its length, or its weight.
TEST_F(TallyTest, TallySortedLeavesOutTheLastRun) {
  const std::vector<double> x = {-3, 0, 0, 1, 1, 2, 2, 2, 5, 5};
  const std::vector<double> w = {0.5, 0.25, 0.5, 1, 2, 4, 8, 16, 32, 64};
  const std::map<double, std::pair<int, double>> expected = {
      {-3.0, {1, 0.5}}, {0.0, {2, 0.75}}, {1.0, {2, 3.0}}, {2.0, {3, 28.0}}};
  for (const int type : kRealTypes) {
    const auto keyOf = [&](double v) {
      const bool whole = type >= RTABLE_INTEGER8 && type <= RTABLE_INTEGER64;
      return whole ? kernel.integer(static_cast<int>(v)) : kernel.real(v);
    };
    for (const int storage : {RTABLE_RECTANGULAR, RTABLE_SPARSE}) {
      const vexel::Value data = make(type, x, -2, storage);
      const vexel::Value lengths = call("VexelTallySorted", data, none());
      const vexel::Value sums = call("VexelTallySorted", data, array(w));
      for (const auto& [v, result] : expected) {
        const vexel::Value key = keyOf(v);
        EXPECT_EQ(entry(lengths, key), kernel.integer(result.first)) << type << ": " << v;
        ASSERT_FALSE(entry(sums, key).isNull()) << type << ": " << v;
        EXPECT_EQ(entry(sums, key).number(), result.second) << type << ": " << v;
      }
      EXPECT_TRUE(entry(lengths, keyOf(5)).isNull());
      EXPECT_TRUE(entry(sums, keyOf(5)).isNull());
    }
    for (const std::vector<double>& few : {std::vector<double>{}, {4}, {4, 4, 4}}) {
      EXPECT_EQ(call("VexelTallySorted", make(type, few), none()).source(), "table([])");
    }
  }
  // Runs are of one object: 2 and 2.0 are two, and data out of order keep the last run of a value.
  const vexel::Value mixed = call("VexelTallySorted",
                                  objects({kernel.integer(2), kernel.real(2.0), kernel.real(2.0),
                                           kernel.integer(2), name("q")}),
                                  none());
  EXPECT_EQ(mixed.source(), "table([2 = 1, 2.0 = 2])");
}

TEST_F(TallyTest, MessagesToTheLetter) {
  const vexel::Value v = array({1, 2, 3});
  const vexel::Value w = array({1, 2});
  expectRefusals({
      {"expected 2 arguments, received: %1", [&] { call("STATS_VexelTally_HW", v); }},
      {"invalid data sample, expected: one-dimensional ray, received %1",
       [&] { call("STATS_VexelTally_HW", 1, w); }},
      {"vector of points and vector of weights are expected to have the same size, received %1, %2",
       [&] { call("STATS_VexelTally_HW", v, w); }},
      {"expected 2 arguments, received: %1", [&] { call("VexelTallySorted", v); }},
      {"invalid data sample, expected: one-dimensional ray, received %1",
       [&] { call("VexelTallySorted", 1, w); }},
      {"vector of points and vector of weights are expected to have the same size, received %1, %2",
       [&] { call("VexelTallySorted", v, w); }},
  });
}

}  // namespace
