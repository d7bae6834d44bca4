// Order and counts against their definitions: quadratic loops over small samples with ties, NaN and
// infinities, and the sizes around each change of method.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vexel/interruption.hpp>
#include <vexel/ordering.hpp>

namespace {

namespace vx = vexel;
using Doubles = std::vector<double>;
using testing::ElementsAre;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr std::int64_t kLarge = std::int64_t{1} << 53;

// What samples of every size are made of: few levels, many, both zeros, infinities, NaN.
Doubles sample(std::size_t n, int kind, std::mt19937_64& random) {
  const auto draw = [&](int k) { return static_cast<double>(random() % static_cast<unsigned>(k)); };
  Doubles x(n);
  for (double& v : x) {
    v = kind == 0 ? draw(5) - 2 : std::ldexp(draw(1 << 20) - (1 << 19), static_cast<int>(draw(40)));
    if (kind == 2 && random() % 4 == 0) {
      constexpr double specials[] = {kNan, kInf, -kInf, -0.0, 0.0};
      v = specials[random() % 5];
    }
  }
  return x;
}

// f(x, description) for samples of many sizes.
template <typename F>
void forSamples(F f) {
  std::mt19937_64 random(7);
  for (const std::size_t n : {0, 1, 2, 3, 8, 25, 40, 257, 600, 3000}) {
    for (int kind = 0; kind < 3; ++kind) {
      SCOPED_TRACE(testing::Message() << "n " << n << ", kind " << kind);
      f(sample(n, kind, random));
    }
  }
}

bool sortsBefore(double a, double b) { return a < b || (!std::isnan(a) && std::isnan(b)); }

std::vector<std::int64_t> positionsByDefinition(const Doubles& x) {
  std::vector<std::int64_t> at(x.size());
  std::iota(at.begin(), at.end(), 0);
  std::stable_sort(at.begin(), at.end(), [&](std::int64_t i, std::int64_t j) {
    return sortsBefore(x[static_cast<std::size_t>(i)], x[static_cast<std::size_t>(j)]);
  });
  return at;
}

TEST(Ordering, SortAndArgsortPlaceAsAStableSortDoes) {
  forSamples([](const Doubles& x) {
    const auto at = positionsByDefinition(x);
    EXPECT_EQ(vx::argsort(x), at);
    const Doubles sorted = vx::sort(x);
    for (std::size_t i = 0; i < x.size(); ++i) {
      const double wanted = x[static_cast<std::size_t>(at[i])];
      EXPECT_TRUE(sorted[i] == wanted || std::isnan(wanted));
      EXPECT_EQ(std::signbit(sorted[i]), std::signbit(wanted)) << i;
    }
    const auto present = static_cast<std::size_t>(
        std::count_if(x.begin(), x.end(), [](double v) { return !std::isnan(v); }));
    EXPECT_EQ(vx::sort(x, {.missing = vx::Missing::omit}).size(), present);
    EXPECT_EQ(vx::argsort(x, {.missing = vx::Missing::omit}).size(), present);
  });
}

TEST(Ordering, ElementsKeepTheirTypeAndEveryDigit) {
  const std::vector<std::int64_t> x = {kLarge + 1, 5, kLarge, kLarge + 1};
  EXPECT_THAT(vx::sort(x), ElementsAre(5, kLarge, kLarge + 1, kLarge + 1));
  EXPECT_THAT(vx::tally(x).values, ElementsAre(5, kLarge, kLarge + 1));
  EXPECT_THAT(vx::rank(x), ElementsAre(3.5, 1, 2, 3.5));
  EXPECT_THAT(vx::trim(x, {0.25, 0.5}), ElementsAre(kLarge));
  EXPECT_THAT(vx::winsorize(x, {0.25, 0.5}), ElementsAre(kLarge, kLarge, kLarge, kLarge));
  EXPECT_THAT(vx::histogram(x, {0.0, 0x1p53, 0x1p54}).counts, ElementsAre(1, 3));
  EXPECT_THAT(vx::histogram(x, {0.0, 5.0, 0x1p53}).counts, ElementsAre(0, 2));
  const float f[] = {2.5F, 1.5F, 9.0F};
  EXPECT_THAT(vx::sort(f), ElementsAre(1.5F, 2.5F, 9.0F));
  EXPECT_THAT(vx::sort(vx::Data(f + 2, 2, -2)), ElementsAre(2.5, 9));  // every second, backwards
  EXPECT_THAT(vx::argsort(vx::Data(f + 2, 3, -1)), ElementsAre(1, 2, 0));
}

TEST(Ordering, RanksCountWhatIsBelow) {
  forSamples([](const Doubles& x) {
    const auto ranks = [&](vx::RankMethod m) { return vx::rank(x, {.method = m}); };
    const auto least = ranks(vx::RankMethod::min);
    const auto most = ranks(vx::RankMethod::max);
    const auto average = ranks(vx::RankMethod::average);
    const auto dense = ranks(vx::RankMethod::dense);
    const auto ordinal = ranks(vx::RankMethod::ordinal);
    for (std::size_t i = 0; i < std::min<std::size_t>(x.size(), 300); ++i) {
      if (std::isnan(x[i])) {
        EXPECT_TRUE(std::isnan(least[i]) && std::isnan(dense[i]) && std::isnan(ordinal[i]));
        continue;
      }
      double below = 0, equal = 0, equalBefore = 0;
      std::map<double, int> levels;
      for (std::size_t j = 0; j < x.size(); ++j) {
        below += x[j] < x[i];
        equal += x[j] == x[i];
        equalBefore += x[j] == x[i] && j < i;
        x[j] <= x[i] ? void(++levels[x[j]]) : void();
      }
      EXPECT_EQ(least[i], below + 1);
      EXPECT_EQ(most[i], below + equal);
      EXPECT_EQ(average[i], below + (equal + 1) / 2);
      EXPECT_EQ(dense[i], static_cast<double>(levels.size()));
      EXPECT_EQ(ordinal[i], below + equalBefore + 1);
    }
  });
}

TEST(Ordering, TalliesCountEachValueOnce) {
  forSamples([](const Doubles& x) {
    std::map<double, double> counts;
    std::size_t missing = 0;
    for (const double v : x) {
      std::isnan(v) ? void(++missing) : void(++counts[v + 0.0]);
    }
    Doubles values, numbers;
    for (const auto& [value, count] : counts) {
      values.push_back(value);
      numbers.push_back(count);
    }
    const auto t = vx::tally(x);
    EXPECT_EQ(t.values, values);
    EXPECT_EQ(t.counts, numbers);
    EXPECT_EQ(t.missing, missing);
    const auto weighted = vx::tally(x, {.weights = Doubles(x.size(), 3)});
    EXPECT_EQ(weighted.values, values);
    EXPECT_EQ(weighted.counts.empty() ? 0 : weighted.counts[0],
              numbers.empty() ? 0 : 3 * numbers[0]);
  });
}

TEST(Ordering, TalliesOfManyLevelsGoOtherWays) {
  std::vector<std::int32_t> x;
  Doubles wide, weights;
  for (int i = 0; i < 100000; ++i) {
    const int level = i * 7919 % 40000;
    x.push_back(level);
    wide.push_back(level * 1e10 + 0.25);
    weights.push_back(level % 10 == 0 ? 0 : 0.1);
  }
  const auto byValue = vx::tally(x);
  const auto bySorting = vx::tally(wide);
  EXPECT_EQ(byValue.counts, bySorting.counts);
  EXPECT_EQ(bySorting.values.size(), 40000);
  const auto weighed = vx::tally(wide, {.weights = weights});
  EXPECT_EQ(weighed.values.size(), 36000);
  EXPECT_EQ(weighed.values[0], 1e10 + 0.25);
  EXPECT_EQ(weighed.counts[0], 0.1 * bySorting.counts[1]);
}

TEST(Ordering, TotalsOfWeightsHaveOneRounding) {
  const Doubles w = {1e16, 1, 1, 1e-300, 0x1p-1074, 1e300, 0.1};
  const auto total = [](const Doubles& v) {
    return vx::tally(Doubles(v.size(), 4), {.weights = v}).counts.at(0);
  };
  EXPECT_EQ(total({1e16, 1, 1}), 1e16 + 2);
  EXPECT_EQ(total({1, 0x1p-53, 0x1p-1074}), 1 + 0x1p-52);  // the last decides the tie
  EXPECT_EQ(total({1, 0x1p-53}), 1);
  EXPECT_EQ(total({1e308, 1e308}), kInf);
  Doubles shuffled = w;
  std::mt19937_64 random(1);
  for (int i = 0; i < 50; ++i) {
    std::shuffle(shuffled.begin(), shuffled.end(), random);
    EXPECT_EQ(total(shuffled), total(w));
  }
}

TEST(Ordering, ModeIsTheSmallestOfTheMostFrequent) {
  EXPECT_EQ(vx::mode({3, 1, 3, 1, 2}), 1);
  EXPECT_EQ(vx::mode({3, 1, 2}, {.weights = {1, 1, 1.5}}), 2);
  EXPECT_TRUE(std::isnan(vx::mode({3, 3, kNan})));
  EXPECT_EQ(vx::mode({3, 3, kNan}, {.missing = vx::Missing::omit}), 3);
  EXPECT_TRUE(std::isnan(vx::mode(Doubles())));
}

// Counts by comparing with the edges.
Doubles countsByDefinition(const Doubles& x, const Doubles& edges) {
  Doubles counts(edges.size() - 1);
  for (const double v : x) {
    for (std::size_t b = 0; b < counts.size(); ++b) {
      const bool last = b + 1 == counts.size();
      counts[b] += v >= edges[b] && (v < edges[b + 1] || (last && v == edges[b + 1]));
    }
  }
  return counts;
}

TEST(Ordering, HistogramsCompareWithTheirEdges) {
  std::mt19937_64 random(3);
  for (const int bins : {1, 3, 10, 100, 4097}) {
    for (const vx::Interval range :
         {vx::Interval{0, 1}, {0.1, 0.7}, {-1e9, -1e9 + 1e-4}, {1e300, 3e300}}) {
      Doubles x = {range.low, range.high, kNan, kInf, -kInf};
      const auto edges = vx::histogram(x, bins, {.range = range}).edges;
      for (int i = 0; i < 3000; ++i) {
        const double edge = edges[random() % edges.size()];
        x.push_back(random() % 2 ? edge : std::nextafter(edge, random() % 2 ? kInf : -kInf));
        x.push_back(range.low +
                    (range.high - range.low) * static_cast<double>(random() % 1000) / 999);
      }
      const auto h = vx::histogram(x, bins, {.range = range});
      EXPECT_EQ(h.counts, countsByDefinition(x, edges)) << bins << " from " << range.low;
      EXPECT_EQ(h.missing, 1);
      EXPECT_EQ(vx::histogram(x, edges).counts, h.counts);
      EXPECT_EQ(vx::histogram(x, edges, {.weights = Doubles(x.size(), 1)}).counts, h.counts);
    }
  }
}

// Cases of NumPy 1.24, and its 2.0 for integers.
TEST(Ordering, HistogramsFollowTheUsualEdgeRules) {
  const auto h = vx::histogram({1, 2, 1}, 3);
  EXPECT_THAT(h.edges, ElementsAre(1, 1 + 1.0 / 3, 1 + 2.0 / 3, 2));
  EXPECT_THAT(h.counts, ElementsAre(2, 0, 1));
  EXPECT_THAT(vx::histogram({5, 5}, 2).edges, ElementsAre(4.5, 5, 5.5));
  EXPECT_THAT(vx::histogram(Doubles(), 2).edges, ElementsAre(0, 0.5, 1));
  EXPECT_THAT(vx::histogram({1, 1, 2}, {1.0, 1.0, 2.0}).counts, ElementsAre(0, 3));
  EXPECT_THAT(vx::histogram({1, 2, 3, 4}, {1.0, 2.0, 3.0}).counts, ElementsAre(1, 2));
  EXPECT_THAT(vx::histogram({1, 2, 2, 4}, {0.0, 2.0, 4.0}, {.density = true}).counts,
              ElementsAre(0.125, 0.375));
  Doubles x;
  for (int i = 0; i < 1000; ++i) {
    x.push_back(std::pow(i * 0.01, 1.5));
  }
  EXPECT_EQ(vx::histogram(x, vx::BinRule::sturges).counts.size(), 11);
  EXPECT_EQ(vx::histogram(x, vx::BinRule::fd).counts.size(), 10);
  EXPECT_EQ(vx::histogram(x, vx::BinRule::scott).counts.size(), 10);
  EXPECT_EQ(vx::histogram(x, vx::BinRule::automatic).counts.size(), 11);
  // A range of no width is one of width 1, for the rules too.
  const Doubles close = {0.5, 0.9, 1.1, 1.2, 7};
  EXPECT_EQ(vx::histogram(close, vx::BinRule::sturges, {.range = vx::Interval{0.9, 0.9}}).counts,
            vx::histogram(close, vx::BinRule::sturges, {.range = vx::Interval{0.4, 1.4}}).counts);
  EXPECT_EQ(vx::histogram(std::vector<std::int32_t>{1, 2, 2, 3, 3, 3, 4}, vx::BinRule::automatic)
                .counts.size(),
            3);
  const auto table = vx::frequency_table({1, 2, 2, 9}, {0.0, 2.0, 4.0});
  EXPECT_THAT(table.relative, ElementsAre(1.0 / 3, 2.0 / 3));
  EXPECT_THAT(table.cumulative, ElementsAre(1.0 / 3, 1));
}

TEST(Ordering, CumulativeSumsAreRoundedExactSums) {
  std::mt19937_64 random(5);
  for (const std::size_t n : {0, 1, 1023, 1024, 1025, 5000}) {
    Doubles x(n);
    for (double& v : x) {
      v = std::ldexp(static_cast<double>(random() % 1000) - 500, static_cast<int>(random() % 50));
    }
    const Doubles sums = vx::cumulative(x);
    __int128 exact = 0;
    for (std::size_t i = 0; i < n; ++i) {
      exact += static_cast<std::int64_t>(x[i]);
      EXPECT_EQ(sums[i], static_cast<double>(exact)) << i;
    }
  }
  Doubles x(2048, 1.0);
  x[600] = 1e300;
  x[601] = -1e300;
  EXPECT_EQ(vx::cumulative(x).back(), 2046);
  x[700] = 1.5e308;
  x[701] = 1.5e308;
  x[702] = -1.5e308;
  const Doubles passed = vx::cumulative(x);
  EXPECT_EQ(passed[701], kInf);
  EXPECT_EQ(passed.back(), 1.5e308);
  x[100] = kInf;
  EXPECT_EQ(vx::cumulative(x).back(), kInf);
  EXPECT_EQ(vx::cumulative(x)[99], 100);
  x[200] = kNan;
  EXPECT_TRUE(std::isnan(vx::cumulative(x)[200]) && std::isnan(vx::cumulative(x).back()));
  EXPECT_EQ(vx::cumulative(x)[199], kInf);
}

TEST(Ordering, CumulativeKindsAndMissingValues) {
  const Doubles x = {3, kNan, 1, 2};
  const auto of = [&](vx::Cumulative kind, vx::Missing missing = vx::Missing::omit) {
    return vx::cumulative(x, {.kind = kind, .missing = missing});
  };
  EXPECT_THAT(of(vx::Cumulative::sum), ElementsAre(3, 3, 4, 6));
  EXPECT_THAT(of(vx::Cumulative::product), ElementsAre(3, 3, 3, 6));
  EXPECT_THAT(of(vx::Cumulative::min), ElementsAre(3, 3, 1, 1));
  EXPECT_THAT(of(vx::Cumulative::max), ElementsAre(3, 3, 3, 3));
  EXPECT_THAT(of(vx::Cumulative::max, vx::Missing::propagate),
              ElementsAre(3, testing::IsNan(), testing::IsNan(), testing::IsNan()));
  EXPECT_THAT(vx::cumulative({2, kNan, 5}, {.weights = {3, 0, 2}}), ElementsAre(6, 6, 16));
  EXPECT_THAT(vx::cumulative({2, 5}, {.weights = {3, 2}, .kind = vx::Cumulative::product}),
              ElementsAre(8, 200));
  EXPECT_THAT(
      vx::cumulative({1e200, 1e200, -1e-200, 1e-200, 0, 3}, {.kind = vx::Cumulative::product}),
      ElementsAre(1e200, kInf, testing::DoubleEq(-1e200), testing::DoubleEq(-1), 0, 0));
}

TEST(Ordering, TrimmingCountsFromBothEnds) {
  forSamples([](const Doubles& x) {
    for (const vx::Cut cut : {vx::Cut(0), vx::Cut(0.1), vx::Cut(0.3, 0.45)}) {
      Doubles sorted = vx::sort(x, {.missing = vx::Missing::omit});
      const auto n = static_cast<double>(sorted.size());
      const auto below = static_cast<std::ptrdiff_t>(cut.lower * n);
      const auto above = static_cast<std::ptrdiff_t>(cut.upper * n);
      const Doubles kept(sorted.begin() + below, sorted.end() - above);
      EXPECT_EQ(vx::sort(vx::trim(x, cut, {.missing = vx::Missing::omit})), kept);
      const Doubles ends = vx::winsorize(x, cut);
      for (std::size_t i = 0; i < x.size() && !kept.empty(); ++i) {
        EXPECT_TRUE(std::isnan(x[i]) ? std::isnan(ends[i])
                                     : ends[i] == std::clamp(x[i], kept.front(), kept.back()));
      }
    }
  });
  EXPECT_THAT(vx::trim({5, 1, 3, 1, 9}, 0.2), ElementsAre(5, 3, 1));
  EXPECT_THAT(vx::winsorize({5, 1, 3}, {0.3, 0}, {.weights = {1, 2, 4}}), ElementsAre(5, 3, 3));
}

// A few million elements of cheap work between two looks, whatever is done with them.
TEST(Ordering, LongWorkLooksAtTheWatch) {
  constexpr std::size_t n = std::size_t{3} << 20;
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  Doubles x(n), levels(n);
  std::generate(x.begin(), x.end(), [&] { return normal(random); });
  std::transform(x.begin(), x.end(), levels.begin(), [](double v) { return std::floor(v); });
  const Doubles w(n, 2.0);
  const auto looks = [](auto work) {
    int count = 0;
    const vx::Watch watch([&](double) { return ++count > 0; });
    work();
    return count;
  };
  EXPECT_GE(looks([&] { vx::sort(x); }), 2);
  EXPECT_GE(looks([&] { vx::tally(x); }), 3);
  EXPECT_GE(looks([&] { vx::tally(levels, {.weights = w}); }), 3);
  EXPECT_GE(looks([&] { vx::histogram(x, 9, {.weights = w}); }), 3);
  EXPECT_GE(looks([&] { vx::histogram(x, vx::BinRule::scott); }), 3);
  EXPECT_GE(looks([&] { vx::trimmed<double>(x, 0.1); }), 3);
  EXPECT_GE(looks([&] { vx::winsorized<double>(x, 0.1); }), 3);
}

// Under a watch the long sorts go in steps; they give the same, and stop when they are told to.
TEST(Ordering, LongSortsCanBeWatchedAndStopped) {
  std::mt19937_64 random(9);
  for (const bool constant : {false, true}) {
    Doubles x(4'500'000);
    for (double& v : x) {
      v = constant ? 1.5 : static_cast<double>(random() % 8'000'000) - 4e6;
    }
    Doubles plain(x.size()), watched(x.size());
    vx::sort(x, std::span(plain));
    const auto order = constant ? std::vector<std::int64_t>() : vx::argsort(x);
    int calls = 0;
    {
      const vx::Watch watch([&](double done) {
        ++calls;
        return done >= 0 && done <= 1;
      });
      vx::sort(x, std::span(watched));
      if (!constant) {
        EXPECT_EQ(vx::argsort(x), order);
      }
    }
    EXPECT_EQ(watched, plain);
    EXPECT_TRUE(std::is_sorted(plain.begin(), plain.end()));
    EXPECT_GT(calls, 2);
    const vx::Watch stop([&](double) { return --calls > 0; });
    EXPECT_THROW((vx::sort(x, std::span(watched)), vx::argsort(x)), vx::Interrupted);
  }
}

TEST(Ordering, ErrorsSayWhatCame) {
  const Doubles x = {1, 2};
  Doubles out(1);
  const auto message = [](auto f) -> std::string {
    try {
      f();
    } catch (const std::logic_error& e) {
      return e.what();
    }
    return "";
  };
  EXPECT_EQ(message([&] { vx::rank(x, out); }), "out must be of 2 elements, got 1");
  EXPECT_EQ(message([&] {
              vx::tally(x, {.weights = {1, -3}});
            }),
            "weights must be finite and not negative, weights[1] is -3");
  EXPECT_EQ(message([&] { vx::histogram(x, 0); }), "bins must be 1 to 2^27, got 0");
  EXPECT_EQ(message([&] {
              vx::histogram(x, {1.0, 0.5});
            }),
            "bins must be edges that do not fall, element 1 is 0.5");
  EXPECT_EQ(message([&] { vx::trim(x, 0.6); }),
            "trim: cut must be fractions of at least 0, together at most 1, got 0.6 and 0.6");
  const std::string nothing = "the total of the weights must be positive, it is 0";
  EXPECT_EQ(message([&] { vx::mode(x, {.weights = {0, 0}}); }), "mode: " + nothing);
  EXPECT_EQ(message([&] { vx::trim(x, 0.1, {.weights = {0, 0}}); }), "trim: " + nothing);
  EXPECT_EQ(message([&] { vx::sort(Doubles{kNan}, {.missing = vx::Missing::raise}); }),
            "sort: element 0 is missing");
  EXPECT_EQ(message([&] {
              vx::rank(Doubles{1, kNan}, {.missing = vx::Missing::raise});
            }),
            "rank: element 1 is missing");
  EXPECT_EQ(message([&] {
              vx::tally(Doubles{1, 2}, {.weights = {1, kNan}, .missing = vx::Missing::raise});
            }),
            "tally: element 1 is missing");
  EXPECT_EQ(message([&] {
              vx::mode(Doubles{1, kNan}, {.missing = vx::Missing::raise});
            }),
            "mode: element 1 is missing");
  EXPECT_EQ(message([&] {
              vx::histogram({1, kInf}, 3);
            }),
            "range: the data hold infinities, so it has to be given");
}

}  // namespace
