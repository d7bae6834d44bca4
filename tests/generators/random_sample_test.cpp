// The random sample driver and the envelope form of the non-central chi-square sample.

#include <malloc.h>

#include "generator_test.hpp"

namespace {

class RandomSampleTest : public GeneratorTest {
 protected:
  // A driver description of a built-in distribution: [0, [code, parameters]].
  vexel::Value builtIn(std::int64_t code, const std::vector<double>& parameters) {
    return list({kernel.integer(0), list({kernel.integer(code), floats(parameters)})});
  }
  std::vector<double> draw(const vexel::Value& combine, const vexel::Value& descriptions,
                           bool hardware = false) {
    return numbers(
        call("STATS_VexelRandomSample_HW", array({0, 0, 0}), combine, descriptions, hardware));
  }
  std::string error(const vexel::Value& combine, const vexel::Value& descriptions) {
    return hostError([&] { draw(combine, descriptions); });
  }
};

TEST_F(RandomSampleTest, ManyCallsLeaveNoMemoryBehindHoweverTheyEnd) {
  const vexel::Value h = counted("h", [](double x) { return std::exp(-x * x / 2); });
  const vexel::Value h1 = counted("h1", [](double x) { return -x * std::exp(-x * x / 2); });
  const vexel::Value F = counted("F", [](double x) { return x * x; });
  const vexel::Value envelope =
      list({list({kernel.integer(1),
                  list({h, h1, floats({-4, -1, 1, 4}), kernel.integer(30), kernel.boolean(true)})}),
            builtIn(24, {0, 1})});
  const vexel::Value sum = counted("sum", [](double x) { return x; });
  int failed = 0;
  const auto callMany = [&](int times) {
    for (int i = 0; i < times; ++i) {
      if (i % 100 == 0) {
        kernel.collect();  // so that the host's own memory stays as it is
      }
      calls = 0;
      failAt = i % 50;  // 0: not at all
      failed += error(i % 2 == 0 ? kernel.null() : sum, envelope) != "no error";
      failed += hostError([&] {
                  call("STATS_VexelInverseDistributionSampleId_HW", 2, F, F, 0.0, 1.0, 1e-6, false);
                }) != "no error";
    }
    kernel.collect();
    return mallinfo2().uordblks;
  };
  const std::size_t before = callMany(500);
  EXPECT_LT(callMany(10000), before + 20000);
  EXPECT_GT(failed, 3000);
  EXPECT_LT(failed, 20000);
}

TEST_F(RandomSampleTest, NonCentralChiSquareEnvelopeFits) {
  // With four degrees of freedom the density is a Bessel function; its series is enough here.
  constexpr double kDelta = 2;
  const auto term = [](double x, int k, int derivative) {
    // Poisson(k; delta / 2) times the chi-square density of 4 + 2k degrees, or a derivative.
    const double m = k + 1;  // the power of x
    const double scale =
        std::exp(-kDelta / 2 - x / 2 + k * std::log(kDelta / 2) - std::lgamma(k + 1.0) -
                 std::lgamma(k + 2.0) - (k + 2) * std::log(2.0));
    const double p = std::pow(x, m);
    const double p1 = m * std::pow(x, m - 1);
    const double p2 = m > 1 ? m * (m - 1) * std::pow(x, m - 2) : 0.0;
    return scale * (derivative == 0 ? p : derivative == 1 ? p1 - p / 2 : p2 - p1 + p / 4);
  };
  const auto series = [&](int derivative) {
    return [=](double x) {
      double sum = 0;
      for (int k = 0; k < 40; ++k) {
        sum += term(x, k, derivative);
      }
      return sum;
    };
  };
  const auto sample =
      numbers(call("STATS_VexelNonCentralChiSquareRandomSample_HW", 20000, 4.0, kDelta,
                   counted("h", series(0)), counted("h1", series(1)), counted("h2", series(2))));
  double mean = 0;
  for (const double x : sample) {
    mean += x / static_cast<double>(sample.size());
  }
  const double deviation = std::sqrt(2 * (4 + 2 * kDelta) / static_cast<double>(sample.size()));
  EXPECT_NEAR(mean, 4 + kDelta, 5 * deviation);
  EXPECT_LT(
      misfit(sample,
             [&](double x) {
               return number(call("STATS_VexelNonCentralChiSquareProbability_HW", x, 4.0, kDelta));
             }),
      5);
}

}  // namespace
