// Quasi-random sequences: first points, definitions, nets, scrambling, state.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>
#include <stdexcept>
#include <vexel/random.hpp>
#include <vexel/sequences.hpp>

namespace {

using vexel::Faure;
using vexel::Halton;
using vexel::PointOrder;
using vexel::PointSequence;
using vexel::Scramble;
using vexel::Sobol;

using Points = std::vector<double>;

TEST(Sequences, BeginAsDocumented) {
  EXPECT_EQ(Sobol(1).points(6), (Points{0, 0.5, 0.75, 0.25, 0.375, 0.875}));
  EXPECT_EQ(Halton(2).points(4), (Points{0, 0, 1 / 2., 1 / 3., 1 / 4., 2 / 3., 3 / 4., 1 / 9.}));
  EXPECT_EQ(Faure(3).points(4), (Points{0, 0, 0, 1 / 3., 1 / 3., 1 / 3., 2 / 3., 2 / 3., 2 / 3.,  //
                                        1 / 9., 4 / 9., 7 / 9.}));
}

double radicalInverse(std::uint64_t n, unsigned base) {
  long double x = 0;
  long double weight = 1;
  for (; n != 0; n /= base) {
    x += n % base * (weight /= base);
  }
  return static_cast<double>(x);
}

TEST(Sequences, HaltonIsTheRadicalInverseAtEveryIndex) {
  const unsigned primes[] = {2, 3, 5, 7, 11, 13, 17, 19, 23, 29, 31, 37};
  for (const std::uint64_t start : {0ULL, 1000ULL, 123456789ULL, 1ULL << 40, (1ULL << 62) - 5000}) {
    Halton halton(12, {.start = start});
    const Points p = halton.points(3000);
    for (std::size_t i = 0; i < 3000; i += 7) {
      for (std::size_t j = 0; j < 12; ++j) {
        ASSERT_NEAR(p[i * 12 + j], radicalInverse(start + i, primes[j]), 4e-16) << start + i;
      }
    }
  }
}

// Digits of a coordinate in base b: Pascal's matrix to the power j applied to those of the index.
double faureByDefinition(std::uint64_t n, unsigned b, unsigned j) {
  std::vector<std::uint64_t> a;
  for (; n != 0; n /= b) {
    a.push_back(n % b);
  }
  std::vector<std::vector<std::uint64_t>> choose(a.size() + 1);
  for (std::size_t k = 0; k < choose.size(); ++k) {
    choose[k].assign(k + 1, 1);
    for (std::size_t i = 1; i < k; ++i) {
      choose[k][i] = (choose[k - 1][i - 1] + choose[k - 1][i]) % b;
    }
  }
  long double x = 0;
  long double weight = 1;
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::uint64_t digit = 0;
    std::uint64_t power = 1;
    for (std::size_t k = i; k < a.size(); ++k, power = power * j % b) {
      digit = (digit + choose[k][i] * power % b * a[k]) % b;
    }
    x += static_cast<long double>(digit) * (weight /= b);
  }
  return static_cast<double>(x);
}

TEST(Sequences, FaureIsPascalsMatrixAtEveryIndex) {
  const unsigned shapes[][2] = {{1, 2}, {2, 2}, {3, 3}, {4, 5}, {10, 11}, {60, 61}};
  for (const auto& [d, b] : shapes) {
    for (const std::uint64_t start : {0ULL, 777ULL, 123456789ULL, 1ULL << 40}) {
      Faure faure(d, {.start = start});
      const Points p = faure.points(1000);
      for (std::size_t i = 0; i < 1000; i += 9) {
        for (unsigned j = 0; j < d; ++j) {
          ASSERT_NEAR(p[i * d + j], faureByDefinition(start + i, b, j), 3e-16) << d << ' ' << i;
        }
      }
    }
  }
}

