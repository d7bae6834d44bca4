// The integer quantile searches.

#include "rootfinding/discrete_interpolation.hpp"

#include <cmath>
#include <limits>

#include "traced_function.hpp"

namespace {

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
const std::string kNotConverged =
    "DiscreteInterpolationHybrid was not able to converge to the specified root.";
const std::string kFalling = "specified function is not a nondecreasing function.";

class DiscreteTest : public RootTest {
 protected:
  VKernelVector kv = kernel.vector();
  Traced step7 = traced("F", [](double x) { return x < 7 ? 0.25 : 0.75; });
  Traced line = traced("F", [](double x) { return x / 16; });
  Traced constant = traced("F", [](double) { return 0.5; });
  Traced falling = traced("F", [](double x) { return x < 5 ? 0.3 : 0.2; });

  double bisect(Traced& F, double p, std::int32_t lo, std::int32_t hi, int maxIter = 100) {
    return STATS_DiscreteInterpolation_HW(kv, p, F, lo, hi, maxIter);
  }
  double left(Traced& F, double p, std::int32_t a, std::int32_t x0, int maxIter = 100) {
    return STATS_DiscreteInterpolationHybridLeft_HW(kv, p, F, 0, 1, a, x0, maxIter);
  }
  double right(Traced& F, double p, std::int32_t x0, std::int32_t b, int maxIter = 100) {
    return STATS_DiscreteInterpolationHybridRight_HW(kv, p, F, 0, 1, x0, b, maxIter);
  }
  double unbound(Traced& F, double p, std::int32_t a, std::int32_t b) {
    return STATS_DiscreteInterpolationHybridUnbound_HW(kv, p, F, 0, 1, a, b, 100);
  }
};

TEST_F(DiscreteTest, FindsTheFirstIntegerThatReachesP) {
  const struct {
    std::string calls;
    double root;
    std::function<double()> worker;
  } cases[] = {
      {"F(0) F(10) F(5) F(7) F(6)", 7, [&] { return bisect(step7, 0.5, 0, 10); }},
      {"F(7)", 7, [&] { return bisect(step7, 0.5, 7, 10); }},          // F(hi) is not looked at
      {"F(6) F(7)", 7, [&] { return bisect(step7, 0.5, 6, 7); }},      // no pass
      {"F(0) F(2) F(1)", 1, [&] { return bisect(line, 0.0, 0, 2); }},  // F(lo) = p counts as below
      {"F(-3) F(0) F(-1) F(-2)", -2,                                   // middles go toward zero
       [&] { return bisect(line, -2.5 / 16, -3, 0); }},
      {"F(0) F(2) F(16) F(2) F(16) F(9) F(5) F(3) F(4)", 4, [&] { return left(line, 0.25, 0, 2); }},
      {"F(0) F(8) F(0) F(8) F(4) F(2) F(3)", 3, [&] { return left(line, 0.1875, 0, 8); }},
      {"F(4) F(9) F(4) F(9) F(6) F(5)", 5, [&] { return right(line, 0.3125, 4, 9); }},
      {"F(8) F(9) F(8)", 8, [&] { return right(line, 0.25, 8, 9); }},
      {"F(3) F(3)", 3, [&] { return unbound(line, 0.1875, 5, 3); }},
      {"F(3) F(5)", 5, [&] { return unbound(line, 0.3125, 3, 5); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.calls);
    EXPECT_EQ(run(c.worker), c.root);
    EXPECT_EQ(trace, c.calls);
  }
}

TEST_F(DiscreteTest, AnExtrapolationOntoTheCurrentPointMovesOneOn) {
  // The secant through (0, 0) and (1, 0.9) reaches 1 at 1.1.
  Traced steep = traced("F", [](double x) { return x < 1 ? 0.0 : x < 2 ? 0.9 : 0.99; });
  EXPECT_EQ(run([&] { return left(steep, 0.95, 0, 1); }), 2.0);
  EXPECT_EQ(trace, "F(0) F(1) F(2) F(1) F(2)");
}

TEST_F(DiscreteTest, TheEndsOfThe32BitRangeAreSafe) {
  Traced wide = traced("F", [](double x) { return x / 4294967296.0 + 0.5; });
  EXPECT_EQ(run([&] { return bisect(wide, 0.75, kMin, kMax); }), 1073741824.0);
  EXPECT_EQ(run([&] { return bisect(wide, 0.25, kMin, kMax); }), -1073741824.0);
  // Nothing lies beyond the last integer: the same value again ends the search.
  EXPECT_EQ(errorOf([&] { return left(wide, 1.0, kMin, kMax); }), kFalling);
  EXPECT_EQ(errorOf([&] { return right(wide, 1.0, kMin, kMax); }), kNotConverged);
  Traced nan = traced("F", [](double) { return kNaN; });
  EXPECT_EQ(errorOf([&] { return left(nan, 0.5, 0, 1); }), kFalling);
  run([&] { return right(nan, 0.5, 0, 1); });
  EXPECT_EQ(run([&] { return bisect(nan, 0.5, 0, 9); }), 9.0);
}

TEST_F(DiscreteTest, FailuresHaveTheirTexts) {
  const std::string range = "the specified approximation point must be between function bounds.";
  const std::string exhausted = "maximum number of iterations exceeded in discrete root finding.";
  const struct {
    std::string text;
    std::function<double()> worker;
  } cases[] = {
      {"root must be bracketed by left and right barriers.",
       [&] { return bisect(step7, 0.8, 0, 10, 0); }},
      {exhausted, [&] { return bisect(step7, 0.5, 0, 10, 0); }},
      {exhausted, [&] { return bisect(step7, 0.5, 0, 10, 3); }},  // spent on the last pass
      {"the specified initial point must be greater than the left barrier.",
       [&] { return left(line, 0.5, 3, 3); }},
      {"the specified initial point must be less than the right barrier.",
       [&] { return right(line, 0.5, 3, 3); }},
      {range, [&] { return left(line, 1.5, 0, 1); }},
      {range, [&] { return right(line, -0.5, 0, 1); }},
      {range, [&] { return unbound(line, 1.5, 3, 3); }},
      {kNotConverged, [&] { return left(line, 0.5, 0, 9, 0); }},
      {kNotConverged, [&] { return left(line, 0.5, 0, 1, 1); }},
      {kFalling, [&] { return left(constant, 0.75, 0, 1); }},        // flat: no step to the right
      {kNotConverged, [&] { return right(constant, 0.75, 0, 1); }},  // but one far to the left
      {kFalling, [&] { return left(falling, 0.75, 2, 6); }},
      {"DiscreteInterpolationHybridUnbound requires distinct initial points (InitPoint1 != "
       "InitPoint2).",
       [&] { return unbound(line, 0.5, 3, 3); }},
      {"the specified initial point must be greater than the left barrier.",
       [&] { return unbound(line, 0.5, 5, 3); }},
  };
  int i = 0;
  for (const auto& c : cases) {
    EXPECT_EQ(errorOf(c.worker), c.text) << "case " << i;
    ++i;
  }
}

}  // namespace
