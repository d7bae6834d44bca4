// Variates of every law against its own distribution function, and one by one against arrays.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vexel/distributions.hpp>
#include <vexel/ordering.hpp>

namespace {

using namespace vexel;

constexpr std::size_t size = 1000000;

// Kolmogorov and Smirnov's distance times sqrt(n) over 1000 quantiles, where a share counts for the
// interval that rounds to the quantile.  Above 2.75 less than once in two million; seeds are fixed.
template <typename L>
double distance(const L& law, std::vector<double> x) {
  x = sort(x);
  constexpr double infinity = std::numeric_limits<double>::infinity();
  double worst = 0;
  for (int i = 1; i < 1000; ++i) {
    const double q = law.quantile(i / 1000.0);
    const auto count = static_cast<double>(std::upper_bound(x.begin(), x.end(), q) - x.begin());
    const double share = count / static_cast<double>(x.size());
    worst = std::max({worst, law.cdf(q) - share, share - law.cdf(std::nextafter(q, infinity))});
  }
  return worst * std::sqrt(static_cast<double>(x.size()));
}

// Chi-square over up to 200 cells that end at quantiles, standardized: (X - f) / sqrt(2 f).  Above
// 6 less than once in a million.
template <typename L>
double chiSquare(const L& law, std::vector<double> x) {
  x = sort(x);
  const auto n = static_cast<double>(x.size());
  double sum = 0;
  int cells = 0;
  double upTo = 0;
  std::ptrdiff_t counted = 0;
  for (int c = 1; c <= 200; ++c) {
    const double end = law.quantile(c / 200.0);
    const double p = c == 200 ? 1 : law.cdf(end);
    const double expected = (p - upTo) * n;
    if (expected < 20 && c < 200) {
      continue;
    }
    const std::ptrdiff_t observed = std::upper_bound(x.begin(), x.end(), end) - x.begin() - counted;
    const double miss = static_cast<double>(observed) - expected;
    sum += miss * miss / std::max(expected, 1.0);
    cells += 1;
    upTo = p;
    counted += observed;
  }
  return cells == 1 ? sum : (sum - (cells - 1)) / std::sqrt(2.0 * (cells - 1));
}

template <typename L>
void expectLaw(const L& law, const char* name) {
  SCOPED_TRACE(name);
  Random rng(20240607);
  Random again(20240607);
  const std::vector<double> x = law.sample(size, rng);
  for (std::size_t i = 0; i < 3000; ++i) {
    ASSERT_EQ(law.sample(again), x[i]) << i;  // no variate is NaN, and one by one gives the same
  }
  if constexpr (L::discrete) {
    EXPECT_LT(chiSquare(law, x), 6);
  } else {
    EXPECT_LT(distance(law, x), 2.75);
  }
  const auto [least, most] = std::minmax_element(x.begin(), x.end());
  EXPECT_GE(*least, law.support().low);
  EXPECT_LE(*most, law.support().high);
}

#define EXPECT_LAW(...) expectLaw(__VA_ARGS__, #__VA_ARGS__)

TEST(Samples, OfElementaryLaws) {
  EXPECT_LAW(Uniform(-1, 3));
  EXPECT_LAW(Normal(1, 2));
  EXPECT_LAW(LogNormal(0, 2));
  EXPECT_LAW(Exponential(3));
  EXPECT_LAW(Cauchy(1, 2));
  EXPECT_LAW(Laplace(0, 1));
  EXPECT_LAW(Logistic(1, 2));
  EXPECT_LAW(Gumbel(0, 1));
  EXPECT_LAW(Weibull(0.3, 2));
  EXPECT_LAW(Weibull(20, 1));
  EXPECT_LAW(Pareto(0.5, 2));
  EXPECT_LAW(Power(0.1, 3));
  EXPECT_LAW(Rayleigh(2));
  EXPECT_LAW(Maxwell(2));
  EXPECT_LAW(Triangular(0, 2, 2));
  EXPECT_LAW(Triangular(0, 2, 0));
  EXPECT_LAW(Triangular(0, 2, 0.5));
  EXPECT_LAW(InverseGaussian(1, 1));
  EXPECT_LAW(InverseGaussian(1000, 0.01));
  EXPECT_LAW(InverseGaussian(1, 1e6));
  EXPECT_LAW(Moyal(1, 2));
}

TEST(Samples, OfTheGammaAndBetaFamilies) {
  for (const double shape : {0.01, 0.5, 1.0, 2.5, 40.0, 1e8}) {
    EXPECT_LAW(Gamma(shape, 2));
  }
  EXPECT_LAW(ChiSquare(1));
  EXPECT_LAW(ChiSquare(0.3));
  EXPECT_LAW(ExponentialPower(0, 1, 1));
  EXPECT_LAW(ExponentialPower(0, 1, 0.1));
  EXPECT_LAW(ExponentialPower(1, 2, 8));
  EXPECT_LAW(Beta(2, 3));
  EXPECT_LAW(Beta(0.5, 0.5));
  EXPECT_LAW(Beta(0.01, 0.02));
  EXPECT_LAW(Beta(1e4, 3));
  EXPECT_LAW(Beta(0.1, 50));
  for (const double df : {0.3, 1.0, 5.0, 1e6}) {
    EXPECT_LAW(StudentT(df));
  }
  EXPECT_LAW(FRatio(3, 7));
  EXPECT_LAW(FRatio(0.1, 0.2));
  EXPECT_LAW(FRatio(1e4, 1e5));
}

TEST(Samples, OfDiscreteLaws) {
  for (const double p : {0.0, 1e-5, 0.3, 1.0}) {
    EXPECT_LAW(Bernoulli(p));
  }
  EXPECT_LAW(Binomial(0, 0.5));
  EXPECT_LAW(Binomial(10, 0.95));
  EXPECT_LAW(Binomial(50, 0.3));
  EXPECT_LAW(Binomial(60, 0.45));
  EXPECT_LAW(Binomial(100, 0.7));
  EXPECT_LAW(Binomial(1000, 0.8));
  EXPECT_LAW(Binomial(1000000, 0.4));
  EXPECT_LAW(Binomial(1000000000000, 0.001));
  for (const double mean : {0.0, 1e-3, 7.9, 99.9, 100.1, 1e3, 1e10}) {
    EXPECT_LAW(Poisson(mean));
  }
  for (const double p : {1e-9, 0.2, 0.9, 1.0}) {
    EXPECT_LAW(Geometric(p));
  }
  EXPECT_LAW(NegativeBinomial(0, 0.5));
  EXPECT_LAW(NegativeBinomial(0.01, 0.001));
  EXPECT_LAW(NegativeBinomial(2.5, 0.3));
  EXPECT_LAW(NegativeBinomial(1e4, 0.5));
  EXPECT_LAW(Hypergeometric(10, 0, 5));
  EXPECT_LAW(Hypergeometric(100, 30, 20));
  EXPECT_LAW(Hypergeometric(1000, 900, 950));
  EXPECT_LAW(Hypergeometric(200, 100, 120));
  EXPECT_LAW(Hypergeometric(3000, 1400, 1600));
  EXPECT_LAW(Hypergeometric(1000000000, 400000000, 1000000));
  EXPECT_LAW(Hypergeometric(1000000000, 600000000, 999000000));
  EXPECT_LAW(DiscreteUniform(-3, 7));
  EXPECT_LAW(DiscreteUniform(0, 2000000000));
  const std::vector<double> x = {9, 2, 1, 2, 5};
  const std::vector<double> weights = {0.5, 2, 1, 3, 0};
  EXPECT_LAW(Empirical(x));
  EXPECT_LAW(Empirical(x, weights));
}

TEST(Samples, OfNonCentralLaws) {
  EXPECT_LAW(NonCentralChiSquare(2.5, 3));
  EXPECT_LAW(NonCentralChiSquare(0.3, 3));
  EXPECT_LAW(NonCentralChiSquare(1, 100));
  EXPECT_LAW(NonCentralChiSquare(0.7, 0));
  EXPECT_LAW(NonCentralChiSquare(0.9, 1e4));
  EXPECT_LAW(NonCentralBeta(2, 3, 4));
  EXPECT_LAW(NonCentralBeta(0.2, 0.3, 4));
  EXPECT_LAW(NonCentralFRatio(3, 5, 2));
  EXPECT_LAW(NonCentralFRatio(0.4, 5, 200));
  EXPECT_LAW(NonCentralStudentT(5, 1));
  EXPECT_LAW(NonCentralStudentT(0.5, -3));
  EXPECT_LAW(NonCentralStudentT(100, 20));
}

// Where doubles end the law is that of the rounded variate.
TEST(Samples, AtTheEndsOfDoubles) {
  Random rng(1);
  const std::vector<double> g = Gamma(1e-3).sample(size, rng);
  const double zero = Gamma(1e-3).cdf(std::numeric_limits<double>::denorm_min());
  const auto zeros = static_cast<double>(std::count(g.begin(), g.end(), 0.0));
  EXPECT_NEAR(zeros / size, zero, 3e-3);  // the least double has a share of 0.0003 of its own
  for (const double x : StudentT(1e-3).sample(10000, rng)) {
    EXPECT_FALSE(std::isnan(x));
  }
}

}  // namespace
