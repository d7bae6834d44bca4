// Random: known answers, lanes, blocks and jumps, and one stream however it is drawn from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>
#include <vexel/interruption.hpp>
#include <vexel/random.hpp>

namespace {

using vexel::Random;
using vexel::RandomState;

std::vector<std::uint64_t> draws(Random rng, std::size_t n) {
  std::vector<std::uint64_t> out(n);
  rng.bits(out);
  return out;
}

// One step of a lane, as its authors wrote it.
std::uint64_t step(std::array<std::uint64_t, 4>& s) {
  const std::uint64_t result = std::rotl(s[0] + s[3], 23) + s[0];
  const std::uint64_t t = s[1] << 17;
  s[2] ^= s[0];
  s[3] ^= s[1];
  s[1] ^= s[2];
  s[0] ^= s[3];
  s[2] ^= t;
  s[3] = std::rotl(s[3], 45);
  return result;
}

// The first twelve draws and the 1000th of seeds and blocks: tests/reference/random_draws.py, which
// gets from lane to lane by powers of the step's matrix.
struct KnownDraws {
  std::uint64_t seed;
  std::uint64_t block;
  std::vector<std::uint64_t> first;
  std::uint64_t thousandth;
};
const KnownDraws known[] = {
#include "../reference/data/random_draws.inc"
};

TEST(Random, GivesTheKnownDraws) {
  for (const KnownDraws& k : known) {
    const auto got = draws(Random(k.seed, k.block), 1000);
    EXPECT_EQ(std::vector(got.begin(), got.begin() + 12), k.first) << k.seed << " " << k.block;
    EXPECT_EQ(got[999], k.thousandth);
  }
}

TEST(Random, DrawIComesFromLaneIModEight) {
  Random rng(7);
  RandomState state = rng.state();
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(rng.bits(), step(state.lanes[i % 8])) << i;
  }
}

TEST(Random, JumpsToTheNextBlockFromAnyPlace) {
  for (const int skipped : {0, 3, 8, 127, 128, 1001}) {
    Random here(11);
    Random there(11, 1);
    draws(here, 0);
    for (int i = 0; i < skipped; ++i) {
      here.bits();
      there.bits();
    }
    here.jump();
    EXPECT_EQ(here.block(), 1U);
    EXPECT_EQ(draws(here, 50), draws(there, 50)) << skipped;
  }
  Random far(11, 0xFFFFFFFFFFFFFFFE);
  far.jump();
  EXPECT_EQ(draws(far, 9), draws(Random(11, 0xFFFFFFFFFFFFFFFF), 9));
}

// out in pieces of all sizes: each kind of draw one by one, in pieces, and through its state.
template <typename One, typename Many>
void expectOneStream(One one, Many many) {
  using T = decltype(one(std::declval<Random&>()));
  constexpr std::size_t total = 20000;
  Random single(3);
  std::vector<T> expected(total);
  for (T& x : expected) {
    x = one(single);
  }
  Random pieces(3);
  std::vector<T> got(total);
  std::size_t size = 1;
  for (std::size_t i = 0; i < total; i += size, size = size * 3 % 1013) {
    size = std::min(size, total - i);
    many(pieces, std::span<T>(got).subspan(i, size));
    pieces = i % 2 == 0 ? Random(pieces.state()) : Random::from_bytes(pieces.to_bytes());
  }
  EXPECT_EQ(got, expected);
  EXPECT_EQ(pieces, single);
  EXPECT_EQ(pieces.bits(), single.bits());
}

TEST(Random, OneOrManyAreTheSameDraws) {
  using Doubles = std::span<double>;
  using Integers = std::span<std::int64_t>;
  expectOneStream([](Random& r) { return r.bits(); },
                  [](Random& r, std::span<std::uint64_t> out) { r.bits(out); });
  expectOneStream([](Random& r) { return r.uniform(); },
                  [](Random& r, Doubles out) { r.uniform(out); });
  expectOneStream([](Random& r) { return r.normal(); },
                  [](Random& r, Doubles out) { r.normal(out); });
  expectOneStream([](Random& r) { return r.exponential(); },
                  [](Random& r, Doubles out) { r.exponential(out); });
  expectOneStream([](Random& r) { return r.integers(-5, 1000); },
                  [](Random& r, Integers out) { r.integers(-5, 1000, out); });
  const vexel::Urn urn({1, 0, 2.5, 7});
  expectOneStream([&](Random& r) { return urn.sample(r); },
                  [&](Random& r, Integers out) { urn.sample(out, r); });
}

TEST(Random, LongArraysAreTheSameDraws) {
  const std::size_t n = (std::size_t{1} << 19) + 1237;
  for (const std::size_t offset : {0, 1, 5}) {
    Random a(5);
    Random b(5);
    a.bits();
    b.bits();
    std::vector<double> at_once(n + offset);
    a.normal(std::span(at_once).subspan(offset));
    std::vector<double> one_by_one(n);
    std::generate(one_by_one.begin(), one_by_one.end(), [&] { return b.normal(); });
    EXPECT_TRUE(std::equal(one_by_one.begin(), one_by_one.end(),
                           at_once.begin() + static_cast<std::ptrdiff_t>(offset)));
    a.uniform(std::span(at_once).subspan(offset));
    std::generate(one_by_one.begin(), one_by_one.end(), [&] { return b.uniform(); });
    EXPECT_TRUE(std::equal(one_by_one.begin(), one_by_one.end(),
                           at_once.begin() + static_cast<std::ptrdiff_t>(offset)));
    EXPECT_EQ(a, b);
  }
}

