// The exported root finders: argument checks, Digits, rounding, and errors of host procedures.

#include <cmath>
#include <map>
#include <set>

#include "kernel_test.hpp"

namespace {

class RootEntryTest : public KernelTest {
 protected:
  // A machine function that remembers the Digits it ran under, and fails at the n-th call.
  vexel::Value recording(double (*f)(double)) {
    return kernel.function("recording",
                           [this, f](vexel::Kernel& k, std::span<const vexel::Value> a) {
                             digitsSeen.insert(k.eval("Digits;").integer());
                             if (++calls == failAt) {
                               throw vexel::Error("planned", "planned", {});
                             }
                             return k.real(f(a[0].number()));
                           });
  }
  std::vector<vexel::Value> arguments(const std::string& entry) {
    const vexel::Value cdf = recording([](double x) { return 1.0 / (1.0 + std::exp(-x)); });
    const vexel::Value pdf = recording([](double x) {
      const double e = std::exp(-std::abs(x));
      return e / ((1 + e) * (1 + e));
    });
    const auto v = [this](auto x) { return kernel.toValue(x); };
    const std::map<std::string, std::vector<vexel::Value>> table = {
        {"NewtonRaphson",
         {v(0.3), cdf, pdf, v(0.0), v(false), name("u"), v(true), v(9.0), v(10), v(50)}},
        {"NewtonRaphsonSafe", {v(0.3), cdf, pdf, v(0.0), v(-5.0), v(5.0), v(10), v(50)}},
        {"NewtonRaphsonHybrid",
         {v(0.3), cdf, pdf, v(0.0), v(0.0), v(1.0), v(false), name("u"), v(false), name("u"), v(10),
          v(50)}},
        {"BrentMethod", {v(0.3), cdf, v(-5.0), v(5.0), v(10), v(50)}},
        {"BrentMethodHybridLeft", {v(0.3), cdf, v(0.0), v(1.0), v(-5.0), v(-4.0), v(10), v(50)}},
        {"BrentMethodHybridRight", {v(0.3), cdf, v(0.0), v(1.0), v(4.0), v(5.0), v(10), v(50)}},
        {"BrentMethodHybridUnbound", {v(0.3), cdf, v(0.0), v(1.0), v(4.0), v(5.0), v(10), v(50)}},
        {"DiscreteInterpolation", {v(0.3), cdf, v(-9.0), v(9.0), v(50)}},
        {"DiscreteInterpolationHybridLeft", {v(0.3), cdf, v(0.0), v(1.0), v(-9.0), v(-8), v(50)}},
        {"DiscreteInterpolationHybridRight", {v(0.3), cdf, v(0.0), v(1.0), v(-9.5), v(9.9), v(50)}},
        {"DiscreteInterpolationHybridUnbound", {v(0.3), cdf, v(0.0), v(1.0), v(-9), v(-8), v(50)}},
    };
    return table.at(entry);
  }
  vexel::Value find(const std::string& entry, const std::vector<vexel::Value>& args) {
    return kernel.callValues("STATS_Vexel" + entry + "_HW", args);
  }

