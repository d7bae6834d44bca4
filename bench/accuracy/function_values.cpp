// Values of every method for functions_report.py: reads law, parameters and x of the lines of
// distribution_functions.txt and the probabilities at which quantiles are wanted, writes the
// density, its logarithm, cdf, sf, logcdf, logsf, quantile and isf of libvexel and of Boost
// (default policy); "nan" where there is none.

#include <boost/math/distributions.hpp>
#include <cmath>
#include <cstdio>
#include <exception>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "vexel/distributions.hpp"

namespace bm = boost::math;
using namespace vexel;
using Numbers = std::vector<double>;

template <typename F>
void show(F f) {
  double value = NAN;
  try {
    value = f();
  } catch (const std::exception&) {
  }
  std::printf("%.17g ", value);
}

template <typename L>
void own(const Numbers& values, double x, double p, double q) {
  typename L::Parameters parameters{};
  std::apply(
      [&](const auto&... field) {
        std::size_t i = 0;
        ((parameters.*field.member =
              static_cast<typename std::decay_t<decltype(field)>::Type>(values[i++])),
         ...);
      },
      L::fields);
  const L law(parameters);
  if constexpr (L::discrete) {
    show([&] { return law.pmf(x); });
    show([&] { return law.logpmf(x); });
  } else {
    show([&] { return law.pdf(x); });
    show([&] { return law.logpdf(x); });
  }
  show([&] { return law.cdf(x); });
  show([&] { return law.sf(x); });
  show([&] { return law.logcdf(x); });
  show([&] { return law.logsf(x); });
  show([&] { return law.quantile(p); });
  show([&] { return law.isf(q); });
}

template <typename Make>
void boosts(Make make, double x, double p, double q) {
  show([&] { return bm::pdf(make(), x); });
  show([&] { return std::log(bm::pdf(make(), x)); });
  show([&] { return bm::cdf(make(), x); });
  show([&] { return bm::cdf(bm::complement(make(), x)); });
  show([&] { return std::log(bm::cdf(make(), x)); });
  show([&] { return std::log(bm::cdf(bm::complement(make(), x))); });
  show([&] { return bm::quantile(make(), p); });
  show([&] { return bm::quantile(bm::complement(make(), q)); });
}

void ofBoost(const std::string& law, const Numbers& v, double x, double p, double q) {
#define IS(Name, expression)                                \
  if (law == #Name) {                                       \
    return boosts([&] { return bm::expression; }, x, p, q); \
  }
  IS(Normal, normal(v[0], v[1]))
  IS(LogNormal, lognormal(v[0], v[1]))
  IS(Uniform, uniform(v[0], v[1]))
  IS(Exponential, exponential(1.0 / v[0]))
  IS(Gamma, gamma_distribution<>(v[0], v[1]))
  IS(Beta, beta_distribution<>(v[0], v[1]))
  IS(ChiSquare, chi_squared(v[0]))
  IS(StudentT, students_t(v[0]))
  IS(FRatio, fisher_f(v[0], v[1]))
  IS(Cauchy, cauchy(v[0], v[1]))
  IS(Laplace, laplace(v[0], v[1]))
  IS(Logistic, logistic(v[0], v[1]))
  IS(Gumbel, extreme_value(v[0], v[1]))
  IS(Weibull, weibull(v[0], v[1]))
  IS(Pareto, pareto(v[1], v[0]))
  IS(Rayleigh, rayleigh(v[0]))
  IS(Triangular, triangular(v[0], v[2], v[1]))
  IS(InverseGaussian, inverse_gaussian(v[0], v[1]))
  IS(NonCentralChiSquare, non_central_chi_squared(v[0], v[1]))
  IS(NonCentralBeta, non_central_beta(v[0], v[1], v[2]))
  IS(NonCentralFRatio, non_central_f(v[0], v[1], v[2]))
  IS(NonCentralStudentT, non_central_t(v[0], v[1]))
  IS(Bernoulli, bernoulli(v[0]))
  IS(Binomial, binomial(v[0], v[1]))
  IS(Poisson, poisson(v[0]))
  IS(Geometric, geometric(v[0]))
  IS(NegativeBinomial, negative_binomial(v[0], v[1]))
  IS(Hypergeometric, hypergeometric(static_cast<unsigned>(v[1]), static_cast<unsigned>(v[2]),
                                    static_cast<unsigned>(v[0])))
#undef IS
  std::printf("nan nan nan nan nan nan nan nan ");
}

int main() {
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string law;
    words >> law;
    Numbers v;
    for (double number = 0.0; words >> number;) {
      v.push_back(number);
    }
    const double q = v.back();
    v.pop_back();
    const double p = v.back();
    v.pop_back();
    const double x = v.back();
    v.pop_back();
    Laws::forEach([&]<typename L>() {
      if constexpr (!std::is_same_v<L, Empirical>) {
        if (law == L::name) {
          own<L>(v, x, p, q);
        }
      }
    });
    ofBoost(law, v, x, p, q);
    std::printf("\n");
  }
}
