// Quasi-random streams: points by definition, net properties, skipping, handles.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

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

// The definition, digit by digit; a negative index gives negative digits.
double radicalInverse(std::int64_t index, int base) {
  double value = 0.0;
  double factor = 1.0 / base;
  for (std::int64_t n = index; n != 0; n /= base, factor /= base) {
    value += static_cast<double>(n % base) * factor;
  }
  return value;
}

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

TEST_F(StreamTest, HaltonPointsAreRadicalInversesOfTheIndex) {
  EXPECT_EQ(HaltonQRStream::primes_table.front(), 2);
  EXPECT_EQ(HaltonQRStream::primes_table.back(), 1151);
  for (const int dimension : {1, 2, 12, 191, 300}) {
    const vexel::Value halton = stream(kHalton, dimension);
    std::vector<int> bases;
    for (int n = 2; static_cast<int>(bases.size()) < dimension; ++n) {
      if (std::none_of(bases.begin(), bases.end(), [n](int b) { return n % b == 0; })) {
        bases.push_back(n);
      }
    }
    std::int64_t index = 1;
    for (const int count : {1, 3, 40, 5000}) {
      for (const auto& point : draw(halton, count)) {
        for (int j = 0; j < dimension; ++j) {
          ASSERT_EQ(point[j], radicalInverse(index, bases[j])) << dimension << ": " << index;
        }
        ++index;
      }
    }
    terminate(halton);
  }
}

TEST_F(StreamTest, HaltonIndexWrapsAroundIn32Bits) {
  const vexel::Value halton = stream(kHalton, 2);
  skip(halton, 2147483647 - 100 - 1);
  const Points points = draw(halton, 2000);
  for (std::int64_t i = 0; i < 2000; ++i) {
    const auto index = static_cast<std::int32_t>(static_cast<std::uint32_t>(2147483547 + i));
    ASSERT_EQ(points[i][0], radicalInverse(index, 2)) << index;
    ASSERT_EQ(points[i][1], radicalInverse(index, 3)) << index;
  }
  reset(halton);
  skip(halton, -1);  // the origin, which a stream of its own accord leaves out
  EXPECT_EQ(draw(halton, 2), (Points{{0.0, 0.0}, {0.5, 1.0 / 3.0}}));
}

TEST_F(StreamTest, SobolStartsAtIndexOneAndResetsToTheOrigin) {
  const vexel::Value s = call("STATS_InitializeQRStream_HW", 1, 0, integers32({0}), integers32({0}),
                              integers64({1, 0, 0}, 3), 3);
  EXPECT_EQ(draw(s, 3), (Points{{0.5}, {0.75}, {0.25}}));
  reset(s);
  EXPECT_EQ(draw(s, 3), (Points{{0.0}, {0.5}, {0.75}}));
  skip(s, 5);  // index 8, whose highest Gray digit is beyond three bits
  EXPECT_EQ(draw(s, 1), (Points{{0.125}}));
}

TEST_F(StreamTest, SobolPointsAreTheExclusiveOrsOfTheirGrayCode) {
  for (const int precision : {1, 2, 31, 40, 62}) {
    const vexel::Value s = sobol(5, precision);
    const vexel::Value options = call("STATS_QRStreamGetOptions_HW", s);
    ASSERT_EQ(options.size(), 5U);
    const auto* const v = static_cast<const std::int64_t*>(
        RTableDataBlock(kernel.vector(), reinterpret_cast<const ALGEB*>(options[4].handle())[2]));
    for (const std::int64_t start : {std::int64_t{0}, std::int64_t{1021}, std::int64_t{2147483640},
                                     std::int64_t{4294967290}}) {
      for (const auto& [count, order] :
           {std::pair{5, RTABLE_COLUMN_MAJOR}, {40, RTABLE_COLUMN_MAJOR}, {40, RTABLE_ROW_MAJOR}}) {
        reset(s);
        skip(s, start);
        const Points points = draw(s, count, order);
        for (std::int64_t i = 0; i < count; ++i) {
          const auto index = static_cast<std::int32_t>(static_cast<std::uint32_t>(start + i));
          const std::int32_t gray = index ^ (index >> 1);
          for (int j = 0; j < 5; ++j) {
            std::int64_t x = 0;
            for (int k = 0; k < std::min(precision, 32); ++k) {
              x ^= (gray >> k & 1) != 0 ? v[j * std::max(precision, 3) + k] : 0;
            }
            const double expected =
                static_cast<double>(x) / static_cast<double>(std::int64_t{1} << precision);
            ASSERT_EQ(points[i][j], expected) << precision << ": " << index << ", " << j;
          }
        }
      }
    }
    terminate(s);
  }
}

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

