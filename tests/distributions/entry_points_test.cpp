// Every distribution entry point: what it says to a wrong number of arguments, and the kind of its
// result.

#include <string>
#include <vector>

#include "kernel_test.hpp"

using DistributionEntryPointsTest = KernelTest;

namespace {

// name, arguments of Probability, Deviate, RandomVariate, RandomSample (0: not offered); whether
// the quantile is a host integer.
constexpr struct {
  const char* name;
  int probability, deviate, variate, sample;
  bool integerDeviate = false;
} kFamilies[] = {
    {"Bernoulli", 2, 2, 1, 2, true},
    {"Beta", 3, 3, 2, 3},
    {"Binomial", 3, 3, 2, 3, true},
    {"Cauchy", 3, 3, 2, 3},
    {"ChiSquare", 2, 2, 1, 2},
    {"DiscreteUniform", 3, 3, 2, 3, true},
    {"Empirical", 0, 4, 3, 4},
    {"Error", 0, 6, 3, 4},
    {"Exponential", 2, 2, 1, 2},
    {"FRatio", 3, 3, 2, 3},
    {"Gamma", 3, 3, 2, 3},
    {"Geometric", 2, 2, 1, 2, true},
    {"Gumbel", 3, 3, 2, 3},
    {"Hypergeometric", 4, 4, 3, 4},
    {"InverseGaussian", 0, 0, 2, 3},
    {"Laplace", 3, 3, 2, 3},
    {"Logistic", 3, 3, 2, 3},
    {"LogNormal", 3, 3, 2, 3},
    {"Maxwell", 0, 0, 1, 2},
    {"Moyal", 0, 0, 2, 3},
    {"NegativeBinomial", 3, 3, 2, 3, true},
    {"NonCentralBeta", 4, 4, 3, 4},
    {"NonCentralChiSquare", 3, 3, 3, 4},
    {"NonCentralFRatio", 4, 4, 3, 4},
    {"NonCentralStudentT", 3, 0, 2, 3},
    {"Normal", 3, 3, 2, 3},
    {"Pareto", 3, 3, 2, 3},
    {"Poisson", 2, 2, 1, 2, true},
    {"Power", 3, 3, 2, 3},
    {"Rayleigh", 2, 2, 1, 2},
    {"StudentT", 2, 2, 1, 2},
    {"Triangular", 4, 4, 3, 4},
    {"Uniform", 3, 3, 2, 3},
    {"Weibull", 3, 3, 2, 3},
};

// Texts that do not follow the pattern; hosts match on them.
constexpr struct {
  const char *operation, *message;
} kIrregular[] = {
    {"UniformProbability", "VexelUniformRandomVariate expects 3 arguments, received: %1"},
    {"UniformDeviate", "VexelUniformRandomVariate expects 3 arguments, received: %1"},
    {"MoyalRandomVariate", "VexelMoyalRandomVariate expects 2 argument, received: %1"},
    {"InverseGaussianRandomVariate",
     "VexelInverseGaussianRandomVariate expects 2 argument, received: %1"},
    {"NormalDeviateApprox", "VexelNormalDeviateApprox expects 1 arguments, received: %1"},
    {"NormalWApprox", "VexelNormalDeviateApprox expects 1 arguments, received: %1"},
    {"ErrorRandomSample", "expected 4 arguments, received: %1"},
    {"ErrorRandomVariate", "expected 3 arguments, received: %1"},
    {"NonCentralChiSquareRandomSample",
     "VexelNonCentralChiSquareRandomSample expects 4 or 6 arguments, received: %1"},
};

std::string countMessage(const std::string& operation, int n) {
  for (const auto& row : kIrregular) {
    if (operation == row.operation) {
      return row.message;
    }
  }
  return "Vexel" + operation + " expects " + std::to_string(n) +
         (n == 1 ? " argument" : " arguments") + ", received: %1";
}

}  // namespace

// The arguments are names without a value: had any been converted first, its error would show.
TEST_F(DistributionEntryPointsTest, CountTheirArgumentsBeforeAnythingElse) {
  const auto check = [&](const std::string& operation, int n) {
    if (n == 0) {
      return;
    }
    for (const int wrong : {n - 1, n + 1}) {
      const std::vector<vexel::Value> args(static_cast<std::size_t>(wrong), name("unknown"));
      EXPECT_EQ(hostError([&] { kernel.callValues("STATS_Vexel" + operation + "_HW", args); }),
                countMessage(operation, n))
          << operation << " with " << wrong;
    }
  };
  for (const auto& family : kFamilies) {
    check(std::string(family.name) + "Probability", family.probability);
    check(std::string(family.name) + "Deviate", family.deviate);
    check(std::string(family.name) + "RandomVariate", family.variate);
    check(std::string(family.name) + "RandomSample", family.sample);
  }
  check("NormalDeviateApprox", 1);
  check("NormalWApprox", 1);
}

