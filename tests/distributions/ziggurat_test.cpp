// The ziggurats: tables, and every path replayed from scripted draws.

#include <cmath>

#include "kernel_test.hpp"
#include "kernels/classic/ziggurats.hpp"

using namespace vexel::kernels::classic;

namespace {

constexpr double kScale = 2147483648.0;

class ZigguratTest : public KernelTest {
 protected:
  double normalFrom(std::vector<std::int32_t> integers, std::vector<double> doubles) {
    script(std::move(integers), std::move(doubles));
    return number(call("STATS_VexelNormalRandomVariate_HW", 0.0, 1.0));
  }
  double exponentialFrom(std::vector<std::int32_t> integers, std::vector<double> doubles) {
    script(std::move(integers), std::move(doubles));
    return number(call("STATS_VexelExponentialRandomVariate_HW", 1.0));
  }
  const ZigguratTables& normal = NormalZiggurat::tables;
  const ZigguratTables& exponential = ExponentialZiggurat::tables;
};

// An integer just above the threshold of its layer, so that only the wedge can accept it.
std::int32_t aboveThreshold(const ZigguratTables& table, int layer) {
  return ((table.K[layer] >> 8) + 1) * 256 + layer;
}

}  // namespace

TEST_F(ZigguratTest, TablesHaveTheirKnownEntries) {
  EXPECT_EQ(normal.K[0], 2006576129);
  EXPECT_EQ(normal.K[1], 0);
  EXPECT_EQ(normal.K[2], 1615197383);
  EXPECT_EQ(normal.K[255], 2027082329);
  EXPECT_NEAR(normal.W[0], 1.821088585787e-09, 1e-21);
  EXPECT_NEAR(normal.W[255], 1.701597536616e-09, 1e-21);
  EXPECT_NEAR(normal.F[255], 0.0012602859305, 1e-13);
  EXPECT_NEAR(normal.W[1] * kScale, 0.2152418959, 1e-10);
  EXPECT_NEAR(normal.F[0] - 1.0, 2.27e-11, 1e-13);
  EXPECT_EQ(exponential.K[0], 1900564636);
  EXPECT_EQ(exponential.K[2], 1307930462);
  EXPECT_EQ(exponential.K[255], 1936537447);
  EXPECT_NEAR(exponential.W[0], 4.04991091701e-09, 1e-20);
  EXPECT_NEAR(exponential.F[255], 0.00045413435384, 1e-14);
  EXPECT_NEAR(exponential.W[1] * kScale, 0.063852163815, 1e-12);
}

TEST_F(ZigguratTest, NormalTakesTheQuickPathWithOneInteger) {
  const std::int32_t h = 1000 * 256 + 17;
  EXPECT_EQ(normalFrom({h}, {}), h * normal.W[17]);
  EXPECT_EQ(normalFrom({-h}, {}), -h * normal.W[(-h) & 255]);
  // The lowest integer has no positive counterpart and passes every threshold.
  EXPECT_EQ(normalFrom({-2147483647 - 1}, {}), -kScale * normal.W[0]);
  script({h}, {});
  EXPECT_EQ(number(call("STATS_VexelNormalRandomVariate_HW", 3.0, 0.0)), 3.0);
}

TEST_F(ZigguratTest, NormalTailTakesPairsAndTheSignOfItsInteger) {
  const double r = NormalZiggurat::kEdge;
  const std::int32_t h = aboveThreshold(normal, 0);
  // The first pair is refused: x^2 > 2y.
  const std::vector<double> pairs = {1e-6, 0.999, 0.5, 0.25};
  const double expected = r - std::log(0.5) / r;
  EXPECT_EQ(normalFrom({h}, pairs), expected);
  EXPECT_EQ(normalFrom({-h}, pairs), -expected);
}

TEST_F(ZigguratTest, WedgesComeBackToTheirFirstAbscissa) {
  // Refused by the wedge (u = 1 is the upper edge), then by a quick test in another layer, and
  // accepted at u = 0 on the first abscissa; or accepted by the quick test with the new layer.
  const std::int32_t n = aboveThreshold(normal, 40);
  const double x = n * normal.W[40];
  EXPECT_EQ(normalFrom({n}, {0.0}), x);
  EXPECT_EQ(normalFrom({n, aboveThreshold(normal, 90)}, {1.0, 0.0}), x);
  EXPECT_EQ(normalFrom({n, -512 + 3}, {1.0}), (-512 + 3) * normal.W[3]);
  const std::int32_t e = aboveThreshold(exponential, 40);
  const double y = e * exponential.W[40];
  EXPECT_EQ(exponentialFrom({e}, {0.0}), y);
  EXPECT_EQ(exponentialFrom({e, aboveThreshold(exponential, 90)}, {1.0, 0.0}), y);
  EXPECT_EQ(exponentialFrom({e, -512 + 3}, {1.0}), 509 * exponential.W[3]);
}

TEST_F(ZigguratTest, ExponentialAcceptsEveryNegativeInteger) {
  for (const std::int32_t h : {-1, -2147483647 - 1, -aboveThreshold(exponential, 40)}) {
    EXPECT_EQ(exponentialFrom({h}, {}), std::fabs(h * exponential.W[h & 255])) << h;
  }
  EXPECT_EQ(exponentialFrom({aboveThreshold(exponential, 0)}, {0.25}),
            ExponentialZiggurat::kEdge - std::log(0.25));
}
