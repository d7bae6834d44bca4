// Selection that only reads, against sorting.

#include "kernels/sorting/select_reading.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace {

using Doubles = std::vector<double>;

// Orders and repetitions that could deceive a sample.
struct Source {
  const char* name;
  double (*value)(std::mt19937_64& random, int i);
  bool readable;  // a single rank below the missing values is found by reading
};

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinite = std::numeric_limits<double>::infinity();
double uniform(std::mt19937_64& random) { return static_cast<double>(random() >> 11U) * 0x1p-53; }

constexpr Source kSources[] = {
    {"uniform", [](auto& random, int) { return uniform(random); }, true},
    {"heavy tails", [](auto& random, int) { return std::tan(3.14159 * uniform(random)); }, true},
    {"ascending", [](auto&, int i) { return static_cast<double>(i); }, true},
    {"descending", [](auto&, int i) { return static_cast<double>(-i); }, true},
    {"saw", [](auto&, int i) { return static_cast<double>(i % 751); }, true},
    {"three values", [](auto& random, int) { return static_cast<double>(random() % 3); }, true},
    {"one value", [](auto&, int) { return 7.0; }, true},
    {"half of it zero", [](auto& random, int) { return std::max(0.0, uniform(random) - 0.5); },
     true},
    {"infinities", [](auto& random, int) { return random() % 3 == 0 ? kInfinite : -kInfinite; },
     true},
    {"some missing",
     [](auto& random, int) { return random() % 3 == 0 ? kMissing : uniform(random); }, true},
    {"nearly all missing",
     [](auto& random, int i) { return i % 1000 == 0 ? uniform(random) : kMissing; }, true},
    {"all missing", [](auto&, int) { return kMissing; }, false},
};

TEST(SelectReading, GivesWhatSortingGives) {
  std::mt19937_64 random(1);
  for (const auto& [name, value, readable] : kSources) {
    for (const int n : {20000, 20001, 131072, 300007}) {
      SCOPED_TRACE(testing::Message() << name << ", " << n);
      Doubles x;
      for (int i = 0; i < n; ++i) {
        x.push_back(value(random, i));
      }
      const Doubles given = x;
      std::sort(x.begin(), x.end(), [](double a, double b) { return a < b || (a == a && b != b); });
      const auto present =
          static_cast<int>(std::count_if(x.begin(), x.end(), [](double v) { return v == v; }));
      for (const std::vector<int>& ranks : {std::vector<int>{0},
                                            {n / 2},
                                            {n / 2 - 1, n / 2},
                                            {n - 1},
                                            {0, n / 3, n / 3 + 1, n - 1},
                                            {std::max(0, present - 1)},
                                            {present / 2},
                                            {present / 4, present / 2}}) {
        Doubles got(ranks.size());
        const bool done = vexel::kernels::selectReading(given.data(), n, ranks.data(),
                                                        static_cast<int>(ranks.size()), got.data());
        EXPECT_TRUE(done || !readable || ranks.back() >= present) << ranks.back();
        for (std::size_t j = 0; done && j < ranks.size(); ++j) {
          EXPECT_EQ(got[j], x[static_cast<std::size_t>(ranks[j])]) << "rank " << ranks[j];
        }
      }
    }
  }
}

// The places that the sample is taken from hold nothing like the rest, which lies between two
// values of the sample, or below all of them.
TEST(SelectReading, NoticesThatTheSampleDeceives) {
  constexpr int n = 24000;
  constexpr int rank = n / 2;
  std::mt19937_64 random(3);
  for (const double scale : {1e-3, -1.0}) {
    Doubles x(n);
    std::generate(x.begin(), x.end(), [&] { return 0.5 + scale * (1.0 + uniform(random)); });
    const auto size = static_cast<int>(std::pow(n, 2.0 / 3.0));
    std::uint32_t state = 1;
    for (int i = 0; i < size; ++i) {
      const int begin = i * n / size;
      const int end = (i + 1) * n / size;
      state = state * 1664525U + 1013904223U;
      x[begin + (state >> 8U) % static_cast<unsigned>(end - begin)] = uniform(random);
    }
    double got = 0.0;
    EXPECT_FALSE(vexel::kernels::selectReading(x.data(), n, &rank, 1, &got)) << scale;
  }
}

TEST(SelectReading, LeavesWhatACopyDoesBetter) {
  const Doubles x(100000, 1.0);
  std::vector<int> ranks;
  for (int rank = 1000; rank < 100000; rank += 4000) {
    ranks.push_back(rank);
  }
  Doubles got(ranks.size());
  EXPECT_FALSE(vexel::kernels::selectReading(x.data(), 100000, ranks.data(), 25, got.data()));
  EXPECT_FALSE(vexel::kernels::selectReading(x.data(), 19999, ranks.data(), 1, got.data()));
}

}  // namespace
