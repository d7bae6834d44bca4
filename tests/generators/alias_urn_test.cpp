// The alias urn: its tables and its padding.

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

TEST_F(AliasUrnTest, APaddingCellTakesNoUniform) {
  script({3 << 29}, {});
  const double w[] = {1, 1};
  STATS_AliasUrnGenerator_HW padded(4, 2, w);
  EXPECT_EQ(padded.Next(), padded.cells()[3].alias);
}

}  // namespace
