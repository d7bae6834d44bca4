// The envelope generator: bounds, refinement, samples, failures.

#include "generators/envelope_generator.hpp"

#include "generator_test.hpp"

namespace {

struct Density {
  const char* name;
  double (*h)(double);
  double (*h1)(double);
  double (*cdf)(double);
  std::vector<double> basePoints;  // with the points of inflection
};

const Density kDensities[] = {
    {"normal",
     [](double x) { return std::exp(-x * x / 2); },
     [](double x) { return -x * std::exp(-x * x / 2); },
     [](double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); },
     {-6, -1, 0, 1, 6}},
    {"gamma of shape 3",
     [](double x) { return x * x * std::exp(-x); },
     [](double x) { return (2 - x) * x * std::exp(-x); },
     [](double x) { return 1 - std::exp(-x) * (1 + x + x * x / 2); },
     {0, 0.5857864376269049, 2, 3.414213562373095, 30}},
    {"exponential",
     [](double x) { return std::exp(-x); },
     [](double x) { return -std::exp(-x); },
     [](double x) { return -std::expm1(-x); },
     {0, 1, 30}},
    {"parabola",
     [](double x) { return 1 - x * x; },
     [](double x) { return -2 * x; },
     [](double x) { return (2 + 3 * x - x * x * x) / 4; },
     {-1, 1}},
};

class EnvelopeTest : public GeneratorTest {
 protected:
  VKernelVector kv = kernel.vector();

  vexel::Value setup(const Density& d, int maximum, bool hardware = true) {
    return list({counted("h", d.h), counted("h1", d.h1), floats(d.basePoints),
                 kernel.integer(maximum), kernel.boolean(hardware)});
  }
  std::vector<double> draw(STATS_EnvelopeGenerator_HW& generator, std::size_t n) {
    std::vector<double> x(n);
    for (double& v : x) {
      v = generator.next(kv);
    }
    return x;
  }
  std::string initializeError(const vexel::Value& s) {
    return hostError(
        [&] { inHost([&] { STATS_EnvelopeGenerator_HW(kv).initialize(kv, s.handle()); }); });
  }
};

TEST_F(EnvelopeTest, BoundsBoundRefinementSavesAndSamplesFit) {
  for (const Density& d : kDensities) {
    SCOPED_TRACE(d.name);
    const vexel::Value s = setup(d, 200);
    STATS_EnvelopeGenerator_HW generator(kv);
    ASSERT_EQ(generator.initialize(kv, s.handle()), 1);
    EXPECT_EQ(generator.envelope().size(), d.basePoints.size() - 1);
    calls = 0;
    draw(generator, 100);
    const double early = static_cast<double>(calls) / 100;
    draw(generator, 20000);
    calls = 0;
    const std::vector<double> sample = draw(generator, 1000000);
    const double late = static_cast<double>(calls) / 1e6;
    EXPECT_LT(late, 0.1);
    EXPECT_LT(late, early);
    EXPECT_LT(misfit(sample, d.cdf), 5);
    EXPECT_LE(generator.envelope().size(), 200U);

    for (std::uint32_t i = 0; i < generator.envelope().size(); ++i) {
      const auto& e = generator.envelope().elementAt(i);
      for (const double u : {0.0, 0.1, 0.35, 0.5, 0.62, 0.9, 1.0}) {
        const double x = e.x[0] + (e.x[2] - e.x[0]) * u;
        EXPECT_GE(generator.fU(e, x), d.h(x) - 1e-12) << x;
        EXPECT_LE(generator.fL(e, x), d.h(x) + 1e-12) << x;
      }
    }
  }
}

