// Laws of one's own: against the laws they are, and what they refuse.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <vexel/own_laws.hpp>

namespace {

using namespace vexel;
using ::testing::HasSubstr;
using Function = std::function<double(double)>;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double pi = 3.141592653589793;

double normalCdf(double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); }

struct Case {
  const char* name;
  Function f;
  DensityOptions options;
  Function cdf;
  double logIntegral;
  double mean;
  double var;
  bool logConcave;
  double resolution = 0;  // of the probability, by the doubles beside a pole
};

const Case cases[] = {
    {"normal",
     [](double x) { return std::exp(-x * x / 2); },
     {.support = {-infinity, infinity}},
     normalCdf,
     0.5 * std::log(2 * pi),
     0,
     1,
     true},
    {"normal of integral exp(3000)",
     [](double x) { return 3000 - x * x / 2; },
     {.support = {-infinity, infinity}, .log = true},
     normalCdf,
     3000 + 0.5 * std::log(2 * pi),
     0,
     1,
     true},
    {"narrow, far away",
     [](double x) { return -(x - 1000) * (x - 1000) * 5e5 - 2000; },
     {.support = {-infinity, infinity}, .log = true},
     [](double x) { return normalCdf((x - 1000) * 1e3); },
     -2000 + 0.5 * std::log(2 * pi) - std::log(1e3),
     1000,
     1e-6,
     true,
     1e-9},
    {"narrow, by its mode",
     [](double x) { return std::exp(-(x - 1e4) * (x - 1e4) / 2); },
     {.support = {-infinity, infinity}, .mode = 1e4},
     [](double x) { return normalCdf(x - 1e4); },
     0.5 * std::log(2 * pi),
     1e4,
     1,
     true},
    {"exponential",
     [](double x) { return std::exp(-x); },
     {.support = {0, infinity}},
     [](double x) { return -std::expm1(-x); },
     0,
     1,
     1,
     true},
    {"exponential by its derivative",
     [](double x) { return std::exp(-x); },
     {.support = {0, infinity}, .derivative = [](double x) { return -std::exp(-x); }},
     [](double x) { return -std::expm1(-x); },
     0,
     1,
     1,
     true},
    {"tiny constant",
     [](double) { return 3e-300; },
     {.support = {0, 1}},
     [](double x) { return x; },
     std::log(3e-300),
     0.5,
     1.0 / 12,
     true},
    {"Laplace",
     [](double x) { return std::exp(-std::abs(x - 1)); },
     {.support = {-infinity, infinity}},
     [](double x) { return x < 1 ? 0.5 * std::exp(x - 1) : 1 - 0.5 * std::exp(1 - x); },
     std::log(2.0),
     1,
     2,
     true},
    {"Cauchy",
     [](double x) { return 1 / (1 + x * x); },
     {.support = {-infinity, infinity}},
     [](double x) { return x < -1 ? std::atan(-1 / x) / pi : 0.5 + std::atan(x) / pi; },
     std::log(pi),
     NAN,
     NAN,
     false},
    {"Student, df 3",
     [](double x) { return 1 / ((1 + x * x / 3) * (1 + x * x / 3)); },
     {.support = {-infinity, infinity}},
     [](double x) {
       const double t = x / std::sqrt(3.0);
       return 0.5 + (t / (1 + t * t) + std::atan(t)) / pi;
     },
     std::log(pi* std::sqrt(3.0) / 2),
     0,
     3,
     false},
    {"tail of power 0.1",
     [](double x) { return std::pow(1 + x, -1.1); },
     {.support = {0, infinity}},
     [](double x) { return -std::expm1(-0.1 * std::log1p(x)); },
     std::log(10.0),
     infinity,
     infinity,
     false},
    {"log-normal",
     [](double x) { return std::exp(-std::log(x) * std::log(x) / 2) / x; },
     {.support = {0, infinity}},
     [](double x) { return normalCdf(std::log(x)); },
     0.5 * std::log(2 * pi),
     std::exp(0.5),
     (std::exp(1.0) - 1) * std::exp(1.0),
     false},
    {"pole at 0",
     [](double x) { return std::pow(x, -0.9); },
     {.support = {0, 1}},
     [](double x) { return std::pow(x, 0.1); },
     std::log(10.0),
     1.0 / 11,
     0.1 / 2.1 - 1.0 / 121,
     false},
    {"poles at both ends",
     [](double x) { return 1 / std::sqrt(x * (1 - x)); },
     {.support = {0, 1}},
     [](double x) { return 2 / pi * std::asin(std::sqrt(x)); },
     std::log(pi),
     0.5,
     0.125,
     false,
     1e-8},
    {"pole at 1",
     [](double x) { return 1 / std::sqrt(x - 1); },
     {.support = {1, 2}},
     [](double x) { return std::sqrt(x - 1); },
     std::log(2.0),
     4.0 / 3,
     4.0 / 45,
     false,
     2e-8},
    {"two modes",
     [](double x) { return std::exp(-x * x / 2) + std::exp(-(x - 100) * (x - 100) / 50); },
     {.support = {-infinity, infinity}},
     [](double x) { return (normalCdf(x) + 5 * normalCdf((x - 100) / 5)) / 6; },
     std::log(6 * std::sqrt(2 * pi)),
     500.0 / 6,
     126.0 / 6 + 5e4 / 36,
     false},
    {"ten modes",
     [](double x) { return 1 + std::sin(20 * pi * x); },
     {.support = {0, 1}},
     [](double x) { return x + (1 - std::cos(20 * pi * x)) / (20 * pi); },
     0,
     0.5 - 1 / (20 * pi),
     1.0 / 12 - 1 / (400 * pi * pi),
     false},
    {"step",
     [](double x) { return x < 0.3 ? 1.0 : 3.0; },
     {.support = {0, 1}},
     [](double x) { return (x < 0.3 ? x : 3 * x - 0.6) / 2.4; },
     std::log(2.4),
     0.5875,
     0.0640104166666666667,
     false},
    {"valley",
     [](double x) { return std::abs(x - 0.37); },
     {.support = {0, 1}},
     [](double x) {
       const double d = x - 0.37;
       return (0.37 * 0.37 + (d < 0 ? -d * d : d * d)) / (0.37 * 0.37 + 0.63 * 0.63);
     },
     std::log((0.37 * 0.37 + 0.63 * 0.63) / 2),
     NAN,
     NAN,
     false},
};

