// Urns, choices, permutations, and the bootstrap.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <set>
#include <vexel/sampling.hpp>
#include <vexel/statistics.hpp>

namespace {

using namespace vexel;

// Counts of outcomes against their probabilities; each within five standard deviations.
template <typename T>
void expectShares(const std::map<T, double>& probabilities, const std::map<T, int>& counts, int n) {
  for (const auto& [outcome, p] : probabilities) {
    const auto found = counts.find(outcome);
    const int count = found == counts.end() ? 0 : found->second;
    EXPECT_NEAR(count, n * p, 5 * std::sqrt(n * p * (1 - p)) + 1e-9);
  }
  for (const auto& [outcome, count] : counts) {
    EXPECT_TRUE(probabilities.contains(outcome));
  }
}

TEST(Urn, DrawsByWeight) {
  const std::vector<std::vector<double>> urns = {
      {1}, {0, 3}, {1, 2, 3, 4}, {1e308, 1e308, 0, 5e307}, {1e-320, 3e-320}, {5, 1e-3, 0, 7}};
  for (const std::vector<double>& weights : urns) {
    const Urn urn{Data(weights)};
    const double largest = *std::max_element(weights.begin(), weights.end());
    double total = 0;
    for (const double w : weights) {
      total += w / largest;
    }
    std::map<std::int64_t, double> probabilities;
    for (std::size_t i = 0; i < weights.size(); ++i) {
      if (weights[i] > 0) {
        probabilities[static_cast<std::int64_t>(i)] = weights[i] / largest / total;
      }
    }
    Random rng(1);
    std::map<std::int64_t, int> counts;
    for (const std::int64_t i : urn.sample(400000, rng)) {
      ++counts[i];
    }
    expectShares(probabilities, counts, 400000);
  }
  std::vector<double> many(200000);  // two draws a sample
  std::iota(many.begin(), many.end(), 0.0);
  Random rng(2);
  const Urn urn{Data(many)};
  double sum = 0;
  for (const std::int64_t i : urn.sample(400000, rng)) {
    sum += static_cast<double>(i);
  }
  EXPECT_NEAR(sum / 400000, 2.0 / 3 * 200000, 5 * 200000 / std::sqrt(18.0 * 400000));
}

TEST(Urn, RefusesWeightsOfNoLaw) {
  for (const std::vector<double>& weights :
       {std::vector<double>{}, {0, 0}, {1, -1}, {1, NAN}, {INFINITY}}) {
    EXPECT_THROW(Urn{Data(weights)}, std::invalid_argument);
  }
}

TEST(Random, ChoosesAndShufflesAsTheFunctionsDo) {
  Random a(8);
  Random b(8);
  std::vector<double> x = {1, 2, 3, 4, 5};
  std::vector<double> y = x;
  a.shuffle(x);
  vexel::shuffle(y, b);
  EXPECT_EQ(x, y);
  a.shuffle(std::span(x).first(3));
  vexel::shuffle(std::span(y).first(3), b);
  EXPECT_EQ(x, y);
  EXPECT_EQ(a.permutation(9), vexel::permutation(9, b));
  EXPECT_EQ(a.choice(x, 3, {.replace = false}), choice(x, 3, b, {.replace = false}));
  EXPECT_EQ(a.choice(100, 3), choice(100, 3, b));
  EXPECT_EQ(a, b);
}

TEST(Choice, WithAndWithoutReplacementByAndWithoutWeight) {
  const std::vector<double> weights = {3, 0, 1, 2};
  constexpr int n = 120000;
  Random rng(3);
  std::map<std::pair<std::int64_t, std::int64_t>, int> with, without, weighted;
  for (int i = 0; i < n; ++i) {
    const auto a = choice(4, 2, rng);
    ++with[{a[0], a[1]}];
    const auto b = choice(4, 2, rng, {.replace = false});
    ++without[{b[0], b[1]}];
    const auto c = choice(4, 2, rng, {.weights = weights, .replace = false});
    ++weighted[{c[0], c[1]}];
  }
  std::map<std::pair<std::int64_t, std::int64_t>, double> p_with, p_without, p_weighted;
  for (std::int64_t i = 0; i < 4; ++i) {
    for (std::int64_t j = 0; j < 4; ++j) {
      p_with[{i, j}] = 1.0 / 16;
      if (i != j) {
        p_without[{i, j}] = 1.0 / 12;
        const double p = weights[i] / 6 * weights[j] / (6 - weights[i]);
        if (p > 0) {
          p_weighted[{i, j}] = p;
        }
      }
    }
  }
  expectShares(p_with, with, n);
  expectShares(p_without, without, n);
  expectShares(p_weighted, weighted, n);
}

TEST(Choice, FewOutOfManyAreThoseOfAWholeShuffle) {
  // n = 62 of 1000 goes by the places that moved, n = 63 by a whole array: the first 62 are the
  // same.
  Random a(4);
  Random b(4);
  const auto few = choice(1000, 62, a, {.replace = false});
  const auto more = choice(1000, 63, b, {.replace = false});
  EXPECT_TRUE(std::equal(few.begin(), few.end(), more.begin()));
  Random rng(5);
  const auto rare = choice(std::size_t{1} << 40, 100000, rng, {.replace = false});
  EXPECT_EQ(std::set<std::int64_t>(rare.begin(), rare.end()).size(), 100000U);
  EXPECT_EQ(choice({1.5, 2.5}, 2, rng, {.weights = {0, 1}}), (std::vector<double>{2.5, 2.5}));
  EXPECT_TRUE(choice(std::size_t{0}, 0, rng).empty());
  EXPECT_THROW(choice(std::size_t{0}, 1, rng), std::invalid_argument);
  EXPECT_THROW(choice(3, 4, rng, {.replace = false}), std::invalid_argument);
  EXPECT_THROW(choice(3, 3, rng, {.weights = {0, 1, 1}, .replace = false}), std::invalid_argument);
  EXPECT_THROW(choice(3, 3, rng, {.weights = {1, 1}}), std::invalid_argument);
}

TEST(Shuffle, GivesEveryOrderAndTheSameForEveryElement) {
  Random rng(6);
  std::map<std::vector<std::int64_t>, int> counts;
  for (int i = 0; i < 240000; ++i) {
    ++counts[permutation(4, rng)];
  }
  std::map<std::vector<std::int64_t>, double> p;
  std::vector<std::int64_t> order = {0, 1, 2, 3};
  do {
    p[order] = 1.0 / 24;
  } while (std::next_permutation(order.begin(), order.end()));
  expectShares(p, counts, 240000);

  constexpr std::size_t n = 1000;
  Random a(7), b(7), c(7);
  std::vector<double> x(n);
  std::iota(x.begin(), x.end(), 0.0);
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < n; ++i) {
    texts.push_back(std::to_string(i));
  }
  shuffle(x, a);
  shuffle(texts, b);
  const auto indices = permutation(n, c);
  for (std::size_t i = 0; i < n; ++i) {
    ASSERT_EQ(static_cast<double>(indices[i]), x[i]);
    ASSERT_EQ(std::to_string(indices[i]), texts[i]);
  }
  EXPECT_EQ(a, b);
  EXPECT_EQ(a, c);
}

