// The sort and selection kernels against slow twins that follow the scheme one step at a time: the
// arrays must agree to the last bit and the last exchange, not only be sorted.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "kernels/sorting/partition.hpp"
#include "kernels/sorting/sorting.hpp"

namespace {

using Doubles = std::vector<double>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool after(double x, double y) { return std::isnan(x) ? !std::isnan(y) : x > y; }

int size(const Doubles& x) { return static_cast<int>(x.size()); }

struct Pairs {
  Doubles a;
  Doubles w;
  std::function<bool(double, double)> greater = after;
  void exchange(int i, int j) {
    std::swap(a[static_cast<std::size_t>(i)], a[static_cast<std::size_t>(j)]);
    std::swap(w[static_cast<std::size_t>(i)], w[static_cast<std::size_t>(j)]);
  }
  double at(int i) const { return a[static_cast<std::size_t>(i)]; }
  void order(int i, int j) {
    if (greater(at(i), at(j))) exchange(i, j);
  }
  void split(double p, int& i, int& j) {
    for (;;) {
      do ++i;
      while (greater(p, at(i)));
      do --j;
      while (greater(at(j), p));
      if (j < i) return;
      exchange(i, j);
    }
  }
};

void slowSort(Pairs& x, int lo, int hi) {
  while (hi - lo > 4) {
    const int mid = (lo + hi) / 2;
    x.order(lo, mid);
    x.order(lo, hi);
    x.order(mid, hi);
    x.exchange(mid, hi - 1);
    int i = lo;
    int j = hi - 1;
    x.split(x.at(hi - 1), i, j);
    x.exchange(i, hi - 1);
    slowSort(x, lo, j);
    lo = i + 1;
  }
}

void slowSelect(Pairs& x, int k) {
  int l = 0;
  int r = size(x.a) - 1;
  while (r > l + 1) {
    x.exchange((l + r) / 2, l + 1);
    x.order(l, r);
    x.order(l + 1, r);
    x.order(l, l + 1);
    int i = l + 1;
    int j = r;
    x.split(x.at(l + 1), i, j);
    x.exchange(l + 1, j);
    if (j >= k) r = j - 1;
    if (j <= k) l = i;
  }
  if (r == l + 1) x.order(l, r);
}

// For comparing arrays that may hold NaNs.
std::vector<std::uint64_t> bits(const Doubles& x) {
  std::vector<std::uint64_t> result;
  for (const double v : x) result.push_back(std::bit_cast<std::uint64_t>(v));
  return result;
}

// Sizes 1 to 40 and sizes round the block length, with few or many ties and with or without NaNs;
// the partners are numbered.
Pairs randomPairs(std::mt19937& random, int round) {
  const int n =
      round % 3 == 0 ? 100 + static_cast<int>(random() % 900) : 1 + static_cast<int>(random() % 40);
  const auto kinds = 1 + random() % (round % 2 == 0 ? 4U : 5000U);
  Pairs x{Doubles(static_cast<std::size_t>(n)), Doubles(static_cast<std::size_t>(n)), after};
  for (double& v : x.a) {
    v = round % 5 == 0 && random() % 7 == 0 ? kNaN : static_cast<double>(random() % kinds);
  }
  std::iota(x.w.begin(), x.w.end(), 0.0);
  return x;
}

TEST(SortKernels, MakeTheSameExchangesAsTheOneByOneScheme) {
  std::mt19937 random(7);
  for (int round = 0; round < 3000; ++round) {
    const Pairs given = randomPairs(random, round);
    const int n = size(given.a);
    SCOPED_TRACE("round " + std::to_string(round));

    Pairs slow = given;
    slowSort(slow, 0, n - 1);
    Pairs fast = given;
    vexel::kernels::quickSort(fast.a.data(), fast.w.data(), 0, n - 1);
    ASSERT_EQ(fast.w, slow.w);
    Doubles plain = given.a;
    vexel::kernels::quickSort(plain.data(), 0, n - 1);
    ASSERT_EQ(bits(plain), bits(slow.a));
    vexel::kernels::insertionSort(plain.data(), 0, n - 1);
    ASSERT_TRUE(
        std::is_sorted(plain.begin(), plain.end(), [](double x, double y) { return after(y, x); }));

    const int k = static_cast<int>(random() % given.a.size());
    slow = given;
    slowSelect(slow, k);
    fast = given;
    vexel::kernels::quickSelect(fast.a.data(), fast.w.data(), n, k);
    ASSERT_EQ(fast.w, slow.w);
    Doubles selected = given.a;
    vexel::kernels::quickSelect(selected.data(), n, k);
    ASSERT_EQ(bits(selected), bits(slow.a));
    ASSERT_EQ(bits({selected[static_cast<std::size_t>(k)]}),
              bits({plain[static_cast<std::size_t>(k)]}));
  }
}

// The median of three is a poor pivot there, but no reason to leave the scheme.
TEST(SortKernels, MakeTheSameExchangesOnARiseAndFall) {
  for (const int n : {3000, 20000}) {
    Pairs given{Doubles(static_cast<std::size_t>(n)), Doubles(static_cast<std::size_t>(n)), after};
    std::iota(given.w.begin(), given.w.end(), 0.0);
    for (int i = 0; i < n; ++i) {
      given.a[static_cast<std::size_t>(i)] = std::min(i, n - i);
    }
    for (const int k : {n / 10, n / 2, 9 * n / 10}) {
      Pairs slow = given;
      slowSelect(slow, k);
      Pairs fast = given;
      vexel::kernels::quickSelect(fast.a.data(), fast.w.data(), n, k);
      EXPECT_EQ(fast.w, slow.w) << "rank " << k << " of " << n;
    }
    Pairs slow = given;
    slowSort(slow, 0, n - 1);
    Pairs fast = given;
    vexel::kernels::quickSort(fast.a.data(), fast.w.data(), 0, n - 1);
    EXPECT_EQ(fast.w, slow.w) << n;
  }
}

TEST(SortKernels, PlaceManyRanksAtOnce) {
  std::mt19937 random(11);
  for (int round = 0; round < 1000; ++round) {
    Doubles x = randomPairs(random, round).a;
    Doubles sorted = x;
    vexel::kernels::sortData(sorted.data(), size(sorted));
    std::vector<int> ranks;
    const auto rarity = 2 + random() % 60;
    for (int k = 0; k < size(x); ++k) {
      if (random() % rarity == 0) ranks.push_back(k);
    }
    vexel::kernels::selectRanks(x.data(), size(x), ranks.data(), static_cast<int>(ranks.size()));
    for (const int k : ranks) {
      const auto at = static_cast<std::size_t>(k);
      ASSERT_EQ(bits({x[at]}), bits({sorted[at]})) << "rank " << k;
    }
  }
}

TEST(SortKernels, HandleTheSmallAndTheOutOfRange) {
  Doubles x = {3, kNaN, 1, 2};
  vexel::kernels::sortData(x.data(), 4);
  EXPECT_THAT(x, testing::ElementsAre(1, 2, 3, testing::NanSensitiveDoubleEq(kNaN)));
  Doubles a = {2, 1};
  Doubles w = {20, 10};
  vexel::kernels::sortData(a.data(), w.data(), 2);
  EXPECT_EQ(a, (Doubles{1, 2}));
  EXPECT_EQ(w, (Doubles{10, 20}));
  vexel::kernels::sortData(nullptr, 0);
  vexel::kernels::sortData(nullptr, nullptr, 0);

  Doubles s = {5, 1, 4, 2, 3};
  EXPECT_EQ(vexel::kernels::quickSelect(s.data(), 5, 2), 3);
  EXPECT_TRUE(std::isnan(vexel::kernels::quickSelect(s.data(), 5, 5)));
  EXPECT_TRUE(std::isnan(vexel::kernels::quickSelect(s.data(), 5, -1)));
  Doubles partner = {0, 0, 0, 0, 0};
  EXPECT_EQ(vexel::kernels::quickSelect(s.data(), partner.data(), 5, -1), 1);
  EXPECT_EQ(vexel::kernels::quickSelect(s.data(), partner.data(), 5, 5), 5);
  EXPECT_TRUE(std::isnan(vexel::kernels::quickSelect(s.data(), partner.data(), 0, 0)));
}

TEST(SortKernels, TakeAnArrayAsItsOwnWeights) {
  std::mt19937 random(5);
  for (const int n : {2, 12, 40, 1000}) {
    Doubles given(static_cast<std::size_t>(n));
    for (double& x : given) {
      x = static_cast<double>(random() % 50);
    }
    Doubles sorted = given;
    std::sort(sorted.begin(), sorted.end());
    Doubles a = given;
    vexel::kernels::sortData(a.data(), a.data(), n);
    EXPECT_EQ(a, sorted);
    a = given;
    EXPECT_EQ(vexel::kernels::quickSelect(a.data(), a.data(), n, n / 2), sorted[sorted.size() / 2]);
  }
}

// Orders made to defeat the partitioning are nearly sorted where the heap takes over.
TEST(SortKernels, SortAnyRangeByAHeap) {
  std::mt19937 random(13);
  for (int round = 0; round < 300; ++round) {
    const Pairs given = randomPairs(random, round);
    const int lo = size(given.a) / 5;
    const int hi = size(given.a) - 1 - size(given.a) / 7;
    Doubles sorted = given.a;
    std::sort(sorted.begin() + lo, sorted.begin() + hi + 1,
              [](double x, double y) { return after(y, x); });
    Pairs x = given;
    vexel::kernels::heapSortRange<true>(vexel::kernels::PairedArray{x.a.data(), x.w.data()}, lo,
                                        hi);
    ASSERT_EQ(bits(x.a), bits(sorted));
    for (int i = 0; i < size(given.a); ++i) {
      const auto partner = static_cast<std::size_t>(x.w[static_cast<std::size_t>(i)]);
      ASSERT_EQ(bits({x.at(i)}), bits({given.a[partner]})) << "place " << i;
    }
  }
}

// McIlroy, A Killer Adversary for Quicksort, Software Practice and Experience 29, 1999: values are
// fixed only when a comparison forces them to be, so that every pivot turns out to be a poor one.
class Adversary {
 public:
  explicit Adversary(int n) : value_(static_cast<std::size_t>(n), kGas) {}