double distance(const std::vector<double>& sorted, const Function& cdf) {
  double worst = 0;
  const auto n = static_cast<double>(sorted.size());
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    worst = std::max(worst, std::abs(cdf(sorted[i]) - (static_cast<double>(i) + 0.5) / n));
  }
  return worst * std::sqrt(n);
}

TEST(OwnLaws, AreTheLawsOfTheirDensities) {
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const Density d(c.f, c.options);
    EXPECT_EQ(d.log_concave(), c.logConcave);
    EXPECT_LE(d.evaluations(), 2000U);
    EXPECT_LE(d.error(), 1e-10);
    EXPECT_NEAR(d.log_integral(), c.logIntegral, 1e-10 * std::max(1.0, std::abs(c.logIntegral)));
    const double slack = 1e-10 + c.resolution;
    for (int k = 1; k < 400; ++k) {
      const double p = k / 400.0;
      const double x = d.quantile(p);
      ASSERT_NEAR(c.cdf(x), p, slack) << x;
      ASSERT_NEAR(d.cdf(x), p, slack) << x;
      ASSERT_NEAR(c.cdf(d.isf(1 - p)), p, slack);
      const double slope = (d.cdf(x * (1 + 1e-5)) - d.cdf(x)) / (x * 1e-5);
      if (std::abs(x) > 0.1 && d.pdf(x) > 0.1 && std::abs(x) < 50 && k % 20 == 0) {
        EXPECT_NEAR(d.pdf(x) / slope, 1, 1e-2);
      }
    }
    for (int k = 3; k < 10; ++k) {
      const double q = std::pow(10.0, -k);
      EXPECT_NEAR(c.cdf(d.quantile(q)), q, slack);
      EXPECT_NEAR(c.cdf(d.isf(q)), 1 - q, slack);
      EXPECT_NEAR(d.sf(d.isf(q)), q, slack);
    }
    if (!std::isnan(c.mean)) {
      if (std::isinf(c.mean)) {
        EXPECT_EQ(d.mean(), c.mean);
      } else {
        EXPECT_NEAR(d.mean(), c.mean, 1e-9 * std::max(1.0, std::abs(c.mean)));
        EXPECT_NEAR(d.var() / c.var, 1, 1e-7);
      }
    }
    Random rng(5);
    Random again(5);
    std::vector<double> x = d.sample(1000000, rng);
    for (int i = 0; i < 2000; ++i) {
      ASSERT_EQ(d.sample(again), x[i]);
    }
    std::sort(x.begin(), x.end());
    EXPECT_LT(distance(x, c.cdf), 2.75);  // less than once in two million
  }
}

