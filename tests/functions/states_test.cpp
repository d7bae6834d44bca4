// States: the same bits for every split and order of merging, results against those of the whole,
// and bytes that are nothing else.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>
#include <vexel/descriptive.hpp>
#include <vexel/states.hpp>

namespace {

using vexel::Covariance;
using vexel::Data;
using vexel::Extremes;
using vexel::Missing;
using vexel::Moments;
using vexel::Sums;
using Vector = std::vector<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Doubles of every size, the ends of their range included.
Vector anything(std::size_t n, std::mt19937_64& random) {
  Vector x(n);
  for (double& v : x) {
    const auto mantissa = static_cast<double>(random() >> 11) * (random() % 2 == 0 ? 1.0 : -1.0);
    v = std::ldexp(mantissa, static_cast<int>(random() % 2030) - 1110);
  }
  return x;
}

// Updates states with pieces of the data and merges them in a random tree.
template <typename State, typename Update>
State inPieces(const State& empty, std::size_t n, Update update, std::mt19937_64& random) {
  std::vector<State> states;
  for (std::size_t begin = 0; begin < n;) {
    const std::size_t size = std::min(n - begin, std::size_t{1} + random() % 9000);
    if (states.empty() || random() % 2 == 0) {
      states.push_back(empty);
    }
    update(states[random() % states.size()], begin, size);
    begin += size;
  }
  while (states.size() > 1) {
    std::shuffle(states.begin(), states.end(), random);
    const State last = states.back();
    states.pop_back();
    EXPECT_EQ(&states[0].merge(last), &states[0]);
  }
  return states.empty() ? empty : states[0];
}

template <typename State>
class Whole : public testing::Test {};

// One row for each kind of state: how it is made, and updated from part of x and w.
struct SumsKind {
  using State = Sums;
  static State make() { return Sums(); }
  static void update(State& s, Data x, Data w) { s.update(x, w); }
};
struct MomentsKind {
  using State = Moments;
  static State make() { return Moments(5); }
  static void update(State& s, Data x, Data w) { s.update(x, w); }
};
struct CovarianceKind {
  using State = Covariance;
  static State make() { return Covariance(2); }
  static void update(State& s, Data x, Data w) {
    Vector y;
    for (std::size_t i = 0; i < x.size(); ++i) {
      y.push_back(std::floor(x[i]) + 1.0);
    }
    const Data columns[] = {x, y};
    s.update(columns, w);
  }
};
struct ExtremesKind {
  using State = Extremes;
  static State make() { return Extremes(); }
  static void update(State& s, Data x, Data w) { s.update(x, w); }
};
using Kinds = testing::Types<SumsKind, MomentsKind, CovarianceKind, ExtremesKind>;
TYPED_TEST_SUITE(Whole, Kinds);

TYPED_TEST(Whole, HasTheSameBytesForEverySplitAndOrder) {
  std::mt19937_64 random(1);
  for (const bool weighted : {false, true}) {
    for (const bool usual : {false, true}) {
      Vector x = anything(20000, random);
      Vector w = x;
      std::normal_distribution<double> normal(1.0, 2.0);
      for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = usual ? normal(random) : x[i];
        w[i] = static_cast<double>(random() % 5) / 3.0;
      }
      const Data weights = weighted ? Data(w) : Data();
      auto one = TypeParam::make();
      TypeParam::update(one, x, weights);
      for (int repeat = 0; repeat < 3; ++repeat) {
        const auto update = [&](auto& state, std::size_t begin, std::size_t n) {
          TypeParam::update(state, Data(&x[begin], n), weighted ? Data(&w[begin], n) : Data());
        };
        const auto merged = inPieces(TypeParam::make(), x.size(), update, random);
        EXPECT_EQ(merged.to_bytes(), one.to_bytes());
        EXPECT_EQ(merged.count(), one.count());
      }
    }
  }
}

