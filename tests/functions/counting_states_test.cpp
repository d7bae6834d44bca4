// States of counts, densities and ranks: any split, any order of merging, the same bits as the
// functions of all data; bytes that come back, and nothing else that does.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vexel/statistics.hpp>

namespace {

namespace vx = vexel;
using Doubles = std::vector<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Pairs {
  Doubles x;
  Doubles w;
};

Pairs pairs(std::size_t n, int kind) {
  std::mt19937_64 random(n + 100 * static_cast<unsigned>(kind));
  Pairs p;
  for (std::size_t i = 0; i < n; ++i) {
    const auto r = random();
    p.x.push_back(
        kind == 0 ? static_cast<double>(r % 7) - 3
                  : std::ldexp(static_cast<double>(r % 1001) - 500, static_cast<int>(r % 90) - 40));
    p.w.push_back(
        std::ldexp(static_cast<double>(random() % 4), kind == 2 ? static_cast<int>(r % 200) : -1));
    if (kind == 1 && r % 11 == 0) {
      p.x.back() = r % 2 ? kInf : -kInf;
    }
    if (kind == 2 && r % 13 == 0) {
      p.x.back() = -0.0;
    }
  }
  return p;
}

// The pairs in pieces, each taken by a copy of the empty state, merged in a random order.
template <typename State>
State inPieces(const State& empty, const Pairs& p, bool weighted, unsigned seed) {
  std::mt19937_64 random(seed);
  std::vector<State> parts;
  for (std::size_t at = 0; at < p.x.size();) {
    const std::size_t size = std::min(p.x.size() - at, 1 + random() % 40);
    const vx::Data w = weighted ? vx::Data(p.w.data() + at, size) : vx::Data();
    parts.push_back(State(empty).update(vx::Data(p.x.data() + at, size), w));
    at += size;
  }
  std::shuffle(parts.begin(), parts.end(), random);
  State all(empty);
  for (const State& part : parts) {
    all.merge(State::from_bytes(part.to_bytes()));
  }
  return all;
}

// check(whole, weighted, pairs) of the state of all data, which every split has to give again.
template <typename State, typename Check>
void forSplits(const State& empty, Check check) {
  for (int kind = 0; kind < 3; ++kind) {
    const Pairs p = pairs(400, kind);
    for (const bool weighted : {false, true}) {
      SCOPED_TRACE(testing::Message() << "kind " << kind << ", weighted " << weighted);
      const State whole = State(empty).update(p.x, weighted ? vx::Data(p.w) : vx::Data());
      for (unsigned seed = 1; seed < 4; ++seed) {
        EXPECT_EQ(inPieces(empty, p, weighted, seed).to_bytes(), whole.to_bytes());
      }
      check(whole, weighted ? vx::Data(p.w) : vx::Data(), p.x);
    }
  }
}

TEST(CountingStates, Tally) {
  forSplits(vx::Tally(), [](const vx::Tally& t, vx::Data w, const Doubles& x) {
    const auto wanted = vx::tally(x, {.weights = w});
    EXPECT_EQ(t.values(), wanted.values);
    EXPECT_EQ(t.counts(), wanted.counts);
  });
  vx::Tally t;
  t.update({1, kNan, 1}, {1, 1, kNan}).update({2, 2});
  t.merge(t);
  EXPECT_EQ(t.missing(), 4);
  EXPECT_THAT(t.counts(), testing::ElementsAre(2, 4));
  EXPECT_THROW(vx::Tally(vx::Missing::raise).update({kNan}), std::invalid_argument);
}

TEST(CountingStates, Histogram) {
  const Doubles edges = {-kInf, -3, 0, 0, 0.5, 4};
  forSplits(vx::Histogram(edges), [&](const vx::Histogram& h, vx::Data w, const Doubles& x) {
    EXPECT_EQ(h.counts(), vx::histogram(x, edges, {.weights = w}).counts);
  });
  const auto equal = vx::histogram({0, 10}, 10).edges;
  EXPECT_EQ(vx::Histogram(equal).update({1, 2, 10}).counts(),
            vx::histogram({1, 2, 10}, equal).counts);
  EXPECT_THROW(vx::Histogram(equal).merge(vx::Histogram(edges)), std::invalid_argument);
}

TEST(CountingStates, DensityGrid) {
  forSplits(vx::DensityGrid({-60, 60}, 6001),
            [](const vx::DensityGrid& g, vx::Data w, const Doubles& x) {
              Doubles inside, weights;
              double total = 0;
              for (std::size_t i = 0; i < x.size(); ++i) {
                const double weight = w.given() ? w[i] : 1;
                total += weight;
                if (std::abs(x[i]) <= 60) {
                  inside.push_back(x[i]);
                  weights.push_back(weight);
                }
              }
              double within = 0;
              for (const double weight : weights) {
                within += weight;
              }
              EXPECT_NEAR(g.weight() / total, 1, 1e-12);
              const auto direct = vx::kde(inside, {.weights = weights, .bandwidth = 1});
              const Doubles y = g.density(1);
              for (std::size_t i = 0; i < y.size(); i += 97) {
                EXPECT_NEAR(y[i], direct(g.x()[i]) * within / total, 1e-5);
              }
            });
  EXPECT_TRUE(std::isnan(vx::DensityGrid({0, 1}, 3).density(1)[2]));
}

vx::Ranks searched(vx::Ranks r, const Doubles& x, vx::Data w) {
  for (int passes = 0; !r.done(); ++passes) {
    EXPECT_LT(passes, 4);
    r.update(x, w);
    r.next_pass();
  }
  return r;
}

TEST(CountingStates, RanksAreExactQuantiles) {
  const Doubles q = {0, 0.01, 0.25, 1.0 / 3, 0.5, 0.999, 1};
  for (int method = 0; method < 9; ++method) {
    const auto definition = static_cast<vx::QuantileMethod>(method);
    for (int kind = 0; kind < 3; ++kind) {
      for (const std::size_t n : {1, 2, 5, 300}) {
        const Pairs p = pairs(n, kind);
        EXPECT_EQ(searched(vx::Ranks(q, definition), p.x, {}).result(),
                  vx::quantile(p.x, q, {.method = definition}));
        if (n == 300) {
          EXPECT_EQ(searched(vx::Ranks(q, definition), p.x, p.w).result(),
                    vx::quantile(p.x, q, {.weights = p.w, .method = definition}));
        }
      }
    }
  }
}

TEST(CountingStates, RanksTravelBetweenMachines) {
  const Pairs p = pairs(500, 2);
  vx::Ranks r({0.1, 0.9}, vx::QuantileMethod::hazen);
  while (!r.done()) {
    const vx::Ranks empty = vx::Ranks::from_bytes(r.to_bytes());
    EXPECT_EQ(Doubles(empty.q().begin(), empty.q().end()), (Doubles{0.1, 0.9}));
    EXPECT_EQ(empty.method(), vx::QuantileMethod::hazen);
    const vx::Ranks whole = vx::Ranks(empty).update(p.x, p.w);
    r = inPieces(empty, p, true, 9);
    EXPECT_EQ(r.to_bytes(), whole.to_bytes());
    if (r.pass() == 4) {
      EXPECT_TRUE(r.done());
      break;
    }
    EXPECT_THROW((void)r.result(), std::logic_error);
    r.next_pass();
  }
  EXPECT_EQ(r.result(),
            vx::quantile(p.x, {0.1, 0.9}, {.weights = p.w, .method = vx::QuantileMethod::hazen}));
  EXPECT_TRUE(std::isnan(searched(vx::Ranks({0.5}), {}, {}).result()[0]));
  EXPECT_TRUE(std::isnan(searched(vx::Ranks({0.5}), {1, kNan}, {}).result()[0]));
  EXPECT_EQ(searched(vx::Ranks({0.5}, vx::QuantileMethod::linear, vx::Missing::omit), {1, kNan}, {})
                .result()[0],
            1);
  EXPECT_THROW(vx::Ranks({1.5}), std::domain_error);
}

// Every shorter text, and every text with one bit turned over, is refused.
template <typename State>
void expectOnlyItsOwn(const State& state) {
  const auto bytes = state.to_bytes();
  EXPECT_EQ(State::from_bytes(bytes).to_bytes(), bytes);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    auto wrong = bytes;
    wrong[i] = static_cast<std::uint8_t>(wrong[i] ^ (1U << i % 8));
    EXPECT_THROW(State::from_bytes(wrong), std::invalid_argument);
    wrong.resize(i);
    EXPECT_THROW(State::from_bytes(wrong), std::invalid_argument);
  }
}