// The density falls to 0 at an end of the support, or has a pole there, as any power does.
TEST(OwnLaws, BeginAsPowers) {
  for (int k = -4; k <= 48; ++k) {
    const double power = k / 8.0;
    SCOPED_TRACE(power);
    for (const bool mirrored : {false, true}) {
      const Density d([=](double x) { return std::pow(mirrored ? 1 - x : x, power); },
                      {.support = {0, 1}});
      EXPECT_LE(d.error(), 1e-10);
      const double median = std::exp2(-1 / (power + 1));
      EXPECT_NEAR(d.quantile(0.5), mirrored ? 1 - median : median, 1e-8);
      Random rng(1);
      const std::vector<double> x = d.sample(1000, rng);
      EXPECT_NEAR(*std::ranges::max_element(x), 1, mirrored && power > 1 ? 1 : 0.05);
      EXPECT_GE(*std::ranges::min_element(x), 0);
    }
  }
}

TEST(OwnLaws, MomentsExistOrNot) {
  const Density cauchy([](double x) { return 1 / (1 + x * x); },
                       {.support = {-infinity, infinity}});
  EXPECT_TRUE(std::isnan(cauchy.mean()));
  EXPECT_TRUE(std::isnan(cauchy.var()));
  const Density student([](double x) { return std::pow(1 + x * x / 3, -2); },
                        {.support = {-infinity, infinity}});
  EXPECT_TRUE(std::isnan(student.skewness()));
  EXPECT_EQ(student.kurtosis(), infinity);
  const Density gamma([](double x) { return x * x * std::exp(-x); }, {.support = {0, infinity}});
  EXPECT_NEAR(gamma.skewness(), 2 / std::sqrt(3.0), 1e-8);
  EXPECT_NEAR(gamma.kurtosis(), 2, 1e-8);
}

TEST(OwnLaws, FollowDistributionFunctions) {
  struct {
    const char* name;
    Function f;
    CumulativeDistributionOptions options;
    double mean;
  } const rows[] = {
      {"normal", normalCdf, {}, 0},
      {"square", [](double x) { return x * x; }, {.support = {0, 1}}, 2.0 / 3},
      {"root", [](double x) { return std::sqrt(x); }, {.support = {0, 1}}, 1.0 / 3},
      {"exponential", [](double x) { return -std::expm1(-x); }, {.support = {0, infinity}}, 1},
      {"Cauchy", [](double x) { return 0.5 + std::atan(x) / pi; }, {}, NAN},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const CumulativeDistribution d(row.f, row.options);
    EXPECT_LE(d.evaluations(), 2000U);
    for (int k = 1; k < 400; ++k) {
      const double x = d.quantile(k / 400.0);
      ASSERT_NEAR(row.f(x), k / 400.0, 1e-10);
      ASSERT_NEAR(d.cdf(x), k / 400.0, 1e-10);
    }
    if (std::isnan(row.mean)) {
      EXPECT_TRUE(std::isnan(d.mean()));
    } else {
      EXPECT_NEAR(d.mean(), row.mean, 1e-8);
    }
    Random rng(6);
    std::vector<double> x = d.sample(1000000, rng);
    std::sort(x.begin(), x.end());
    EXPECT_LT(distance(x, row.f), 2.75);
  }
  // A jump is a point of its own.
  const CumulativeDistribution jump(
      [](double x) { return x < 0.3   ? x
                            : x < 0.6 ? x + 0.1
                                      : 0.7 + (x - 0.6) * 0.75; },
      {.support = {0, 1}, .density = [](double x) { return x < 0.6 ? 1.0 : 0.75; }});
  EXPECT_DOUBLE_EQ(jump.quantile(0.35), 0.3);
  EXPECT_NEAR(jump.quantile(0.2), 0.2, 1e-10);
  EXPECT_NEAR(jump.quantile(0.5), 0.4, 1e-10);
  EXPECT_EQ(jump.pdf(0.9), 0.75);
  Random rng(7);
  const std::vector<double> x = jump.sample(100000, rng);
  EXPECT_NEAR(static_cast<double>(std::count(x.begin(), x.end(), jump.quantile(0.35))), 10000, 475);
}

