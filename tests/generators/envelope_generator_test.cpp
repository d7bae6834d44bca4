// The envelope generator: bounds, refinement, fit, interruption.

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
};

TEST_F(EnvelopeTest, BoundsBoundRefinementSavesAndSamplesFit) {
  for (const Density& d : kDensities) {
    SCOPED_TRACE(d.name);
    const vexel::Value s = setup(d, 200);
    STATS_EnvelopeGenerator_HW generator(kv);
    ASSERT_EQ(generator.initialize(kv, s.handle()), 1);
    EXPECT_EQ(generator.envelope().elements().size(), d.basePoints.size() - 1);
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
    EXPECT_LE(generator.envelope().elements().size(), 200U);

    for (const auto& e : generator.envelope().elements()) {
      for (const double u : {0.0, 0.1, 0.35, 0.5, 0.62, 0.9, 1.0}) {
        const double x = e.x[0] + (e.x[2] - e.x[0]) * u;
        EXPECT_GE(e.upper(x), d.h(x) - 1e-12) << x;
        EXPECT_LE(e.lower(x), d.h(x) + 1e-12) << x;
      }
    }
  }
}

TEST_F(EnvelopeTest, ADensityThatIsNowherePositiveCanBeInterrupted) {
  STATS_EnvelopeGenerator_HW generator(kv);
  const vexel::Value zero = counted("zero", [this](double) {
    if (calls == 2000) {
      vexel::Kernel::interrupt();
    }
    return 0.0;
  });
  const vexel::Value s =
      list({zero, zero, floats({0, 1}), kernel.integer(50), kernel.boolean(true)});
  ASSERT_EQ(generator.initialize(kv, s.handle()), 1);
  EXPECT_THROW(inHost([&] { generator.next(kv); }), vexel::Interrupted);
}

TEST_F(EnvelopeTest, ASearchUnderNoHatEndsWithAnError) {
  const vexel::Value zero = counted("zero", [](double) { return 0.0; });
  const vexel::Value falling = counted("falling", [](double x) { return 1.0 / x; });
  const vexel::Value slope = counted("slope", [](double x) { return -1.0 / (x * x); });
  const struct {
    const vexel::Value& density;
    const vexel::Value& derivative;
    std::vector<double> points;
  } cases[] = {{zero, zero, {0, 1}}, {falling, slope, {1, 1}}, {zero, zero, {2, 1, 3}}};
  for (const auto& c : cases) {
    STATS_EnvelopeGenerator_HW generator(kv);
    ASSERT_EQ(generator.initialize(kv, list({c.density, c.derivative, floats(c.points),
                                             kernel.integer(10), kernel.boolean(true)})
                                           .handle()),
              1);
    EXPECT_EQ(hostErrorText([&] { inHost([&] { generator.next(kv); }); }),
              "the base points make no envelope of the density: no variate in 10000 tries");
  }
}

}  // namespace