TYPED_TEST(Whole, ReadsBackItsBytesAndNothingElse) {
  using State = typename TypeParam::State;
  State state = TypeParam::make();
  EXPECT_EQ(State::from_bytes(state.to_bytes()).to_bytes(), state.to_bytes());
  TypeParam::update(state, Vector{1.5, -2.5e300, 1e-320}, {});
  const auto bytes = state.to_bytes();
  State back = State::from_bytes(bytes);
  EXPECT_EQ(back.to_bytes(), bytes);
  TypeParam::update(back, Vector{7.0}, {});
  TypeParam::update(state, Vector{7.0}, {});
  EXPECT_EQ(back.to_bytes(), state.to_bytes());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    auto corrupt = bytes;
    corrupt[i] ^= static_cast<std::uint8_t>(1U << (i % 8));
    EXPECT_THROW(State::from_bytes(corrupt), std::invalid_argument) << i;
    EXPECT_THROW(State::from_bytes({bytes.data(), i}), std::invalid_argument) << i;
  }
  auto longer = bytes;
  longer.push_back(0);
  EXPECT_THROW(State::from_bytes(longer), std::invalid_argument);
}

TYPED_TEST(Whole, TakesNothingThatItRefuses) {
  auto state = TypeParam::make();
  TypeParam::update(state, Vector{1.0, 2.0}, {});
  const auto bytes = state.to_bytes();
  EXPECT_THROW(TypeParam::update(state, Vector{1.0, 2.0}, Vector{1.0, -1.0}),
               std::invalid_argument);
  EXPECT_THROW(TypeParam::update(state, Vector{1.0, 2.0}, Vector{1.0}), std::length_error);
  EXPECT_EQ(state.to_bytes(), bytes);
}

TEST(Sums, RoundOnce) {
  std::ifstream in(std::string(TEST_DATA_DIR) + "/statistics.txt");
  std::map<std::string, Vector> samples;
  int rows = 0;
  for (std::string line; std::getline(in, line);) {
    std::istringstream words(line);
    std::string function;
    std::string name;
    std::string word;
    words >> function >> name >> word;
    if (function == "sample") {
      Vector& x = samples[name.substr(0, name.size() - 1)];
      do {
        x.push_back(std::strtod(word.c_str(), nullptr));
      } while (words >> word);
    } else if (function == "sum") {
      words >> word;
      EXPECT_EQ(Sums().update(samples.at(name)).sum(), std::strtod(word.c_str(), nullptr)) << name;
      ++rows;
    }
  }
  EXPECT_GT(rows, 10);
}

TEST(Sums, KeepWhatCancelsAndOverflows) {
  EXPECT_EQ(Sums().update({1e308, 1e308, -1e308, 1.0, -1e308}).sum(), 1.0);
  EXPECT_EQ(Sums().update({1e308, 1e308}).sum(), kInfinity);
  EXPECT_EQ(Sums().update({1e308, 1e308}).mean(), 1e308);
  EXPECT_EQ(Sums().update({1e200, 1e-200}, {1e-200, 1e200}).sum(), 2.0);
  EXPECT_EQ(Sums().update({1.0, kInfinity}).sum(), kInfinity);
  EXPECT_TRUE(std::isnan(Sums().update({-kInfinity}).merge(Sums().update({kInfinity})).sum()));
  EXPECT_EQ(Sums().sum(), 0.0);
  EXPECT_TRUE(std::isnan(Sums().mean()));
}