template <typename F>
std::string refusal(F make) {
  try {
    make();
  } catch (const std::invalid_argument& e) {
    return e.what();
  }
  return "accepted";
}

TEST(OwnLaws, SayWhatIsWrongWithAFunction) {
  const auto density = [](Function f, Interval support) {
    return refusal([&] { Density(f, {.support = support}); });
  };
  const Interval unit{0, 1};
  EXPECT_THAT(density([](double x) { return std::sin(7 * x); }, unit), HasSubstr("is negative"));
  EXPECT_THAT(density([](double x) { return std::log(x - 0.5); }, unit), HasSubstr("not a number"));
  EXPECT_THAT(density([](double x) { return 1 / x; }, unit), HasSubstr("towards 0"));
  EXPECT_THAT(density([](double x) { return 1 / (1 + x); }, {0, infinity}),
              HasSubstr("mass is infinite"));
  EXPECT_THAT(density([](double) { return 1.0; }, {-infinity, infinity}),
              HasSubstr("mass is infinite"));
  EXPECT_THAT(density([](double x) { return std::exp(x); }, {0, infinity}), HasSubstr("infinite"));
  EXPECT_THAT(density([](double) { return 0.0; }, unit), HasSubstr("0 wherever"));
  EXPECT_THAT(density([](double x) { return 1 / std::abs(x - 0.37); }, unit),
              HasSubstr("too rough"));
  EXPECT_THAT(density([](double x) { return std::fmod(1e7 * x, 1.0); }, unit),
              HasSubstr("too rough"));
  EXPECT_THAT(density([](double) { return 1.0; }, {1, 0}), HasSubstr("support"));
  EXPECT_THAT(density([](double) { return 1.0; }, {NAN, 1}), HasSubstr("support"));
  const auto cdf = [](Function f) {
    return refusal([&] { CumulativeDistribution(f, {.support = {0, 1}}); });
  };
  EXPECT_THAT(cdf([](double x) { return 0.5 + 0.5 * std::sin(3 * x); }),
              HasSubstr("falls between"));
  EXPECT_THAT(cdf([](double x) { return 2 * x; }), HasSubstr("must be in [0, 1]"));
  EXPECT_THAT(cdf([](double x) { return 0.5 * x; }), HasSubstr("rises by"));
  EXPECT_THAT(cdf([](double) { return NAN; }), HasSubstr("must be in [0, 1]"));
}

TEST(OwnLaws, LetTheFunctionsExceptionsThrough) {
  struct Mine {};
  EXPECT_THROW(Density([](double) -> double { throw Mine(); }, {.support = {0, 1}}), Mine);
  // One that is no longer what it was when the law was built is found out.
  auto factor = std::make_shared<double>(1.0);
  const Density d([factor](double x) { return *factor * std::exp(-x * x); },
                  {.support = {-infinity, infinity}});
  *factor = 10;
  Random rng(1);
  EXPECT_THROW(d.sample(10000, rng), std::domain_error);
}

TEST(OwnLaws, VectorizedFunctionsGiveTheSame) {
  std::size_t calls = 0;
  const Density one([](double x) { return std::exp(-x * x * x * x); }, {.support = {-5, 5}});
  const Density many(
      [&](std::span<const double> x, std::span<double> y) {
        ++calls;
        std::transform(x.begin(), x.end(), y.begin(),
                       [](double t) { return std::exp(-t * t * t * t); });
      },
      {.support = {-5, 5}});
  EXPECT_LT(calls, 400U);
  Random a(1);
  Random b(1);
  EXPECT_EQ(one.sample(10000, a), many.sample(10000, b));
  EXPECT_EQ(one.cdf(0.3), many.cdf(0.3));
  EXPECT_NEAR(one.pdf(0.3), std::exp(-0.0081) / (2 * std::tgamma(1.25)), 1e-10);
  EXPECT_NEAR(one.log_likelihood({0.3, -1}), one.logpdf(0.3) + one.logpdf(-1), 1e-14);
  EXPECT_EQ(one.quantile(0), -5);
  EXPECT_EQ(one.isf(0), 5);
  EXPECT_THROW(one.quantile(1.5), std::domain_error);
  EXPECT_TRUE(std::isnan(one.quantile(NAN)));
}

}  // namespace
