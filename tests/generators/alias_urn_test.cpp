// The alias urn: its tables, its draws, its entry point.

#include "generators/alias_urn.hpp"

#include <numeric>

#include "generator_test.hpp"

namespace {

using AliasUrnTest = GeneratorTest;

TEST_F(AliasUrnTest, TablesGiveEveryWeightBack) {
  std::vector<double> geometric(200);
  for (std::size_t i = 0; i < geometric.size(); ++i) {
    geometric[i] = std::pow(0.9, static_cast<double>(i));
  }
  const std::vector<std::vector<double>> hard = {{1, 1},
                                                 {0, 3},
                                                 {3, 0, 0, 0},
                                                 {1e-300, 1, 1e300},
                                                 {1, 2, 3, 4, 5, 6, 7},
                                                 geometric,
                                                 std::vector<double>(1000, 0.1)};
  for (const auto& w : hard) {
    for (const int padding : {0, 5}) {
      const int n = static_cast<int>(w.size());
      const STATS_AliasUrnGenerator_HW urn(n + padding, n, w.data());
      const auto& cells = urn.cells();
      std::vector<double> mass(cells.size());
      for (std::size_t k = 0; k < cells.size(); ++k) {
        const double cutoff = cells[k].cutoff;
        EXPECT_TRUE(cutoff >= 0 && cutoff <= 1 + 1e-12 * (n + padding));
        mass[k] += cutoff;
        mass[static_cast<std::size_t>(cells[k].alias)] += 1 - cutoff;
      }
      const double total = std::accumulate(w.begin(), w.end(), 0.0);
      for (std::size_t k = 0; k < cells.size(); ++k) {
        const double expected = k < w.size() ? (n + padding) * (w[k] / total) : 0.0;
        EXPECT_NEAR(mass[k], expected, 1e-12 * (n + padding)) << k;
      }
    }
  }
}

TEST_F(AliasUrnTest, ImpossibleWeightsStayInsideTheUrn) {
  for (const std::vector<double>& w :
       {std::vector<double>{0, 0, 0}, {kNaN, 1, 2}, {-1, 2, 0.5}, {kInf, 1, 1}, {-1, -1, 2}}) {
    STATS_AliasUrnGenerator_HW urn(3, 3, w.data());
    for (int i = 0; i < 1000; ++i) {
      const int k = urn.Next();
      ASSERT_TRUE(k >= 0 && k < 3);
    }
  }
}

TEST_F(AliasUrnTest, DrawsAreAnIntegerUntilInRangeThenAUniform) {
  const auto cell = [](std::uint32_t k, int shift) {
    return static_cast<std::int32_t>(k << shift);
  };
  // Three cells take three bits.  Cutoffs 3/4, 1, 3/4; aliases 1, 1, 1.
  script({cell(5, 29), cell(2, 29), cell(2, 29), cell(3, 29), cell(1, 29), cell(0, 29)},
         {0.75, 0.76, 1.0, 0.8});
  const auto before = kernel.drawsTaken();
  EXPECT_EQ(numbers(call("STATS_VexelAliasUrnSample_HW", 4, array({1, 2, 1}))),
            (std::vector<double>{2, 1, 1, 1}));
  EXPECT_EQ(kernel.drawsTaken() - before, 10U);
  // One cell takes one bit, and half the draws are for nothing.
  script({-1, 7}, {0.5});
  EXPECT_EQ(numbers(call("STATS_VexelAliasUrnSample_HW", 1, array({9}))), std::vector<double>{0});
  // A padding cell takes no uniform.
  script({cell(3, 29)}, {});
  const double w[] = {1, 1};
  STATS_AliasUrnGenerator_HW padded(4, 2, w);
  EXPECT_EQ(padded.Next(), padded.cells()[3].alias);
}

TEST_F(AliasUrnTest, FailuresHaveTheirTexts) {
  const auto error = [&](auto... args) {
    return hostError([&] { call("STATS_VexelAliasUrnSample_HW", args...); });
  };
  EXPECT_EQ(error(3), "expected 2 arguments, received: %1");
  EXPECT_EQ(error(2.5, array({1.0})),
            "invalid sample length, expected positive integer, received: %1");
  EXPECT_EQ(error(3, 7), "invalid data sample, expected: rtable, received %1");
  EXPECT_EQ(error(3, none()), "expected at least one weight, received: %1");
  EXPECT_EQ(call("STATS_VexelAliasUrnSample_HW", -2, array({1.0})).size(), 0U);
  STATS_AliasUrnGenerator_HW empty;
  EXPECT_EQ(hostError([&] { inHost([&] { empty.Next(); }); }), "no weights to draw an index from");
}

}  // namespace