  std::set<std::int64_t> digitsSeen;
  int calls = 0;
  int failAt = 0;
};

constexpr const char* kContinuous[] = {
    "NewtonRaphson",         "NewtonRaphsonSafe",      "NewtonRaphsonHybrid",     "BrentMethod",
    "BrentMethodHybridLeft", "BrentMethodHybridRight", "BrentMethodHybridUnbound"};
constexpr const char* kDiscrete[] = {"DiscreteInterpolation", "DiscreteInterpolationHybridLeft",
                                     "DiscreteInterpolationHybridRight",
                                     "DiscreteInterpolationHybridUnbound"};

TEST_F(RootEntryTest, RootsComeWithGuardDigitsAndLeaveDigitsAlone) {
  const double root = std::log(0.3 / 0.7);
  for (const std::string entry : kContinuous) {
    SCOPED_TRACE(entry);
    digitsSeen.clear();
    const vexel::Value found = find(entry, arguments(entry));
    EXPECT_NEAR(found.number(), root, 1e-12);
    EXPECT_EQ(digitsSeen, std::set<std::int64_t>{18});
    EXPECT_EQ(eval("Digits;").integer(), 15);
  }
  for (const std::string entry : kDiscrete) {
    SCOPED_TRACE(entry);
    digitsSeen.clear();
    const vexel::Value found = find(entry, arguments(entry));
    EXPECT_TRUE(found.isInteger());
    EXPECT_EQ(found.integer(), 0);
    EXPECT_EQ(digitsSeen, std::set<std::int64_t>{15});
  }
}

TEST_F(RootEntryTest, OnlyFourFindersRoundToDigits) {
  eval("Digits := 5:");
  const std::set<std::string> rounded = {"NewtonRaphson", "NewtonRaphsonSafe",
                                         "NewtonRaphsonHybrid", "BrentMethod"};
  for (const std::string entry : kContinuous) {
    const std::string text = find(entry, arguments(entry)).text();
    EXPECT_EQ(text.size() < 9, rounded.count(entry) == 1) << entry << " " << text;
  }
}

TEST_F(RootEntryTest, AnErrorAtAnyEvaluationPassesThrough) {
  std::vector<std::string> entries(std::begin(kContinuous), std::end(kContinuous));
  entries.insert(entries.end(), std::begin(kDiscrete), std::end(kDiscrete));
  for (const std::string& entry : entries) {
    SCOPED_TRACE(entry);
    const bool raises = entry.find("Discrete") == std::string::npos;
    for (failAt = 1;; ++failAt) {
      calls = 0;
      const std::string error = hostError([&] { find(entry, arguments(entry)); });
      if (error == "no error") {
        break;
      }
      ASSERT_EQ(error, "planned");
      ASSERT_EQ(calls, failAt);
      // Digits stays raised: nothing on the way puts it back.
      ASSERT_EQ(eval("Digits;").integer(), raises ? 18 : 15);
      eval("Digits := 15:");
    }
    EXPECT_GT(failAt, 3);
  }
}

TEST_F(RootEntryTest, ChecksComeInOrderWithTheirTexts) {
  const struct {
    const char *entry, *count, *second, *third;
  } cases[] = {
      {"NewtonRaphson", "VexelNewtonRaphson expects 10 arguments, received: %1",
       "VexelNewtonRaphson expects a procedure as its second parameter, received: %1",
       "VexelNewtonRaphson expects a procedure as its third parameter, received: %1"},
      {"NewtonRaphsonSafe", "VexelNewtonRaphsonSafe expects 8 arguments, received: %1",
       "VexelNewtonRaphsonSafe expects a procedure as its second parameter, received: %1",
       "VexelNewtonRaphsonSafe expects a procedure as its third parameter, received: %1"},
      {"NewtonRaphsonHybrid", "VexelNewtonRaphsonHybrid expects 12 arguments, received: %1",
       "VexelNewtonRaphsonHybrid expects a procedure as its second parameter, received: %1",
       "VexelNewtonRaphsonHybrid expects a procedure as its third parameter, received: %1"},
      {"BrentMethod", "VexelBrentMethod expects 6 arguments, received: %1",
       "VexelBrentMethod expects a procedure as its second parameter, received: %1", nullptr},
      {"BrentMethodHybridLeft", "VexelBrentMethodHybridLeft expects 8 arguments, received: %1",
       "VexelBrentMethodHybridLeft expects a procedure as its second parameter, received: %1",
       nullptr},
      {"BrentMethodHybridRight", "VexelBrentMethodHybridRight expects 8 arguments, received: %1",
       "VexelBrentMethodHybridUnbound expects a procedure as its second parameter, received: %1",
       nullptr},
      {"BrentMethodHybridUnbound",
       "VexelBrentMethodHybridUnbound expects 8 arguments, received: %1",
       "VexelBrentMethodHybridUnbound expects a procedure as its second parameter, received: %1",
       nullptr},
      {"DiscreteInterpolation", "VexelDiscreteInterpolation expects 5 arguments, received: %1",
       "VexelDiscreteInterpolation expects a procedure as its second parameter, received: %1",
       nullptr},
      {"DiscreteInterpolationHybridLeft",
       "VexelDiscreteInterpolationHybrid expects 7 arguments, received: %1",
       "VexelDiscreteInterpolationHybridLeft expects a procedure as its second parameter, "
       "received: %1",
       nullptr},
      {"DiscreteInterpolationHybridRight",
       "VexelDiscreteInterpolationHybrid expects 7 arguments, received: %1",
       "VexelDiscreteInterpolationHybridLeft expects a procedure as its second parameter, "
       "received: %1",
       nullptr},
      {"DiscreteInterpolationHybridUnbound",
       "VexelDiscreteInterpolationHybrid expects 7 arguments, received: %1",
       "VexelDiscreteInterpolationHybridLeft expects a procedure as its second parameter, "
       "received: %1",
       nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.entry);
    const auto errorWith = [&](std::size_t i, const vexel::Value& replacement) {
      auto args = arguments(c.entry);
      args[i] = replacement;
      return hostError([&] { find(c.entry, args); });
    };
    auto fewer = arguments(c.entry);
    fewer.pop_back();
    EXPECT_EQ(hostError([&] { find(c.entry, fewer); }), c.count);
    EXPECT_EQ(errorWith(1, kernel.real(1.5)), c.second);
    if (c.third != nullptr) {
      EXPECT_EQ(errorWith(2, kernel.real(1.5)), c.third);
    }
    auto both = arguments(c.entry);
    both[0] = name("x");
    both[1] = kernel.integer(3);
    EXPECT_EQ(hostError([&] { find(c.entry, both); }), "unable to evaluate %1 to floating-point");
    EXPECT_EQ(eval("Digits;").integer(), 15);
  }
}

}  // namespace