TEST(CountingStates, BytesAreChecked) {
  const Pairs p = pairs(10, 2);
  expectOnlyItsOwn(vx::Tally().update(p.x, p.w));
  expectOnlyItsOwn(vx::Histogram({0.0, 1.0, 1e9}).update(p.x, p.w));
  expectOnlyItsOwn(vx::DensityGrid({0, 9}, 5).update(p.x, p.w));
  expectOnlyItsOwn(vx::Ranks({0.5}).update(p.x, p.w).next_pass().update(p.x, p.w));
}

// Weights 0.1 of 1, and 1 and 0.2 of 3, as the first version wrote them.
TEST(CountingStates, BytesOfOlderVersionsAreRead) {
  const std::string hexadecimal =
      "7665786c74616c79010000006b0000000000000000000000000000000002000000000000000000000000"
      "00f03f000000000000084002000000000000000200000000000000000000000000000001000000000000"
      "000200000000000000010203000000000000009a9999999999b93f333333333333f33f00000000000090"
      "3c0f2256feb32a51b7";
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i < hexadecimal.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(hexadecimal.substr(i, 2), nullptr, 16)));
  }
  const auto now = vx::Tally().update(Doubles{3, 1, 3}, Doubles{1, 0.1, 0.2}).to_bytes();
  EXPECT_EQ(vx::Tally::from_bytes(bytes).to_bytes(), now);
  EXPECT_LT(now.size(), bytes.size());
}

}  // namespace
