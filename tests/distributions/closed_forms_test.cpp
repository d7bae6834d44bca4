// Closed formulas against references at 60 digits, and at the edges of their supports.

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "kernel_test.hpp"

using ClosedFormsTest = KernelTest;

// Error at most 1e-14 max(1, condition number): tests/reference/closed_forms.py writes the points.
TEST_F(ClosedFormsTest, AgreeWithTheReferencesWithinTheirCondition) {
  std::ifstream data(TEST_DATA_DIR "/closed_forms.txt");
  ASSERT_TRUE(data.is_open());
  int compared = 0;
  for (std::string line; std::getline(data, line);) {
    if (line[0] == '#') {
      continue;
    }
    std::istringstream words(line);
    std::vector<std::string> word;
    for (std::string w; words >> w;) {
      word.push_back(w);
    }
    const std::size_t last = word.size() - 1;
    std::vector<vexel::Value> args;
    for (std::size_t i = 1; i + 1 < last; ++i) {
      args.push_back(kernel.real(std::strtod(word[i].c_str(), nullptr)));
    }
    const double expected = std::strtod(word[last - 1].c_str(), nullptr);
    const double condition = std::strtod(word[last].c_str(), nullptr);
    const double got = number(kernel.callValues("STATS_Vexel" + word[0] + "_HW", args));
    EXPECT_NEAR(got, expected, 1e-14 * std::max(1.0, condition) * std::fabs(expected)) << line;
    ++compared;
  }
  EXPECT_GT(compared, 200);
}

