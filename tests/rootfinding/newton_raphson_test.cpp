// The Newton-Raphson workers: where they evaluate, what they return, hint and raise.

#include "rootfinding/newton_raphson.hpp"

#include <cmath>

#include "traced_function.hpp"

namespace {

constexpr double kTol = 1e-12;
const std::vector<std::string> kNoHints;
const std::vector<std::string> kPlainExhausted = {
    "NewtonRaphson completed the maximum number of iterations without converging"};
const std::vector<std::string> kSafeExhausted = {
    "NewtonRaphsonSafe completed the maximum number of iterations without converging"};
const std::vector<std::string> kAtBarrier = {"NewtonRaphson has converged to a barrier point"};

class NewtonTest : public RootTest {
 protected:
  VKernelVector kv = kernel.vector();
  Traced line = traced("f", [](double x) { return x; });
  Traced one = traced("d", [](double) { return 1.0; });
  Traced square = traced("f", [](double x) { return x * x; });
  Traced twice = traced("d", [](double x) { return 2.0 * x; });
  Traced flat = traced("d", [](double) { return 0.0; });
  Traced negative = traced("f", [](double x) { return -x; });
  Traced minusOne = traced("d", [](double) { return -1.0; });
  // A distribution function on [0, 1].
  Traced ramp = traced("f", [](double x) { return x < 0 ? 0.0 : x > 1 ? 1.0 : x; });
};

TEST_F(NewtonTest, PlainEvaluatesFunctionBeforeDerivativeAtEveryPoint) {
  Traced f = traced("f", [](double x) { return 2.0 * x; });
  Traced d = traced("d", [](double) { return 2.0; });
  EXPECT_EQ(run([&] { return STATS_NewtonRaphson_HW(kv, 3, f, d, 0, 0, 0, 0, 0, kTol, 10); }), 1.5);
  EXPECT_EQ(trace, "f(0) d(0) f(1.5) d(1.5) f(1.5) d(1.5)");
  EXPECT_EQ(hints, kNoHints);
}

TEST_F(NewtonTest, PlainPathsEndWhereTheyShould) {
  struct Case {
    const char* what;
    Traced *f, *df;
    double target, x0;
    int hasLeft;
    double left;
    int hasRight;
    double right;
    int maxIter;
    double root;
    const char* calls;
    const std::vector<std::string>* hints;
  };
  const Case cases[] = {
      {"no budget gives 0, not x0", &square, &twice, 2, 3, 0, 0, 0, 0, 0, 0.0, "f(3) d(3)",
       &kPlainExhausted},
      {"budget of one", &square, &twice, 2, 1, 0, 0, 0, 0, 1, 1.5, "f(1) d(1) f(1.5) d(1.5)",
       &kPlainExhausted},
      {"rescue from a flat point aims at f = 0", &square, &twice, 4, 0, 1, -4, 0, 0, 1, -1.0,
       "f(0) d(0) d(-2) f(-2) f(-1) d(-1)", &kPlainExhausted},
      {"rescue to the right only", &square, &twice, 4, 0, 0, 0, 1, 4, 1, 1.0,
       "f(0) d(0) d(2) f(2) f(1) d(1)", &kPlainExhausted},
      {"a step over the right barrier is halved", &line, &one, 10, 0, 0, 0, 1, 4, 1, 2.0,
       "f(0) d(0) f(2) d(2)", &kPlainExhausted},
      {"a step over the left barrier is halved", &line, &one, -10, 0, 1, -4, 0, 0, 1, -2.0,
       "f(0) d(0) f(-2) d(-2)", &kPlainExhausted},
      {"x = 0 twice is no convergence", &line, &one, 0, 0, 0, 0, 0, 0, 2, 0.0,
       "f(0) d(0) f(0) d(0) f(0) d(0)", &kPlainExhausted},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(run([&] {
                return STATS_NewtonRaphson_HW(kv, c.target, *c.f, *c.df, c.x0, c.hasLeft, c.left,
                                              c.hasRight, c.right, kTol, c.maxIter);
              }),
              c.root);
    EXPECT_EQ(trace, c.calls);
    EXPECT_EQ(hints, *c.hints);
  }
}

TEST_F(NewtonTest, PlainReturnsTheBarrierItConvergesTo) {
  // The root lies beyond the barrier, so every step is halved toward it.
  for (const double side : {-1.0, 1.0}) {
    EXPECT_EQ(run([&] {
                return STATS_NewtonRaphson_HW(kv, side * 5, line, one, 0, side<0, -4, side> 0, 4,
                                              1e-3, 100);
              }),
              side * 4);
    EXPECT_EQ(hints, kAtBarrier);
  }
}

TEST_F(NewtonTest, NonFiniteStepsSpendTheBudget) {
  Traced nan = traced("f", [](double) { return kNaN; });
  EXPECT_TRUE(std::isnan(
      run([&] { return STATS_NewtonRaphson_HW(kv, 1, nan, one, 0, 1, -1, 1, 1, kTol, 50); })));
  EXPECT_EQ(hints, kPlainExhausted);
  run([&] { return STATS_NewtonRaphsonSafe_HW(kv, 1, nan, one, 0, -1, 1, 0.0, 50); });
  run([&] { return STATS_NewtonRaphsonSafe_HW(kv, 1, line, nan, 0, -2, 2, 0.0, 50); });
}

TEST_F(NewtonTest, SafeEndsWhereItShould) {
  struct Case {
    const char* what;
    Traced *f, *df;
    double target, x0, lower, upper;
    int maxIter;
    double root;
    const char* calls;
    const std::vector<std::string>* hints;
  };
  const Case cases[] = {
      {"lower end", &line, &one, -1, 0, -1, 1, 10, -1, "f(-1) f(1)", &kNoHints},
      {"upper end", &line, &one, 1, 0, -1, 1, 10, 1, "f(-1) f(1)", &kNoHints},
      {"starting point", &line, &one, 0.5, 0.5, -1, 1, 10, 0.5, "f(-1) f(1) f(0.5) d(0.5)",
       &kNoHints},
      {"falling function", &negative, &minusOne, 0.5, 0.25, -1, 1, 10, -0.5,
       "f(-1) f(1) f(0.25) d(0.25) f(-0.5) d(-0.5)", &kNoHints},
      {"no budget", &line, &one, 0.5, 0, -1, 1, 0, 0, "f(-1) f(1) f(0) d(0)", &kSafeExhausted},
      // The Newton step from 0.25 would go to 4.125; the bisection takes the middle of the bracket.
      {"step out of the bracket", &square, &twice, 2, 0.25, 0, 2, 1, 1,
       "f(0) f(2) f(0.25) d(0.25) f(1) d(1)", &kSafeExhausted},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(run([&] {
                return STATS_NewtonRaphsonSafe_HW(kv, c.target, *c.f, *c.df, c.x0, c.lower, c.upper,
                                                  kTol, c.maxIter);
              }),
              c.root);
    EXPECT_EQ(trace, c.calls);
    EXPECT_EQ(hints, *c.hints);
  }
}

TEST_F(NewtonTest, HybridSearchesOutwardThenPolishes) {
  // From 0.25 the seed step lands on the target, which moves no barrier; the next aims at the top
  // of the range and brackets.
  EXPECT_EQ(run([&] {
              return STATS_NewtonRaphsonHybrid_HW(kv, 0.75, ramp, one, 0.25, 0, 1, 0, 0, 0, 0, kTol,
                                                  10);
            }),
            0.75);
  EXPECT_EQ(trace, "f(0.25) d(0.25) f(0.75) d(0.75) f(1) f(0.625) d(0.625) f(0.75) d(0.75)");
  EXPECT_EQ(run([&] {
              return STATS_NewtonRaphsonHybrid_HW(kv, 0.25, ramp, one, 0.75, 0, 1, 0, 0, 1, 2, kTol,
                                                  10);
            }),
            0.25);
  EXPECT_EQ(trace, "f(0.75) d(0.75) f(0.25) d(0.25) f(0) f(0.375) d(0.375) f(0.25) d(0.25)");
  // Both barriers: the start is their midpoint, not x0.
  EXPECT_EQ(run([&] {
              return STATS_NewtonRaphsonHybrid_HW(kv, 0.5, ramp, one, 0.1, 0, 1, 1, 0, 1, 1, kTol,
                                                  10);
            }),
            0.5);
  EXPECT_EQ(trace, "f(0.5) d(0.5)");
  EXPECT_EQ(run([&] {
              return STATS_NewtonRaphsonHybrid_HW(kv, 0.25, ramp, one, 0.1, 0, 1, 1, 0, 1, 1, kTol,
                                                  0);
            }),
            0.5);
  EXPECT_EQ(hints, kSafeExhausted);
}

TEST_F(NewtonTest, FailuresHaveTheirTexts) {
  const std::string outside = "the specified initial point must be between the specified barriers";
  const std::string bounds =
      "the specified approximation point must be strictly between the specified bounds";
  const std::string falling = "specified function is not a nondecreasing function.";
  const std::string hybrid = "NewtonRaphsonHybrid root-finding method failed to converge.";
  const auto plain = [&](Traced& f, Traced& d, double x0, int hasLeft, int hasRight) {
    return errorOf([&, x0, hasLeft, hasRight] {
      return STATS_NewtonRaphson_HW(kv, 1, f, d, x0, hasLeft, -1, hasRight, 1, kTol, 10);
    });
  };
  EXPECT_EQ(plain(line, one, -2, 1, 0), outside);
  EXPECT_EQ(plain(line, one, 2, 0, 1), outside);
  EXPECT_EQ(plain(line, flat, 0, 0, 0), "NewtonRaphson root-finding method failed to converge.");
  EXPECT_EQ(plain(line, flat, 0, 1, 1), "NewtonRaphson root-finding method failed to converge.");

  const auto safe = [&](Traced& f, Traced& d, double target, double x0) {
    return errorOf([&, target, x0] {
      return STATS_NewtonRaphsonSafe_HW(kv, target, f, d, x0, -1, 1, kTol, 10);
    });
  };
  EXPECT_EQ(safe(line, one, 0, 2), outside);
  EXPECT_EQ(safe(line, one, 0, kNaN), outside);
  EXPECT_EQ(safe(line, one, 3, 0), "root must be bracketed by lower and upper barriers");
  EXPECT_EQ(trace, "f(-1) f(1)");

  const auto search = [&](Traced& f, Traced& d, double target, int hasLeft, double x0,
                          int maxIter) {
    return errorOf([&, target, hasLeft, x0, maxIter] {
      return STATS_NewtonRaphsonHybrid_HW(kv, target, f, d, x0, 0, 1, hasLeft, 0, 0, 0, kTol,
                                          maxIter);
    });
  };
  EXPECT_EQ(search(ramp, one, 0.5, 1, -1, 10), outside);
  EXPECT_EQ(search(ramp, one, 0, 0, 0.5, 10), bounds);
  EXPECT_EQ(search(ramp, one, 1, 0, 0.5, 10), bounds);
  EXPECT_EQ(search(ramp, flat, 0.5, 0, 0.2, 10), hybrid);
  EXPECT_EQ(search(ramp, one, 0.5, 0, 0.2, 0), hybrid);
  EXPECT_EQ(search(ramp, minusOne, 0.5, 0, 0.2, 10), falling);
}

}  // namespace
