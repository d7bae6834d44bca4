// The non-central F law.
//
// Method  A Poisson mixture of F laws (numerics/laws/noncentral_laws.hpp).
// Source  N. L. Johnson, S. Kotz and N. Balakrishnan, Continuous Univariate Distributions, volume
//         2, 2nd edition (1995), chapter 30.
// Draws   A non-central chi-square variate, then a gamma variate.
// Error   Below 0.9 of 1e-14 max(1, condition) over 227 points of all methods
//         (docs/functions/accuracy.md).
#include "functions/distributions/poisson_mixture.hpp"
#include "vexel/distributions/beta.hpp"
#include "vexel/distributions/noncentral.hpp"

namespace vexel {

extern template class Law<FRatio>;
extern template class ContinuousLaw<FRatio>;

namespace detail {

namespace {

// The variance, the third central moment and the fourth cumulant of a variable.
struct Central {
  double second;
  double third;
  double fourth;
};

// Of the product of two independent variables of means m and r.  All terms are positive where these
// are.
Central ofProduct(double m, const Central& u, double r, const Central& v) {
  const double m2 = m * m;
  const double r2 = r * r;
  const double su = u.second;
  const double sv = v.second;
  const double fourthU = u.fourth + 3.0 * su * su;
  const double fourthV = v.fourth + 3.0 * sv * sv;
  return {m2 * sv + r2 * su + su * sv,
          m2 * m * v.third + r2 * r * u.third + u.third * v.third +
              3.0 * (m * su * v.third + r * u.third * sv) + 6.0 * m * r * su * sv,
          m2 * m2 * v.fourth + r2 * r2 * u.fourth + u.fourth * v.fourth +
              3.0 * (u.fourth * sv * sv + v.fourth * su * su) + 6.0 * su * su * sv * sv +
              6.0 * (m2 * su * v.fourth + r2 * u.fourth * sv) +
              12.0 * su * sv * (m2 * sv + r2 * su) +
              12.0 * m * r * (u.third * v.third + m * su * v.third + r * u.third * sv) +
              4.0 * (m * u.third * fourthV + r * fourthU * v.third)};
}

}  // namespace

template <>
struct Formulas<NonCentralFRatio> : PoissonMixture<Formulas<NonCentralFRatio>> {
  explicit Formulas(const NonCentralFRatio& of) : law(of) {}
  const NonCentralFRatio& law;

  double df1() const { return law.parameters_.df1; }
  double df2() const { return law.parameters_.df2; }
  double nc() const { return law.parameters_.nc; }
  FRatio central() const { return FRatio(df1(), df2()); }
  const nag2::NoncentralFLaw& mixture() const { return law.f_.get<nag2::NoncentralFLaw>(); }
  static double at(double x) { return x; }
  double growth(double) const { return 1.0 + df2() / df1(); }
  double leastOf(double share) const {
    return std::fmin(share / growth(0.0), 0.25) * (df2() / df1());
  }

  Interval support() const { return {0.0, infinity}; }

  double mean() const {
    return df2() > 2.0 ? (df1() + nc()) / df1() * (df2() / (df2() - 2.0)) : infinity;
  }
  double var() const { return df2() > 4.0 ? moments().second : infinity; }
  double skewness() const {
    if (df2() <= 6.0) {
      return df2() > 4.0 ? infinity : nan;
    }
    const Central m = moments();
    return m.third / (m.second * std::sqrt(m.second));
  }
  double kurtosis() const {
    if (df2() <= 8.0) {
      return df2() > 4.0 ? infinity : nan;
    }
    const Central m = moments();
    return m.fourth / (m.second * m.second);
  }

 private:
  // N / df1 times df2 / C.  Moments that do not exist come out as anything.
  Central moments() const {
    const double m = (df1() + nc()) / df1();
    const double second = 2.0 * (df1() + 2.0 * nc()) / df1() / df1();
    const Central u{second, 8.0 * (df1() + 3.0 * nc()) / df1() / df1() / df1(),
                    48.0 * (df1() + 4.0 * nc()) / df1() / df1() / df1() / df1()};
    const double a = 0.5 * df2();
    const double r = a / (a - 1.0);
    const double spread = r * r / (a - 2.0);
    const Central v{spread, 4.0 * r * spread / (a - 3.0),
                    spread * spread * 6.0 * ((5.0 * a - 11.0) / (a - 3.0) / (a - 4.0))};
    return ofProduct(m, u, r, v);
  }
};

}  // namespace detail

NonCentralFRatio::NonCentralFRatio(const Parameters& parameters) : parameters_(parameters) {
  detail::requirePositive(name, "df1", parameters.df1);
  detail::requirePositive(name, "df2", parameters.df2);
  detail::requireNotNegative(name, "nc", parameters.nc);
  f_.set(nag2::NoncentralFLaw(parameters.df1, parameters.df2, parameters.nc));
}

VEXEL_CONTINUOUS_LAW(NonCentralFRatio)

}  // namespace vexel
