// Bins and frequency tables.

#include "kernels/tallies/bins.hpp"

#include <cstdint>
#include <random>
#include <vector>

#include "kernel/interrupt.hpp"
#include "kernel_test.hpp"

namespace {

using BinsTest = KernelTest;

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
          ++expected[vexel::kernels::binOf(edges.data(), m, v)];
        }
      }
      std::vector<std::uint32_t> counted(m, 77);
      vexel::kernels::tallyInto(counted.data(), x.data(), static_cast<int>(x.size()), edges.data(),
                                1, m);
      EXPECT_EQ(counted, expected) << m << " bins of " << low << " .. " << high;
    }
  }
}

TEST_F(BinsTest, LongCountsCanBeInterrupted) {
  const std::vector<double> data(1000000, 0.5);
  const double edges[] = {0.0, 1.0, 0.0, 1.0};
  std::uint32_t counts[2];
  double sums[2];
  const int n = static_cast<int>(data.size());
  const STATS_InterruptWatch_HW watch(kernel.vector());
  vexel::Kernel::interrupt();
  EXPECT_ANY_THROW(vexel::kernels::tallyInto(counts, data.data(), n, edges, 2, 1));
  vexel::Kernel::interrupt();
  EXPECT_ANY_THROW(
      vexel::kernels::weightedTallyInto(sums, data.data(), data.data(), n, edges, 2, 1));
}

TEST_F(BinsTest, RangesOfTooManyBinsAreRefused) {
  const vexel::Value range = kernel.range(kernel.real(0.0), kernel.real(1.0));
  const vexel::Value ranges[] = {range, range};
  EXPECT_EQ(hostError([&] {
              call("STATS_VexelTallyInto_HW", array({1, 2}), none(), false, kernel.list(ranges),
                   2147483645);
            }),
            "not enough memory");
}
