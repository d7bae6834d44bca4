// Boost.Math's values at points given one a line: name, tail, x, probability, parameters.  Prints
// the probability at x and the quantile at the probability ("nan" where Boost has none or refuses).

#include <boost/math/distributions.hpp>
#include <cmath>
#include <cstdio>
#include <exception>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace bm = boost::math;

namespace {

struct Values {
  double probability = NAN;
  double quantile = NAN;
};

template <typename F>
double attempt(F f) {
  try {
    return f();
  } catch (const std::exception&) {
    return NAN;
  }
}

template <typename Distribution>
Values both(const Distribution& d, bool lower, double x, double p) {
  return {attempt([&] { return lower ? bm::cdf(d, x) : bm::cdf(bm::complement(d, x)); }),
          attempt([&] { return lower ? bm::quantile(d, p) : bm::quantile(bm::complement(d, p)); })};
}

Values valuesOf(const std::string& name, bool lower, double x, double p,
                const std::vector<double>& a) {
  if (name == "normal") return both(bm::normal(), lower, x, p);
  if (name == "student") return both(bm::students_t(a.at(0)), lower, x, p);
  if (name == "gamma") return both(bm::gamma_distribution<>(a.at(0), 1.0), lower, x, p);
  if (name == "chi_square") return both(bm::chi_squared(a.at(0)), lower, x, p);
  if (name == "beta") return both(bm::beta_distribution<>(a.at(0), a.at(1)), lower, x, p);
  if (name == "f") return both(bm::fisher_f(a.at(0), a.at(1)), lower, x, p);
  if (name == "poisson") return both(bm::poisson(a.at(0)), lower, x, p);
  if (name == "binomial") return both(bm::binomial(a.at(0), a.at(1)), lower, x, p);
  if (name == "hypergeometric") {
    const auto whole = [](double v) { return static_cast<unsigned>(v); };
    const bm::hypergeometric d(whole(a.at(2)), whole(a.at(1)), whole(a.at(0)));
    return {attempt([&] { return lower ? bm::cdf(d, x) : bm::cdf(bm::complement(d, x)); }), NAN};
  }
  if (name == "noncentral_t") return both(bm::non_central_t(a.at(0), a.at(1)), lower, x, p);
  if (name == "noncentral_chi_square")
    return both(bm::non_central_chi_squared(a.at(0), a.at(1)), lower, x, p);
  if (name == "noncentral_f")
    return both(bm::non_central_f(a.at(0), a.at(1), a.at(2)), lower, x, p);
  if (name == "noncentral_beta")
    return both(bm::non_central_beta(a.at(0), a.at(1), a.at(2)), lower, x, p);
  return {};
}

}  // namespace

int main() {
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string name, tail;
    double x = 0.0, p = 0.0;
    words >> name >> tail >> x >> p;
    std::vector<double> parameters;
    for (double v = 0.0; words >> v;) parameters.push_back(v);
    Values values;
    try {
      values = valuesOf(name, tail == "L", x, p, parameters);
    } catch (const std::exception&) {  // parameters that Boost refuses
    }
    std::printf("%.17g %.17g\n", values.probability, values.quantile);
  }
}
