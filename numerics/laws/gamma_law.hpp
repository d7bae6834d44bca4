// The gamma law of unit scale: densities, both tails, quantiles from either tail, and their
// logarithms.
#pragma once

#include "numerics/special/special.hpp"

namespace nag2 {

enum class Tail { lower, upper };  // P(X <= x), P(X > x)

// Any shape from 1e-300 to 1e300, any x >= 0; infinite arguments give limits.  Relative error of
// values and logarithms within 1e-14 max(1, k), k the condition number with respect to x.
class GammaLaw {
 public:
  explicit GammaLaw(double shape);

  double density(double x) const;
  double logDensity(double x) const;
  double tail(double x, Tail which) const;
  double logTail(double x, Tail which) const;
  // x with the given tail p in [0, 1].
  double quantile(double p, Tail which) const;

  double lower(double x) const { return tail(x, Tail::lower); }
  double upper(double x) const { return tail(x, Tail::upper); }

  // x^a exp(-x) / Gamma(a + 1), x times the density over a.
  double weight(double x) const;
  double logWeight(double x) const;
  // The tail over the weight, either of which may underflow.
  double overWeight(double x, Tail which) const;

 private:
  // A tail as a multiple of the weight.
  struct Part {
    double factor;
    Tail which;
  };
  bool uniform(double x) const;
  double uniformSum(double x, double* exponent) const;
  double uniformTail(double x, Tail which) const;
  double logUniformTail(double x, Tail which) const;
  Part direct(double x) const;
  double series(double x) const;
  double fraction(double x) const;
  double wholeUpper(double x) const;
  double smallUpper(double x) const;
  double start(double p, Tail which) const;

  double a_;
  PowerPiece power_;
};

}  // namespace nag2