TEST_F(EnvelopeTest, DrawsPickAnElementThenAPointThenATest) {
  // One element of the parabola: xm = 0, tangents meet at 2; areas 1, 2 | 1, 2.
  const Density& d = kDensities[3];
  const vexel::Value s = setup(d, 1, false);
  STATS_EnvelopeGenerator_HW generator(kv);
  generator.initialize(kv, s.handle());
  const auto& e = generator.envelope().elementAt(0);
  EXPECT_EQ(e.x[1], 0.0);
  EXPECT_TRUE(e.tangentUpper && e.rising[0] && !e.rising[1]);
  EXPECT_EQ(e.A[0], 0.0);
  EXPECT_EQ(e.A[1], 1.0);
  EXPECT_EQ(e.A[2], 1.0);
  EXPECT_EQ(e.A[3], 2.0);
  calls = 0;
  // Index; area 0.2 in the left triangle: x = -1 + max(0.5, 0.75); below the lower bound.
  script({0, -1, 0, 0}, {0.5, 0.1, 0.5, 0.75, 0.125,
                         // the right triangle, x = min(0.5, 0.75), above the density, drawn again:
                         0.5, 0.9, 0.5, 0.75, 0.99, 0.5, 0.9, 0.5, 0.75, 0.7});
  EXPECT_EQ(generator.next(kv), -0.25);
  EXPECT_EQ(calls, 0);
  script({0, 0}, {0.5, 0.9, 0.5, 0.75, 0.99, 0.5, 0.9, 0.5, 0.75, 0.7});
  EXPECT_EQ(generator.next(kv), 0.5);
  EXPECT_EQ(calls, 2);  // the maximum is reached: no refinement, no derivative
}

TEST_F(EnvelopeTest, UnusableSetupsAreNamed) {
  const vexel::Value h = counted("h", kDensities[0].h);
  const vexel::Value points = floats({0, 1});
  const vexel::Value no = kernel.boolean(false);
  const vexel::Value m = kernel.integer(5);
  EXPECT_EQ(initializeError(h), "expected: list of size 5, received: %1");
  EXPECT_EQ(initializeError(list({h, h, points, m})), "expected: list of size 5, received: %1");
  EXPECT_EQ(initializeError(list({h, h, points, kernel.real(5.0), no})),
            "invalid maximum number of envelope elements, expected: positive integer, received %1");
  EXPECT_EQ(initializeError(list({h, h, m, m, no})),
            "expected base points as list or one-dimensional array, received %1");
  EXPECT_EQ(initializeError(list({h, h, kernel.array(std::vector<std::int32_t>{1, 2}), m, no})),
            "expected array of floats, received %1");
  EXPECT_EQ(initializeError(list({h, h, array({0, 1, 2}), kernel.integer(-3), no})), "no error");
}

TEST_F(EnvelopeTest, ImpossibleEnvelopesEndInErrorsOrCanBeInterrupted) {
  // No elements.
  STATS_EnvelopeGenerator_HW generator(kv);
  const vexel::Value h = counted("h", kDensities[0].h);
  const auto fill = [&](const vexel::Value& f, const vexel::Value& f1, const vexel::Value& points) {
    return generator.initialize(
        kv, list({f, f1, points, kernel.integer(50), kernel.boolean(true)}).handle());
  };
  EXPECT_EQ(fill(h, h, floats({1})), 1);
  EXPECT_EQ(hostError([&] { inHost([&] { generator.next(kv); }); }),
            "no weights to draw an index from");
  // Slopes beyond all measure, the steeper one at least twice the other.
  const vexel::Value steep = counted("h1", [](double x) { return x < 1 ? 1e10 : 3e10; });
  EXPECT_EQ(fill(h, steep, floats({0, 2})), 0);
  // A derivative of something else: points stay inside the base points.
  const vexel::Value wrong = counted("h1", [](double x) { return std::cos(40 * x); });
  ASSERT_EQ(fill(h, wrong, floats({-2, 0, 2})), 1);
  for (const double x : draw(generator, 2000)) {
    ASSERT_TRUE(x >= -2 && x <= 2);
  }
  // A density that is nowhere positive accepts nothing.
  const vexel::Value zero = counted("zero", [this](double) {
    if (calls == 20000) {
      vexel::Kernel::interrupt();
    }
    return 0.0;
  });
  calls = 0;
  ASSERT_EQ(fill(zero, zero, floats({0, 1})), 1);
  EXPECT_THROW(inHost([&] { generator.next(kv); }), vexel::Interrupted);
}

TEST_F(EnvelopeTest, AnErrorAtAnyEvaluationPassesThrough) {
  const vexel::Value s = setup(kDensities[1], 40, false);
  for (const long k : {1, 2, 3, 4, 5, 9, 17, 30, 45}) {
    calls = 0;
    failAt = k;
    const std::string error = hostError([&] {
      inHost([&] {
        STATS_EnvelopeGenerator_HW generator(kv);
        generator.initialize(kv, s.handle());
        draw(generator, 5000);
      });
    });
    EXPECT_EQ(error, "planned") << k;
  }
}

}  // namespace
