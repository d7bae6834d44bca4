// Discrete quantiles against their probabilities, where their searches start and how they fail, and
// the empirical distribution.

#include <cmath>
#include <string>
#include <vector>

#include "distributions/normal_approximations.hpp"
#include "host_call.hpp"
#include "kernel_test.hpp"

class DiscreteTest : public KernelTest {
 protected:
  vexel::Value callWith(const std::string& entry, double first, const std::vector<double>& params) {
    std::vector<vexel::Value> args = {kernel.real(first)};
    for (const double x : params) {
      args.push_back(kernel.real(x));
    }
    return kernel.callValues("STATS_Vexel" + entry + "_HW", args);
  }
};

// k is the quantile at u exactly when F(k - 1) < u <= F(k); the search's rule for u = F(0) aside.
TEST_F(DiscreteTest, QuantilesAreTheSmallestIntegersThatReachTheProbability) {
  const struct {
    const char* name;
    std::vector<double> params;
  } families[] = {
      {"Poisson", {0.4}},
      {"Poisson", {7.9}},
      {"Poisson", {250.0}},
      {"Binomial", {20, 0.3}},
      {"Binomial", {1000, 0.5}},
      {"Hypergeometric", {50, 20, 17}},
      {"NegativeBinomial", {4, 0.4}},
      {"Geometric", {0.2}},
      {"DiscreteUniform", {-5, 20}},
  };
  for (const auto& [family, params] : families) {
    const std::string name = family;
    for (double u = 0.0078125; u < 1.0; u += 0.015625) {
      const double k = number(callWith(name + "Deviate", u, params));
      EXPECT_GE(number(callWith(name + "Probability", k, params)), u * (1.0 - 1e-15)) << name;
      if (k > 0.0 || name == "DiscreteUniform") {
        EXPECT_LE(number(callWith(name + "Probability", k - 1.0, params)), u) << name << u;
      }
    }
  }
}

TEST_F(DiscreteTest, PoissonTruncatesWhereOthersFloor) {
  const double zero = std::exp(-2.0);
  EXPECT_NEAR(number(callWith("PoissonProbability", -0.5, {2.0})), zero, 1e-15);
  EXPECT_EQ(number(callWith("BinomialProbability", -0.5, {10, 0.3})), 0.0);
  EXPECT_EQ(number(callWith("GeometricProbability", -0.5, {0.3})), 0.0);
}

TEST_F(DiscreteTest, SearchesRaiseTheirOwnErrors) {
  // The start is the whole part of n, which is the left end of the search.
  EXPECT_EQ(hostError([&] {
              callWith("NegativeBinomialDeviate", 0.5, {0.5, 0.3});
            }),
            "the specified initial point must be greater than the left barrier.");
  EXPECT_EQ(hostError([&] { callWith("PoissonDeviate", 1.5, {4.0}); }),
            "the specified approximation point must be between function bounds.");
  eval("_EnvStatisticsIterations := 2;");
  EXPECT_EQ(hostError([&] {
              callWith("BinomialDeviate", 0.5, {1000, 0.5});
            }),
            "maximum number of iterations exceeded in discrete root finding.");
  // The negative binomial's limit is its own.
  EXPECT_EQ(hostError([&] { callWith("NegativeBinomialDeviate", 0.5, {40, 0.5}); }), "no error");
}

TEST_F(DiscreteTest, ImpossibleParametersRaiseTheNumericalLibrarysText) {
  EXPECT_EQ(
      hostError([&] { callWith("PoissonProbability", 1.0, {-1.0}); }),
      "on entry, the mean lambda must be finite and greater than or equal to 0, received: -1");
  EXPECT_NE(hostError([&] { callWith("BinomialProbability", 1.0, {10, 1.5}); }), "no error");
  EXPECT_NE(hostError([&] { callWith("GammaProbability", 1.0, {1.0, -1.0}); }), "no error");
}

TEST_F(DiscreteTest, EmpiricalQuantilesComeFromTheSample) {
  const auto deviate = [&](double u, const vexel::Value& data, const vexel::Value& weights,
                           bool copy) {
    return number(call("STATS_VexelEmpiricalDeviate_HW", u, data, weights, copy));
  };
  const auto data = array({30.0, 10.0, 20.0, 40.0});
  EXPECT_EQ(deviate(0.3, data, none(), true), 20.0);
  EXPECT_EQ(numbers(data), (std::vector<double>{30.0, 10.0, 20.0, 40.0})) << "the copy was meant";
  EXPECT_EQ(deviate(0.6, array({kNaN, 2.0, kNaN, 1.0}), none(), true), 2.0);
  EXPECT_EQ(deviate(0.5, data, array({1.0, 0.0, 0.0, 1.0}), false), 40.0);
  EXPECT_TRUE(std::isnan(deviate(0.5, none(), none(), true)));
  for (const double u : {-1e300, -1.0, 2.0, 1e300, kNaN}) {
    deviate(u, array({1.0, 2.0}), none(),
            true);  // whatever it gives, nothing is read out of bounds
    deviate(u, array({1.0, 2.0}), array({1.0, kNaN}), false);
  }
  scriptUniforms({0.1, 0.9, 0.3});
  EXPECT_EQ(numbers(call("STATS_VexelEmpiricalRandomSample_HW", 3, array({3.0, 1.0, 2.0, 4.0}),
                         none(), true)),
            (std::vector<double>{1.0, 4.0, 2.0}));
}

TEST_F(DiscreteTest, NormalApproximationsKeepTheirCoefficients) {
  // mpmath; the handbook's own coefficients would give 1.96039491692535.
  const double upper = number(call("STATS_VexelNormalDeviateApprox_HW", 0.975));
  EXPECT_NEAR(upper, -number(call("STATS_VexelNormalDeviateApprox_HW", 0.025)), 1e-14);
  EXPECT_NEAR(upper, 1.96058994393103, 1e-13);
  for (const auto& [a, b, message] :
       {std::tuple{0.5, 2.0, "Error: Parameter A is 0.5, a disallowed value."},
        std::tuple{2.0, 0.5, "Error: Parameter B is 0.5, a disallowed value."}}) {
    EXPECT_EQ(hostError([&, a = a, b = b] {
                inHost(kernel, [&] { STATS_NormalWApprox_HW(kernel.vector(), 0.3, a, b); });
              }),
              message);
  }
  const double z = -number(call("STATS_VexelNormalDeviateApprox_HW", 0.3));
  const double lambda = (z * z - 3.0) / 6.0;
  const double h = 2.0 / (1.0 / 5.0 + 1.0 / 3.0);  // a = 2, b = 3
  const double w = z * std::sqrt(h + lambda) / h -
                   (1.0 / 5.0 - 1.0 / 3.0) * (lambda + 5.0 / 6.0 - 2.0 / (3.0 * h));
  EXPECT_NEAR(STATS_NormalWApprox_HW(kernel.vector(), 0.3, 2.0, 3.0), w, 1e-14);
}
