// Array operations over all element types, orders, storages and lower bounds, against slow twins.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <numeric>
#include <string>
#include <vector>

#include "data/element_types.hpp"
#include "kernel_test.hpp"

namespace {

constexpr int kRealTypes[] = {RTABLE_DAG,       RTABLE_INTEGER8, RTABLE_INTEGER16, RTABLE_INTEGER32,
                              RTABLE_INTEGER64, RTABLE_FLOAT64,  RTABLE_FLOAT32};
constexpr bool isFloat(int type) { return type == RTABLE_FLOAT64 || type == RTABLE_FLOAT32; }

class ArraysTest : public KernelTest {
 protected:
  // A vector of small values in any element type; complex types get no imaginary part.
  vexel::Value make(int type, const std::vector<double>& x, V_INT lower = 1,
                    int storage = RTABLE_RECTANGULAR, int order = RTABLE_COLUMN_MAJOR) {
    RTableSettings s;
    RTableGetDefaults(kernel.vector(), &s);
    s.data_type = type;
    s.storage = storage;
    s.order = order;
    s.num_dimensions = 1;
    const V_INT bounds[] = {lower, lower + static_cast<V_INT>(x.size()) - 1};
    const vexel::Value result = kernel.array(s, nullptr, bounds);
    for (std::size_t i = 0; i < x.size(); ++i) {
      const V_INT index = lower + static_cast<V_INT>(i);
      RTableAssign(kernel.vector(), result.handle(), &index, element(type, x[i]));
    }
    return result;
  }
  vexel::Value objects(const std::vector<vexel::Value>& x) {
    const vexel::Value result = make(RTABLE_DAG, std::vector<double>(x.size(), 0.0));
    for (std::size_t i = 0; i < x.size(); ++i) {
      const V_INT index = static_cast<V_INT>(i) + 1;
      RTableData e{};
      e.dag = x[i].handle();
      RTableAssign(kernel.vector(), result.handle(), &index, e);
    }
    return result;
  }
  RTableData element(int type, double x) {
    RTableData e{};
    switch (type) {
      case RTABLE_INTEGER8:
        e.int8 = static_cast<std::int8_t>(x);
        break;
      case RTABLE_INTEGER16:
        e.int16 = static_cast<std::int16_t>(x);
        break;
      case RTABLE_INTEGER32:
        e.int32 = static_cast<std::int32_t>(x);
        break;
      case RTABLE_INTEGER64:
        e.int64 = static_cast<std::int64_t>(x);
        break;
      case RTABLE_FLOAT64:
        e.float64 = x;
        break;
      case RTABLE_FLOAT32:
        e.float32 = static_cast<float>(x);
        break;
      case RTABLE_COMPLEX:
        e.complexf64.re = x;
        break;
      case RTABLE_COMPLEX_DAG:
        e.complexdag.re = ToVexelFloat(kernel.vector(), x);
        e.complexdag.im = ToVexelInteger(kernel.vector(), 0);
        break;
      default:
        e.dag = ToVexelFloat(kernel.vector(), x);
        break;
    }
    return e;
  }
  static double value(VKernelVector kv, const RTableData& e, int type) {
    switch (type) {
      case RTABLE_INTEGER8:
        return e.int8;
      case RTABLE_INTEGER16:
        return e.int16;
      case RTABLE_INTEGER32:
        return e.int32;
      case RTABLE_INTEGER64:
        return static_cast<double>(e.int64);
      case RTABLE_FLOAT64:
        return e.float64;
      case RTABLE_FLOAT32:
        return static_cast<double>(e.float32);
      case RTABLE_COMPLEX:
        return e.complexf64.re;
      case RTABLE_COMPLEX_DAG:
        return VexelToFloat64(kv, e.complexdag.re);
      default:
        return VexelToFloat64(kv, e.dag);
    }
  }

