// Properties of every law: tails, quantiles, ends, moments, arrays, fits,
// refusals.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <vector>

#include "vexel/distributions.hpp"

namespace {

using namespace vexel;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Parameters for which every moment up to the fourth is finite.
template <typename L>
std::vector<L> cases();
#define CASES(L, ...)      \
  template <>              \
  std::vector<L> cases() { \
    return {__VA_ARGS__};  \
  }
CASES(Normal, Normal(), Normal(-3.0, 0.01))
CASES(LogNormal, LogNormal(0.0, 0.3), LogNormal(2.0, 0.2))
CASES(Uniform, Uniform(), Uniform(-7.0, 1e3))
CASES(Exponential, Exponential(), Exponential(1e-3))
CASES(Gamma, Gamma(2.5, 2.0), Gamma(0.7), Gamma(4e4))
CASES(Beta, Beta(2.0, 3.5), Beta(0.8, 0.6), Beta(50.0, 3e3))
CASES(ChiSquare, ChiSquare(3.0), ChiSquare(250.5))
CASES(StudentT, StudentT(30.0), StudentT(1e5))
CASES(FRatio, FRatio(5.0, 60.0), FRatio(200.0, 1e3))
CASES(Cauchy, Cauchy(), Cauchy(4.0, 3.0))
CASES(Laplace, Laplace(), Laplace(-1.0, 7.0))
CASES(Logistic, Logistic(), Logistic(1e3, 2.0))
CASES(Gumbel, Gumbel(), Gumbel(5.0, 0.5))
CASES(Weibull, Weibull(1.5), Weibull(0.8, 3.0), Weibull(7.0, 1e6))
CASES(Pareto, Pareto(40.0), Pareto(90.0, 2.0))
CASES(Power, Power(3.0), Power(0.9, 5.0))
CASES(Rayleigh, Rayleigh(), Rayleigh(30.0))
CASES(Maxwell, Maxwell(), Maxwell(0.2))
CASES(Triangular, Triangular(0.0, 1.0, 0.3), Triangular(-2.0, 5.0, 5.0))
CASES(InverseGaussian, InverseGaussian(1.0, 5.0), InverseGaussian(3.0, 200.0))
CASES(Moyal, Moyal(), Moyal(-2.0, 3.0))
CASES(ExponentialPower, ExponentialPower(0.0, 1.0, 1.5), ExponentialPower(2.0, 0.1, 0.5))
CASES(NonCentralChiSquare, NonCentralChiSquare(3.0, 4.0), NonCentralChiSquare(2.0, 0.0))
CASES(NonCentralBeta, NonCentralBeta(2.0, 3.0, 4.0), NonCentralBeta(5.0, 1.5, 100.0))
CASES(NonCentralFRatio, NonCentralFRatio(5.0, 60.0, 3.0), NonCentralFRatio(20.0, 90.0, 50.0))
CASES(NonCentralStudentT, NonCentralStudentT(40.0, 1.5), NonCentralStudentT(900.0, -4.0))
CASES(Bernoulli, Bernoulli(0.3), Bernoulli(1e-9))
CASES(Binomial, Binomial(20, 0.3), Binomial(5000, 0.01), Binomial(1, 0.5))
CASES(Poisson, Poisson(0.4), Poisson(7.5), Poisson(1e4))
CASES(Geometric, Geometric(0.3), Geometric(0.9))
CASES(NegativeBinomial, NegativeBinomial(2.5, 0.4), NegativeBinomial(40.0, 0.7))
CASES(Hypergeometric, Hypergeometric(50, 20, 10), Hypergeometric(100000, 30000, 500))
CASES(DiscreteUniform, DiscreteUniform(-3, 8), DiscreteUniform(5, 5))
CASES(Empirical, Empirical(Data({3.0, 1.0, 2.0, 2.0})),
      Empirical(Data({3.0, 1.0, 2.5}), Data({1.0, 0.5, 2.25})))
#undef CASES

template <typename F>
void forEachCase(F f) {
  Laws::forEach([&]<typename L>() {
    for (const L &law : cases<L>()) {
      SCOPED_TRACE(L::name);
      f(law);
    }
  });
}

template <typename L>
double density(const L &law, double x) {
  if constexpr (L::discrete) {
    return law.pmf(x);
  } else {
    return law.pdf(x);
  }
}

std::vector<double> probabilities() {
  std::vector<double> p{1e-300, 1e-70, 1e-20, 1e-9, 1e-3};
  for (int i = 1; i < 20; ++i) {
    p.push_back(0.05 * i);
  }
  p.insert(p.end(), {0.999, 1.0 - 1e-9, 1.0 - 0x1p-53});
  return p;
}

TEST(Distributions, TailsAreComplementsAndRise) {
  forEachCase([](const auto &law) {
    double last = -infinity;
    double lastCdf = 0.0;
    for (const double p : probabilities()) {
      const double x = law.quantile(p);
      EXPECT_NEAR(law.cdf(x) + law.sf(x), 1.0, 5e-15) << x;
      EXPECT_GE(x, last);
      EXPECT_GE(law.cdf(x), lastCdf * (1.0 - 1e-13)) << x;
      const double unit = 1e-14 * (2.0 + std::fmin(700.0, -law.logcdf(x) - law.logsf(x)));
      EXPECT_NEAR(std::exp(law.logcdf(x)), law.cdf(x), unit * law.cdf(x)) << x;
      EXPECT_NEAR(std::exp(law.logsf(x)), law.sf(x), unit * law.sf(x) + 1e-300) << x;
      last = x;
      lastCdf = law.cdf(x);
    }
  });
}

TEST(Distributions, QuantilesInvertTheTails) {
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> uniform;
  forEachCase([&]<typename L>(const L &law) {
    std::vector<double> points = probabilities();
    for (int i = 0; i < 200; ++i) {
      points.push_back(std::exp(-40.0 * uniform(random) * uniform(random)));
    }
    for (const double p : points) {
      const double x = law.quantile(p);
      const double y = law.isf(p);
      if constexpr (L::discrete) {
        const auto before = [&](double k) { return law.cdf(k) < p; };
        EXPECT_FALSE(before(x)) << p;
        EXPECT_TRUE(x == law.support().low || before(std::nextafter(x, -infinity))) << p;
        EXPECT_LE(law.sf(y), p);
        EXPECT_TRUE(y == law.support().low || law.sf(std::nextafter(y, -infinity)) > p) << p;
      } else {
        // Rounding of parameters and arguments is allowed to be felt, or the
        // distance of doubles.
        const auto expectTail = [&](auto tail, double at) {
          const double slope = std::fabs(at) * law.pdf(at) / p;  // of log p in log x
          const double unit = p * 1e-14 * (2.0 - std::log(p) + slope);
          const double below = tail(std::nextafter(at, -infinity));
          const double above = tail(std::nextafter(at, infinity));
          EXPECT_TRUE(std::fabs(tail(at) - p) <= unit || (below - p) * (above - p) <= 0.0)
              << at << " " << p << " " << tail(at);
        };
        expectTail([&](double t) { return law.cdf(t); }, x);
        expectTail([&](double t) { return law.sf(t); }, y);
      }
    }
    const Interval middle = law.interval(0.9);
    EXPECT_EQ(middle.low, law.quantile(0.5 * (1.0 - 0.9)));
    EXPECT_EQ(middle.high, law.isf(0.5 * (1.0 - 0.9)));
  });
}

TEST(Distributions, EndsAndStrangers) {
  forEachCase([]<typename L>(const L &law) {
    const Interval ends = law.support();
    EXPECT_EQ(law.quantile(0.0), ends.low);
    EXPECT_EQ(law.isf(1.0), ends.low);
    EXPECT_EQ(law.quantile(1.0), ends.high);
    EXPECT_EQ(law.isf(0.0), ends.high);
    EXPECT_EQ(law.cdf(ends.high), 1.0);
    EXPECT_EQ(law.sf(ends.high), 0.0);
    EXPECT_EQ(law.logsf(ends.high), -infinity);
    EXPECT_EQ(law.cdf(-infinity), 0.0);
    EXPECT_EQ(law.logcdf(-infinity), -infinity);
    EXPECT_EQ(law.logcdf(infinity), 0.0);
    for (const double outside : {ends.low - 1.0, ends.high + 1.0}) {
      EXPECT_EQ(density(law, outside), 0.0);
    }
    for (const double value :
         {density(law, nan), law.cdf(nan), law.logsf(nan), law.quantile(nan), law.isf(nan)}) {
      EXPECT_TRUE(std::isnan(value));
    }
    if constexpr (!L::discrete) {  // the limit from within
      const double typical = law.pdf(law.median());
      for (const double end : {ends.low, ends.high}) {
        const double inside = std::nextafter(end, law.median());
        if (std::isfinite(end) && law.pdf(end) < 1e300) {
          EXPECT_NEAR(law.pdf(end), law.pdf(inside), 1e-4 * typical) << end;
        }
      }
    }
    EXPECT_THROW(law.quantile(-0.1), std::domain_error);
    EXPECT_THROW(law.isf(std::nextafter(1.0, 2.0)), std::domain_error);
    EXPECT_THROW(law.interval(2.0), std::domain_error);
  });
}

// Of a discrete law sums over the support, of a continuous one the trapezoidal
// rule over z for x = quantile(Phi(z)).
template <typename L>
double expectation(const L &law, double (*f)(double, double), double center) {
  double sum = 0.0;
  if constexpr (std::is_same_v<L, Empirical>) {
    for (std::size_t i = 0; i < law.parameters().x.size(); ++i) {
      sum += law.pmf(law.parameters().x[i]) * f(law.parameters().x[i], center);
    }
  } else if constexpr (L::discrete) {
    for (double k = law.quantile(1e-25); k <= law.isf(1e-25); k += 1.0) {
      sum += law.pmf(k) * f(k, center);
    }
  } else {
    constexpr double step = 1.0 / 32;
    const Normal normal;
    for (double z = -14.0; z <= 14.0; z += step) {
      const double x = z < 0.0 ? law.quantile(normal.cdf(z)) : law.isf(normal.sf(z));
      sum += step * normal.pdf(z) * f(x, center);
    }
  }
  return sum;
}

TEST(Distributions, MomentsAreThoseOfTheLaw) {
  forEachCase([]<typename L>(const L &law) {
    if constexpr (std::is_same_v<L, Cauchy>) {
      EXPECT_TRUE(std::isnan(law.mean()) && std::isnan(law.var()));
      return;
    } else {
      const double mean = expectation(
          law, [](double x, double) { return x; }, 0.0);
      const double var = expectation(
          law, [](double x, double m) { return (x - m) * (x - m); }, mean);
      EXPECT_NEAR(law.mean(), mean, 1e-7 * (std::fabs(mean) + std::sqrt(var)));
      EXPECT_NEAR(law.var(), var, 1e-6 * var);
      EXPECT_EQ(law.std(), std::sqrt(law.var()));
      if (var == 0.0) {
        EXPECT_TRUE(std::isnan(law.skewness()) && std::isnan(law.kurtosis()));
        return;
      }
      const double third = expectation(
          law, [](double x, double m) { return std::pow(x - m, 3); }, mean);
      const double fourth = expectation(
          law, [](double x, double m) { return std::pow(x - m, 4); }, mean);
      EXPECT_NEAR(law.skewness(), third / std::pow(var, 1.5), 1e-5 * (1.0 + fourth / var / var));
      EXPECT_NEAR(law.kurtosis(), fourth / (var * var) - 3.0, 1e-5 * fourth / (var * var));
    }
  });
}

TEST(Distributions, ArraysAreElementByElement) {
  const std::vector<float> single{0.5F, 3.0F, -1.0F, NAN, 0.25F};
  std::vector<double> strided(15, 0.0);
  for (std::size_t i = 0; i < 5; ++i) {
    strided[3 * i] = single[i];
  }
  forEachCase([&]<typename L>(const L &law) {
    const std::vector<double> a = law.cdf(single);
    const std::vector<double> b = law.cdf(Data(strided.data(), 5, 3));
    std::vector<double> place(single.begin(), single.end());
    law.logsf(place, place);
    for (std::size_t i = 0; i < 5; ++i) {
      const double x = single[i];
      EXPECT_TRUE(a[i] == law.cdf(x) || (std::isnan(a[i]) && std::isnan(x)));
      EXPECT_TRUE(b[i] == a[i] || std::isnan(a[i]));
      EXPECT_TRUE(place[i] == law.logsf(x) || std::isnan(x));
    }
    std::vector<double> shorter(4);
    EXPECT_THROW(law.cdf(single, shorter), std::length_error);
    const std::vector<double> p{0.1, 0.9, 0.5};
    EXPECT_EQ(law.quantile(p), law.ppf(p));
    EXPECT_EQ(law.isf(p)[1], law.isf(0.9));
  });
}

TEST(Distributions, LongArraysAreElementByElementToo) {
  std::vector<double> x{-INFINITY, INFINITY, NAN, -0.0};
  std::vector<double> p{0.0, 1.0, NAN, 0.5};
  for (int i = 0; i < 700; ++i) {
    x.push_back((i - 300) / 40.0);
    p.push_back(i < 20 ? std::pow(10.0, -i) : i / 700.0);
  }
  const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
  const auto check = [&](const auto &law) {
    const std::vector<double> cdf = law.cdf(x);
    const std::vector<double> sf = law.sf(x);
    const std::vector<double> quantile = law.quantile(p);
    const std::vector<double> isf = law.isf(p);
    for (std::size_t i = 0; i < x.size(); ++i) {
      EXPECT_TRUE(same(cdf[i], law.cdf(x[i])) && same(sf[i], law.sf(x[i]))) << x[i];
      EXPECT_TRUE(same(quantile[i], law.quantile(p[i])) && same(isf[i], law.isf(p[i]))) << p[i];
    }
    std::vector<double> bad(p);
    bad[600] = 1.5;
    EXPECT_THROW(law.quantile(bad), std::domain_error);
    EXPECT_THROW(law.isf(bad), std::domain_error);
  };
  check(vexel::Normal());
  check(vexel::Normal(-2.5, 3.0));
  check(vexel::Beta(2.0, 3.0));
  check(vexel::Beta(2.5, 3.0));
  for (const double df : {0.7, 5.0, 400.0}) {
    check(vexel::StudentT(df));
    check(vexel::FRatio(df, 7.0));
    check(vexel::FRatio(30.0, df));
  }
  const vexel::StudentT law(5.0);
  std::vector<double> place(x);
  law.cdf(place, place);
  EXPECT_EQ(place[40], law.cdf(x[40]));
  EXPECT_EQ(place.back(), law.cdf(x.back()));
}

TEST(Distributions, WholeBetaTailsAreThoseOfTheBinomialLaw) {
  for (int a = 1; a < 16; ++a) {
    for (int b = 1; a + b <= 16; ++b) {
      for (const double x : {0x1p-60, 0.001, 0.3, 0.5, 0.77, 0x1.fffffp-1}) {
        const vexel::Beta beta(a, b);
        const vexel::Binomial binomial(a + b - 1, x);
        EXPECT_NEAR(beta.cdf(x) / binomial.sf(a - 1), 1.0, 1e-14) << a << ' ' << b << ' ' << x;
        EXPECT_NEAR(beta.sf(x) / binomial.cdf(a - 1), 1.0, 1e-14) << a << ' ' << b << ' ' << x;
      }
    }
  }
}

// A sample as even as possible.
template <typename L>
std::vector<double> evenSample(const L &law, int n) {
  std::vector<double> x;
  for (int i = 0; i < n; ++i) {
    x.push_back(law.quantile((i + 0.5) / n));
  }
  return x;
}

template <typename L>
L fitOf(const L &law, Data x, Data w = {}) {
  if constexpr (std::is_same_v<L, Binomial>) {
    return L::fit(x, {.n = law.parameters().n, .weights = w});
  } else if constexpr (std::is_same_v<L, Hypergeometric>) {
    const auto &p = law.parameters();
    return L::fit(x, {.population = p.population, .drawn = p.drawn, .weights = w});
  } else {
    return L::fit(x, {.weights = w});
  }
}

// The law with parameter number i moved, where that is a law.
template <typename L>
std::vector<L> neighbours(const L &law) {
  std::vector<L> found;
  std::apply(
      [&](const auto &...field) {
        const auto move = [&](const auto &f) {
          using Type = typename std::decay_t<decltype(f)>::Type;
          for (const double side : {-1.0, 1.0}) {
            auto p = law.parameters();
            if constexpr (std::is_same_v<Type, double>) {
              p.*f.member +=
                  side * 1e-4 *
                  (std::fabs(p.*f.member) + 1e-2 * law.quantile(0.9) - 1e-2 * law.quantile(0.1));
            } else {
              p.*f.member += static_cast<Type>(side);
            }
            try {
              if (!f.given) {
                found.push_back(L(p));
              }
            } catch (const std::domain_error &) {
            }
          }
        };
        (move(field), ...);
      },
      L::fields);
  return found;
}

TEST(Distributions, FitsAreOfLargestLikelihood) {
  int fits = 0;
  Laws::forEach([&]<typename L>() {
    if constexpr (Fittable<L>) {
      SCOPED_TRACE(L::name);
      ++fits;
      const L law = cases<L>().front();
      const std::vector<double> x = evenSample(law, 400);
      const L fitted = fitOf(law, x);
      const double best = fitted.log_likelihood(x);
      EXPECT_GE(best, law.log_likelihood(x) - 1e-9 * std::fabs(best));
      for (const L &other : neighbours(fitted)) {
        EXPECT_GE(best, other.log_likelihood(x) - 1e-12 * std::fabs(best));
      }
      // Weights are repetitions, and a weight of 0 leaves out.
      std::vector<double> some(x.begin(), x.end());
      std::vector<double> w(some.size(), 1.0);
      std::vector<double> repeated;
      for (std::size_t i = 0; i < some.size(); ++i) {
        w[i] = static_cast<double>(i % 3);
        repeated.insert(repeated.end(), i % 3, some[i]);
      }
      const L weighted = fitOf(law, some, w);
      const L twice = fitOf(law, repeated);
      EXPECT_NEAR(weighted.log_likelihood(repeated), twice.log_likelihood(repeated),
                  1e-10 * std::fabs(twice.log_likelihood(repeated)));
      EXPECT_NEAR(weighted.log_likelihood(some, {.weights = w}), weighted.log_likelihood(repeated),
                  1e-10 * std::fabs(weighted.log_likelihood(repeated)));
      EXPECT_THROW(fitOf(law, std::vector<double>{}), std::invalid_argument);
      EXPECT_THROW(fitOf(law, std::vector<double>{nan, 1.0}), std::invalid_argument);
    }
  });
  EXPECT_EQ(fits, 29);
  // No maximum, whatever rounding makes of it.
  EXPECT_THROW(Cauchy::fit({7.0, 2.0, 7.0, 5.0, 7.0, 1.0}), std::domain_error);
  EXPECT_THROW(Cauchy::fit({2.0, 7.0, 5.0, 1.0}, {.weights = {1, 3, 1, 1}}), std::domain_error);
  EXPECT_THROW(FRatio::fit({2.0, 6.0, 2.0}, {.weights = {5, 3, 2}}), std::domain_error);
  EXPECT_THROW(FRatio::fit({6, 2, 2, 2, 6, 2, 2, 2, 2, 6}), std::domain_error);
}

TEST(Distributions, ImpossibleParametersAreRefused) {
  Laws::forEach([&]<typename L>() {
    if constexpr (!std::is_same_v<L, Empirical>) {
      SCOPED_TRACE(L::name);
      const L law = cases<L>().front();
      EXPECT_EQ(L(law.parameters()), law);
      std::apply(
          [&](const auto &...field) {
            const auto spoil = [&](const auto &f) {
              using Type = typename std::decay_t<decltype(f)>::Type;
              auto p = law.parameters();
              if constexpr (std::is_same_v<Type, double>) {
                for (const double bad : {nan, infinity, -infinity}) {
                  p.*f.member = bad;
                  EXPECT_THROW(L{p}, std::domain_error) << f.name;
                }
              } else {
                p.*f.member = std::numeric_limits<Type>::max();
                EXPECT_THROW(L{p}, std::domain_error) << f.name;
              }
            };
            (spoil(field), ...);
            if ((std::isnan(field.fallback) || ...)) {  // not all have a default
              EXPECT_THROW(L{typename L::Parameters{}}, std::domain_error);
            }
          },
          L::fields);
    }
  });
  EXPECT_THROW(Normal(0.0, 0.0), std::domain_error);
  EXPECT_THROW(Uniform(1.0, 1.0), std::domain_error);
  EXPECT_THROW(Triangular(0.0, 1.0, 2.0), std::domain_error);
  EXPECT_THROW(Hypergeometric(10, 11, 1), std::domain_error);
  EXPECT_THROW(DiscreteUniform(2, 1), std::domain_error);
  EXPECT_THROW(DiscreteUniform({.b = 5}), std::domain_error);
  EXPECT_THROW(Triangular({.a = 0.0, .b = 1.0}), std::domain_error);
  EXPECT_THROW(Geometric(0.0), std::domain_error);
  EXPECT_THROW(Empirical(std::vector<double>{}), std::invalid_argument);
  try {
    Gamma({.shape = -1.0});
    FAIL();
  } catch (const std::domain_error &error) {
    EXPECT_STREQ(error.what(), "Gamma: shape must be positive and finite, got -1");
  }
}

TEST(Distributions, FarLogarithmsAndHardQuantiles) {
  EXPECT_NEAR(Normal().logsf(1e6), -500000000014.734449, 1e-3);
  EXPECT_NEAR(StudentT(3.0).logsf(1e200) / -1381.13, 1.0, 1e-2);
  EXPECT_TRUE(std::isfinite(NonCentralChiSquare(2.0, 1e4).logcdf(1.0)));
  const NegativeBinomial rare(2.5, 1e-6);
  const Hypergeometric large(1000000000, 400000000, 300000000);
  for (const double p : {1e-70, 1e-12, 0.3, 0.999}) {
    const double first = rare.quantile(p);
    EXPECT_TRUE(rare.cdf(first) >= p && rare.cdf(first - 1.0) < p) << p;
    const double second = rare.isf(p);
    EXPECT_TRUE(rare.sf(second) <= p && rare.sf(second - 1.0) > p) << p;
    const double k = large.quantile(p);
    EXPECT_TRUE(large.cdf(k) >= p && large.cdf(k - 1.0) < p) << p;
  }
  EXPECT_EQ(DiscreteUniform(0, 2000000000).quantile(1e-70), 0.0);
  EXPECT_EQ(DiscreteUniform(0, 2000000000).isf(1e-70), 2000000000.0);
}

TEST(Distributions, DegenerateLawsAreLaws) {
  const auto expectPoint = [](const auto &law, double place) {
    SCOPED_TRACE(law.name);
    EXPECT_EQ(law.pmf(place), 1.0);
    EXPECT_EQ(law.logpmf(place), 0.0);
    EXPECT_EQ(law.cdf(place), 1.0);
    EXPECT_EQ(law.cdf(place - 1.0), 0.0);
    EXPECT_EQ(law.quantile(0.3), place);
    EXPECT_EQ(law.isf(0.3), place);
    EXPECT_EQ(law.mean(), place);
    EXPECT_EQ(law.var(), 0.0);
    EXPECT_TRUE(std::isnan(law.skewness()) && std::isnan(law.kurtosis()));
  };
  expectPoint(Bernoulli(0.0), 0.0);
  expectPoint(Bernoulli(1.0), 1.0);
  expectPoint(Binomial(0, 0.5), 0.0);
  expectPoint(Binomial(7, 1.0), 7.0);
  expectPoint(Binomial(7, 0.0), 0.0);
  expectPoint(Poisson(0.0), 0.0);
  expectPoint(Geometric(1.0), 0.0);
  expectPoint(NegativeBinomial(0.0, 0.5), 0.0);
  expectPoint(NegativeBinomial(3.0, 1.0), 0.0);
  expectPoint(Hypergeometric(10, 10, 4), 4.0);
  expectPoint(Hypergeometric(0, 0, 0), 0.0);
  expectPoint(DiscreteUniform(5, 5), 5.0);
  expectPoint(Empirical(Data({2.5, 2.5})), 2.5);
}

}  // namespace
