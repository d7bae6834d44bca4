// The non-central beta law.
//
// Method  A Poisson mixture of beta laws (numerics/laws/noncentral_laws.hpp).
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 30.
// Draws   A non-central chi-square variate of 2 a degrees of freedom, then a gamma variate.
// Error   Below 0.06 of 1e-14 max(1, condition) over 215 points of all methods
//         (docs/functions/accuracy.md).
#include "functions/distributions/poisson_mixture.hpp"
#include "numerics/laws/gamma_law.hpp"
#include "vexel/distributions/beta.hpp"
#include "vexel/distributions/noncentral.hpp"

namespace vexel {

extern template class Law<Beta>;
extern template class ContinuousLaw<Beta>;

namespace detail {

template <>
struct Formulas<NonCentralBeta> : PoissonMixture<Formulas<NonCentralBeta>> {
  explicit Formulas(const NonCentralBeta& of) : law(of) {}
  const NonCentralBeta& law;

  double a() const { return law.parameters_.a; }
  double b() const { return law.parameters_.b; }
  double nc() const { return law.parameters_.nc; }
  Beta central() const { return Beta(a(), b()); }
  nag2::NoncentralBetaLaw mixture() const { return {a(), b(), nc()}; }
  static nag2::UnitPair at(double x) { return nag2::BetaLaw::at(x); }
  double growth(double) const { return 1.0 + b() / a(); }
  double leastOf(double share) const { return std::fmin(share / growth(0.0), 0.25); }

  Interval support() const { return {0.0, 1.0}; }
  double pdf(double x) const { return x == 1.0 ? std::exp(atOne()) : PoissonMixture::pdf(x); }
  double logpdf(double x) const { return x == 1.0 ? atOne() : PoissonMixture::logpdf(x); }

  double mean() const;
  double var() const { return moments().second; }
  double skewness() const {
    const Moments m = moments();
    return m.third / (m.second * std::sqrt(m.second));
  }
  double kurtosis() const {
    const Moments m = moments();
    return m.fourth / (m.second * m.second) - 3.0;
  }

 private:
  struct Moments {
    double second;
    double third;
    double fourth;
  };
  Moments moments() const;
  // sum of the Poisson weights times f(j).
  template <typename F>
  double mixed(F f) const;
  // Logarithm of the density at 1, where all laws of the mixture count.
  double atOne() const {
    return b() < 1.0 ? infinity : b() > 1.0 ? -infinity : std::log(a() + 0.5 * nc());
  }
};

template <typename F>
double Formulas<NonCentralBeta>::mixed(F f) const {
  const double mean = 0.5 * nc();
  if (!(mean < 1e28)) {
    return nan;
  }
  const double reach = 10.0 * std::sqrt(mean) + 40.0;
  Sum sum;
  Sum weights;
  // Of many smooth terms every step-th one gives the same quotient
  // (numerics/laws/wide_mixture.hpp).
  const double step = mean > 1e4 ? std::exp2(std::floor(std::log2(0.25 * std::sqrt(mean)))) : 1.0;
  for (double j = std::fmax(0.0, step * std::floor((mean - reach) / step)); j <= mean + reach;
       j += step) {
    const double w = j == 0.0      ? std::exp(-mean)
                     : mean == 0.0 ? 0.0
                                   : nag2::GammaLaw(j).weight(mean);
    weights.add(w);
    sum.addProduct(w, f(j));
  }
  return sum.value() / weights.value();
}

double Formulas<NonCentralBeta>::mean() const {
  return mixed([this](double j) { return (a() + j) / (a() + j + b()); });
}

// Central moments about the mixture's mean, known by its complement, of which each part has its own
// and a distance d.
Formulas<NonCentralBeta>::Moments Formulas<NonCentralBeta>::moments() const {
  const double center = mixed([this](double j) { return b() / (a() + j + b()); });
  const auto part = [&](double j) {
    const double n = a() + j + b();
    const double m = (a() + j) / n;
    const double e = b() / n;
    const double d = center - e;
    const double v = m * e / (n + 1.0);
    const double third = 2.0 * v * (e - m) / (n + 2.0);
    const double fourth = 3.0 * v * (m * e * (n - 6.0) + 2.0) / ((n + 2.0) * (n + 3.0));
    return Moments{v + d * d, third + d * (3.0 * v + d * d),
                   fourth + d * (4.0 * third + d * (6.0 * v + d * d))};
  };
  return {mixed([&](double j) { return part(j).second; }),
          mixed([&](double j) { return part(j).third; }),
          mixed([&](double j) { return part(j).fourth; })};
}

}  // namespace detail

NonCentralBeta::NonCentralBeta(const Parameters& parameters) : parameters_(parameters) {
  detail::requirePositive(name, "a", parameters.a);
  detail::requirePositive(name, "b", parameters.b);
  detail::requireNotNegative(name, "nc", parameters.nc);
}

VEXEL_CONTINUOUS_LAW(NonCentralBeta)

}  // namespace vexel
