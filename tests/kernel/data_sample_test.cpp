// Host arrays of every kind seen as doubles.

#include "kernel/data_sample.hpp"

#include <gmock/gmock.h>

#include <limits>
#include <memory>

#include "host_call.hpp"
#include "kernel_test.hpp"

extern "C" ALGEB STATS_StatsInitialize_HW(VKernelVector kv);
extern "C" ALGEB STATS_StatsTerminate_HW(VKernelVector kv);

namespace {

using Doubles = std::vector<double>;
using testing::ElementsAre;
using testing::ElementsAreArray;

class DataSampleTest : public KernelTest {
 protected:
  DataSampleTest() { STATS_StatsInitialize_HW(kernel.vector()); }
  ~DataSampleTest() override { STATS_StatsTerminate_HW(kernel.vector()); }
  DataSampleTest(const DataSampleTest&) = delete;
  DataSampleTest& operator=(const DataSampleTest&) = delete;

  Doubles view(const vexel::Value& array) {
    const STATS_Vector_HW vector(kernel.vector(), array.handle());
    return vector.size() == 0 ? Doubles() : Doubles(vector.data(), vector.data() + vector.size());
  }
  Doubles view(const std::string& text) { return view(eval(text)); }
};

TEST_F(DataSampleTest, EveryTypeOrderStorageAndLowerBoundGivesTheSameDoubles) {
  constexpr int kTypes = RTABLE_FLOAT32 + 1;
  const double points[] = {3.0, 0.0, -2.0};
  int seen = 0;
  for (int type = 0; type < kTypes; ++type) {
    for (const int order : {RTABLE_COLUMN_MAJOR, RTABLE_ROW_MAJOR}) {
      for (const int storage : {RTABLE_RECTANGULAR, RTABLE_SPARSE}) {
        for (const V_INT lower : {V_INT{1}, V_INT{0}, V_INT{-2}, V_INT{1} << 40}) {
          SCOPED_TRACE(testing::Message() << "type " << type << ", order " << order << ", storage "
                                          << storage << ", from " << lower);
          RTableSettings settings{RTABLE_FLOAT64, RTABLE_RECTANGULAR, order, 1, 0};
          const V_INT bounds[] = {lower, lower + 2};
          const vexel::Value dense = kernel.array(settings, points, bounds);
          settings.data_type = type;
          settings.storage = storage;
          const vexel::Value array(kernel, RTableCopy(kernel.vector(), &settings, dense.handle()));
          EXPECT_THAT(view(array), ElementsAre(3.0, 0.0, -2.0));

          // Again one element at a time, which happens when the host refuses to copy the array.
          // Then host objects without a block go to the position of their index, if there is one.
          kernel.failAllocation(0);
          const bool byIndex = type == RTABLE_DAG && storage == RTABLE_SPARSE;
          EXPECT_THAT(view(array),
                      ElementsAreArray(byIndex && lower == 1    ? Doubles{0.0, 3.0, 0.0}
                                       : byIndex && lower == -2 ? Doubles{-2.0, 0.0, 0.0}
                                       : byIndex && lower != 0  ? Doubles(3)
                                                                : Doubles{3.0, 0.0, -2.0}));
          kernel.failAllocation(-1);
          ++seen;
        }
      }
    }
  }
  EXPECT_EQ(seen, kTypes * 2 * 2 * 4);
}

TEST_F(DataSampleTest, DenseFloatsAreUsedInPlaceAndOthersCopied) {
  const vexel::Value floats = array({1.0, 2.0});
  *STATS_Vector_HW(kernel.vector(), floats.handle()).data() = 7.0;
  EXPECT_THAT(numbers(floats), ElementsAre(7.0, 2.0));

  const vexel::Value integers = eval("Array([1, 2], datatype = integer[4])");
  *STATS_Vector_HW(kernel.vector(), integers.handle()).data() = 7.0;
  kernel.collect();
  EXPECT_THAT(numbers(integers), ElementsAre(1.0, 2.0));
}

TEST_F(DataSampleTest, CopiesLiveUntilAnotherArrayReplacesThem) {
  const vexel::Value integers = eval("Array([1, 2], datatype = integer[4])");
  const auto heldOnHeap = std::make_unique<STATS_Vector_HW>(kernel.vector(), integers.handle());
  const auto liveAfter = [&](const vexel::Value& array, bool refused) {
    kernel.failAllocation(refused ? 0 : -1);  // then elements are copied one at a time
    STATS_Vector_HW::SetData(kernel.vector(), heldOnHeap.get(), array.handle());
    kernel.failAllocation(-1);
    kernel.collect();
    eval("seq(Array([i, i], datatype = float[8]), i = 1 .. 300):");  // takes what has become free
    kernel.collect();
    EXPECT_THAT(Doubles(heldOnHeap->data(), heldOnHeap->data() + 2), ElementsAre(1.0, 2.0));
    return kernel.liveObjects();
  };
  for (const bool refused : {false, true}) {
    const std::size_t live = liveAfter(integers, refused);
    for (int i = 0; i < 8; ++i) {
      EXPECT_LT(liveAfter(integers, refused), live + 5);
    }
  }
  const vexel::Value floats = array({1.0, 2.0});
  liveAfter(floats, false);
  liveAfter(integers, false);
  EXPECT_THAT(numbers(floats), ElementsAre(1.0, 2.0));
}

TEST_F(DataSampleTest, ElementsAreEvaluatedWhereTheHostDoesNotCopyThem) {
  EXPECT_THAT(view("later := Array([1, b, 1/2]): b := 5: later"), ElementsAre(1.0, 5.0, 0.5));
  EXPECT_EQ(hostErrorText([&] { inHost(kernel, [&] { view("Array([1, unset])"); }); }),
            "unable to evaluate unset to floating-point");
  EXPECT_THAT(view("Array([Complex(2, 0), 3], datatype = complex[8])"), ElementsAre(2.0, 3.0));
  EXPECT_EQ(hostError([&] {
              inHost(kernel, [&] { view("Array([Complex(2, 1)], datatype = complex[8])"); });
            }),
            "unable to evaluate %1 to floating-point");
  EXPECT_EQ(hostError([&] { inHost(kernel, [&] { view("7"); }); }),
            "invalid data sample, expected: rtable, received %1");
}

TEST_F(DataSampleTest, OnlyTheFirstDimensionCounts) {
  EXPECT_THAT(view("Array(1..2, 1..2, [[1, 2], [3, 4]], datatype = float[8])"),
              ElementsAre(1.0, 3.0));
  EXPECT_THAT(view("Array(1..2, 1..2, [[1, 2], [3, 4]], datatype = float[8], order = row)"),
              ElementsAre(1.0, 2.0));
  EXPECT_THAT(view("Array(1..3, 1..0, datatype = float[8])"), testing::IsEmpty());
  EXPECT_THAT(view("Array(1..0)"), testing::IsEmpty());
}

TEST_F(DataSampleTest, WeightsMatchThePointsOrAreNotThere) {
  const VKernelVector kv = kernel.vector();
  const vexel::Value points = array({1.0, 2.0});
  const vexel::Value three = array({1.0, 2.0, 3.0});
  EXPECT_FALSE(STATS_VexelDataSample_HW(kv, points.handle(), none().handle()).weighted());
  EXPECT_TRUE(STATS_VexelDataSample_HW(kv, points.handle(), points.handle()).weighted());
  EXPECT_EQ(hostErrorText([&] {
              inHost(kernel,
                     [&] { STATS_VexelDataSample_HW(kv, points.handle(), three.handle()); });
            }),
            "vector of points and vector of weights are expected to have the same size, received " +
                points.text() + ", " + three.text());
}

TEST(CopyData, DropsPairsWithAMissingValue) {
  constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
  const double points[] = {1, kMissing, 3, 4};
  const double weights[] = {1, 1, kMissing, 2};
  double x[4] = {};
  double w[4] = {};
  EXPECT_EQ(STATS_CopySimpleData_HW(points, x, 4, 1), 3);
  EXPECT_THAT(Doubles(x, x + 3), ElementsAre(1, 3, 4));
  EXPECT_EQ(STATS_CopySimpleData_HW(points, x, 2, 0), 2);
  EXPECT_EQ(STATS_CopySimpleData_HW(points, x, -3, 0), -3);
  EXPECT_EQ(STATS_CopySimpleData_HW(points, x, -3, 1), 0);
  EXPECT_EQ(STATS_CopyWeightedData_HW(points, weights, x, w, 4, 1), 2);
  EXPECT_THAT(Doubles(x, x + 2), ElementsAre(1, 4));
  EXPECT_THAT(Doubles(w, w + 2), ElementsAre(1, 2));
}

}  // namespace
