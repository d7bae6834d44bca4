// Non-central laws on x >= 0 as Poisson mixtures, of mean nc / 2, of central ones.
#pragma once

#include <cmath>

#include "functions/distributions/frame.hpp"
#include "numerics/laws/noncentral_laws.hpp"

namespace vexel::detail {

inline double coordinate(double x) { return x; }
inline double coordinate(const nag2::UnitPair& at) { return at.x; }

// Own is Formulas of a law with nc(), central(), the law of nc = 0, mixture(), the numerical
// library's law, at(x), its argument, growth(x), what the mixture's second law has at most at x in
// units of nc times the first one, and leastOf(share), the x at which the second law's density in
// units of the first one is share or less.
template <typename Own>
struct PoissonMixture {
  // Where nc is nothing.
  bool whole(double x) const { return own().nc() * own().growth(x) < 1e-17; }
  bool nothing() const { return own().nc() < 1e-17; }
  // Below it only the mixture's first law counts, its weight being exp(-nc / 2).
  double edge() const { return own().leastOf(std::fmax(1e-250, 1e-17 / own().nc())); }

  double pdf(double x) const {
    return whole(x)     ? own().central().pdf(x)
           : x < edge() ? own().central().pdf(x) * std::exp(-0.5 * own().nc())
                        : own().mixture().density(Own::at(x));
  }
  double logpdf(double x) const {
    return whole(x)     ? own().central().logpdf(x)
           : x < edge() ? own().central().logpdf(x) - 0.5 * own().nc()
                        : own().mixture().logDensity(Own::at(x));
  }
  double cdf(double x) const {
    return whole(x)     ? own().central().cdf(x)
           : x < edge() ? own().central().cdf(x) * std::exp(-0.5 * own().nc())
                        : own().mixture().tail(Own::at(x), nag2::Tail::lower);
  }
  double sf(double x) const {
    return whole(x)     ? own().central().sf(x)
           : x < edge() ? -std::expm1(logcdf(x))
                        : own().mixture().tail(Own::at(x), nag2::Tail::upper);
  }
  double logcdf(double x) const {
    return whole(x)     ? own().central().logcdf(x)
           : x < edge() ? own().central().logcdf(x) - 0.5 * own().nc()
                        : own().mixture().logTail(Own::at(x), nag2::Tail::lower);
  }
  double logsf(double x) const {
    if (whole(x)) {
      return own().central().logsf(x);
    }
    if (x < edge()) {
      const double lower = cdf(x);
      return lower < 0.5 ? std::log1p(-lower) : std::log(sf(x));
    }
    return own().mixture().logTail(Own::at(x), nag2::Tail::upper);
  }
  double quantile(double p) const {
    if (nothing()) {
      if (const double x = own().central().quantile(p); whole(x)) {
        return x;
      }
    }
    return p < cdf(edge()) ? own().central().quantile(p * std::exp(0.5 * own().nc()))
                           : coordinate(own().mixture().quantile(p, nag2::Tail::lower));
  }
  double isf(double q) const {
    if (nothing()) {
      if (const double x = own().central().isf(q); whole(x)) {
        return x;
      }
    }
    if (q > sf(edge())) {
      // The first law's upper tail.
      const double upper = -std::expm1(std::log1p(-q) + 0.5 * own().nc());
      return upper < 0.5 ? own().central().isf(upper) : quantile(1.0 - q);
    }
    return coordinate(own().mixture().quantile(q, nag2::Tail::upper));
  }

 private:
  const Own& own() const { return static_cast<const Own&>(*this); }
};

}  // namespace vexel::detail