TEST(States, TreatMissingAsTheyAreTold) {
  const Vector x = {1.0, kNaN, 4.0};
  EXPECT_TRUE(std::isnan(Sums().update(x).sum()));
  EXPECT_EQ(Sums(Missing::omit).update(x).sum(), 5.0);
  EXPECT_EQ(Sums(Missing::omit).update(x).missing(), 1);
  EXPECT_THROW(Sums(Missing::raise).update(x), std::invalid_argument);
  EXPECT_TRUE(std::isnan(Moments().update(x).mean()));
  EXPECT_EQ(Moments(2, Missing::omit).update(x).var(), 4.5);
  EXPECT_EQ(Extremes(Missing::omit).update(x).max(), 4.0);
  EXPECT_TRUE(std::isnan(Extremes().update(x).max()));
  const Vector y = {2.0, 3.0, 4.0};
  const Data columns[] = {x, y};
  const auto propagated = Covariance(2).update(columns).cov();
  EXPECT_EQ(propagated(1, 1), 1.0);
  EXPECT_TRUE(std::isnan(propagated(0, 1)));
  EXPECT_EQ(Covariance(2, Missing::omit).update(columns).cov()(0, 1), 3.0);
}

TEST(States, GiveWhatTheFunctionsGive) {
  std::mt19937_64 random(4);
  std::normal_distribution<double> normal(1e6, 1.0);
  Vector x(3000);
  Vector y(3000);
  Vector w(3000);
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = normal(random);
    y[i] = 3.0 * x[i] + normal(random);
    w[i] = static_cast<double>(random() % 9) / 4.0;
  }
  const auto near = [](double a, double b) { return std::fabs(a - b) <= 1e-14 * std::fabs(b); };
  for (const Data weights : {Data(), Data(w)}) {
    const Moments m = Moments(4).update(x, weights);
    EXPECT_EQ(m.mean(), vexel::mean(x, {.weights = weights}));
    EXPECT_TRUE(near(m.var(), vexel::var(x, {.weights = weights})));
    EXPECT_TRUE(near(m.std(), vexel::std(x, {.weights = weights})));
    EXPECT_NEAR(m.skewness(), vexel::skewness(x, {.weights = weights}), 1e-14);
    EXPECT_NEAR(m.kurtosis(), vexel::kurtosis(x, {.weights = weights}), 1e-14);
    EXPECT_TRUE(near(m.moment(4), vexel::moment(x, 4, {.weights = weights})));
    const Covariance c = Covariance(2).update({x, y}, weights);
    EXPECT_TRUE(near(c.cov()(0, 1), vexel::cov(x, y, {.weights = weights})));
    EXPECT_TRUE(near(c.corr()(0, 1), vexel::corr(x, y, {.weights = weights})));
    EXPECT_EQ(c.mean()[1], vexel::mean(y, {.weights = weights}));
  }
  const Moments equal = Moments().update(Vector(7, 0.1));
  EXPECT_EQ(equal.var(), 0.0);
  EXPECT_TRUE(std::isnan(equal.skewness()));
  EXPECT_TRUE(std::isnan(Moments().update({3.0}).var()));
  EXPECT_TRUE(std::isnan(Moments().kurtosis()));
}

// Weights of 1 go point by point; without them powers are added up together.
TEST(States, AddPowersTogetherAsOneByOne) {
  std::mt19937_64 random(5);
  std::normal_distribution<double> normal;
  Vector alike(20000);
  for (double& v : alike) {
    v = normal(random);
  }
  Vector whole(alike);
  Vector edges(alike);
  Vector tiny(alike);
  for (std::size_t i = 0; i < alike.size(); ++i) {
    whole[i] = std::round(100.0 * whole[i]) - 0.0;
    edges[i] = std::ldexp(edges[i], 1020);
    tiny[i] = std::ldexp(tiny[i], -1070);
  }
  Vector broken(alike);
  broken[9000] = kInfinity;
  for (const Vector& x : {alike, whole, edges, tiny, broken, Vector(10, -0.0), Vector{-3.0, 0x1p-9},
                          anything(9000, random)}) {
    for (int order = 1; order <= 5; ++order) {
      const Moments together = Moments(order).update(x);
      const Moments single = Moments(order).update(x, Vector(x.size(), 1.0));
      EXPECT_EQ(together.to_bytes(), single.to_bytes()) << "order " << order;
    }
  }
}

}  // namespace
