// Brent's method and the bracket searches in front of it.

#include "rootfinding/brent.hpp"

#include <cmath>

#include "traced_function.hpp"

namespace {

constexpr double kTol = 1e-12;
const std::string kExhausted = "maximum number of iterations exceeded in Brent root finding.";
const std::string kNotConverged =
    "BrentMethodHybrid was not able to converge on the specified root.";
const std::string kFalling = "specified function is not a nondecreasing function.";
const std::string kOutOfRange =
    "the specified approximation point must be between function bounds.";

class BrentTest : public RootTest {
 protected:
  VKernelVector kv = kernel.vector();
  Traced line = traced("f", [](double x) { return x; });
  Traced negative = traced("f", [](double x) { return -x; });
  Traced logistic = traced("f", [](double x) { return 1.0 / (1.0 + std::exp(-x)); });
  Traced constant = traced("f", [](double) { return 0.5; });

  double right(Traced& f, double target, double x0, double barrier, int maxIter) {
    return STATS_BrentMethodHybridRight_HW(kv, target, f, 0, 1, x0, barrier, kTol, maxIter);
  }
  double left(Traced& f, double target, double barrier, double x0, int maxIter) {
    return STATS_BrentMethodHybridLeft_HW(kv, target, f, 0, 1, barrier, x0, kTol, maxIter);
  }
  double unbound(Traced& f, double target, double p1, double p2) {
    return STATS_BrentMethodHybridUnbound_HW(kv, target, f, 0, 1, p1, p2, kTol, 100);
  }
};

TEST_F(BrentTest, FindsRootsOfHardFunctions) {
  struct Case {
    double (*f)(double);
    double target, a, b, root;
  };
  const Case cases[] = {
      {[](double x) { return std::cos(x) - x; }, 0, 0, 1, 0.7390851332151607},
      {[](double x) { return x * x * x; }, 2, 0, 2, 1.2599210498948732},
      {[](double x) { return std::exp(-x); }, 0.5, 10, 0, 0.6931471805599453},
      {[](double x) { return std::atan(1e6 * (x - 0.3)); }, 0, -1, 1, 0.3},
      {[](double x) { return std::pow(x - 1, 9); }, 0, 0, 2.5, 1.0},
  };
  for (const Case& c : cases) {
    STATS_VexelCFuncAdapter_HW f(kv, c.f);
    const double root =
        run([&] { return STATS_BrentMethod_HW(kv, c.target, f, c.a, c.b, kTol, 200); });
    EXPECT_NEAR(root, c.root, 3 * kTol) << c.root;
  }
}

TEST_F(BrentTest, EvaluatesBothEndsThenOnePointAPass) {
  EXPECT_EQ(run([&] { return STATS_BrentMethod_HW(kv, 2, line, 0, 2, kTol, 1); }), 2.0);
  EXPECT_EQ(trace, "f(0) f(2)");
  EXPECT_EQ(run([&] { return STATS_BrentMethod_HW(kv, 1, line, 0, 4, kTol, 9); }), 1.0);
  EXPECT_EQ(trace, "f(0) f(4) f(1)");
  // tol = 0: only an exact root ends it.
  EXPECT_EQ(run([&] { return STATS_BrentMethod_HW(kv, 0.5, line, 0, 2, 0, 50); }), 0.5);
  EXPECT_EQ(errorOf([&] { return STATS_BrentMethod_HW(kv, 0.3, logistic, -9, 9, 0, 0); }),
            kExhausted);
  EXPECT_EQ(trace, "f(-9) f(9)");
}

TEST_F(BrentTest, SearchesBracketByExtrapolatingToTheEndOfTheRange) {
  Traced quarter = traced("f", [](double x) { return x / 4; });
  EXPECT_EQ(run([&] { return right(quarter, 0.25, 2, 3, 9); }), 1.0);
  // The line through (3, 1) and (2, 1/2) reaches 0 at 1, where f is the target.
  EXPECT_EQ(trace, "f(2) f(1) f(1) f(2)");
  EXPECT_EQ(run([&] { return left(quarter, 0.5, 0, 1, 9); }), 2.0);
  EXPECT_EQ(trace, "f(1) f(4) f(1) f(4) f(2)");
  EXPECT_EQ(run([&] { return right(quarter, 0.5, 2, 3, 9); }), 2.0);
  EXPECT_EQ(trace, "f(2) f(2) f(3)");  // bracketed at once
  for (const double p : {1e-9, 0.1, 0.5, 0.9, 1 - 1e-9}) {
    const double x = std::log(p) - std::log1p(-p);
    EXPECT_NEAR(run([&] { return unbound(logistic, p, 2, -1); }), x, 1e-6 + 1e-7 * std::abs(x));
  }
}

TEST_F(BrentTest, UnboundReturnsAStartingPointThatIsTheRoot) {
  EXPECT_EQ(run([&] { return unbound(line, 0.25, 0.5, 0.25); }), 0.25);
  EXPECT_EQ(trace, "f(0.25) f(0.5)");
  EXPECT_EQ(run([&] { return unbound(line, 0.5, 0.5, 0.25); }), 0.5);
}

TEST_F(BrentTest, FailuresHaveTheirTexts) {
  Traced dent = traced("f", [](double x) { return x < 0.45 ? 0.9 : x < 1 ? 0.2 : 0.8; });
  const struct {
    std::string text;
    std::function<double()> worker;
  } cases[] = {
      {"root must be bracketed by lower and upper boundaries.",
       [&] { return STATS_BrentMethod_HW(kv, 3, line, 0, 2, kTol, 0); }},
      {kExhausted, [&] { return STATS_BrentMethod_HW(kv, 0.3, logistic, -9, 9, kTol, 2); }},
      {"the specified initial point must be less than the right barrier.",
       [&] { return right(line, 0.5, 1, 1, 9); }},
      {"the specified initial point must be less than the right barrier.",
       [&] { return right(line, 0.5, kNaN, 1, 9); }},
      {"the specified initial point must be greater than the left barrier.",
       [&] { return left(line, 0.5, 1, 1, 9); }},
      {kOutOfRange, [&] { return right(line, 1.5, 0, 1, 9); }},
      {kOutOfRange, [&] { return left(line, -0.5, 0, 1, 9); }},
      {kOutOfRange, [&] { return unbound(negative, -0.5, 0, 1); }},
      {kNotConverged, [&] { return right(line, 0.5, 0, 1, 0); }},
      {kNotConverged, [&] { return left(logistic, 0.999, -9, -8, 1); }},
      {kNotConverged, [&] { return right(constant, 0.25, 0, 1, 9); }},
      {kNotConverged, [&] { return left(constant, 0.75, 0, 1, 9); }},
      {kFalling, [&] { return right(dent, 0.1, 0.5, 1, 9); }},
      {kFalling, [&] { return right(negative, 0.5, -1, 1, 9); }},
      {"BrentMethodHybridUnbound requires distinct initial points (InitPoint1 != InitPoint2).",
       [&] { return unbound(line, 0.5, 1, 1); }},
  };
  int i = 0;
  for (const auto& c : cases) {
    EXPECT_EQ(errorOf(c.worker), c.text) << "case " << i;
    ++i;
  }
}

}  // namespace
