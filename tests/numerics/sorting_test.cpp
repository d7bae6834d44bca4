// Sorting and ranking of machine numbers against comparison sorts, bits compared.

#include <gtest/gtest.h>
#include <nag2/nag2.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#ifdef NAG2_HAVE_HIGHWAY
#include <hwy/targets.h>
#endif

namespace {

// With each set of wide vectors that the machine has.
void onEveryTarget(const std::function<void()>& check) {
#ifdef NAG2_HAVE_HIGHWAY
  for (const std::int64_t target : {HWY_AVX2, HWY_AVX3}) {
    if ((hwy::SupportedTargets() & target) != 0) {
      SCOPED_TRACE(hwy::TargetName(target));
      hwy::SetSupportedTargetsForTest(target);
      hwy::GetChosenTarget().Update(target);
      check();
      hwy::SetSupportedTargetsForTest(0);
      hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }
  }
#endif
  check();
}

template <typename T>
constexpr int kKind = 0;
template <>
constexpr int kKind<std::int8_t> = NAG2_INT8;
template <>
constexpr int kKind<std::int16_t> = NAG2_INT16;
template <>
constexpr int kKind<std::int32_t> = NAG2_INT32;
template <>
constexpr int kKind<std::int64_t> = NAG2_INT64;
template <>
constexpr int kKind<float> = NAG2_FLOAT32;
template <>
constexpr int kKind<double> = NAG2_FLOAT64;

// The order from its definition: numbers, then NaNs, equal to one another.
template <typename T>
bool before(T a, T b) {
  return a < b || (b != b && a == a);
}

// Ties, both zeros, NaNs of both signs, infinities, extremes, subnormals, and everything between.
template <typename T>
std::vector<T> sample(std::size_t n, int flavour, std::mt19937_64& random) {
  using Limits = std::numeric_limits<T>;
  std::vector<T> special = {T(0), T(1), T(-1), Limits::max(), Limits::lowest(), Limits::min()};
  if constexpr (std::is_floating_point_v<T>) {
    special.insert(special.end(), {T(-0.0), Limits::quiet_NaN(), -Limits::quiet_NaN(),
                                   Limits::infinity(), -Limits::infinity(), Limits::denorm_min()});
  }
  std::vector<T> x(n);
  for (T& v : x) {
    const std::uint64_t r = random();
    if (flavour == 0 || (flavour == 1 && r % 4 == 0)) {
      v = special[(r >> 8) % special.size()];
    } else if constexpr (std::is_floating_point_v<T>) {
      v = static_cast<T>(std::normal_distribution<double>()(random) * (flavour == 2 ? 1e30 : 1.0));
    } else {
      v = static_cast<T>(r);
    }
  }
  return x;
}

template <typename T>
class SortingTest : public testing::Test {};
using Kinds = testing::Types<std::int8_t, std::int16_t, std::int32_t, std::int64_t, float, double>;
TYPED_TEST_SUITE(SortingTest, Kinds);

template <typename T>
void compareWithAStableSort() {
  std::mt19937_64 random(7);
  for (std::size_t n :
       {0U,   1U,   2U,   3U,   16U,  17U,  33U,   40U,   64U,   65U,   100U,   128U,
        129U, 200U, 256U, 257U, 400U, 700U, 1023U, 1024U, 1025U, 5000U, 300000U}) {
    for (int flavour = 0; flavour < 4; ++flavour) {
      for (int order : {Nag_Ascending, Nag_Descending}) {
        SCOPED_TRACE(testing::Message() << n << " of flavour " << flavour << ", order " << order);
        const std::vector<T> x = sample<T>(n, flavour, random);
        std::vector<std::uint32_t> positions(n);
        std::iota(positions.begin(), positions.end(), 0U);
        std::stable_sort(positions.begin(), positions.end(), [&](auto i, auto j) {
          return order == Nag_Ascending ? before(x[i], x[j]) : before(x[j], x[i]);
        });
        std::vector<std::uint32_t> wantedRanks(n);
        std::vector<T> wanted(n);
        for (std::size_t i = 0; i < n; ++i) {
          wantedRanks[positions[i]] = static_cast<std::uint32_t>(i);
          wanted[i] = x[positions[i]];
        }

        NagError fail{};
        std::vector<std::uint32_t> ranks(n);
        std::vector<T> sorted(n);
        nag2_rank_typed(x.data(), n, kKind<T>, order, ranks.data(), &fail);
        nag2_sort_typed(x.data(), n, kKind<T>, order, sorted.data(), &fail);
        ASSERT_EQ(fail.code, NAG2_OK);
        ASSERT_EQ(ranks, wantedRanks);
        ASSERT_TRUE(n == 0 || std::memcmp(sorted.data(), wanted.data(), n * sizeof(T)) == 0);
        if constexpr (std::is_same_v<T, double>) {
          std::vector<double> inPlace = x;
          q43352(inPlace.data(), n, order, &fail);
          ASSERT_TRUE(n == 0 || std::memcmp(inPlace.data(), wanted.data(), n * sizeof(T)) == 0);
        }
      }
    }
  }
}

TYPED_TEST(SortingTest, RanksAndSortedValuesAreThoseOfAStableSort) {
  onEveryTarget(compareWithAStableSort<TypeParam>);
}

// Crowded exponents and constant digits, where radix digits are useless or all in one place, and
// numbers that differ in their last bits only.
void sortDoublesOfMany(std::size_t n) {
  std::mt19937_64 random(11);
  const auto check = [&](auto draw) {
    std::vector<double> x(n);
    std::generate(x.begin(), x.end(), draw);
    std::vector<std::uint32_t> order(n);
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(), [&](auto i, auto j) { return x[i] < x[j]; });
    std::vector<std::uint32_t> ranks(n);
    nag2_rank_typed(x.data(), n, NAG2_FLOAT64, Nag_Ascending, ranks.data(), nullptr);
    std::vector<double> wanted(n);
    for (std::uint32_t i = 0; i < n; ++i) {
      wanted[i] = x[order[i]];
      ASSERT_EQ(ranks[order[i]], i);
    }
    q43352(x.data(), n, Nag_Ascending, nullptr);
    EXPECT_EQ(x, wanted);
  };
  double running = 0.0;
  check([&] { return 5.0; });
  check([&] { return running += 1.0; });
  check([&] { return running -= 0.5; });
  check([&] { return std::fabs(running += 1.0); });
  check([&] { return 1.0 + 1e-12 * static_cast<double>(random() % 1000); });
  check([&] { return std::exp(1e-17 * static_cast<double>(random() >> 1)); });
  check([&] {
    return random() % 1000 == 0 ? -1e300 : 1.0 + 0x1p-52 * static_cast<double>(random() % 50000);
  });
  check([&] { return random() % 1000 == 0 ? 1e300 : static_cast<double>(random() % 7); });
  check([&] {
    return std::bit_cast<double>((random() & 0x7fffffffffffffffULL) % 0x7ff0000000000000ULL);
  });
}

