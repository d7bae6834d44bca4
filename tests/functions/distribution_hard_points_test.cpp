// Points at which libraries in wide use throw, give 0 or are wrong in the first digits.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "vexel/distributions.hpp"

namespace {

using namespace vexel;

template <typename L>
double call(const L& law, const std::string& method, double x) {
  return method == "cdf"      ? law.cdf(x)
         : method == "logcdf" ? law.logcdf(x)
         : method == "logsf"  ? law.logsf(x)
                              : law.quantile(x);
}

double value(const std::string& name, const std::string& method, const std::vector<double>& p,
             double x) {
  const auto whole = [&](std::size_t i) { return static_cast<std::int64_t>(p[i]); };
  return name == "Beta"                  ? call(Beta(p[0], p[1]), method, x)
         : name == "Gamma"               ? call(Gamma(p[0], p[1]), method, x)
         : name == "Normal"              ? call(Normal(p[0], p[1]), method, x)
         : name == "StudentT"            ? call(StudentT(p[0]), method, x)
         : name == "Poisson"             ? call(Poisson(p[0]), method, x)
         : name == "Binomial"            ? call(Binomial(whole(0), p[1]), method, x)
         : name == "NonCentralChiSquare" ? call(NonCentralChiSquare(p[0], p[1]), method, x)
         : name == "NonCentralStudentT"  ? call(NonCentralStudentT(p[0], p[1]), method, x)
                                         : NAN;
}

TEST(DistributionHardPoints, HaveTheirValues) {
  std::ifstream file(TEST_DATA_DIR "/hard_points.txt");
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) {
      continue;
    }
    std::istringstream words(line);
    std::string name;
    std::string method;
    words >> name >> method;
    std::vector<double> numbers;
    for (std::string word; words >> word;) {
      numbers.push_back(std::stod(word));
    }
    const double exact = numbers.back();
    numbers.pop_back();
    const double x = numbers.back();
    numbers.pop_back();
    // The conditions at these points are up to some hundreds.
    EXPECT_NEAR(value(name, method, numbers, x), exact, 2e-12 * std::fabs(exact)) << line;
    ++count;
  }
  EXPECT_GE(count, 11);
}

// The median within a spacing of the doubles and no sooner than it is reached, for every pair of
// whole parameters: where one library's inverse throws.
TEST(DistributionHardPoints, BetaMediansOfWholeParameters) {
  for (int a = 1; a <= 40; ++a) {
    for (int b = 1; b <= 40; ++b) {
      const Beta law(a, b);
      EXPECT_NEAR(law.cdf(law.quantile(0.5)), 0.5, 3e-15) << a << " " << b;
    }
  }
}

// The tail at the quantile is the probability, or the probability lies between the tails of the
// doubles around it; 0 and infinity stand for roots that no double is.
template <typename L>
void expectRoundTrip(const L& law, double p) {
  for (const bool upper : {false, true}) {
    const double x = upper ? law.isf(p) : law.quantile(p);
    const auto tail = [&](double t) { return upper ? law.sf(t) : law.cdf(t); };
    const double width = 8e-16 * std::fabs(x) + 1e-323;
    const double largest = std::numeric_limits<double>::max();
    const double a = tail(std::isinf(x) && x > 0 ? largest : x - width);
    const double b = tail(std::isinf(x) && x < 0 ? -largest : x + width);
    EXPECT_TRUE(std::min(a, b) <= p * (1 + 1e-10) && std::max(a, b) >= p * (1 - 1e-10))
        << L::name << (upper ? " isf(" : " quantile(") << p << ") = " << x << ", tails " << a << " "
        << b;
  }
}

TEST(DistributionHardPoints, QuantilesAtExtremeParametersGoBackToTheProbability) {
  std::mt19937_64 random(71);
  const auto unit = [&] { return std::uniform_real_distribution<double>()(random); };
  for (int i = 0; i < 2000; ++i) {
    const double p = i % 2 == 0 ? unit() : std::pow(10.0, -300.0 * unit());
    const double a = std::pow(10.0, 24.0 * unit() - 12.0);
    const double b = std::pow(10.0, 24.0 * unit() - 12.0);
    expectRoundTrip(InverseGaussian(a, b), p);
    expectRoundTrip(Gamma(a), p);
    expectRoundTrip(ChiSquare(a), p);
    expectRoundTrip(Beta(a, b), p);
    expectRoundTrip(StudentT(a), p);
    expectRoundTrip(Pareto(a, 1.0), p);
    expectRoundTrip(Weibull(a, 1.0), p);
    expectRoundTrip(LogNormal(0.0, std::pow(a, 0.2)), p);
  }
}

TEST(DistributionHardPoints, RootsBelowTheLeastDoubleAreZero) {
  EXPECT_EQ(ChiSquare(0.0017).quantile(1e-200), 0.0);
  EXPECT_EQ(Gamma(1e-300).isf(1e-5), 0.0);
  EXPECT_EQ(Beta(1e-300, 1e-300).quantile(0.3), 0.0);
  EXPECT_EQ(Beta(1e-300, 1e-300).quantile(0.7), 1.0);
  EXPECT_EQ(Beta(1e-300, 1e-300).cdf(5e-324), 0.5);
  EXPECT_NEAR(Power(0.021, 26.0).cdf(5e-324), 1.51654e-07, 1e-12);
  EXPECT_GT(Pareto(0.6, 0.1).sf(std::numeric_limits<double>::max()), 0.0);
  EXPECT_NEAR(InverseGaussian(1.0, 1e-10).isf(1e-50), 1.68342e12, 1e7);
}

// Integrals over the normal variable in 30 digits; the third one has a closed form.
TEST(DistributionHardPoints, NonCentralLawsOfGreatNoncentralityAndFarTails) {
  EXPECT_NEAR(NonCentralStudentT(3.0, 1e4).cdf(1.2e4), 0.55529189583455026, 1e-14);
  EXPECT_NEAR(NonCentralFRatio(2.0, 3.0, 1e8).cdf(1e8), 0.68227032514322424, 1e-14);
  EXPECT_NEAR(NonCentralStudentT(1.0, 0.5).sf(1e155) * 1e155, 0.55676109973189249, 1e-14);
  EXPECT_NEAR(NonCentralStudentT(1.63, 0.015).logsf(1e180), -676.467542908, 1e-8);
  EXPECT_NEAR(NonCentralChiSquare(2.0, 1e15).quantile(0.5), 1e15 + 1.0, 1.0);
  for (const double nc : {1e3, 1e6, 1e10, 1e13, 1e20, 1e300}) {
    EXPECT_NEAR(NonCentralStudentT(3.0, nc).quantile(0.5) / nc, 1.12604476030, 2.0 / nc + 1e-11)
        << nc;
    EXPECT_NEAR(NonCentralChiSquare(3.0, nc).quantile(0.5) / nc, 1.0, 3.0 / nc + 1e-15) << nc;
  }
  const NonCentralBeta beta(1.2, 119.0, 2e7);
  EXPECT_NEAR(beta.cdf(beta.quantile(1e-20)) / 1e-20, 1.0, 1e-8);
  EXPECT_TRUE(std::isnan(NonCentralFRatio(2.0, 3.0, 1e300).quantile(0.5)));
}

}  // namespace
