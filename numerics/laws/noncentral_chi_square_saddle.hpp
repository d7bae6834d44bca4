// The non-central chi-square law of great noncentrality by its saddle point.
#pragma once

#include "numerics/laws/gamma_law.hpp"

namespace nag2 {

// df > 0, nc at least saddleFrom, x > 0 and finite.  The relative error of tails falls like
// nc^-3/2 and stays below 1e-14 times the condition number with respect to x, which is at least
// sqrt(nc) / 2.
class NoncentralChiSquareSaddle {
 public:
  NoncentralChiSquareSaddle(double df, double nc);

  double logDensity(double x) const;
  double tail(double x, Tail which) const;
  double logTail(double x, Tail which) const;
  double quantile(double p, Tail which) const;

 private:
  struct Root {
    double value;  // nearly normal
    double plain;  // the signed root of the deviance
    double slope;  // of plain in e
  };
  struct Place {
    double e;
    double q;  // 1 + e, good to its last places
  };
  Place placeOf(double x) const;
  double halfLess(Place at) const;
  Root rootAt(Place at) const;

  double df_;
  double nc_;
  double share_;  // df / nc
};

inline constexpr double saddleFrom = 1e9;

}  // namespace nag2