  // Elements, and the type and lower bound that a result must have.
  std::vector<double> elements(const vexel::Value& x, int type, V_INT lower = 1) {
    RTableSettings s;
    RTableGetSettings(kernel.vector(), &s, x.handle());
    EXPECT_EQ(s.data_type, type);
    EXPECT_EQ(RTableLowerBound(kernel.vector(), x.handle(), 1), lower);
    std::vector<double> result;
    const V_INT n = RTableNumElements(kernel.vector(), x.handle());
    for (V_INT i = lower; i < lower + n; ++i) {
      result.push_back(value(kernel.vector(), RTableSelect(kernel.vector(), x.handle(), &i), type));
    }
    return result;
  }
  vexel::Value entry(const vexel::Value& table, const vexel::Value& key) {
    if (VexelTableHasEntry(kernel.vector(), table.handle(), key.handle()) == 0) {
      return kernel.null();
    }
    return {kernel, VexelTableSelect(kernel.vector(), table.handle(), key.handle())};
  }
  vexel::Value integers(const std::vector<double>& x) { return make(RTABLE_INTEGER32, x); }

  const std::string notVector = "invalid data sample, expected: one-dimensional array, received %1";
};

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

bool same(const std::vector<double>& a, const std::vector<double>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); });
}

}  // namespace