std::vector<double> skewedSample(std::size_t n) {
  Random rng(8);
  std::vector<double> x = rng.exponential(n);
  return x;
}

TEST(Bootstrap, NamedStatisticsAreTheirCallables) {
  const std::vector<double> x = skewedSample(83);
  const std::vector<std::pair<Statistic, std::function<double(std::span<const double>)>>> rows = {
      {Statistic::mean, [](std::span<const double> y) { return mean(y); }},
      {Statistic::sum, [](std::span<const double> y) { return mean(y) * 83; }},
      {Statistic::median, [](std::span<const double> y) { return median(y); }},
      {Statistic::var, [](std::span<const double> y) { return var(y); }},
      {Statistic::std, [](std::span<const double> y) { return vexel::std(y); }},
      {Statistic::skewness, [](std::span<const double> y) { return skewness(y); }},
      {Statistic::kurtosis, [](std::span<const double> y) { return kurtosis(y); }},
      {Statistic::iqr, [](std::span<const double> y) { return iqr(y); }},
      {Statistic::min,
       [](std::span<const double> y) { return *std::min_element(y.begin(), y.end()); }},
      {Statistic::max,
       [](std::span<const double> y) { return *std::max_element(y.begin(), y.end()); }}};
  for (const auto& [statistic, callable] : rows) {
    SCOPED_TRACE(static_cast<int>(statistic));
    Random a(9), b(9);
    const Bootstrap named = bootstrap(x, statistic, a, {.replicates = 999});
    const Bootstrap called = bootstrap(x, callable, b, {.replicates = 999});
    ASSERT_EQ(named.replicates.size(), 999U);
    for (std::size_t i = 0; i < 999; ++i) {
      ASSERT_NEAR(named.replicates[i], called.replicates[i],
                  1e-14 * std::abs(called.replicates[i]));
    }
    EXPECT_NEAR(named.estimate, callable(x), 1e-14 * std::abs(named.estimate));
    EXPECT_NEAR(named.interval.low, called.interval.low, 1e-9);
    EXPECT_NEAR(named.interval.high, called.interval.high, 1e-9);
    EXPECT_EQ(a, b);
  }
}

TEST(Bootstrap, CoversTheMean) {
  // Of 2000 samples of 30, each with an interval of 90 %: a binomial count, five deviations wide,
  // about the coverage that these intervals have for so few exponential values.
  for (const auto& [method, share] : {std::pair{BootstrapMethod::BCa, 0.875},
                                      {BootstrapMethod::percentile, 0.86},
                                      {BootstrapMethod::basic, 0.84}}) {
    Random rng(10);
    int covered = 0;
    for (int i = 0; i < 2000; ++i) {
      const std::vector<double> x = rng.exponential(30);
      const Bootstrap b = bootstrap(x, Statistic::mean, rng,
                                    {.replicates = 399, .confidence = 0.9, .method = method});
      covered += b.interval.low <= 1 && 1 <= b.interval.high;
    }
    EXPECT_NEAR(covered / 2000.0, share, 5 * 0.0077);
  }
}