TEST_F(StreamTest, FaureFirstPointsAndBases) {
  const vexel::Value f = stream(kFaure, 2);
  const Points first = {{0.5, 0.5}, {0.75, 0.25}, {0.25, 0.75}, {0.375, 0.375}, {0.875, 0.875}};
  EXPECT_EQ(draw(f, 5), first);
  reset(f);
  EXPECT_EQ(draw(f, 5), first);
  for (const auto& [dimension, base] :
       {std::pair{3, 3}, {4, 5}, {5, 5}, {6, 7}, {8, 11}, {11, 11}, {12, 13}, {24, 29}}) {
    const Points point = draw(stream(kFaure, dimension), 1);
    EXPECT_EQ(point[0], std::vector<double>(dimension, 1.0 / base));
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

TEST_F(StreamTest, FaureRunsOutAndTheCallAfterGoesOn) {
  // Base 46349 has one digit only: 46348 points.
  const vexel::Value f = stream(kFaure, 46342);
  skip(f, 46346);
  EXPECT_EQ(draw(f, 1)[0][0], 46347.0 / 46349.0);
  const vexel::Value out = output(46342, 2, RTABLE_COLUMN_MAJOR);
  EXPECT_EQ(hostError([&] { call("STATS_QRStreamNext_HW", f, 2, out); }),
            "quasi-random stream is exhausted");
  const V_INT firstCell[] = {1, 1};
  EXPECT_EQ(RTableSelect(kernel.vector(), out.handle(), firstCell).float64, 46348.0 / 46349.0);
  EXPECT_EQ(draw(f, 1)[0][0], 0.0);  // one Gray digit goes on round its cycle
  const vexel::Value g = stream(kFaure, 46342);
  skip(g, 46349);
  EXPECT_EQ(draw(g, 1)[0][0], 0.0);
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
      EXPECT_EQ(draw(drawn, 1500), draw(skipped, 1500, RTABLE_ROW_MAJOR)) << kind << ": " << k;
      terminate(drawn);
      terminate(skipped);
    }
  }
}

TEST_F(StreamTest, OptionsSayHowAStreamWasMade) {
  EXPECT_EQ(call("STATS_QRStreamGetMaxSobolPrecision_HW").integer(), 62);
  for (const auto& [kind, name] : {std::pair{kHalton, "Halton"}, {kFaure, "Faure"}}) {
    const vexel::Value options = call("STATS_QRStreamGetOptions_HW", stream(kind, 3));
    EXPECT_EQ(options.size(), 2U);
    EXPECT_EQ(options[0].integer(), 3);
    EXPECT_EQ(options[1].text(), name);
  }
  const vexel::Value options = call("STATS_QRStreamGetOptions_HW", stream(kSobol, 2));
  EXPECT_EQ(options[1].text(), "Sobol");
  EXPECT_EQ(options[2].text(), "precision = 31");
  EXPECT_EQ(options[3].text().substr(0, 22), "primitivepolynomials =");
  EXPECT_EQ(options[4].text().substr(0, 19), "directionintegers =");
}

