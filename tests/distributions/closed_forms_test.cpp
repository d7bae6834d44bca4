// Closed formulas against references at 60 digits, failures of the numerical library, and what no
// call of the host reaches.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "distributions/normal_approximations.hpp"
#include "host_call.hpp"
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

TEST_F(ClosedFormsTest, ImpossibleParametersRaiseTheNumericalLibrarysText) {
  EXPECT_EQ(
      hostError([&] { call("STATS_VexelPoissonProbability_HW", 1.0, -1.0); }),
      "on entry, the mean lambda must be finite and greater than or equal to 0, received: -1");
  for (const char* entry : {"Binomial", "Gamma"}) {
    const std::string name = std::string("STATS_Vexel") + entry + "Probability_HW";
    EXPECT_NE(hostError([&] { call(name, 1.0, 10.0, -1.0); }), "no error");
  }
}

// Whatever these give, nothing is read out of bounds.
TEST_F(ClosedFormsTest, EmpiricalQuantilesOutsideTheUnitIntervalStayInBounds) {
  for (const double u : {-1e300, -1.0, 2.0, 1e300, kNaN}) {
    call("STATS_VexelEmpiricalDeviate_HW", u, array({1.0, 2.0}), none(), true);
    call("STATS_VexelEmpiricalDeviate_HW", u, array({1.0, 2.0}), array({1.0, kNaN}), false);
  }
}

TEST_F(ClosedFormsTest, NormalApproximationsKeepTheirCoefficients) {
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
  EXPECT_NEAR(STATS_NormalWApprox_HW(kernel.vector(), 0.3, 2.0, 3.0), 0.28060465497823398, 1e-14);
}