TEST(Bootstrap, IsWhatItIsDefinedToBe) {
  const std::vector<double> x = skewedSample(50);
  Random a(11), b(11), c(11);
  const BootstrapOptions options{.replicates = 2000, .confidence = 0.8};
  const Bootstrap bca = bootstrap(x, Statistic::mean, a, options);
  const Bootstrap percentile =
      bootstrap(x, Statistic::mean, b,
                {.replicates = 2000, .confidence = 0.8, .method = BootstrapMethod::percentile});
  const Bootstrap basic =
      bootstrap(x, Statistic::mean, c,
                {.replicates = 2000, .confidence = 0.8, .method = BootstrapMethod::basic});
  EXPECT_DOUBLE_EQ(percentile.interval.low, quantile(bca.replicates, 0.1));
  EXPECT_DOUBLE_EQ(percentile.interval.high, quantile(bca.replicates, 0.9));
  EXPECT_DOUBLE_EQ(basic.interval.low, 2 * basic.estimate - percentile.interval.high);
  EXPECT_DOUBLE_EQ(bca.standard_error, vexel::std(bca.replicates));
  // The mean's acceleration is its skewness over 6 sqrt(n).
  const double acceleration = skewness(x) / (6 * std::sqrt(50.0));
  double below = 0;
  for (const double r : bca.replicates) {
    below += r < bca.estimate ? 1 : r == bca.estimate ? 0.5 : 0;
  }
  const auto normalCdf = [](double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); };
  double bias = 0;
  for (double step = 1; step > 1e-17; step /= 2) {  // the normal quantile of below / 2000
    bias += normalCdf(bias) < below / 2000 ? step : -step;
  }
  const double z = 1.2815515655446004;
  const double q = normalCdf(bias + (bias - z) / (1 - acceleration * (bias - z)));
  EXPECT_NEAR(bca.interval.low, quantile(bca.replicates, q), 1e-8);
}

TEST(Bootstrap, OfLittleAndOfMuch) {
  Random rng(12);
  const Bootstrap constant = bootstrap({2, 2, 2}, Statistic::mean, rng, {.replicates = 50});
  EXPECT_EQ(constant.interval, (Interval{2, 2}));
  EXPECT_EQ(constant.standard_error, 0);
  EXPECT_EQ(bootstrap({7}, Statistic::median, rng, {.replicates = 5}).replicates,
            std::vector<double>(5, 7));
  EXPECT_TRUE(std::isnan(bootstrap({1, NAN, 3}, Statistic::mean, rng, {.replicates = 5}).estimate));
  EXPECT_EQ(
      bootstrap({1, NAN, 3}, Statistic::mean, rng, {.replicates = 5, .missing = Missing::omit})
          .estimate,
      2);
  EXPECT_THROW(bootstrap({1, NAN}, Statistic::mean, rng, {.missing = Missing::raise}),
               std::invalid_argument);
  EXPECT_TRUE(std::isnan(bootstrap(std::vector<double>{}, Statistic::mean, rng).estimate));
  EXPECT_THROW(bootstrap({1, 2}, Statistic::mean, rng, {.replicates = 0}), std::invalid_argument);
  EXPECT_THROW(bootstrap({1, 2}, Statistic::mean, rng, {.confidence = 1}), std::invalid_argument);
  // Means that a plain sum would spoil.
  const std::vector<double> large = {1e16, 1, -1e16, 1};
  for (const double r : bootstrap(large, Statistic::mean, rng, {.replicates = 2000}).replicates) {
    const double whole = std::nearbyint(r * 4 / 1e16) * 1e16;
    ASSERT_LE(std::abs(r * 4 - whole), 4 + std::abs(whole) * 0x1p-52) << r;
  }
  EXPECT_TRUE(std::isfinite(
      bootstrap({1e308, 1e308, -1e308}, Statistic::mean, rng, {.replicates = 50}).estimate));
}

// More than memory will ever hold: an error that names function and parameter.
TEST(Sampling, NumbersBeyondMemoryAreRefusedByName) {
  Random rng(1);
  const auto message = [](auto f) -> std::string {
    try {
      f();
    } catch (const std::length_error& e) {
      return e.what();
    }
    return "";
  };
  const std::size_t many = std::size_t{1} << 62;
  EXPECT_TRUE(message([&] { permutation(many, rng); }).starts_with("permutation: n must"));
  EXPECT_TRUE(message([&] { rng.normal(many); }).starts_with("normal: n must"));
  EXPECT_TRUE(message([&] { choice(3, many, rng, {.weights = {1, 1, 1}}); }).find("n must") > 0);
  EXPECT_TRUE(message([&] {
                bootstrap({1, 2, 3}, Statistic::mean, rng, {.replicates = many});
              }).starts_with("bootstrap: replicates must"));
}

}  // namespace
