// Inverse-distribution, tabulated-density and bootstrap samples.

#include "generator_test.hpp"
#include "generators/inverse_distribution.hpp"

namespace {

class SamplesTest : public GeneratorTest {
 protected:
  VKernelVector kv = kernel.vector();
  static double logistic(double x) { return 1 / (1 + std::exp(-x)); }
  static double logisticDensity(double x) { return logistic(x) * logistic(-x); }
};

TEST_F(SamplesTest, InverseDistributionFollowsItsQuantiles) {
  struct Law {
    double (*cdf)(double);
    double (*pdf)(double);
    double lower, upper;
  };
  const Law laws[] = {
      {logistic, logisticDensity, -30, 30},
      {[](double x) { return x * x; }, [](double x) { return 2 * x; }, 0, 1},
      {[](double x) { return -std::expm1(-x); }, [](double x) { return std::exp(-x); }, 1, 3},
  };
  for (const Law& law : laws) {
    const double f0 = law.cdf(law.lower);
    const double range = law.cdf(law.upper) - f0;
    const vexel::Value F = counted("F", law.cdf);
    const vexel::Value f = counted("f", law.pdf);
    const std::vector<double> u = {0.001, 0.3, 0.5, 0.99};
    for (const bool hardware : {false, true}) {
      scriptUniforms(u);
      const auto x = numbers(call("STATS_VexelInverseDistributionSampleId_HW", 4, F, f, law.lower,
                                  law.upper, 1e-12, hardware));
      for (std::size_t i = 0; i < u.size(); ++i) {
        EXPECT_NEAR(law.cdf(x[i]), f0 + u[i] * range, 1e-11);
      }
    }
    kernel.unscriptRandom();
    const auto sample = numbers(call("STATS_VexelInverseDistributionSampleId_HW", 20000, F, f,
                                     law.lower, law.upper, 1e-9, true));
    EXPECT_LT(misfit(sample, [&](double x) { return (law.cdf(x) - f0) / range; }), 5);
  }
}

TEST_F(SamplesTest, InverseDistributionOfSeveralVariablesDrawsThemInTurn) {
  const vexel::Value F = counted("F", [](double x) { return x; });
  const vexel::Value f = counted("f", [](double) { return 1.0; });
  const vexel::Value variable = list({kernel.name("X"), F, f});
  const vexel::Value variables = list({variable, variable});
  const vexel::Value difference =
      kernel.function("difference", [](vexel::Kernel& k, std::span<const vexel::Value> a) {
        return k.real(a[0].number() - 10 * a[1].number());
      });
  scriptUniforms({0.25, 0.5, 0.75, 0.125});
  const vexel::Value zero = kernel.real(0.0);
  const vexel::Value one = kernel.real(1.0);
  const vexel::Value tol = kernel.real(1e-12);
  const vexel::Value sample(
      kernel, STATS_InverseDistributionSample_HW(kv, 2, difference.handle(), variables.handle(),
                                                 zero.handle(), one.handle(), tol.handle(), 0));
  EXPECT_EQ(numbers(sample), (std::vector<double>{-4.75, -0.5}));
}

TEST_F(SamplesTest, InverseDistributionNamesTheArgumentAtFault) {
  const vexel::Value F = counted("F", logistic);
  const auto run = [&](const char* entry, std::vector<vexel::Value> args) {
    return hostError([&] { kernel.callValues(entry, args); });
  };
  const vexel::Value n = kernel.integer(2);
  const vexel::Value x = kernel.real(0.5);
  const vexel::Value u = kernel.name("u");
  const char* id = "STATS_VexelInverseDistributionSampleId_HW";
  const struct {
    std::vector<vexel::Value> args;
    const char* text;
  } one[] = {
      {{}, "expecting sample length as first argument"},
      {{x}, "first argument (sample length) must be positive integer, received %1"},
      {{n}, "expecting probability distribution as second argument"},
      {{n, x}, "expecting vexel procedure as second argument, received %1"},
      {{n, F}, "expecting probability density function as third argument"},
      {{n, F, x}, "expecting lower bound for the interval as fourth argument"},  // x is not tested
      {{n, F, F, u}, "expecting float as fourth argument, received %1"},
      {{n, F, F, x}, "expecting upper bound for the interval as fifth argument"},
      {{n, F, F, x, u}, "expecting float as fifth argument, received %1"},
      {{n, F, F, x, x}, "expecting precision as sixth argument"},
      {{n, F, F, x, x, u}, "expecting float as sixth argument, received %1"},
  };
  for (const auto& c : one) {
    EXPECT_EQ(run(id, c.args), c.text);
  }
  const char* several = "STATS_VexelInverseDistributionSample_HW";
  const vexel::Value variables = list({x});
  EXPECT_EQ(run(several, {n}),
            "expecting expression involving random variables as second argument");
  EXPECT_EQ(run(several, {n, F}), "expecting list of random variables as third argument");
  EXPECT_EQ(run(several, {n, F, x}),
            "expecting list of random variables as third argument, received %1");
  EXPECT_EQ(run(several, {n, F, variables, x, x}),
            "expecting float as third argument, received %1");

  const vexel::Value bad = kernel.function(
      "bad", [](vexel::Kernel& k, std::span<const vexel::Value>) { return k.name("v"); });
  EXPECT_EQ(run(id, {n, bad, F, x, x, x}), "%1 does not evaluate to float");
  calls = 0;
  EXPECT_EQ(run(id, {kernel.integer(0), F, F, x, x, x}), "no error");
  EXPECT_EQ(calls, 2);  // the ends only
}

TEST_F(SamplesTest, TabulatedDensityIsInvertedCellByCell) {
  // A triangle on a grid of step 1, half cells included: masses 0, 1/2, 1/2, 0.
  const vexel::Value table = array({0, 1, 0});
  scriptUniforms({0.125, 0.5, 0.875});
  EXPECT_EQ(numbers(call("STATS_VexelKernelDensitySample_HW", table, 0.0, 2.0, 3)),
            (std::vector<double>{0.5, 1.0, 1.5}));
  // The half cell before the first point.
  scriptUniforms({0.125});
  EXPECT_EQ(numbers(call("STATS_VexelKernelDensitySample_HW", array({1, 0}), 0.0, 1.0, 1)),
            (std::vector<double>{0.0 - 1.0 + 0.5}));
  kernel.unscriptRandom();
  const auto sample =
      numbers(call("STATS_VexelKernelDensitySample_HW", array({0, 1, 3, 2, 0}), 0.0, 4.0, 1000000));
  EXPECT_LT(misfit(sample,
                   [](double x) {
                     const double d[] = {0, 1, 3, 2, 0};
                     const double c[] = {0, 0.5, 2.5, 5, 6};
                     const auto i = static_cast<std::size_t>(std::min(x, 3.999999));
                     const double t = x - static_cast<double>(i);
                     return (c[i] + t * d[i] + t * t * (d[i + 1] - d[i]) / 2) / 6;
                   }),
            5);
  const auto error = [&](auto... args) {
    return hostError([&] { call("STATS_VexelKernelDensitySample_HW", args...); });
  };
  EXPECT_EQ(error(table, 0.0, 1.0, 2, 3), "expected 4 arguments, received: %1");
  EXPECT_EQ(error(none(), 0.0, 1.0, 2),
            "expected: non-empty array of float[8] as density, received %1");
  EXPECT_EQ(error(kernel.array(std::vector<std::int32_t>{1, 2}), 0.0, 1.0, 2),
            "expected: non-empty array of float[8] as density, received %1");
}

TEST_F(SamplesTest, BootstrapSampleDrawsElements) {
  const vexel::Value data = kernel.array(std::vector<std::int32_t>{10, 20, 30});
  // Three elements take two bits; 3 is drawn again.
  const auto bits = [](std::uint32_t k) { return static_cast<std::int32_t>(k << 30); };
  scriptIntegers({bits(2), bits(3), bits(0), bits(1), bits(1)});
  EXPECT_EQ(numbers(call("STATS_VexelBootstrapSample_HW", data, 2, 2, none())),
            (std::vector<double>{30, 10, 20, 20}));
  scriptIntegers({-1, 0});  // one element takes one bit
  EXPECT_EQ(numbers(call("STATS_VexelBootstrapSample_HW",
                         kernel.array(std::vector<std::int32_t>{5}), 1, 1, none())),
            std::vector<double>{5});
  scriptIntegers({});
  EXPECT_EQ(call("STATS_VexelBootstrapSample_HW", data, 0, 7, none()).size(), 0U);
  kernel.unscriptRandom();
  EXPECT_EQ(numbers(call("STATS_VexelBootstrapSample_HW", data, 3, 1, array({0, 1, 0}))),
            (std::vector<double>{20, 20, 20}));
  const auto error = [&](auto... args) {
    return hostError([&] { call("STATS_VexelBootstrapSample_HW", args...); });
  };
  EXPECT_EQ(error(data, 1, 1), "expected 4 arguments, received: %1");
  EXPECT_EQ(error(7, 1, 1, none()), "expected: one-dimensional array, received %1");
  EXPECT_EQ(error(data, 1, 1, 7), "expected: one-dimensional array, received %1");
  EXPECT_EQ(error(data, 1, 1, array({1, 2})),
            "data array and weights array must have the same number of elements");
  EXPECT_EQ(error(array({1, 2}), 1, 1, none()),
            "expected: array of integer[4], float[4] or host objects as data, received %1");
  EXPECT_EQ(error(kernel.array(std::vector<std::int32_t>{}), 1, 1, none()),
            "expected: non-empty array as data, received %1");
}

TEST_F(SamplesTest, BootstrapStatisticSeesOneArrayFilledAnew) {
  std::vector<vexel::Value> seen;
  const vexel::Value sum =
      kernel.function("sum", [&](vexel::Kernel& k, std::span<const vexel::Value> a) {
        if (++calls == failAt) {
          throw vexel::Error("planned", "planned", {});
        }
        seen.push_back(a[0]);
        double total = 0;
        for (const double v : a[0].numbers()) {
          total += v;
        }
        return k.real(total);
      });
  const vexel::Value data = array({1, 10, 100});
  const auto bits = [](std::uint32_t k) { return static_cast<std::int32_t>(k << 30); };
  scriptIntegers({bits(0), bits(1), bits(2), bits(2), bits(3), bits(2), bits(2)});
  EXPECT_EQ(numbers(call("STATS_VexelBootstrapStatistic_HW", data, none(), sum, 3, 2)),
            (std::vector<double>{111, 300}));
  EXPECT_EQ(seen[0], seen[1]);
  kernel.unscriptRandom();
  EXPECT_EQ(numbers(call("STATS_VexelBootstrapStatistic_HW", data, array({0, 1, 0}), sum, 5, 1)),
            std::vector<double>{50});
  EXPECT_EQ(hostError([&] { call("STATS_VexelBootstrapStatistic_HW", data, none(), sum, 4, 1); }),
            "resample size %1 exceeds the number of data points in %2");
  EXPECT_EQ(call("STATS_VexelBootstrapStatistic_HW", data, none(), sum, 3, -1).size(), 0U);
  EXPECT_EQ(hostError([&] { call("STATS_VexelBootstrapStatistic_HW", data); }),
            "expected 5 arguments, received: %1");
  for (failAt = 1; failAt <= 4; ++failAt) {
    calls = 0;
    EXPECT_EQ(hostError([&] { call("STATS_VexelBootstrapStatistic_HW", data, none(), sum, 3, 3); }),
              failAt <= 3 ? "planned" : "no error");
  }
  failAt = 0;

  const vexel::Value sampler =
      kernel.function("sampler", [](vexel::Kernel& k, std::span<const vexel::Value> a) {
        return k.array({a[0].number(), 1.0});
      });
  EXPECT_EQ(numbers(call("STATS_VexelBootstrapStatisticRV_HW", sampler, sum, 7, 2)),
            (std::vector<double>{8, 8}));
  EXPECT_EQ(hostError([&] { call("STATS_VexelBootstrapStatisticRV_HW", sampler); }),
            "expected 4 arguments, received: %1");
}

}  // namespace
