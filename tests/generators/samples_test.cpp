// Inverse-distribution and bootstrap samples: what host procedures see and what ends a call.

#include "generator_test.hpp"
#include "generators/inverse_distribution.hpp"

namespace {

class SamplesTest : public GeneratorTest {
 protected:
  VKernelVector kv = kernel.vector();
};

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

TEST_F(SamplesTest, AValueThatIsNoFloatIsNamed) {
  const vexel::Value F = counted("F", [](double x) { return x; });
  const vexel::Value bad = kernel.function(
      "bad", [](vexel::Kernel& k, std::span<const vexel::Value>) { return k.name("v"); });
  EXPECT_EQ(hostError([&] {
              call("STATS_VexelInverseDistributionSampleId_HW", 1, bad, F, 0.0, 1.0, 0.1);
            }),
            "%1 does not evaluate to float");
}

TEST_F(SamplesTest, BootstrapStatisticSeesOneArrayFilledAnew) {
  std::vector<vexel::Value> seen;
  const vexel::Value first =
      kernel.function("first", [&](vexel::Kernel& k, std::span<const vexel::Value> a) {
        if (++calls == failAt) {
          throw vexel::Error("planned", "planned", {});
        }
        seen.push_back(a[0]);
        return k.real(a[0].numbers()[0]);
      });
  const vexel::Value data = array({1, 10, 100});
  for (failAt = 1; failAt <= 4; ++failAt) {
    calls = 0;
    EXPECT_EQ(
        hostError([&] { call("STATS_VexelBootstrapStatistic_HW", data, none(), first, 3, 3); }),
        failAt <= 3 ? "planned" : "no error");
  }
  EXPECT_EQ(seen.at(seen.size() - 1), seen.at(seen.size() - 2));
}

}  // namespace