TEST_F(ClosedFormsTest, KeepTheirBranchesAtTheEdges) {
  const struct {
    const char* entry;
    std::vector<double> args;
    double expected;
  } cases[] = {
      {"UniformProbability", {1.0, 1.0, 3.0}, 0.0},
      {"UniformProbability", {3.0, 1.0, 3.0}, 1.0},
      {"UniformProbability", {2.0, 3.0, 1.0}, 0.0},  // ends swapped: below the first
      {"UniformDeviate", {1.5, 1.0, 3.0}, 4.0},      // no check of p
      {"TriangularProbability", {1.0, 0.0, 4.0, 1.0}, 0.25},
      {"TriangularProbability", {-0.5, 0.0, 4.0, 1.0}, 0.0},
      {"TriangularProbability", {4.0, 0.0, 4.0, 4.0}, 1.0},
      {"TriangularDeviate", {0.25, 0.0, 4.0, 1.0}, 1.0},
      {"TriangularDeviate", {-0.1, 0.0, 4.0, 1.0}, kNaN},
      {"TriangularDeviate", {0.25, 0.0, 1e200, 0.0}, -kInf},  // the square overflows
      {"TriangularDeviate", {0.25, -kInf, 1.0, 0.0}, -kInf},
      {"WeibullProbability", {-1.0, 2.0, 1.5}, 0.0},
      {"WeibullDeviate", {1.0, 2.0, 1.5}, kInf},
      {"RayleighProbability", {-1.0, 2.0}, 0.0},
      {"RayleighDeviate", {0.75, -2.0}, 2.0 * std::sqrt(2.0 * std::log(4.0))},
      {"PowerProbability", {2.5, 2.0, 3.0}, 1.0},
      {"ParetoProbability", {0.5, 1.0, 2.0}, 0.0},
      {"ParetoProbability", {1e308, 1e-308, 0.001}, 1.0 - std::pow(10.0, -0.616)},
      {"ExponentialProbability", {-std::log(2.0), 1.0}, -1.0},  // no branch below zero
      {"ExponentialDeviate", {1.0, 2.0}, kInf},
      {"ExponentialDeviate", {kNaN, 2.0}, kNaN},
      {"LaplaceProbability", {2.0, 2.0, 1.0}, 0.5},
      {"LogisticDeviate", {0.0, 1.0, 2.0}, -kInf},
      {"LogisticDeviate", {1.5, 1.0, 2.0}, kNaN},
      {"GumbelDeviate", {1.0, 0.0, 1.0}, kInf},
      {"CauchyProbability", {0.0, 0.0, 1.0}, 0.5},
      {"CauchyProbability", {kInf, 0.0, 1.0}, 1.0},
      {"CauchyDeviate", {0.5, 3.0, 2.0}, 3.0},
      {"CauchyDeviate", {-0.0, 3.0, 2.0}, -kInf},
      {"GeometricProbability", {kInf, 0.0}, 0.0},
      {"BernoulliProbability", {0.0, 0.3}, 0.7},
      {"BernoulliProbability", {1.9, 0.3}, 0.3},  // whole arguments are truncated
      {"BernoulliProbability", {2.0, 0.3}, 0.0},
      {"BernoulliDeviate", {0.7, 0.3}, 0.0},
      {"BernoulliDeviate", {0.8, 0.3}, 1.0},
      {"GeometricDeviate", {0.0, 0.25}, 0.0},
      {"GeometricDeviate", {0.25, 0.25}, 0.0},
      {"GeometricDeviate", {0.26, 0.25}, 1.0},
      {"GeometricDeviate", {0.5, 2.0}, -2147483648.0},  // not a number
      {"DiscreteUniformProbability", {1.5, 2.0, 5.0}, 0.0},
      {"DiscreteUniformProbability", {2.0, 2.0, 5.0}, 0.25},
      {"DiscreteUniformProbability", {6.0, 2.0, 5.0}, 1.0},
      {"DiscreteUniformDeviate", {0.0, 2.0, 5.0}, 2.0},
      {"DiscreteUniformDeviate", {1.0, 2.0, 5.0}, 5.0},
      {"DiscreteUniformDeviate", {0.5, -2147483648.0, 2147483647.0}, -1.0},
      {"HypergeometricProbability", {-0.5, 10.0, 4.0, 3.0}, 0.0},
      {"HypergeometricProbability", {3.0, 10.0, 4.0, 3.0}, 1.0},
      {"HypergeometricDeviate", {1.0, 10.0, 4.0, 3.0}, 3.0},
      // Impossible parameters: the plain formula's value.
      {"GeometricProbability", {-0.5, 1.0}, 0.0},
      {"GeometricProbability", {0.0, 1.5}, 1.5},
      {"TriangularDeviate", {0.2, 1.0, 1.0, 1.0}, 1.0},
      {"WeibullDeviate", {-1.0, 2.0, 0.5}, 2.0 * std::log(2.0) * std::log(2.0)},
      {"ParetoProbability", {2.0, -1.0, 2.0}, 0.75},
      {"ParetoDeviate", {3.0, 1.0, 1.0}, -0.5},
      {"NormalDeviateApprox", {0.5}, 0.00015129526703328},
      {"NonCentralFRatioProbability", {0.0, 2.0, 3.0, 1.0}, 0.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.entry);
    std::vector<vexel::Value> args;
    for (const double x : c.args) {
      args.push_back(kernel.real(x));
    }
    const double got =
        number(kernel.callValues(std::string("STATS_Vexel") + c.entry + "_HW", args));
    if (std::isnan(c.expected)) {
      EXPECT_TRUE(std::isnan(got)) << got;
    } else if (std::isinf(c.expected)) {
      EXPECT_EQ(got, c.expected);
    } else {
      EXPECT_NEAR(got, c.expected, 1e-7 * std::fabs(c.expected));
    }
  }
}

TEST_F(ClosedFormsTest, RaiseTheirOwnErrors) {
  EXPECT_EQ(hostError([&] { call("STATS_VexelExponentialDeviate_HW", 1.5, 1.0); }),
            "invalid value for the tail probability: %1");
  const char* second =
      "VexelErrorDeviate expects a procedure as its second parameter, received: %1";
  const char* third = "VexelErrorDeviate expects a procedure as its third parameter, received: %1";
  EXPECT_EQ(hostError([&] { call("STATS_VexelErrorDeviate_HW", 0.5, 1, 1, 0.0, 1.0, 3.0); }),
            second);
  const auto cdf = kernel.function("cdf", [](double x) { return x; });
  EXPECT_EQ(hostError([&] { call("STATS_VexelErrorDeviate_HW", 0.5, cdf, 1, 0.0, 1.0, 3.0); }),
            third);
}
