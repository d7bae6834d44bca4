// Root finders: what they tell the user, and roots of functions that are hard to solve.  Where they
// evaluate and what they return and raise is compared with the models.

#include <cmath>
#include <limits>

#include "host_call.hpp"
#include "kernel_test.hpp"
#include "rootfinding/given_names.hpp"

namespace {

using RootTest = KernelTest;

TEST_F(RootTest, HintsTellOfSpentBudgetsAndBarriers) {
  const std::string plain =
      "NewtonRaphson completed the maximum number of iterations without converging";
  const std::string safe =
      "NewtonRaphsonSafe completed the maximum number of iterations without converging";
  const std::string barrier = "NewtonRaphson has converged to a barrier point";
  const std::string square = "(2, x -> x^2, x -> 2*x, ";
  const std::string line = "(9, x -> x, x -> 1, ";
  std::string told;
  kernel.infoLevel("hints", 2);
  kernel.onUserInfo([&](int level, const std::string& channel, const std::string& text) {
    EXPECT_EQ(level, 2);
    EXPECT_EQ(channel, "hints");
    told += text;
  });
  const std::pair<std::string, std::string> cases[] = {
      {"NewtonRaphson_HW" + square + "3, false, 0, false, 0, 1, 0)", plain},
      {"NewtonRaphson_HW" + square + "3, false, 0, false, 0, 1, 1)", plain},
      {"NewtonRaphson_HW" + square + "3, false, 0, false, 0, 1, 50)", ""},
      {"NewtonRaphson_HW" + line + "0, false, 0, true, 4, 1, 100)", barrier},
      {"NewtonRaphson_HW" + line + "15, true, 12, false, 0, 1, 100)", barrier},
      {"NewtonRaphsonSafe_HW" + square + "1, 0, 2, 1, 0)", safe},
      {"NewtonRaphsonSafe_HW" + square + "1, 0, 2, 1, 2)", safe},
      {"NewtonRaphsonSafe_HW" + square + "1, 0, 2, 1, 50)", ""},
      {"NewtonRaphsonHybrid_HW" + square + "1, 0, 9, true, 0, true, 3, 1, 0)", safe},
      {"NewtonRaphsonHybrid_HW" + square + "1, 0, 9, true, 0, false, 3, 1, 50)", ""},
  };
  for (const auto& [call, hint] : cases) {
    told.clear();
    eval("STATS_Vexel" + call);
    EXPECT_EQ(told, hint) << call;
  }
}

TEST_F(RootTest, HardFunctionsHaveTheirRoots) {
  const std::pair<const char*, double> cases[] = {
      {"(0, x -> evalhf(cos(x) - x), 0, 1, 1, 200)", 0.7390851332151607},
      {"(2, x -> evalhf(x^3), 0, 2, 1, 200)", 1.2599210498948732},
      {"(0.5, x -> evalhf(exp(-x)), 10, 0, 1, 200)", 0.6931471805599453},
      {"(0, x -> evalhf(arctan(10^6*(x - 0.3))), -1, 1, 1, 200)", 0.3},
      {"(0, x -> evalhf((x - 1)^9), 0, 2.5, 1, 200)", 1.0},
  };
  for (const auto& [arguments, root] : cases) {
    EXPECT_NEAR(number(eval(std::string("STATS_VexelBrentMethod_HW") + arguments)), root, 5e-15)
        << arguments;
  }
}

TEST_F(RootTest, TheEndsOfThe32BitRangeAreSafe) {
  using Limits = std::numeric_limits<std::int32_t>;
  const VKernelVector kv = kernel.vector();
  const auto line = [](double x) { return x / 0x1p31; };
  for (const double p : {-0.5, 0.5}) {
    EXPECT_EQ(STATS_DiscreteInterpolation_HW(kv, p, line, Limits::min(), Limits::max(), 100),
              p * 0x1p31);
  }
  // A step onto the end stays there, where the value repeats.
  const double nearOne = 1 - 0x1p-32;
  const std::function<void()> searches[] = {
      [&] {
        STATS_DiscreteInterpolationHybridLeft_HW(kv, nearOne, line, 0, nearOne, Limits::max() - 1,
                                                 Limits::max(), 9);
      },
      [&] {
        STATS_DiscreteInterpolationHybridRight_HW(kv, 0, line, -1, 1, Limits::min(),
                                                  Limits::min() + 1, 9);
      },
  };
  for (const auto& search : searches) {
    EXPECT_EQ(hostError([&] { inHost(kernel, search); }),
              "DiscreteInterpolationHybrid was not able to converge to the specified root.");
  }
}

}  // namespace