TEST_F(DistributionEntryPointsTest, DiscreteQuantilesAreIntegersAndVariatesFloats) {
  for (const auto& family : kFamilies) {
    const std::string stem = std::string("STATS_Vexel") + family.name;
    // One half for the probability and small whole parameters suit every regular family.
    std::vector<vexel::Value> args = {kernel.real(0.5)};
    const bool probabilityLast = family.integerDeviate && std::string(family.name) != "Poisson" &&
                                 std::string(family.name) != "DiscreteUniform";
    for (int i = 1; i < family.deviate; ++i) {
      args.push_back(kernel.real(probabilityLast && i == family.deviate - 1 ? 0.25 : 3.0 + i));
    }
    if (family.deviate == 0 || std::string(family.name) == "Empirical" ||
        std::string(family.name) == "Error") {
      continue;
    }
    if (std::string(family.name) == "Hypergeometric") {
      args[1] = kernel.real(20.0);
    }
    EXPECT_EQ(kernel.callValues(stem + "Deviate_HW", args).isInteger(), family.integerDeviate)
        << family.name;
    kernel.seed(7);
    if (std::string(family.name) == "NonCentralChiSquare") {
      args.push_back(kernel.boolean(true));
    }
    const std::vector<vexel::Value> params(args.begin() + 1, args.end());
    EXPECT_FALSE(kernel.callValues(stem + "RandomVariate_HW", params).isInteger()) << family.name;
  }
}

TEST_F(DistributionEntryPointsTest, SamplesAreTheFirstVariatesInOrder) {
  const struct {
    const char* family;
    std::vector<double> params;
    int n = 50;
  } cases[] = {
      {"Weibull", {2.0, 1.5}},
      {"Normal", {2.0, 1.5}},
      {"Gamma", {2.0, 1.5}},
      {"Cauchy", {2.0, 1.5}},
      {"Laplace", {2.0, 1.5}},
      {"Moyal", {2.0, 1.5}},
      {"Beta", {2.0, 1.5}},
      // Long enough that most uniforms are not searched for, and with more values than the table.
      {"Poisson", {0.3}, 5000},
      {"Poisson", {10.0}, 5000},
      {"Poisson", {1e6}, 5000},
      {"Binomial", {100, 0.3}, 5000},
      {"Binomial", {2147483647, 2e-9}, 2000},
      {"Binomial", {500, 0.5}},
      {"Hypergeometric", {50, 20, 17}, 5000},
      {"NegativeBinomial", {3.5, 0.4}, 5000},
  };
  for (const auto& [family, params, n] : cases) {
    SCOPED_TRACE(testing::Message() << family << ' ' << params[0]);
    const std::string stem = std::string("STATS_Vexel") + family;
    std::vector<vexel::Value> args;
    for (const double x : params) {
      args.push_back(kernel.real(x));
    }
    std::vector<vexel::Value> sized = args;
    sized.insert(sized.begin(), kernel.integer(n));
    kernel.seed(11);
    const std::vector<double> sample = numbers(kernel.callValues(stem + "RandomSample_HW", sized));
    kernel.seed(11);
    ASSERT_EQ(sample.size(), static_cast<std::size_t>(n));
    for (const double x : sample) {
      ASSERT_EQ(number(kernel.callValues(stem + "RandomVariate_HW", args)), x);
    }
  }
}

TEST_F(DistributionEntryPointsTest, EmptySamplesDrawNothing) {
  const auto before = kernel.drawsTaken();
  EXPECT_EQ(call("STATS_VexelWeibullRandomSample_HW", 0, 2.0, 1.5).size(), 0U);
  EXPECT_EQ(call("STATS_VexelWeibullRandomSample_HW", -3, 2.0, 1.5).size(), 0U);
  EXPECT_EQ(kernel.drawsTaken(), before);
}

TEST_F(DistributionEntryPointsTest, NormalSamplesMayFillAnArray) {
  const vexel::Value a = array({9.0, 9.0, 9.0, 9.0, 9.0});
  EXPECT_EQ(call("STATS_VexelNormalRandomSample_HW", a, 100.0, 1e-3), a);
  for (const double x : numbers(a)) {
    EXPECT_NEAR(x, 100.0, 0.1);
  }
  const std::int32_t whole[] = {1, 2};
  EXPECT_EQ(hostError([&] {
              call("STATS_VexelNormalRandomSample_HW",
                   kernel.array(std::span<const std::int32_t>(whole)), 0.0, 1.0);
            }),
            "output array must have float[8] or sfloat data type, received: %1");
  EXPECT_EQ(hostError([&] {
              call("STATS_VexelNormalRandomSample_HW",
                   eval("Array(1..3, datatype = float[8], storage = sparse)"), 0.0, 1.0);
            }),
            "output array must have rectangular storage, received: %1");
}

TEST_F(DistributionEntryPointsTest, ImpossibleShapesGiveNaNWithoutADraw) {
  const auto before = kernel.drawsTaken();
  EXPECT_TRUE(std::isnan(number(call("STATS_VexelGammaRandomVariate_HW", 1.0, kNaN))));
  EXPECT_TRUE(std::isnan(number(call("STATS_VexelGammaRandomVariate_HW", 1.0, -1e9))));
  EXPECT_TRUE(std::isnan(number(call("STATS_VexelErrorRandomVariate_HW", 0.0, 1.0, kNaN))));
  EXPECT_EQ(kernel.drawsTaken(), before);
  EXPECT_EQ(
      hostError([&] { call("STATS_VexelNonCentralChiSquareRandomVariate_HW", 1e10, 1.0, true); }),
      "too many degrees of freedom for a sum of squares");
}