TEST(SortingDoubles, AreSortedAndRankedWhateverTheirDistribution) {
  onEveryTarget([] {
    sortDoublesOfMany(200000);
    sortDoublesOfMany(30000);
  });
}

// --- ranking by a callback ---

int calls = 0;

int compareDoubles(const char* a, const char* b) {
  ++calls;
  double x = 0.0;
  double y = 0.0;
  std::memcpy(&x, a, sizeof x);
  std::memcpy(&y, b, sizeof y);
  if (x != x) {
    return 1;  // also against another NaN, as some callers have it
  }
  return y != y || x < y ? -1 : (x == y ? 0 : 1);
}

int contradict(const char*, const char*) { return ++calls % 3 - 1; }

int throwAtCallNine(const char* a, const char* b) {
  if (calls == 9) {
    throw 9;
  }
  return compareDoubles(a, b);
}

std::vector<std::uint32_t> rankByCallback(const std::vector<double>& x, int order,
                                          int (*compare)(const char*, const char*)) {
  NagError fail{};
  std::vector<std::uint32_t> ranks(x.size());
  q70723(x.data(), x.size(), sizeof(double), compare, order, ranks.data(), &fail);
  EXPECT_EQ(fail.code, NAG2_OK);
  return ranks;
}

TEST(RankingByCallback, AgreesWithTypedRanking) {
  std::mt19937_64 random(3);
  for (std::size_t n = 0; n < 200; ++n) {
    const std::vector<double> x = sample<double>(n, static_cast<int>(n % 4), random);
    for (int order : {Nag_Ascending, Nag_Descending}) {
      std::vector<std::uint32_t> wanted(n);
      nag2_rank_typed(x.data(), n, NAG2_FLOAT64, order, wanted.data(), nullptr);
      EXPECT_EQ(rankByCallback(x, order, compareDoubles), wanted) << n;
    }
  }
}

TEST(RankingByCallback, ContradictingAnswersStillGiveAPermutation) {
  std::vector<std::uint32_t> ranks =
      rankByCallback(std::vector<double>(1000), Nag_Ascending, contradict);
  std::sort(ranks.begin(), ranks.end());
  for (std::uint32_t i = 0; i < 1000; ++i) {
    ASSERT_EQ(ranks[i], i);
  }
}

TEST(RankingByCallback, AnExceptionOfTheCallbackPasses) {
  calls = 0;
  EXPECT_THROW(rankByCallback(std::vector<double>(50), Nag_Ascending, throwAtCallNine), int);
}

TEST(Sorting, BadCodesAreFailuresAndChangeNothing) {
  double x[] = {2.0, 1.0};
  std::uint32_t ranks[] = {7, 7};
  NagError fail{};
  q43352(x, 2, 0, &fail);
  EXPECT_EQ(fail.code, NAG2_BAD_ORDER);
  nag2_rank_typed(x, 2, 7, Nag_Ascending, ranks, &fail);
  EXPECT_EQ(fail.code, NAG2_DOMAIN);
  q70723(x, std::size_t{1} << 31, 8, compareDoubles, Nag_Ascending, ranks, &fail);
  EXPECT_EQ(fail.code, NAG2_TOO_MANY_ELEMENTS);
  EXPECT_EQ(x[0], 2.0);
  EXPECT_EQ(ranks[0], 7U);
}

}  // namespace