TEST(Sequences, AnyLayoutAndAnyPiecesGiveTheSamePoints) {
  const auto check = [](const PointSequence& sequence) {
    const std::size_t d = sequence.dimension();
    for (const std::size_t n : {1U, 15U, 33U, 500U, 5000U}) {
      PointSequence whole = sequence;
      const Points rows = whole.points(n);
      PointSequence other = sequence;
      Points columns(n * d);
      other.points(n, columns, PointOrder::column);
      PointSequence pieces = sequence;
      Points joined;
      for (std::size_t done = 0; done < n;) {
        const std::size_t length = std::min<std::size_t>(n - done, 1 + done % 97);
        const Points piece = pieces.points(length);
        joined.insert(joined.end(), piece.begin(), piece.end());
        done += length;
      }
      EXPECT_EQ(rows, joined);
      EXPECT_EQ(pieces.index(), sequence.index() + n);
      for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < d; ++j) {
          ASSERT_EQ(rows[i * d + j], columns[j * n + i]);
          ASSERT_TRUE(rows[i * d + j] >= 0 && rows[i * d + j] < 1);
        }
      }
      PointSequence later = sequence;
      later.skip(n - 1);
      const Points last = later.points(1);
      EXPECT_TRUE(
          std::equal(last.begin(), last.end(), rows.end() - static_cast<std::ptrdiff_t>(d)));
    }
  };
  for (const std::size_t d : {1U, 2U, 3U, 10U, 67U, 300U}) {
    for (const Scramble scramble : {Scramble::none, Scramble::owen, Scramble::shift}) {
      for (const std::uint64_t start : {std::uint64_t{0}, std::uint64_t{5003}}) {
        check(Sobol(d, {.scramble = scramble, .seed = 3, .start = start}));
        if (d < 60) {
          check(Halton(d, {.scramble = scramble, .seed = 3, .start = start}));
          check(Faure(d, {.scramble = scramble, .seed = 3, .start = start}));
        }
      }
    }
  }
}

// Every elementary interval of volume b^-m in two dimensions holds one of b^m points.
void expectNet(const PointSequence& sequence, unsigned base, int m, std::uint64_t first) {
  PointSequence points = sequence;
  points.skip(first);
  std::size_t n = 1;
  for (int i = 0; i < m; ++i) {
    n *= base;
  }
  const Points p = points.points(n);
  for (int k = 0; k <= m; ++k) {
    const double u = std::pow(base, k);
    const double v = std::pow(base, m - k);
    std::set<std::pair<double, double>> cells;
    for (std::size_t i = 0; i < n; ++i) {
      // A half of the finest digit keeps quotients off the cells' edges.
      cells.insert({std::floor(p[2 * i] * u + 1e-9), std::floor(p[2 * i + 1] * v + 1e-9)});
    }
    EXPECT_EQ(cells.size(), n) << "base " << base << ", cells " << u << " x " << v;
  }
}

TEST(Sequences, NetsStayNetsUnderScrambling) {
  for (const Scramble scramble : {Scramble::none, Scramble::owen, Scramble::shift}) {
    expectNet(Sobol(2, {.scramble = scramble, .seed = 11}), 2, 8, 0);
    expectNet(Sobol(2, {.scramble = scramble, .seed = 12}), 2, 8, 256 * 77);
    expectNet(Faure(2, {.scramble = scramble, .seed = 13}), 2, 8, 0);
  }
  // Two of Faure's three coordinates in base 3.
  for (const Scramble scramble : {Scramble::none, Scramble::owen, Scramble::shift}) {
    Faure faure(3, {.scramble = scramble, .seed = 14});
    const Points p = faure.points(81);
    std::set<std::pair<int, int>> cells;
    for (std::size_t i = 0; i < 81; ++i) {
      cells.insert(
          {static_cast<int>(p[3 * i] * 9 + 1e-9), static_cast<int>(p[3 * i + 2] * 9 + 1e-9)});
    }
    EXPECT_EQ(cells.size(), 81U);
  }
}

// A wrong or even direction integer of any dimension leaves cells empty.
TEST(Sequences, EverySobolDimensionFillsEveryCell) {
  const Points p = Sobol(Sobol::maxDimension).points(1 << 14);
  for (std::size_t j = 0; j < Sobol::maxDimension; ++j) {
    std::vector<bool> filled(1 << 14);
    for (std::size_t i = 0; i < filled.size(); ++i) {
      filled[static_cast<std::size_t>(p[i * Sobol::maxDimension + j] * 0x1p14)] = true;
    }
    ASSERT_TRUE(std::all_of(filled.begin(), filled.end(), [](bool f) { return f; })) << j;
  }
}

