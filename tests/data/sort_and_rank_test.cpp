// Sort and rank over all element types, storages and lower bounds, against a stable sort of
// indices.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <vector>

#include "arrays_test.hpp"
#include "data/element_types.hpp"

namespace {

using SortAndRankTest = ArraysTest;

constexpr bool isFloat(int type) { return type == RTABLE_FLOAT64 || type == RTABLE_FLOAT32; }

// NaN last; equal as far as a test cares when both are NaN.
bool less(double a, double b) { return std::isnan(b) ? !std::isnan(a) : a < b; }

std::vector<double> sampleOf(int type, std::size_t n) {
  std::vector<double> x(n);
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = static_cast<double>((i * 37 + 11) % 23) - 11.0;
    if (isFloat(type) && i % 7 == 3) {
      x[i] = i % 2 == 0 ? std::numeric_limits<double>::quiet_NaN()
                        : (i % 3 == 0 ? HUGE_VAL : -HUGE_VAL);
    }
  }
  return x;
}

TEST_F(SortAndRankTest, SortRankAndDenseRanksAgreeWithAStableSortOfIndices) {
  for (const int type : kRealTypes) {
    for (const std::size_t n : {0U, 1U, 2U, 3U, 40U, 300U}) {
      for (const bool ascending : {true, false}) {
        const std::vector<double> x = sampleOf(type, n);
        std::vector<std::size_t> order(n);
        std::iota(order.begin(), order.end(), 0U);
        std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
          return ascending ? less(x[a], x[b]) : less(x[b], x[a]);
        });
        std::vector<double> sorted;
        std::vector<double> ranks(n);
        for (std::size_t i = 0; i < n; ++i) {
          sorted.push_back(x[order[i]]);
          ranks[order[i]] = static_cast<double>(i) + 1.0;
        }
        std::vector<double> unique;
        for (const double v : sorted) {
          if (unique.empty() || unique.back() != v) {
            unique.push_back(v);
          }
        }
        const vexel::Value data = make(type, x, -2);
        const vexel::Value result = call("STATS_VexelSort_HW", data, ascending, false);
        EXPECT_TRUE(same(elements(result, type), sorted)) << type << ", " << n;
        EXPECT_TRUE(same(elements(call("STATS_VexelSort_HW", data, ascending, true), type), unique))
            << type << ", " << n;
        EXPECT_TRUE(same(elements(data, type, -2), x));
        for (const int storage : {RTABLE_RECTANGULAR, RTABLE_SPARSE}) {
          const vexel::Value again = make(type, x, -2, storage, RTABLE_ROW_MAJOR);
          EXPECT_EQ(
              elements(call("STATS_VexelRankSort_HW", again, 1, ascending), RTABLE_INTEGER32, -2),
              ranks)
              << type << ", " << n;
        }
      }
    }
  }
  const vexel::Value table = call("STATS_VexelRankSort_HW", integers({3, 1, 3, 2}), 0, true);
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(entry(table, kernel.integer(i)), kernel.integer(i));
  }
}

TEST_F(SortAndRankTest, HostObjectsSortByValueAndRankByIdentity) {
  const vexel::Value two = kernel.integer(2);
  const vexel::Value real = kernel.real(2.0);
  const vexel::Value half = eval("1/2;");
  const vexel::Value data = objects({two, half, real, kernel.integer(-1)});
  const vexel::Value sorted = call("STATS_VexelSort_HW", data, true, false);
  EXPECT_EQ(sorted[2], two);
  EXPECT_EQ(sorted[3], real);
  EXPECT_EQ(call("STATS_VexelSort_HW", data, 2, false)[0], two);  // only 1 is ascending
  EXPECT_EQ(call("STATS_VexelSort_HW", data, true, true).size(), 3U);
  const vexel::Value dense = call("STATS_VexelRankSort_HW", data, 0, true);
  EXPECT_EQ(entry(dense, half), kernel.integer(2));
  EXPECT_EQ(entry(dense, two), kernel.integer(3));
  EXPECT_EQ(entry(dense, real), kernel.integer(4));
  const std::string message = "unable to evaluate %1 to floating-point";
  EXPECT_EQ(hostError([&] {
              call("STATS_VexelSort_HW", objects({two, name("q")}), true, false);
            }),
            message);
  // A value alone is compared with nothing.
  EXPECT_EQ(entry(call("STATS_VexelRankSort_HW", objects({name("q")}), 0, true), name("q")),
            kernel.integer(1));
}

TEST_F(SortAndRankTest, Integers64CompareExactly) {
  RTableSettings s;
  RTableGetDefaults(kernel.vector(), &s);
  s.data_type = RTABLE_INTEGER64;
  s.num_dimensions = 1;
  const std::int64_t x[] = {INT64_MAX, INT64_MAX - 1, INT64_MIN, INT64_MIN + 1};
  const V_INT bounds[] = {1, 4};
  const vexel::Value data = kernel.array(s, x, bounds);
  EXPECT_EQ(numbers(call("STATS_VexelRankSort_HW", data, 1, true)),
            (std::vector<double>{4, 3, 1, 2}));
  EXPECT_EQ(call("STATS_VexelSort_HW", data, true, true).size(), 4U);
}

TEST_F(SortAndRankTest, ComparatorsPutNaNsLastAndNeverEqual) {
  const double x[] = {1.0, kNaN, kInf, -0.0, 0.0};
  const auto at = [&](int i) { return reinterpret_cast<const char*>(&x[i]); };
  EXPECT_EQ(STATS_NumericCompareFLOAT64_HW(at(1), at(1)), 1);
  EXPECT_EQ(STATS_NumericCompareFLOAT64_HW(at(1), at(2)), 1);
  EXPECT_EQ(STATS_NumericCompareFLOAT64_HW(at(2), at(1)), -1);
  EXPECT_EQ(STATS_NumericCompareFLOAT64_HW(at(3), at(4)), 0);
  const int sizes[] = {8, 16, 1, 2, 4, 8, 8, 16, 4, 8};
  for (int type = 0; type < 10; ++type) {
    EXPECT_EQ(STATS_RTableDataSize_HW(kernel.vector(), type), sizes[type]);
  }
}

TEST_F(SortAndRankTest, MessagesToTheLetter) {
  const vexel::Value v = array({1, 2, 3});
  const vexel::Value complexes = make(RTABLE_COMPLEX, {1, 2});
  const vexel::Value sparse = make(RTABLE_FLOAT64, {1, 2}, 1, RTABLE_SPARSE);
  expectRefusals({
      {"expected 3 arguments, received: %1", [&] { call("STATS_VexelSort_HW", v); }},
      {"invalid data sample, expected: one-dimensional array, received %1",
       [&] { call("STATS_VexelSort_HW", 3, true, true); }},
      {"invalid storage type, expected: dense array, received %1",
       [&] { call("STATS_VexelSort_HW", sparse, true, true); }},
      {"unable to compare complex numbers",
       [&] { call("STATS_VexelSort_HW", complexes, true, true); }},
      {"unable to compare complex numbers",
       [&] { call("STATS_VexelRankSort_HW", complexes, 1, true); }},
      // What is wrong with the data comes before what is wrong with the form of the result.
      {"unable to compare complex numbers",
       [&] { call("STATS_VexelRankSort_HW", complexes, name("q"), true); }},
  });
}

}  // namespace
