// Arrays of the host: every element type, order, storage and lower bound.

#include "values/arrays.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "state_test.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {
namespace {

constexpr int kTypes = 9;

class CoreArraysTest : public StateTest {
 protected:
  static RTableSettings settings(int type, int storage = RTABLE_RECTANGULAR,
                                 int order = RTABLE_COLUMN_MAJOR, int dimensions = 1) {
    return {type, storage, order, dimensions, 0};
  }

  ALGEB create(const RTableSettings& s, std::vector<V_INT> bounds, const void* data = nullptr) {
    return RTableCreate(&state, &s, data, bounds.data());
  }

  // A vector 1..n of host objects.
  ALGEB objects(std::vector<ALGEB> elements) {
    return create(settings(RTABLE_DAG), {1, static_cast<V_INT>(elements.size())}, elements.data());
  }
};

// Element (i, j) is 10 i + j, written and read by index; a copy into each type, order and storage
// has the same elements, and the source is as it was.
TEST_F(CoreArraysTest, CopiesBetweenAllTypesOrdersAndStorages) {
  const std::vector<V_INT> bounds = {-1, 1, 5, 8};
  const auto expected = [](V_INT i, V_INT j) { return static_cast<double>(10 * i + j); };
  for (int kind = 0; kind < kTypes * 4; ++kind) {
    const RTableSettings s =
        settings(kind / 4, kind % 2 ? RTABLE_SPARSE : RTABLE_RECTANGULAR, kind / 2 % 2, 2);
    ALGEB source = create(s, bounds);
    for (V_INT i = -1; i <= 1; ++i) {
      for (V_INT j = 5; j <= 8; ++j) {
        const V_INT index[] = {i, j};
        arrayAssign(state, source, index, newFloat(state, expected(i, j)));
      }
    }
    for (int other = 0; other < kTypes * 4; ++other) {
      SCOPED_TRACE(testing::Message() << "from " << kind << " to " << other);
      const RTableSettings t =
          settings(other / 4, other % 2 ? RTABLE_SPARSE : RTABLE_RECTANGULAR, other / 2 % 2, 2);
      ALGEB copy = RTableCopy(&state, &t, source);
      ASSERT_EQ(RTableNumElements(&state, copy), 12);
      ASSERT_EQ(RTableLowerBound(&state, copy, 1), -1);
      ASSERT_EQ(RTableUpperBound(&state, copy, 2), 8);
      for (ALGEB x : {source, copy}) {
        for (V_INT i = -1; i <= 1; ++i) {
          for (V_INT j = 5; j <= 8; ++j) {
            const V_INT index[] = {i, j};
            ALGEB e = arraySelect(state, x, index);
            ASSERT_EQ(toDouble(state, realPart(e)), expected(i, j));
          }
        }
      }
    }
  }
}

TEST_F(CoreArraysTest, DataBlocksRunInTheirOrder) {
  const double data[] = {1, 2, 3, 4, 5, 6};
  for (int order : {RTABLE_COLUMN_MAJOR, RTABLE_ROW_MAJOR}) {
    ALGEB x = create(settings(RTABLE_FLOAT64, RTABLE_RECTANGULAR, order, 2), {1, 2, 1, 3}, data);
    const V_INT index[] = {2, 1};
    EXPECT_EQ(RTableSelect(&state, x, index).float64, order == RTABLE_COLUMN_MAJOR ? 2 : 4);
    auto* block = static_cast<double*>(RTableDataBlock(&state, x));
    EXPECT_EQ(std::memcmp(block, data, sizeof data), 0);
    block[1] = 20;
    const V_INT changed[] = {order == RTABLE_COLUMN_MAJOR ? 2 : 1,
                             order == RTABLE_COLUMN_MAJOR ? 1 : 2};
    EXPECT_EQ(RTableSelect(&state, x, changed).float64, 20);
  }
}

TEST_F(CoreArraysTest, NewArraysAreZeroAndEmptyOnesAllowed) {
  for (int type = 0; type < kTypes; ++type) {
    for (int storage : {RTABLE_RECTANGULAR, RTABLE_SPARSE}) {
      ALGEB x = create(settings(type, storage), {0, 2});
      const V_INT index[] = {1};
      EXPECT_TRUE(isZero(arraySelect(state, x, index))) << type;
      ALGEB empty = create(settings(type, storage), {1, 0});
      EXPECT_EQ(RTableNumElements(&state, empty), 0);
      EXPECT_EQ(RTableUpperBound(&state, empty, 1), 0);
    }
  }
  const V_INT far[] = {V_INT{1} << 62};
  ALGEB distant = create(settings(RTABLE_FLOAT64), {V_INT{1} << 62, (V_INT{1} << 62) + 2});
  EXPECT_EQ(RTableSelect(&state, distant, far).float64, 0.0);
}

TEST_F(CoreArraysTest, ObjectsBecomeTheNearestFloats) {
  ALGEB third = divide(state, immediate(1), immediate(3));
  ALGEB pi = name(state, "Pi");
  ALGEB mixed = objects({immediate(2), third, pi, state.undefined, numberFromText(state, "1e999"),
                         numberFromText(state, "0.1")});
  const RTableSettings s = settings(RTABLE_FLOAT64);
  ALGEB floats = RTableCopy(&state, &s, mixed);
  const auto* d = static_cast<const double*>(RTableDataBlock(&state, floats));
  EXPECT_EQ(d[0], 2.0);
  EXPECT_EQ(d[1], 1.0 / 3.0);
  EXPECT_EQ(d[2], 3.141592653589793);
  EXPECT_TRUE(std::isnan(d[3]));
  EXPECT_EQ(d[4], std::numeric_limits<double>::infinity());
  EXPECT_EQ(d[5], 0.1);
}

TEST_F(CoreArraysTest, WhatCannotBeConvertedIsNamed) {
  ALGEB x = name(state, "x");
  ALGEB complexNumber = newComplex(state, immediate(1), immediate(2));
  const struct {
    int type;
    ALGEB element;
    const char* message;
  } kCases[] = {
      {RTABLE_FLOAT64, x, "unable to store x in an array of float[8]"},
      {RTABLE_FLOAT64, state.null, "unable to store NULL in an array of float[8]"},
      {RTABLE_FLOAT64, complexNumber, "unable to store 1 + 2*I in an array of float[8]"},
      {RTABLE_FLOAT32, string(state, "a"), "unable to store \"a\" in an array of float[4]"},
      {RTABLE_INTEGER8, immediate(128), "unable to store 128 in an array of integer[1]"},
      {RTABLE_INTEGER8, immediate(-129), "unable to store -129 in an array of integer[1]"},
      {RTABLE_INTEGER16, immediate(32768), "unable to store 32768 in an array of integer[2]"},
      {RTABLE_INTEGER32, newFloat(state, 0.5), "unable to store 0.5 in an array of integer[4]"},
      {RTABLE_INTEGER64, numberFromText(state, "9223372036854775808"),
       "unable to store 9223372036854775808 in an array of integer[8]"},
      {RTABLE_INTEGER64, newFloat(state, 1e300),
       "unable to store 1e+300 in an array of integer[8]"},
      {RTABLE_INTEGER64, state.undefined,
       "unable to store Float(undefined) in an array of integer[8]"},
      {RTABLE_COMPLEX, x, "unable to store x in an array of complex[8]"},
  };
  for (const auto& c : kCases) {
    const RTableSettings s = settings(c.type);
    ALGEB source = objects({immediate(1), c.element});
    EXPECT_EQ(error([&] { RTableCopy(&state, &s, source); }), c.message);
  }
}

TEST_F(CoreArraysTest, MisuseRaises) {
  ALGEB vector = create(settings(RTABLE_FLOAT64), {0, 2});
  ALGEB sparse = create(settings(RTABLE_FLOAT64, RTABLE_SPARSE), {1, 2});
  RTableSettings readOnly = settings(RTABLE_FLOAT64);
  readOnly.read_only = 1;
  ALGEB fixed = create(readOnly, {1, 1});
  const V_INT low[] = {-1};
  const V_INT high[] = {3};
  const V_INT one[] = {1};
  const V_INT huge = V_INT{1} << 60;
  const std::pair<std::function<void()>, const char*> kCases[] = {
      {[&] { RTableSelect(&state, vector, low); }, "array index -1 out of range"},
      {[&] { RTableAssign(&state, vector, high, {}); }, "array index 3 out of range"},
      {[&] { RTableAssign(&state, fixed, one, {}); }, "array is read-only"},
      {[&] { RTableLowerBound(&state, vector, 2); }, "array has no dimension 2"},
      {[&] { RTableLowerBound(&state, vector, 0); }, "array has no dimension 0"},
      {[&] { RTableNumElements(&state, immediate(1)); }, "an array expected, received 1"},
      {[&] { RTableDataBlock(&state, sparse); },
       "an array of rectangular storage expected, received Array(1..2, [0.0, 0.0], datatype = "
       "float[8], storage = sparse)"},
      {[&] {
         create(settings(9), {1, 1});
       },
       "invalid array element type, received 9"},
      {[&] {
         create(settings(-1), {1, 1});
       },
       "invalid array element type, received -1"},
      {[&] {
         create(settings(6, 3), {1, 1});
       },
       "invalid array storage, received 3"},
      {[&] {
         create(settings(6, 4, 2), {1, 1});
       },
       "invalid array order, received 2"},
      {[&] {
         create(settings(6, 4, 0, 64), {1, 1});
       },
       "invalid number of array dimensions, received 64"},
      {[&] {
         create(settings(6), {1, huge});
       },
       "not enough memory"},
      {[&] {
         create(settings(6), {-huge * 8, huge * 4});
       },
       "not enough memory"},
      {[&] {
         create(settings(6, 4, 0, 2), {1, huge, 1, huge});
       },
       "not enough memory"},
      {[&] {
         create(settings(6), {1, V_INT{1} << 45});
       },
       "not enough memory"},
  };
  for (const auto& [f, message] : kCases) {
    EXPECT_EQ(error(f), message);
  }
}

TEST_F(CoreArraysTest, SparseArraysHoldOnlyWhatIsNotZero) {
  ALGEB x = create(settings(RTABLE_FLOAT64, RTABLE_SPARSE), {1, V_INT{1} << 50});
  RTableData value{};
  value.float64 = 2.5;
  const V_INT index[] = {V_INT{1} << 49};
  RTableAssign(&state, x, index, value);
  EXPECT_EQ(RTableSelect(&state, x, index).float64, 2.5);
  EXPECT_EQ(arrayOf(x).sparse->size(), 1U);
  const RTableSettings objectSettings = settings(RTABLE_DAG, RTABLE_SPARSE);
  ALGEB copy = RTableCopy(&state, &objectSettings, x);
  EXPECT_EQ(RTableSelect(&state, copy, index).dag, newFloat(state, 2.5));
  value.float64 = 0.0;
  RTableAssign(&state, x, index, value);
  EXPECT_TRUE(arrayOf(x).sparse->empty());
  const RTableSettings dense = settings(RTABLE_FLOAT64);
  EXPECT_EQ(error([&] { RTableCopy(&state, &dense, x); }), "not enough memory");
}

TEST_F(CoreArraysTest, PrintInTheConstructorsForm) {
  const std::int32_t data[] = {1, 2, 3, 4};
  EXPECT_EQ(
      sourceText(state, create(settings(RTABLE_INTEGER32, RTABLE_RECTANGULAR, RTABLE_ROW_MAJOR, 2),
                               {1, 2, 1, 2}, data)),
      "Array(1..2, 1..2, [[1, 2], [3, 4]], datatype = integer[4], order = row)");
  EXPECT_EQ(sourceText(state, objects({immediate(1), state.null, name(state, "x")})),
            "Array(1..3, [1, NULL, x])");
  EXPECT_EQ(sourceText(state, create(settings(RTABLE_FLOAT64), {1, 0})),
            "Array(1..0, [], datatype = float[8])");
  TextOptions shortened;
  shortened.maxElements = 2;
  EXPECT_EQ(sourceText(state, create(settings(RTABLE_FLOAT64), {0, 9}), shortened),
            "Array(0..9, [0.0, 0.0, ...], datatype = float[8])");
}

TEST_F(CoreArraysTest, WrappedMemoryIsSharedBothWays) {
  std::vector<double> memory = {1, 2, 3};
  const Value array = kernel.wrap(memory);
  EXPECT_EQ(RTableDataBlock(&state, array.handle()), memory.data());
  memory[1] = 7;
  EXPECT_EQ(array.numbers(), (std::vector<double>{1, 7, 3}));
  EXPECT_EQ(array[1].number(), 7);
}

}  // namespace
}  // namespace vexel
