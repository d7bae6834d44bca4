// What the fuzz target of the functions found, once each.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <vexel/distributions.hpp>
#include <vexel/statistics.hpp>

namespace {

namespace vx = vexel;
using Vector = std::vector<double>;
constexpr double kMax = std::numeric_limits<double>::max();

// Each of these went on for ever.
TEST(FuzzFindings, SearchesAndSamplesEnd) {
  EXPECT_THROW(vx::NegativeBinomial::fit(Vector{0, 1e300}), std::domain_error);
  vx::Random rng(1);
  for (const auto& [n, p] : {std::pair{1e-150, 1e-310}, std::pair{1e-100, 5e-324}}) {
    for (const double x : vx::NegativeBinomial(n, p).sample(20, rng)) {
      EXPECT_GE(x, 0);
    }
  }
}

// Of a mode near the other end, relatively: what lies beyond it, 1e-140 here, was 1 less 1.
TEST(FuzzFindings, TriangularTailsAcrossTheMode) {
  const vx::Triangular low(-1e239, 1e100, 0.0);
  const vx::Triangular high(-1e100, 1e239, 0.0);
  for (const double x : {0.0, 1.0, 60.0}) {
    EXPECT_NEAR(low.sf(-x) / 1e-139, 1, 1e-14) << x;
    EXPECT_NEAR(high.cdf(x) / 1e-139, 1, 1e-14) << x;
    EXPECT_NEAR(low.logsf(-x), std::log(1e-139), 1e-12) << x;
    EXPECT_NEAR(high.logcdf(x), std::log(1e-139), 1e-12) << x;
  }
  EXPECT_EQ(low.sf(-1e239), 1);
}

TEST(FuzzFindings, VariancesUnderWeightsOfAllSizesAreNotNegative) {
  const Vector x = {2147483647, 23, 0, 0, 0, 178, 141, 3930, -2147483648};
  const Vector w = {1.2936039832066119e-05,
                    9.375,
                    0,
                    150,
                    1.4900000000000002e+284,
                    205,
                    2.5111665535828522e-30,
                    15.125,
                    0.1142425537109375};
  const vx::Data columns[] = {x, x};
  EXPECT_GE(vx::cov(columns, {.weights = w})(1, 1), 0);
}

TEST(FuzzFindings, WeightsWhoseSumOverflowsAreRefused) {
  EXPECT_THROW(vx::Empirical(Vector{1, 2}, Vector{kMax, kMax}), std::invalid_argument);
  EXPECT_THROW(vx::Normal::fit(Vector{1, 2}, {.weights = Vector{kMax, kMax}}),
               std::invalid_argument);
}

// A great acceleration brought the corrected ends of the interval back from the other side.
TEST(FuzzFindings, EndsOfBootstrapIntervalsDoNotCross) {
  Vector x(40);
  std::iota(x.begin(), x.end(), 0.0);
  x[0] = 1e6;
  for (unsigned seed = 0; seed < 10; ++seed) {
    vx::Random rng(seed);
    const auto b =
        vx::bootstrap(x, vx::Statistic::mean, rng, {.replicates = 60, .confidence = 1 - 1e-14});
    EXPECT_FALSE(b.interval.low > b.interval.high) << seed;
  }
}

}  // namespace
