// The beta law and Fisher's F: densities, both tails, quantiles from either tail, and their
// logarithms.
#pragma once

#include "numerics/laws/gamma_law.hpp"

namespace nag2 {

// x in [0, 1] and y = 1 - x, the smaller one good to its last places.
struct UnitPair {
  double x;
  double y;
};

// 1 + sum of (n)_k / (a + 1)_k x^k, n = a + b: the lower tail over x^a y^b / (a B(a, b)).
double betaSeries(double a, double n, double x);
// The lower tail over x^a y^b / B(a, b) by a continued fraction, for x below the mean or little
// above; excess is a y - b x.
double betaFraction(double a, double b, double x, double excess);

// Any parameters from 1e-300 to 1e300; infinite ones give limits.  Relative error of values and
// logarithms within 1e-14 max(1, k), k the condition number with respect to the smaller of x and
// 1 - x.
class BetaLaw {
 public:
  BetaLaw(double a, double b);

  double density(UnitPair at) const;
  double logDensity(UnitPair at) const;
  double tail(UnitPair at, Tail which) const;
  double logTail(UnitPair at, Tail which) const;
  // The point with the given tail p in [0, 1].
  UnitPair quantile(double p, Tail which) const;

  // x^a y^b Gamma(a + b + 1) / (Gamma(a + 1) Gamma(b + 1)), x y times the density, over a b / (a +
  // b).
  double weight(UnitPair at) const;
  double logWeight(UnitPair at) const;
  Piece weightPiece(UnitPair at) const;
  // The lower tail over its decrement when a is raised by 1, the weight times b / (a + b).
  double lowerOverDecrement(UnitPair at) const;
  // A quantile good to a digit or two.
  UnitPair roughQuantile(double p, Tail which) const;

  static UnitPair at(double x) { return {x, 1.0 - x}; }

  // For many points at a time, where a and b are at least 1 and not huge: the tail at a point as
  // tailFrom(parts, value, which), where value is betaSeries(a', a + b, argument) or
  // betaFraction(a', b', argument, excess), a' and b' being a and b or, above the mean, b and a.
  struct Parts {
    double argument;
    double excess;
    double weight;
    bool above;
    bool series;
  };
  bool partsAt(UnitPair at, Parts& parts) const;
  double tailFrom(const Parts& parts, double value, Tail which) const;
  double a() const { return a_; }
  double b() const { return b_; }

 private:
  BetaLaw mirrored() const;
  double excess(UnitPair at) const;
  // Below the mean: the lower tail, its logarithm and the upper one where it needs its own sum.
  double outer(UnitPair at) const;
  double logOuter(UnitPair at) const;
  double inner(UnitPair at, double outer) const;
  double outerFactor(UnitPair at) const;
  double ordinaryTail(UnitPair at, Tail which) const;
  double seriesComplement(UnitPair at) const;
  double uniformOuter(UnitPair at, bool log) const;
  double gammaLimit(UnitPair at, Tail which, bool log) const;
  bool degenerate(UnitPair at, Tail which, double* value) const;
  bool aboveMean(UnitPair at) const;
  bool complementSeries(UnitPair at) const;
  double start(double p, Tail which) const;
  double quantileBelow(double p, Tail which, double from) const;

  double a_;
  double b_;
  double n_;
  PowerPiece first_;
  PowerPiece second_;
  PowerPiece both_;
  // Both parameters at least 1 and not huge; the weight's constant factor then.
  bool ordinary_;
  double scale_;
};

// F with nu1 over nu2 degrees of freedom, either of them up to infinity.
class FLaw {
 public:
  FLaw(double nu1, double nu2);

  double density(double x) const;
  double logDensity(double x) const;
  double tail(double x, Tail which) const;
  double logTail(double x, Tail which) const;
  double quantile(double p, Tail which) const;

  // The beta law's, false where the tail does not come from it like that.
  bool partsAt(double x, BetaLaw::Parts& parts) const;
  const BetaLaw& beta() const { return beta_; }

  // df1 x / (df1 x + df2) and its complement.
  static UnitPair point(double x, double df1, double df2);

 private:
  struct Limit;
  struct Edge;
  double edgeQuantile(double p, Tail which) const;

  double nu1_;
  double nu2_;
  BetaLaw beta_;
};

}  // namespace nag2
