// Quasi-random streams: net properties, skipping, handles.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "host_call.hpp"
#include "kernel_test.hpp"
#include "lds/FaureQRStream.hpp"
#include "lds/HaltonQRStream.hpp"

namespace {

using Points = std::vector<std::vector<double>>;  // [point][coordinate]

enum Kind { kSobol, kHalton, kFaure };

class StreamTest : public KernelTest {
 protected:
  template <typename T>
  vexel::Value table(int type, const std::vector<T>& x, V_INT rows, V_INT columns = 0) {
    RTableSettings s;
    RTableGetDefaults(kernel.vector(), &s);
    s.data_type = type;
    s.order = RTABLE_ROW_MAJOR;
    s.num_dimensions = columns > 0 ? 2 : 1;
    const V_INT bounds[] = {1, rows, 1, columns};
    return kernel.array(s, x.data(), std::span(bounds, columns > 0 ? 4 : 2));
  }
  vexel::Value integers32(const std::vector<std::int32_t>& x) {
    return table(RTABLE_INTEGER32, x, static_cast<V_INT>(x.size()));
  }
  vexel::Value integers64(const std::vector<std::int64_t>& x, V_INT columns) {
    return table(RTABLE_INTEGER64, x, static_cast<V_INT>(x.size()) / columns, columns);
  }

  // Sobol's own first dimensions: polynomials 1, x + 1, x^2 + x + 1, x^3 + x + 1, x^3 + x^2 + 1.
  vexel::Value sobol(int dimension, int precision) {
    const std::vector<std::int32_t> degrees = {0, 1, 2, 3, 3};
    const std::vector<std::int32_t> codes = {0, 0, 1, 1, 2};
    const std::vector<std::vector<std::int64_t>> initial = {{1}, {1}, {1, 3}, {1, 3, 1}, {1, 1, 1}};
    const int columns = std::max(precision, 3);
    std::vector<std::int64_t> m(static_cast<std::size_t>(dimension * columns));
    for (int j = 0; j < dimension; ++j) {
      std::copy(initial[j].begin(), initial[j].end(), m.begin() + j * columns);
    }
    return call("STATS_InitializeQRStream_HW", dimension, 0, integers32(degrees), integers32(codes),
                integers64(m, columns), precision);
  }
  vexel::Value stream(Kind kind, int dimension) {
    return kind == kSobol ? sobol(dimension, 31)
                          : call("STATS_InitializeQRStream_HW", dimension, static_cast<int>(kind));
  }

  vexel::Value output(int dimension, int count, int order) {
    RTableSettings s;
    RTableGetDefaults(kernel.vector(), &s);
    s.data_type = RTABLE_FLOAT64;
    s.num_dimensions = 2;
    s.order = order;
    const V_INT bounds[] = {1, dimension, 1, count};
    return kernel.array(s, nullptr, bounds);
  }
  Points draw(const vexel::Value& handle, int count, int order = RTABLE_COLUMN_MAJOR) {
    const int d = static_cast<int>(call("STATS_QRStreamGetDimension_HW", handle).integer());
    const vexel::Value out = output(d, count, order);
    EXPECT_EQ(call("STATS_QRStreamNext_HW", handle, count, out), out);
    Points points(count, std::vector<double>(d));
    for (V_INT i = 0; i < count; ++i) {
      for (V_INT j = 0; j < d; ++j) {
        const V_INT index[] = {j + 1, i + 1};
        points[i][j] = RTableSelect(kernel.vector(), out.handle(), index).float64;
      }
    }
    return points;
  }
  void skip(const vexel::Value& handle, std::int64_t k) {
    EXPECT_TRUE(call("STATS_QRStreamSkip_HW", handle, k).isNull());
  }
  void reset(const vexel::Value& handle) { call("STATS_ResetQRStream_HW", handle); }
  void terminate(const vexel::Value& handle) { call("STATS_TerminateQRStream_HW", handle); }
};

// A (t, m, s)-net has base^t points in every elementary interval of volume base^(t - m).  Checks
// two coordinates of all shapes for t = 0.
void expectNet(const Points& points, int base, int m, int a, int b) {
  for (int p = 0; p <= m; ++p) {
    std::map<std::pair<int, int>, int> cells;
    for (const auto& x : points) {
      ++cells[{static_cast<int>(x[a] * std::pow(base, p)),
               static_cast<int>(x[b] * std::pow(base, m - p))}];
    }
    EXPECT_EQ(cells.size(), points.size()) << "coordinates " << a << ", " << b << ", split " << p;
  }
}

}  // namespace

TEST_F(StreamTest, SobolAndFaurePointsFormNets) {
  // Sobol's dimensions 1 and 2 are a (0, 2)-sequence in base 2; Faure's are one in any two.
  const vexel::Value s = stream(kSobol, 2);
  reset(s);
  expectNet(draw(s, 256), 2, 8, 0, 1);
  for (const auto& [dimension, base, m] : {std::tuple{2, 2, 8}, {3, 3, 5}, {5, 5, 4}, {7, 7, 3}}) {
    const vexel::Value f = stream(kFaure, dimension);
    Points points = draw(f, static_cast<int>(std::lround(std::pow(base, m))) - 1);
    points.emplace_back(dimension, 0.0);  // the origin is never drawn
    for (auto& point : points) {
      for (double& x : point) {
        x = std::nextafter(x, 2.0);  // numerators over base^m do not survive a division by base
      }
    }
    for (int a = 0; a < dimension; ++a) {
      for (int b = a + 1; b < dimension; ++b) {
        expectNet(points, base, m, a, b);
      }
    }
  }
}