TEST(Random, UniformIsTheTopBitsAndAHalf) {
  Random words(1);
  Random uniforms(1);
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(uniforms.uniform(), (static_cast<double>(words.bits() >> 12) + 0.5) * 0x1p-52);
  }
}

TEST(Random, WithoutASeedTellsTheOneItTook) {
  Random a;
  EXPECT_EQ(draws(a, 10), draws(Random(a.seed()), 10));
  EXPECT_NE(a.seed(), Random().seed());
}

TEST(Random, RefusesWhatIsNoState) {
  EXPECT_THROW(Random(RandomState{}), std::invalid_argument);
  RandomState state = Random(1).state();
  state.position = 8;
  EXPECT_THROW(Random{state}, std::invalid_argument);
  std::vector<std::byte> bytes = Random(1).to_bytes();
  EXPECT_EQ(bytes.size(), 280U);
  for (const std::size_t i : {0, 3, 4, 7}) {  // mark, version, position
    auto changed = bytes;
    changed[i] ^= std::byte{0x40};
    EXPECT_THROW(Random::from_bytes(changed), std::invalid_argument) << i;
  }
  bytes.pop_back();
  EXPECT_THROW(Random::from_bytes(bytes), std::invalid_argument);
  EXPECT_THROW(Random(1).integers(3, 3), std::invalid_argument);
}

// Kolmogorov-Smirnov at 10^6 and p < 1e-6: D sqrt(n) < 2.7.  Fixed seeds, so no test fails by
// chance.
double ksDistance(std::vector<double> x, double (*cdf)(double)) {
  std::sort(x.begin(), x.end());
  const auto n = static_cast<double>(x.size());
  double d = 0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double f = cdf(x[i]);
    d = std::max({d, f - static_cast<double>(i) / n, static_cast<double>(i + 1) / n - f});
  }
  return d * std::sqrt(n);
}

TEST(Random, NormalAndExponentialFollowTheirLaws) {
  const auto normalCdf = [](double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); };
  const auto exponentialCdf = [](double x) { return -std::expm1(-x); };
  Random rng(42);
  const std::vector<double> z = rng.normal(1000000);
  const std::vector<double> e = rng.exponential(1000000);
  EXPECT_LT(ksDistance(z, normalCdf), 2.7);
  EXPECT_LT(ksDistance(e, exponentialCdf), 2.7);
  // Beyond the last layer, at 3.85 and 7.3: what lies there follows its own part of the law.
  Random tail(43);
  std::vector<double> z_beyond;
  std::vector<double> e_beyond;
  for (int round = 0; round < 40; ++round) {
    for (const double x : tail.normal(1000000)) {
      if (std::abs(x) > 3.5) {
        z_beyond.push_back(std::abs(x));
      }
    }
    for (const double x : tail.exponential(250000)) {
      if (x > 7) {
        e_beyond.push_back(x);
      }
    }
  }
  const double expected = 40e6 * std::erfc(3.5 / std::sqrt(2.0));
  EXPECT_NEAR(static_cast<double>(z_beyond.size()), expected, 5 * std::sqrt(expected));
  EXPECT_LT(ksDistance(z_beyond,
                       [](double x) {
                         return 1 - std::erfc(x / std::sqrt(2.0)) / std::erfc(3.5 / std::sqrt(2.0));
                       }),
            2.7);
  EXPECT_NEAR(static_cast<double>(e_beyond.size()), 1e7 * std::exp(-7.0), 5 * std::sqrt(9119));
  EXPECT_LT(ksDistance(e_beyond, [](double x) { return -std::expm1(7 - x); }), 2.7);
}

TEST(Random, IntegersAreUnbiasedAtEverySize) {
  Random rng(9);
  EXPECT_EQ(rng.integers(5, 6), 5);
  constexpr std::int64_t least = std::numeric_limits<std::int64_t>::min();
  // Of 3 * 2^62 values a draw times the size without rejection would give each third one twice.
  int thirds[3] = {};
  for (int i = 0; i < 300000; ++i) {
    const std::int64_t k =
        rng.integers(least, least + (std::int64_t{3} << 61) + (std::int64_t{3} << 61));
    ++thirds[(static_cast<std::uint64_t>(k) - static_cast<std::uint64_t>(least)) % 3];
  }
  for (const int count : thirds) {
    EXPECT_NEAR(count, 100000, 5 * 258);
  }
}

TEST(Random, LongWorkIsInterruptible) {
  Random rng(1);
  std::vector<double> x(10000000);
  int reports = 0;
  const vexel::Watch watch([&](double done) {
    EXPECT_GE(done, 0);
    EXPECT_LE(done, 1);
    return ++reports % 3 != 0;
  });
  const auto interrupted = [&](auto work) { EXPECT_THROW(work(), vexel::Interrupted); };
  interrupted([&] { rng.uniform(x); });
  interrupted([&] { rng.normal(x); });
  interrupted([&] { vexel::shuffle(x, rng); });
  interrupted([&] { vexel::Urn({1, 2}).sample(10000000, rng); });
}

}  // namespace
