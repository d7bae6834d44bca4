// Arrays in their own element type, where random calls do not reach: limits of indices, arrays that
// change meanwhile, large tables, comparators by themselves.

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "kernel/element_types.hpp"
#include "kernel_test.hpp"

namespace {

using ArraysTest = KernelTest;

// 3 before 5 and -3 before 3 in every type that can be compared, equal to themselves.
template <typename T>
void expectOrder(int type) {
  const STATS_ElementComparator_HW compare = STATS_ElementComparatorOf_HW(type);
  ASSERT_NE(compare, nullptr) << type;
  const T x[] = {T{-3}, T{3}, T{5}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      EXPECT_EQ(compare(reinterpret_cast<const char*>(&x[i]), reinterpret_cast<const char*>(&x[j])),
                i < j ? -1 : i > j)
          << type;
    }
  }
}

TEST_F(ArraysTest, EveryTypeOfNumbersHasAnOrder) {
  expectOrder<std::int8_t>(RTABLE_INTEGER8);
  expectOrder<std::int16_t>(RTABLE_INTEGER16);
  expectOrder<std::int32_t>(RTABLE_INTEGER32);
  expectOrder<std::int64_t>(RTABLE_INTEGER64);
  expectOrder<float>(RTABLE_FLOAT32);
  expectOrder<double>(RTABLE_FLOAT64);
  EXPECT_EQ(STATS_ElementComparatorOf_HW(RTABLE_COMPLEX), nullptr);
}

TEST_F(ArraysTest, ComparatorsPutNaNsLastAndNeverEqual) {
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

TEST_F(ArraysTest, OrderedRowsNeedIndices) {
  const vexel::Value last = eval("Array(9223372036854775806..9223372036854775807);");
  const vexel::Value ranks = eval("Array([1, 2, 3]);");
  EXPECT_EQ(hostError([&] { call("STATS_VexelOrder_HW", ranks, last, true, false, ranks); }),
            "there are no %1 indices from %2");
}

TEST_F(ArraysTest, PredicatesSeeElementsAsTheyAreWhenTested) {
  const vexel::Value data = array({1, 2, 3, 4});
  const vexel::Value writer =
      kernel.function("w", [&](vexel::Kernel& k, std::span<const vexel::Value>) {
        std::fill_n(static_cast<double*>(RTableDataBlock(k.vector(), data.handle())), 4, 9.0);
        return k.boolean(true);
      });
  EXPECT_EQ(numbers(call("STATS_VexelSelectRemove_HW", data, writer, 1)),
            (std::vector<double>{1, 9, 9, 9}));
  const vexel::Value failing = eval("x -> error(\"stop\");");
  EXPECT_EQ(hostError([&] { call("STATS_VexelSelectRemove_HW", data, failing, 1); }), "stop");
}

TEST_F(ArraysTest, ElementsTakenOutlastTheArray) {
  kernel.stress(true);
  const vexel::Value result = eval(
      "A := Array([f(1), 2, 3]): STATS_VexelSelectRemove_HW(A, proc(e) A[1] := 0; true end, 1);");
  EXPECT_EQ(result[0].text(), "f(1)");
}

TEST_F(ArraysTest, ManyDistinctValuesAreTallied) {
  std::vector<double> x(20000);
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = static_cast<double>(i % 5000) * 4096.0;
  }
  const vexel::Value table = call("STATS_VexelTally_HW", array(x), none());
  for (int i = 0; i < 5000; i += 499) {
    EXPECT_EQ(vexel::Value(kernel, VexelTableSelect(kernel.vector(), table.handle(),
                                                    kernel.real(i * 4096.0).handle())),
              kernel.integer(4));
  }
}

}  // namespace
