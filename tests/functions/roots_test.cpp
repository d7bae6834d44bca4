// Root finders: known roots of easy and unkind functions, open brackets, budgets, refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <vexel/roots.hpp>

namespace {

using vexel::Bracket;
using vexel::find_integer;
using vexel::find_root;
using vexel::open;
using vexel::Root;
using vexel::RootError;

struct Case {
  const char* name;
  std::function<double(double)> f;
  std::function<double(double)> derivative;
  Bracket bracket;
  double root;
  int most;  // evaluations
};

TEST(FindRoot, FindsRootsToTheLastPlaces) {
  const Case cases[] = {
      {"cos x = x",
       [](double x) { return std::cos(x) - x; },
       [](double x) { return -std::sin(x) - 1; },
       {0, 1},
       0.73908513321516064,
       10},
      {"a cubic",
       [](double x) { return x * x * x - 2 * x - 5; },
       [](double x) { return 3 * x * x - 2; },
       {2, 3},
       2.0945514815423265,
       12},
      {"reversed ends",
       [](double x) { return x * x - 2; },
       [](double x) { return 2 * x; },
       {2, 1},
       std::sqrt(2.0),
       12},
      {"root at 0 of order 3",
       [](double x) { return x * x * x; },
       [](double x) { return 3 * x * x; },
       {-1, 2},
       0,
       100},
      {"root at 0 of order 9",
       [](double x) { return std::pow(x, 9); },
       [](double x) { return 9 * std::pow(x, 8); },
       {-1, 4},
       0,
       100},
      {"a tiny root",
       [](double x) { return x - 1e-200; },
       [](double) { return 1; },
       {0, 1},
       1e-200,
       12},
      {"a jump", [](double x) { return x < 0.3 ? -1.0 : 1.0; }, nullptr, {0, 1}, 0.3, 80},
      {"very flat",
       [](double x) { return std::exp(-1 / (x * x)) * (x < 0 ? -1 : 1) - 1e-300; },
       nullptr,
       {-1, 1},
       std::sqrt(1 / (300 * std::log(10.0))),
       90},
      {"infinite values",
       [](double x) { return std::log(x); },
       [](double x) { return 1 / x; },
       {0, 5},
       1,
       80},
      {"open above",
       [](double x) { return std::log(x) - 100; },
       [](double x) { return 1 / x; },
       {1, open},
       std::exp(100),
       60},
      {"open below",
       [](double x) { return std::atan(x) + 1.5; },
       nullptr,
       {-open, 0},
       -14.101419947171719,
       40},
      {"open on both sides", [](double x) { return std::cbrt(x) + 7; }, nullptr, {}, -343, 40},
      {"at the end", [](double x) { return x; }, nullptr, {0, 1}, 0, 1},
      {"huge ends", [](double x) { return x / 1e300 - 3; }, nullptr, {-1e308, 1e308}, 3e300, 12},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const double slack = std::abs(c.root) * 8e-16 + 1e-300;
    const Root r = find_root(c.f, c.bracket);
    // Of an odd power any x is a root whose power is 0.
    EXPECT_TRUE(std::abs(r.root - c.root) <= slack || r.value == 0) << r.root;
    EXPECT_LE(r.evaluations, c.most);
    EXPECT_TRUE(r.converged);
    EXPECT_EQ(r.value, c.f(r.root));
    if (c.derivative) {
      const Root n = find_root(c.f, c.bracket, {.derivative = c.derivative});
      EXPECT_TRUE(std::abs(n.root - c.root) <= slack || n.value == 0) << n.root;
      EXPECT_LE(n.evaluations, c.most);
    }
  }
  EXPECT_NEAR(find_root([](double x) { return std::exp(x); }, {0, open}, {.target = 10}).root,
              std::log(10), 4e-15);
}

std::string textOf(const std::function<void()>& call, double* best = nullptr) {
  try {
    call();
  } catch (const RootError& e) {
    if (best != nullptr) {
      *best = e.best;
    }
    return e.what();
  } catch (const std::invalid_argument& e) {
    return e.what();
  }
  return "";
}

TEST(FindRoot, SaysWhyThereIsNone) {
  double best = 0;
  EXPECT_EQ(textOf(
                [] {
                  find_root([](double x) { return x * x + 1; }, {-1, 2});
                },
                &best),
            "f - target has the same sign at both ends of the bracket between -1 and 2; the best "
            "point is -1, f - target is 2 there");
  EXPECT_EQ(best, -1);
  EXPECT_EQ(textOf([] {
              find_root([](double x) { return x < 0.5 ? -1 : NAN; }, {0, 1});
            }),
            "f - target is NaN at 1; the best point is 0, f - target is -1 there");
  EXPECT_EQ(textOf([] {
              find_root([](double x) { return std::cos(x) - x; }, {0, 1}, {.max_iterations = 2});
            }).substr(0, 44),
            "max_iterations were not enough: the root lie");
  EXPECT_NE(textOf([] {
              find_root([](double x) { return std::exp(x); }, {0, open});
            }).find("does not change its sign"),
            std::string::npos);
  EXPECT_NE(
      textOf([] { find_root([](double) { return 1.0; }, {}); }).find("does not change its sign"),
      std::string::npos);
  EXPECT_EQ(textOf([] {
              find_root([](double x) { return x; }, {NAN, 1});
            }),
            "find_root: the ends of the bracket must be numbers, got nan and 1");
  EXPECT_THROW(find_root([](double x) { return x; }, {-1, 1}, {.tolerance = -1}),
               std::invalid_argument);
  EXPECT_THROW(find_root([](double x) { return x; }, {-1, 1}, {.max_iterations = 0}),
               std::invalid_argument);
}

// Seventy iterations are enough for every function that changes its sign.
TEST(FindRoot, NeverSpendsAHundredIterations) {
  for (int k = 0; k < 2000; ++k) {
    const double place = std::ldexp(std::sin(k), -(k % 900));
    const double power = 1 + k % 17;
    const auto f = [=](double x) {
      return std::copysign(std::pow(std::abs(x - place), power), x - place);
    };
    EXPECT_NO_THROW(find_root(f, {-3, 2.0 + k % 5}, {.max_iterations = 70})) << k;
  }
}

TEST(FindInteger, FindsTheSmallest) {
  for (const std::int64_t root :
       {std::int64_t{-7}, std::int64_t{0}, std::int64_t{1}, std::int64_t{999},
        std::int64_t{1} << 40, -(std::int64_t{1} << 61)}) {
    int calls = 0;
    const auto f = [&](std::int64_t k) { return ++calls, k >= root ? 1.0 : 0.0; };
    EXPECT_EQ(find_integer(f, root - 10, root + 1000, {.target = 0.5}), root);
    EXPECT_EQ(find_integer(f, root, root, {.target = 0.5}), root);
    EXPECT_EQ(find_integer(f, vexel::openLow, root + 5, {.target = 0.5}), root);
    EXPECT_EQ(find_integer(f, root - 5, vexel::openHigh, {.target = 0.5}), root);
    calls = 0;
    EXPECT_EQ(find_integer(f, vexel::openLow, vexel::openHigh, {.target = 1}), root);
    EXPECT_LE(calls, 130);
    EXPECT_THROW(find_integer(f, root - 10, root - 1, {.target = 1}), RootError);
    EXPECT_EQ(find_integer(f, root + 3, root + 10, {.target = 1}), root + 3);
  }
  EXPECT_THROW(find_integer([](double) { return 0.0; }, 0, vexel::openHigh, {.target = 1}),
               RootError);
  EXPECT_EQ(
      find_integer([](double) { return 2.0; }, vexel::openLow, vexel::openHigh, {.target = 1}),
      vexel::openLow);
  EXPECT_THROW(find_integer([](double) { return NAN; }, 0, 5, {.target = 1}), RootError);
  EXPECT_THROW(find_integer([](double k) { return k; }, 5, 0, {.target = 1}),
               std::invalid_argument);
}

TEST(FindRoot, TellsAPoleFromARootAndFromAJump) {
  const auto inverse = [](double t) { return 1 / (t - 0.3); };
  EXPECT_THROW(vexel::find_root(inverse, {-1.0, 1.0}), vexel::RootError);
  EXPECT_THROW(vexel::find_root([](double t) { return std::tan(t); }, {1.0, 2.0}),
               vexel::RootError);
  const auto jump = [](double t) { return t < 0.3 ? -2 + t : 5 - t; };
  EXPECT_NEAR(vexel::find_root(jump, {-1.0, 1.0}).root, 0.3, 1e-15);
}

}  // namespace