TEST_F(ArraysTest, SortRankAndDenseRanksAgreeWithAStableSortOfIndices) {
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

TEST_F(ArraysTest, HostObjectsSortByValueAndRankByIdentity) {
  const vexel::Value two = kernel.integer(2);
  const vexel::Value real = kernel.real(2.0);
  const vexel::Value half = eval("1/2;");
  const vexel::Value data = objects({two, half, real, kernel.integer(-1)});
  const vexel::Value sorted = call("STATS_VexelSort_HW", data, true, false);
  EXPECT_EQ(sorted[2], two);
  EXPECT_EQ(sorted[3], real);
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

TEST_F(ArraysTest, Integers64CompareExactly) {
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

TEST_F(ArraysTest, OrderMovesRowsInEveryTypeAndLayout) {
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

TEST_F(ArraysTest, InRangeIsClosedBelowAndOpenAbove) {
  for (int type = RTABLE_DAG; type <= RTABLE_FLOAT32; ++type) {
    for (const int storage : {RTABLE_RECTANGULAR, RTABLE_SPARSE}) {
      const vexel::Value data = make(type, {1, 2, 3, 0}, 0, storage);
      const auto split = [&](int mode) {
        return call("STATS_VexelSelectRemoveInRange_HW", data, 1, 3, mode);
      };
      EXPECT_EQ(elements(split(1), type, 0), (std::vector<double>{1, 2}));
      EXPECT_EQ(elements(split(2), type, 0), (std::vector<double>{3, 0}));
      EXPECT_EQ(elements(split(7)[0], type, 0), (std::vector<double>{1, 2}));
      EXPECT_EQ(elements(split(7)[1], type, 0), (std::vector<double>{3, 0}));
    }
    const vexel::Value empty = make(type, {}, 4);
    EXPECT_EQ(
        elements(call("STATS_VexelSelectRemoveInRange_HW", empty, 0, 1, 0)[1], type, 4).size(), 0U);
  }
  const vexel::Value data = array({kNaN, 1, kInf, -kInf});
  EXPECT_TRUE(same(numbers(call("STATS_VexelSelectRemoveInRange_HW", data, 0, kInf, 2)),
                   {kNaN, kInf, -kInf}));
  // Complex elements must be real and have a value: 1.0, 1.0 + 2.0 I, q, 1.0 + q I.
  const vexel::Value complexes = make(RTABLE_COMPLEX_DAG, {1, 1, 1, 1});
  const auto assign = [&](V_INT index, const vexel::Value& re, const vexel::Value& im) {
    RTableData e{};
    e.complexdag.re = re.handle();
    e.complexdag.im = im.handle();
    RTableAssign(kernel.vector(), complexes.handle(), &index, e);
  };
  assign(2, kernel.real(1.0), kernel.real(2.0));
  assign(3, name("q"), kernel.integer(0));
  assign(4, kernel.real(1.0), name("q"));
  const vexel::Value halves = call("STATS_VexelSelectRemoveInRange_HW", complexes, 0, 5, 0);
  EXPECT_EQ(halves[0].size(), 1U);
  EXPECT_EQ(halves[1].size(), 3U);
}

TEST_F(ArraysTest, SelectRemoveHandsElementsAndExtrasToThePredicate) {
  std::vector<std::string> seen;
  const vexel::Value predicate =
      kernel.function("p", [&](vexel::Kernel& k, std::span<const vexel::Value> a) {
        std::string call;
        for (const auto& v : a) {
          call += v.text() + " ";
        }
        seen.push_back(call);
        return k.boolean(a[0].text().front() == '2');
      });
  for (const int type : {RTABLE_INTEGER8, RTABLE_INTEGER64, RTABLE_FLOAT32}) {
    seen.clear();
    const vexel::Value r =
        call("STATS_VexelSelectRemove_HW", make(type, {1, 2, 3}, 0), predicate, 0, 8, 9);
    EXPECT_EQ(elements(r[0], type, 0), (std::vector<double>{2}));
    EXPECT_EQ(elements(r[1], type, 0), (std::vector<double>{1, 3}));
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_EQ(seen[0].substr(seen[0].size() - 5), " 8 9 ");
  }
  const auto withResult = [&](const char* body) {
    const vexel::Value p = eval(body);
    return hostError([&] { call("STATS_VexelSelectRemove_HW", array({1, 2}), p, 1); });
  };
  EXPECT_NE(withResult("x -> 2.5;"), "no error");
  EXPECT_EQ(withResult("x -> error(\"stop\");"), "stop");
  // A predicate that changes the array: each element is taken as it was when it was tested.
  const vexel::Value data = array({1, 2, 3, 4});
  const vexel::Value writer =
      kernel.function("w", [&](vexel::Kernel& k, std::span<const vexel::Value>) {
        std::fill_n(static_cast<double*>(RTableDataBlock(k.vector(), data.handle())), 4, 9.0);
        return k.boolean(true);
      });
  EXPECT_EQ(numbers(call("STATS_VexelSelectRemove_HW", data, writer, 1)),
            (std::vector<double>{1, 9, 9, 9}));
}

TEST_F(ArraysTest, NonNumericAndNullEntries) {
  const auto split = [&](const vexel::Value& x, bool inf, bool nan, bool first) {
    return call("STATS_VexelSelectRemoveNonNumeric_HW", x, inf, nan, first);
  };
  const vexel::Value floats = make(RTABLE_FLOAT64, {1, kNaN, kInf, -kInf}, 0);
  EXPECT_TRUE(same(numbers(split(floats, false, true, true)), {kNaN}));
  EXPECT_EQ(numbers(split(floats, true, false, true)), (std::vector<double>{kInf, -kInf}));
  EXPECT_EQ(split(floats, false, false, true).size(), 0U);
  EXPECT_EQ(elements(split(floats, true, true, false)[1], RTABLE_FLOAT64),
            (std::vector<double>{1}));
  // Integers come back whole in the group of the non-numeric.
  const vexel::Value whole = split(make(RTABLE_INTEGER16, {4, 5}, 3), true, true, false);
  EXPECT_EQ(elements(whole[0], RTABLE_INTEGER16, 3), (std::vector<double>{4, 5}));
  EXPECT_EQ(whole[1].size(), 0U);
  const vexel::Value mixed = objects({kernel.integer(1), name("x"), kernel.null(), name("Pi")});
  EXPECT_EQ(split(mixed, false, false, true).size(), 2U);
  EXPECT_EQ(call("STATS_VexelRemoveNULL_HW", mixed).size(), 3U);
  EXPECT_EQ(elements(call("STATS_VexelRemoveNULL_HW", make(RTABLE_FLOAT32, {4, 5}, 3)),
                     RTABLE_FLOAT32, 3),
            (std::vector<double>{4, 5}));
}

TEST_F(ArraysTest, TrimAndWinsorizeCutAtTruncatedPositions) {
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

TEST_F(ArraysTest, ShuffleDrawsTopBitsAndRejects) {
  // i = 3: 3 bits, 7 is refused, then 1; i = 2: 2 bits, 3 is refused, then 0; i = 1: 2 bits, 1.
  const auto top = [](unsigned value, int bits) {
    return static_cast<std::int32_t>(value << (32 - bits));
  };
  for (int type = RTABLE_DAG; type <= RTABLE_FLOAT32; ++type) {
    const vexel::Value data = make(type, {10, 20, 30, 40}, 0);
    scriptIntegers({top(7, 3), top(1, 3), top(3, 2), top(0, 2), top(1, 2)});
    EXPECT_EQ(elements(call("STATS_VexelShuffle_HW", data), type),
              (std::vector<double>{30, 40, 10, 20}));
    kernel.unscriptRandom();
    EXPECT_EQ(elements(data, type, 0), (std::vector<double>{10, 20, 30, 40}));
  }
  const std::uint64_t before = kernel.drawsTaken();
  EXPECT_EQ(call("STATS_VexelShuffle_HW", array({7})).size(), 1U);
  EXPECT_EQ(call("STATS_VexelShuffle_HW", array({})).size(), 0U);
  EXPECT_EQ(kernel.drawsTaken(), before);

  // The textbook loop on the same draws.
  std::vector<double> x(1000);
  std::iota(x.begin(), x.end(), 0.0);
  kernel.seed(5);
  const std::vector<double> shuffled = numbers(call("STATS_VexelShuffle_HW", array(x)));
  kernel.seed(5);
  for (std::uint32_t i = 999; i > 0; --i) {
    int bits = 0;
    while (bits < 32 && (i + 1) >> bits != 0) {
      ++bits;
    }
    std::uint32_t j;
    do {
      j = static_cast<std::uint32_t>(VexelRandomInt32(kernel.vector())) >> (32 - bits);
    } while (j > i);
    std::swap(x[i], x[j]);
  }
  EXPECT_EQ(shuffled, x);
}

TEST_F(ArraysTest, TallyCountsEveryType) {
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
TEST_F(ArraysTest, TallySortedLeavesOutTheLastRun) {
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

TEST_F(ArraysTest, MessagesToTheLetter) {
  const vexel::Value v = array({1, 2, 3});
  const vexel::Value w = array({1, 2});
  const vexel::Value complexes = make(RTABLE_COMPLEX, {1, 2});
  const vexel::Value sparse = make(RTABLE_FLOAT64, {1, 2}, 1, RTABLE_SPARSE);
  const vexel::Value p = eval("x -> true;");
  const auto ordered = [&](const vexel::Value& ranks, bool unique) {
    call("STATS_VexelOrder_HW", v, v, true, unique, ranks);
  };
  const std::vector<std::pair<std::string, std::function<void()>>> cases = {
      {"expected 3 arguments, received: %1", [&] { call("STATS_VexelSort_HW", v); }},
      {notVector, [&] { call("STATS_VexelSort_HW", 3, true, true); }},
      {"invalid storage type, expected: dense array, received %1",
       [&] { call("STATS_VexelSort_HW", sparse, true, true); }},
      {"unable to compare complex numbers",
       [&] { call("STATS_VexelSort_HW", complexes, true, true); }},
      {"unable to compare complex numbers",
       [&] { call("STATS_VexelRankSort_HW", complexes, 1, true); }},
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
      {"VexelSelectRemove expects at least 3 arguments",
       [&] { call("STATS_VexelSelectRemove_HW", v, p); }},
      {"invalid selecting function, expected a procedure that always returns true or false, "
       "received: %1",
       [&] { call("STATS_VexelSelectRemove_HW", 1, 2, 1); }},
      {notVector, [&] { call("STATS_VexelSelectRemove_HW", 1, p, 1); }},
      {"VexelSelectRemoveInRange expects 4 arguments",
       [&] { call("STATS_VexelSelectRemoveInRange_HW", v); }},
      {"VexelSelectRemoveNonNumeric expects 4 arguments, received: %1",
       [&] { call("STATS_VexelSelectRemoveNonNumeric_HW", v); }},
      {"VexelRemoveNULL expects 1 argument, received: %1",
       [&] { call("STATS_VexelRemoveNULL_HW", v, v); }},
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
      {"VexelShuffle expects 1 argument, received: %1", [&] { call("STATS_VexelShuffle_HW"); }},
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
      // What is wrong with the data comes before what is wrong with the form of the result.
      {"unable to compare complex numbers",
       [&] { call("STATS_VexelRankSort_HW", complexes, name("q"), true); }},
  };
  for (const auto& [message, f] : cases) {
    EXPECT_EQ(hostError(f), message);
  }
  EXPECT_NE(hostError([&] { call("STATS_VexelShuffle_HW", sparse); }), "no error");
}