  bool greater(double x, double y) {
    const auto i = static_cast<std::size_t>(x);
    const auto j = static_cast<std::size_t>(y);
    if (value_[i] == kGas && value_[j] == kGas) {
      value_[i == candidate_ ? i : j] = next_++;
    }
    if (value_[i] == kGas) {
      candidate_ = i;
    } else if (value_[j] == kGas) {
      candidate_ = j;
    }
    return value_[i] > value_[j];
  }
  const Doubles& values() const { return value_; }

 private:
  static constexpr double kGas = 1e9;
  Doubles value_;
  std::size_t candidate_ = 0;
  double next_ = 0.0;
};

// The worst order for scheme, which sorts or selects n numbered items by a given comparison.
template <typename Scheme>
Doubles worstOrder(int n, Scheme scheme) {
  Adversary adversary(n);
  Pairs items{Doubles(static_cast<std::size_t>(n)), Doubles(static_cast<std::size_t>(n)), after};
  std::iota(items.a.begin(), items.a.end(), 0.0);
  items.greater = [&](double x, double y) { return adversary.greater(x, y); };
  scheme(items);
  return adversary.values();
}

TEST(SortKernels, AreRightOnOrdersMadeToDefeatThem) {
  constexpr int n = 8000;
  std::vector<Doubles> orders = {
      worstOrder(n, [](Pairs& x) { slowSort(x, 0, n - 1); }),
      worstOrder(n, [](Pairs& x) { slowSelect(x, n / 3); }),
  };
  orders.push_back(orders.back());
  orders.back()[n / 2] = kNaN;
  for (const Doubles& order : orders) {
    Doubles sorted = order;
    std::sort(sorted.begin(), sorted.end(), [](double x, double y) { return after(y, x); });
    Doubles a = order;
    vexel::kernels::sortData(a.data(), n);
    EXPECT_EQ(bits(a), bits(sorted));
    a = order;
    Doubles w = order;
    vexel::kernels::sortData(a.data(), w.data(), n);
    EXPECT_EQ(bits(w), bits(sorted));
    a = order;
    EXPECT_EQ(vexel::kernels::quickSelect(a.data(), n, n / 3), sorted[n / 3]);
    a = order;
    const int ranks[] = {n / 3, n / 3 + 1, n - 1};
    vexel::kernels::selectRanks(a.data(), n, ranks, 3);
    for (const int k : ranks) {
      const auto at = static_cast<std::size_t>(k);
      EXPECT_EQ(bits({a[at]}), bits({sorted[at]}));
    }
  }
}

}  // namespace
