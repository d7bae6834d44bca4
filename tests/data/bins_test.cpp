// Bins and frequency tables.

#include "data/bins.hpp"

#include <cstdint>
#include <random>
#include <vector>

#include "kernel_test.hpp"

namespace {

class BinsTest : public KernelTest {
 protected:
  vexel::Value range(double low, double high) {
    return kernel.range(kernel.real(low), kernel.real(high));
  }
  vexel::Value list(std::vector<vexel::Value> x) { return kernel.list(x); }
  // The right sides of a list of equations.
  std::vector<double> counts(const vexel::Value& equations) {
    std::vector<double> result;
    for (std::size_t i = 0; i < equations.size(); ++i) {
      const auto* const words = reinterpret_cast<const ALGEB*>(equations[i].handle());
      result.push_back(VexelToFloat64(kernel.vector(), words[2]));
    }
    return result;
  }
};

}  // namespace

TEST(Bins, FastPathAgreesWithTheSearch) {
  std::mt19937_64 random(3);
  for (const int m : {1, 2, 7, 100, 1000}) {
    for (const auto& [low, high] : {std::pair{0.0, 1.0},
                                    {-3.0, 10.0},
                                    {1e10, 1e10 + 3e-6},
                                    {-1e308, 1e308},
                                    {0.0, 5e-324},
                                    {2.0, 2.0},
                                    {3.0, -3.0}}) {
      std::vector<double> edges(static_cast<std::size_t>(m) + 1);
      for (int k = 0; k < m; ++k) {
        edges[k] = k * ((high - low) / m) + low;
      }
      edges[0] = low;
      edges[m] = high;
      std::vector<double> x(edges);
      for (const double e : edges) {
        x.push_back(std::nextafter(e, -HUGE_VAL));
        x.push_back(std::nextafter(e, HUGE_VAL));
      }
      std::uniform_real_distribution<double> inside(0.0, 1.0);
      for (int i = 0; i < 1000; ++i) {
        x.push_back(low + inside(random) * (high / 2 - low / 2) * 2);
      }
      x.push_back(std::numeric_limits<double>::quiet_NaN());
      std::vector<std::uint32_t> expected(m, 0);
      for (const double v : x) {
        if (v == edges[m]) {
          ++expected[m - 1];
        } else if (edges[0] <= v && v < edges[m]) {
          ++expected[STATS_TallyIntoFindBin_HW(edges.data(), m, v)];
        }
      }
      std::vector<std::uint32_t> counted(m, 77);
      STATS_SimpleTallyInto_HW(counted.data(), x.data(), static_cast<int>(x.size()), edges.data(),
                               1, m);
      EXPECT_EQ(counted, expected) << m << " bins of " << low << " .. " << high;
    }
  }
}

TEST_F(BinsTest, TallyIntoCountsInEveryRange) {
  const vexel::Value data = array({2, 10, 10.5, -1, kNaN, 0, 4});
  const vexel::Value plain =
      call("STATS_VexelTallyInto_HW", data, none(), false, list({range(0, 10), range(2, 7)}), 5);
  EXPECT_EQ(counts(plain), (std::vector<double>{1, 1, 1, 0, 1, 1, 0, 1, 0, 0}));
  EXPECT_EQ(plain[1].text().substr(0, 2), "2.");
  const vexel::Value weighted =
      call("STATS_VexelTallyInto_HW", data, array({1, 2, 4, 8, 16, 32, 64}), true,
           list({range(0, 10)}), 2);
  EXPECT_EQ(counts(weighted), (std::vector<double>{97, 2}));
  EXPECT_EQ(counts(call("STATS_VexelTallyInto_HW", data, none(), true, list({range(-kInf, 0)}), 1)),
            (std::vector<double>{2}));
  EXPECT_EQ(call("STATS_VexelTallyInto_HW", data, none(), true, list({}), 3).size(), 0U);
}

TEST_F(BinsTest, FrequencyDataHasBinsFrequenciesAndRunningSums) {
  const vexel::Value plain =
      call("STATS_VexelFrequencyData_HW", array({1, 2, 3}), none(), false, range(0, 3), 3);
  EXPECT_EQ(numbers(plain[1]), (std::vector<double>{0, 1, 2}));
  EXPECT_EQ(numbers(plain[2]), (std::vector<double>{0, 1, 3}));
  EXPECT_EQ(plain[0].size(), 3U);
  const vexel::Value weighted = call("STATS_VexelFrequencyData_HW", array({1, 2, 3}),
                                     array({0.5, kNaN, 0.25}), true, range(0, 3), 3);
  EXPECT_EQ(numbers(weighted[1]), (std::vector<double>{0, 0.5, 0.25}));
  EXPECT_EQ(numbers(weighted[2]), (std::vector<double>{0, 0.5, 0.75}));
}

TEST_F(BinsTest, LongCountsCanBeInterrupted) {
  const std::vector<double> data(1000000, 0.5);
  const double edges[] = {0.0, 1.0, 0.0, 1.0};
  std::uint32_t counts[2];
  double sums[2];
  const int n = static_cast<int>(data.size());
  vexel::Kernel::interrupt();
  EXPECT_ANY_THROW(STATS_SimpleTallyInto_HW(counts, data.data(), n, edges, 2, 1, kernel.vector()));
  vexel::Kernel::interrupt();
  EXPECT_ANY_THROW(
      STATS_WeightedTallyInto_HW(sums, data.data(), data.data(), n, edges, 2, 1, kernel.vector()));
}

TEST_F(BinsTest, MessagesToTheLetter) {
  const vexel::Value x = array({1, 2});
  const auto into = [&](const vexel::Value& ranges, std::int64_t m) {
    return hostError([&] { call("STATS_VexelTallyInto_HW", x, none(), false, ranges, m); });
  };
  const auto frequency = [&](const vexel::Value& r, std::int64_t m) {
    return hostError([&] { call("STATS_VexelFrequencyData_HW", x, none(), false, r, m); });
  };
  const std::string split = "unable to split the range %1";
  EXPECT_EQ(hostError([&] { call("STATS_VexelTallyInto_HW", x); }),
            "expected 5 arguments, received: %1");
  EXPECT_EQ(into(kernel.integer(1), 2),
            "expected 4th argument to be of type list(range), received: %1");
  EXPECT_EQ(into(list({kernel.integer(1)}), 2),
            "invalid argument; expected a positive integer or a list of ranges, received: %1");
  EXPECT_EQ(frequency(kernel.integer(1), 2),
            "expected 4th argument to be of type range, received: %1");
  for (const std::int64_t m : {std::int64_t{0}, std::int64_t{-4}, INT64_MIN}) {
    EXPECT_EQ(into(list({range(0, 1)}), m), split);
    EXPECT_EQ(frequency(range(0, 1), m), split);
  }
  EXPECT_EQ(frequency(range(0, kInf), 2), split);
  EXPECT_EQ(frequency(range(0, 1), INT64_MAX), "not enough memory");
  EXPECT_EQ(into(list({range(0, 1), range(0, 1)}), 2147483645), "not enough memory");
  EXPECT_EQ(frequency(kernel.range(name("q"), kernel.integer(1)), 2),
            "unable to evaluate %1 to floating-point");
}
