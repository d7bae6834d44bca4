// Points at which libraries in wide use throw, give 0 or are wrong in the first digits.
#include <gtest/gtest.h>

#include <algorithm>
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
}

void expectClose(double value, double expected, const char* where) {
  EXPECT_LE(std::fabs(value - expected), 1e-14 * std::fabs(expected)) << where << ": " << value;
}
#define EXPECT_CLOSE(value, expected) expectClose(value, expected, #value)

// Parameters and points at both ends of the doubles; references at 60 digits.
TEST(DistributionHardPoints, AtTheEndsOfDoubles) {
  EXPECT_CLOSE(NonCentralFRatio(1e300, 3.0, 1e5).quantile(0.3), 0.81858274888612384);
  EXPECT_CLOSE(NonCentralFRatio(1e300, 3.0, 1e5).isf(0.3), 2.1072561889158327);
  EXPECT_CLOSE(NonCentralFRatio(2.0, 3.0, 1e300).quantile(0.5), 6.3398840110022109e+299);
  EXPECT_CLOSE(Beta(7.0, 1.7083620752308099e129).pdf(2.5996442947684129e-166),
               1.8205831756767482e-92);
  EXPECT_CLOSE(NonCentralChiSquare(3.0, 1e-30).sf(300.0), 9.9487583463277089e-65);
  EXPECT_CLOSE(
      InverseGaussian(75.790707175560158, 1.4456116015395835e-191).sf(8.0163026180493632e+130),
      1.0714670551696174e-161);
  EXPECT_CLOSE(Triangular(0.0, 16.0, 3e-267).cdf(1e-3), 0.00012499609375);
  EXPECT_EQ(FRatio(2.7658907254591114e157, 9.6467880847098701).pdf(6.1951457074656864e-174), 0.0);
  const FRatio small(1.2299160350895413, 11792861907.890116);
  EXPECT_NEAR(small.quantile(small.cdf(2.137e-312)) / 2.137e-312, 1.0, 1e-11);  // has 11 digits
  const FRatio huge(131139547529647.77, 2.4036220401331613e-157);
  EXPECT_NEAR(std::log(huge.quantile(huge.cdf(1.5777556481942191e131))), 302.0946, 1e-3);
  EXPECT_CLOSE(StudentT(8.263130169311938e+71).logpdf(-1.8825087761298392e+92),
               -1.0715029065430773e+74);
  EXPECT_CLOSE(Gamma(2.2544877624707553e-251, 231387201.9455604).sf(5.393358832205559e-289),
               1.5385623475452858e-248);
  EXPECT_CLOSE(Gamma(5.351533396347591e-139).logsf(8.635565319246672e+276),
               -8.635565319246672e+276);
  EXPECT_CLOSE(Cauchy(-0.6070412122807988, 3.531977309808197e-233).pdf(0.00011782235964488467),
               3.049742055460404e-233);
  EXPECT_CLOSE(Cauchy(0.0, 8.514264162365086e-252).logcdf(-2.2105659907432857e+138),
               -897.8044218469295);
  EXPECT_CLOSE(Exponential(8.731767218432356e+231).logcdf(3.7024164259998926e-265),
               -1142.940188210342);
  EXPECT_CLOSE(Uniform(0.0, 4.4377004682100866e+105).logcdf(1.851018737668842e-276),
               -878.1593206039094);
  EXPECT_EQ(Exponential(1e-289).logcdf(1e97), 0.0);
  EXPECT_CLOSE(
      NonCentralBeta(1.7902674678421699e-304, 0.00049286243968859819, 8.0).cdf(0.99999999994878075),
      0.0289124378343303134);
  EXPECT_CLOSE(NonCentralFRatio(6.2058011832128777e-132, 0.00014181138252902515, 2432)
                   .sf(1.4644773822008457e+175),
               0.99276558804878777);
  const Weibull weibull(8.2912715455965951e-06, 4.802344629688118e161);
  EXPECT_NEAR(weibull.quantile(weibull.cdf(2.9e-301)) / 2.9e-301, 1.0, 1e-7);
  EXPECT_TRUE(std::isfinite(NonCentralBeta(2.4e191, 2.5, 3.5e191).quantile(0.9)));  // in no time
}

// The lower tail for b = 1 is x^a exp(-nc y / 2), for b = 2 the same times 1 + (a + nc x / 2) y.
TEST(DistributionHardPoints, NonCentralBetaByItsClosedForms) {
  for (const double nc : {1e-3, 1.0, 1e3, 1e6, 1e9, 1e12, 1e15, 1e20, 1e30, 1e100, 1e300}) {
    for (const double a : {0.01, 1.5, 1e4, 1e10, 1e30, 1e200}) {
      for (const double y : {0.75, 1e-2, 1e-9}) {
        const double x = 1.0 - y;
        const double first = a * std::log(x);
        const double second = -0.5 * nc * (1.0 - x);
        const double growth = (a + 0.5 * nc * x) * (1.0 - x);
        const double parts[] = {first + second, first + second + std::log1p(growth)};
        for (const double b : {1.0, 2.0}) {
          const double log = parts[static_cast<int>(b) - 1];
          if (b == 2.0 && log > -0.1) {
            continue;  // the sum above cancels
          }
          const double condition = std::fmax(a + nc, 1.0);
          EXPECT_NEAR(NonCentralBeta(a, b, nc).logcdf(x), log, 1e-14 * condition)
              << a << " " << b << " " << nc << " " << x;
        }
      }
    }
  }
}

// The upper half of a law narrower than the rounding of 1 - x.
TEST(DistributionHardPoints, NarrowLawsHaveQuantilesOnBothSides) {
  const FRatio law(5.2000841310894166e28, 1e16);
  EXPECT_NEAR(law.isf(0.5), 1.0, 1e-15);
  for (const double p : {0.2, 1e-3, 1e-16, 1e-91}) {
    EXPECT_NEAR(law.isf(p) - 1.0, 1.0 - law.quantile(p), 1e-5 * (law.isf(p) - 1.0)) << p;
    EXPECT_GT(law.isf(p), 1.0 + 1e-8) << p;
  }
}

}  // namespace