// Each scrambled point is uniform on the cube: over 2000 seeds its coordinates' deciles.  A
// chi-square with 9 degrees above 42 has probability 3e-6.
TEST(Sequences, EachScrambledPointIsUniform) {
  const auto check = [](const std::function<PointSequence(std::uint64_t)>& make) {
    int counts[3][2][10] = {};
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
      PointSequence sequence = make(seed);
      const std::uint64_t at[] = {0, 1, 1000};
      for (int k = 0; k < 3; ++k) {
        double x[2];
        sequence.write(at[k], 1, x, 2, 1);
        ++counts[k][0][static_cast<int>(10 * x[0])];
        ++counts[k][1][static_cast<int>(10 * x[1])];
      }
    }
    for (const auto& point : counts) {
      for (const auto& coordinate : point) {
        double chi = 0;
        for (const int c : coordinate) {
          chi += (c - 200.0) * (c - 200.0) / 200;
        }
        EXPECT_LT(chi, 42);
      }
    }
  };
  for (const Scramble scramble : {Scramble::owen, Scramble::shift}) {
    check([=](std::uint64_t s) { return Sobol(2, {.scramble = scramble, .seed = s}); });
    check([=](std::uint64_t s) { return Halton(2, {.scramble = scramble, .seed = s}); });
    check([=](std::uint64_t s) { return Faure(2, {.scramble = scramble, .seed = s}); });
  }
}

// The integral of a smooth product over two dimensions: errors of random points fall like
// n^(-1/2), of the sequences nearly like 1/n and of scrambled nets like n^(-3/2).
double rootMeanSquareError(const std::function<Points(std::uint64_t seed, std::size_t n)>& points,
                           std::size_t n) {
  double sum = 0;
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    const Points p = points(seed, n);
    double mean = 0;
    for (std::size_t i = 0; i < n; ++i) {
      double f = 1;
      for (std::size_t j = 0; j < 2; ++j) {
        const double x = p[i * 2 + j];
        f *= 1 + 0.5 * (3 * x * x - 1);
      }
      mean += f / static_cast<double>(n);
    }
    sum += (mean - 1) * (mean - 1);
  }
  return std::sqrt(sum / 20);
}

TEST(Sequences, ErrorsOfMeansFallAsTheyShould) {
  const auto exponent = [](const auto& points) {
    return std::log2(rootMeanSquareError(points, 1 << 14) / rootMeanSquareError(points, 1 << 8)) /
           6;
  };
  const auto random = [](std::uint64_t seed, std::size_t n) {
    return vexel::Random(seed).uniform(2 * n);
  };
  const auto plain = [](std::uint64_t, std::size_t n) { return Sobol(2).points(n); };
  const auto scrambled = [](std::uint64_t seed, std::size_t n) {
    return Sobol(2, {.scramble = Scramble::owen, .seed = seed}).points(n);
  };
  EXPECT_NEAR(exponent(random), -0.5, 0.15);
  EXPECT_NEAR(exponent(plain), -1.0, 0.2);
  EXPECT_LT(exponent(scrambled), -1.25);
  EXPECT_LT(rootMeanSquareError(scrambled, 4096), rootMeanSquareError(plain, 4096) / 10);
}

TEST(Sequences, TheCallersDirectionsServe) {
  const vexel::SobolDimension own[] = {{}, {1, 0, {1}}, {2, 1, {1, 3}}};
  EXPECT_EQ(Sobol(3, {.dimensions = own}).points(100), Sobol(3).points(100));
}

TEST(Sequences, EndAndRefuse) {
  Sobol small(2, {.bits = 4});
  EXPECT_EQ(small.points(16).size(), 32U);
  EXPECT_THROW(small.points(1), std::length_error);
  EXPECT_THROW(small.skip(1), std::length_error);
  small.reset();
  EXPECT_EQ(small.index(), 0U);
  Sobol far(2);
  far.skip((1ULL << 62) - 2);
  EXPECT_EQ(far.points(2).size(), 4U);
  EXPECT_THROW(far.points(1), std::length_error);
  EXPECT_THROW(Sobol(2).points(std::size_t{1} << 61), std::length_error);

  EXPECT_THROW(Sobol(0), std::invalid_argument);
  EXPECT_THROW(Sobol(1112), std::invalid_argument);
  EXPECT_THROW(Sobol(2, {.bits = 63}), std::invalid_argument);
  EXPECT_THROW(Halton(0), std::invalid_argument);
  EXPECT_THROW(Faure(100'000'000), std::invalid_argument);
  Points wrong(5);
  EXPECT_THROW(Sobol(2).points(2, wrong), std::invalid_argument);
  const vexel::SobolDimension even[] = {{}, {1, 0, {2}}};
  EXPECT_THROW(Sobol(2, {.dimensions = even}), std::invalid_argument);
  EXPECT_THROW(Sobol(3, {.dimensions = even}), std::invalid_argument);
}

}  // namespace