TEST_F(StreamTest, BinaryMatrixHoldsTheLeadingBits) {
  const vexel::Value degrees = integers32({0, 1, 2, 3});
  const vexel::Value codes = integers32({0, 0, 1, 1});
  const vexel::Value m = integers64({1, 0, 0, 1, 0, 0, 1, 3, 0, 1, 3, 1}, 3);
  const vexel::Value out = integers32(std::vector<std::int32_t>(16, 7));
  call("STATS_QRStreamGenBinaryMatrix_HW", m, 4, 3, out, codes, degrees);
  // Row 3: degree 2, bits 1 1, then b[k] = b[k-1] ^ b[k-2].  Row 4: degree 3, bits 1 1 0, then
  // b[k] = b[k-2] ^ b[k-3].
  EXPECT_EQ(numbers(out), (std::vector<double>{1, 0, 0, 0, 1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 0, 0}));
  const vexel::Value row = integers32(std::vector<std::int32_t>(6, 7));
  call("STATS_QRStreamGenBinaryMatrixRow_HW", m, 2, 3, 3, row, codes, degrees);
  EXPECT_EQ(numbers(row), (std::vector<double>{7, 7, 7, 1, 1, 1}));
  EXPECT_NE(hostError([&] {
              call("STATS_QRStreamGenBinaryMatrixRow_HW", m, 3, 3, 3, row, codes, degrees);
            }),
            "no error");
  EXPECT_EQ(numbers(row), (std::vector<double>{7, 7, 7, 1, 1, 1}));

  // Rows without entries keep the 1 of the unit row and the bits of the initial integers.
  for (const int n : {0, -4}) {
    const vexel::Value unit = integers32({7, 7});
    call("STATS_QRStreamGenBinaryMatrixRow_HW", m, 1, n, 3, unit, codes, degrees);
    EXPECT_EQ(numbers(unit), (std::vector<double>{1, 7})) << n;
  }
  call("STATS_QRStreamGenBinaryMatrixRow_HW", m, 4, 0, 3, row, codes, degrees);
  EXPECT_EQ(numbers(row), (std::vector<double>{1, 1, 0, 1, 1, 1}));
  EXPECT_NE(hostError([&] {
              call("STATS_QRStreamGenBinaryMatrixRow_HW", m, 2, -1, 3, row, codes, degrees);
            }),
            "no error");
}

TEST_F(StreamTest, BadArgumentsRaise) {
  const vexel::Value d = integers32({0, 1});
  const vexel::Value m = integers64({1, 0, 0, 1, 0, 0}, 3);
  const vexel::Value halton = stream(kHalton, 2);
  const vexel::Value one = array({0.0});
  const std::string tooSmall = "table has too few elements for the dimension and sizes given: %1";
  const std::string notStream =
      "expected VexelPointer containing quasi-random number generator, received %1";
  const auto init = [&](auto... a) { call("STATS_InitializeQRStream_HW", a...); };
  expectRefusals({
      {"expected at least 2 arguments, received: %1", [&] { init(2); }},
      {"expected at least 5 arguments for sobol, received: %1", [&] { init(2, 0, d, d); }},
      {"invalid quasi-random stream kind, expected: 0 (Sobol), 1 (Halton) or 2 (Faure), "
       "received: %1",
       [&] { init(2, 3); }},
      {"direction integers are expected in a two-dimensional array, received: %1",
       [&] { init(2, 0, d, d, d, 3); }},
      {"dimension is expected to be at least %1, received: %2", [&] { init(0, 1); }},
      {"dimension is expected to be at least %1, received: %2", [&] { init(1, 2); }},
      {"dimension is expected to be at least %1, received: %2", [&] { init(0, 0, d, d, m, 3); }},
      {"dimension is expected to be at most %1, received: %2", [&] { init(1LL << 40, 1); }},
      {"precision is expected to be an integer between 1 and 62, received: %1",
       [&] { init(2, 0, d, d, m, 63); }},
      {tooSmall, [&] { init(2, 0, d, d, m, 4); }},
      {tooSmall, [&] { init(3, 0, d, d, m, 3); }},
      {"invalid table, expected: dense array of 32-bit integers, received %1",
       [&] { init(2, 0, one, d, m, 3); }},
      {"degree of a primitive polynomial is expected to be positive, received: %1",
       [&] {
         init(2, 0, integers32({0, 0}), d, m, 3);
       }},
      {"expected 3 arguments, received: %1", [&] { call("STATS_QRStreamNext_HW", halton, 1); }},
      {"output array has no room for %1 points: %2",
       [&] { call("STATS_QRStreamNext_HW", halton, 1, one); }},
      {"output array has no room for %1 points: %2",
       [&] { call("STATS_QRStreamNext_HW", halton, 1LL << 62, one); }},
      {"invalid output, expected: dense array of 64-bit floats, received %1",
       [&] { call("STATS_QRStreamNext_HW", halton, 1, d); }},
      {notStream, [&] { call("STATS_QRStreamSkip_HW", 7, 1); }},
      {notStream, [&] { call("STATS_ResetQRStream_HW"); }},
      {notStream, [&] { call("STATS_TerminateQRStream_HW", name("evalf")); }},
  });
  EXPECT_EQ(draw(halton, 1)[0][0], 0.5);  // nothing of the above has moved it
  call("STATS_QRStreamNext_HW", halton, -5, one);
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