TEST_F(StreamTest, FaureStartsBehindAPowerOfItsBase) {
  const vexel::Value fresh = stream(kFaure, 3);
  skip(fresh, 8);
  const Points expected = draw(fresh, 3);
  FaureQRStream behind(kernel.vector(), 3, 2);
  for (int round = 0; round < 2; ++round) {
    for (std::vector<double> point(3); const auto& x : expected) {
      ASSERT_EQ(behind.next(kernel.vector(), point.data(), 3, 1, 1), 1);
      EXPECT_EQ(point, x);
    }
    behind.reset(kernel.vector());
  }
  for (const int digits : {30, 31}) {  // base 2 has 30
    FaureQRStream none(kernel.vector(), 2, digits);
    double point[2];
    EXPECT_EQ(none.skip(kernel.vector(), 5), 1);
    EXPECT_EQ(none.next(kernel.vector(), point, 2, 1, 1), 0);
  }
}

TEST_F(StreamTest, FaureStaysExhaustedUntilReset) {
  // Base 46349 has one digit only: 46348 points.
  const vexel::Value f = stream(kFaure, 46342);
  skip(f, 46346);
  EXPECT_EQ(draw(f, 1)[0][0], 46347.0 / 46349.0);
  const vexel::Value out = output(46342, 2, RTABLE_COLUMN_MAJOR);
  const auto exhausted = [&](const vexel::Value& handle) {
    return hostError([&] { call("STATS_QRStreamNext_HW", handle, 1, out); }) ==
           "quasi-random stream is exhausted";
  };
  EXPECT_EQ(hostError([&] { call("STATS_QRStreamNext_HW", f, 2, out); }),
            "quasi-random stream is exhausted");
  const V_INT firstCell[] = {1, 1};
  EXPECT_EQ(RTableSelect(kernel.vector(), out.handle(), firstCell).float64, 46348.0 / 46349.0);
  for (const std::int64_t k : {std::int64_t{46348}, std::int64_t{46349}, INT64_MAX}) {
    EXPECT_TRUE(exhausted(f));
    reset(f);
    EXPECT_EQ(draw(f, 1)[0][0], 1.0 / 46349.0);
    skip(f, k);  // to the end at least
    EXPECT_TRUE(exhausted(f));
    skip(f, 3);
  }
}

TEST_F(StreamTest, SkippingEqualsDrawingAndBothOrdersGiveTheSameArray) {
  for (const Kind kind : {kSobol, kHalton, kFaure}) {
    for (const int k : {0, 1, 7, 1000, 12345}) {
      const vexel::Value drawn = stream(kind, 5);
      const vexel::Value skipped = stream(kind, 5);
      if (k > 0) {
        draw(drawn, k);
      }
      skip(skipped, k);
      EXPECT_EQ(draw(drawn, 5000), draw(skipped, 5000, RTABLE_ROW_MAJOR)) << kind << ": " << k;
      terminate(drawn);
      terminate(skipped);
    }
  }
}

TEST_F(StreamTest, ManyPointsAndManyBasesCanBeInterrupted) {
  const auto interrupted = [&](const auto& work) {
    EXPECT_THROW(inHost(kernel,
                        [&] {
                          vexel::Kernel::interrupt();
                          work();
                        }),
                 vexel::Interrupted);
  };
  for (const Kind kind : {kSobol, kHalton, kFaure}) {
    const vexel::Value handle = stream(kind, 5);
    auto* const points =
        static_cast<VexelQRStream*>(VexelToPointer(kernel.vector(), handle.handle()));
    std::vector<double> out(5 * 5000);
    interrupted([&] { points->next(kernel.vector(), out.data(), 5, 1, 5000); });
  }
  interrupted([&] { HaltonQRStream(kernel.vector(), 5000); });
}

TEST_F(StreamTest, HandlesOutliveVariablesUntilTerminated) {
  kernel.stress(true);
  ALGEB bare = nullptr;
  {
    // The tables are reachable through the stream alone.
    const vexel::Value s = stream(kSobol, 5);
    bare = s.handle();
  }
  kernel.collect();
  std::vector<vexel::Value> others;
  for (int i = 0; i < 20; ++i) {
    others.push_back(stream(i % 2 == 0 ? kHalton : kFaure, 3));
  }
  const vexel::Value s(kernel, bare);
  EXPECT_EQ(draw(s, 3)[0], (std::vector<double>(5, 0.5)));
  terminate(s);
  EXPECT_EQ(draw(s, 1)[0][0], 0.375);  // still held by s here
  for (const auto& other : others) {
    terminate(other);
  }
  others.clear();
  kernel.collect();
  EXPECT_EQ(draw(s, 1)[0].size(), 5U);
}
