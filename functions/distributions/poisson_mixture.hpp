// Non-central laws on x >= 0 as Poisson mixtures, of mean nc / 2, of central ones.
#pragma once

#include <cmath>

#include "functions/distributions/frame.hpp"
#include "numerics/noncentral_laws.hpp"

namespace vexel::detail {

inline double coordinate(double x) { return x; }
inline double coordinate(const nag2::UnitPair& at) { return at.x; }

// Own is Formulas of a law with nc(), central(), the law of nc = 0, mixture(), the numerical
// library's law, at(x), its argument, and growth(x), what the mixture's second law has at most at x
// in units of nc times the first one.
template <typename Own>
struct PoissonMixture {
  // Where only the mixture's first law counts, its weight being exp(-nc / 2).
  bool first(double x) const { return x < nearZero || own().nc() * own().growth(x) < 1e-17; }
  static constexpr double nearZero = 1e-250;

  double pdf(double x) const {
    return first(x) ? std::exp(logpdf(x)) : own().mixture().density(Own::at(x));
  }
  double logpdf(double x) const {
    return first(x) ? own().central().logpdf(x) - 0.5 * own().nc()
                    : own().mixture().logDensity(Own::at(x));
  }
  double cdf(double x) const {
    return first(x) ? std::exp(logcdf(x)) : own().mixture().tail(Own::at(x), nag2::Tail::lower);
  }
  double sf(double x) const {
    return first(x) ? -std::expm1(logcdf(x)) : own().mixture().tail(Own::at(x), nag2::Tail::upper);
  }
  double logcdf(double x) const {
    return first(x) ? own().central().logcdf(x) - 0.5 * own().nc()
                    : own().mixture().logTail(Own::at(x), nag2::Tail::lower);
  }
  double logsf(double x) const {
    return first(x) ? std::log(sf(x)) : own().mixture().logTail(Own::at(x), nag2::Tail::upper);
  }
  double quantile(double p) const {
    return p < cdf(nearZero) || own().nc() < 1e-200
               ? own().central().quantile(p * std::exp(0.5 * own().nc()))
               : coordinate(own().mixture().quantile(p, nag2::Tail::lower));
  }
  double isf(double q) const {
    return own().nc() < 1e-200       ? own().central().isf(q)
           : 1.0 - q < cdf(nearZero) ? quantile(1.0 - q)
                                     : coordinate(own().mixture().quantile(q, nag2::Tail::upper));
  }

 private:
  const Own& own() const { return static_cast<const Own&>(*this); }
};

}  // namespace vexel::detail
