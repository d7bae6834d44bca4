// The non-central chi-square, beta and F laws: densities, both tails, quantiles from either tail,
// and their logarithms.
#pragma once

#include "numerics/laws/beta_law.hpp"

namespace nag2 {

// Chi-square with df > 0 degrees of freedom, the sum of the squared means nc >= 0.  Relative error
// of values and logarithms within 1e-14 max(1, k), k the condition number with respect to x, up to
// nc = 1e6; from 1e9 on its saddle point's.
class NoncentralChiSquareLaw {
 public:
  NoncentralChiSquareLaw(double df, double nc) : df_(df), nc_(nc) {}

  double density(double x) const;
  double logDensity(double x) const;
  double tail(double x, Tail which) const;
  double logTail(double x, Tail which) const;
  double quantile(double p, Tail which) const;

 private:
  bool central() const;

  double df_;
  double nc_;
};

// The beta law of X / (X + Y), X non-central chi-square with 2 a degrees of freedom, Y chi-square
// with 2 b.
class NoncentralBetaLaw {
 public:
  NoncentralBetaLaw(double a, double b, double nc) : a_(a), b_(b), nc_(nc) {}

  double density(UnitPair at) const;
  double logDensity(UnitPair at) const;
  double tail(UnitPair at, Tail which) const;
  double logTail(UnitPair at, Tail which) const;
  UnitPair quantile(double p, Tail which) const;

 private:
  friend class NoncentralFLaw;
  struct Scaled;
  bool nearlyCentral() const;
  double logScaledDensity(UnitPair at) const;         // of x y times the density
  double deepLogTail(UnitPair at, Tail which) const;  // NaN where the tail is not deep

  double a_;
  double b_;
  double nc_;
};

// (X / df1) / (Y / df2), X and Y as above; df2 up to infinity.
class NoncentralFLaw {
 public:
  NoncentralFLaw(double df1, double df2, double nc);

  double density(double x) const;
  double logDensity(double x) const;
  double tail(double x, Tail which) const;
  double logTail(double x, Tail which) const;
  double quantile(double p, Tail which) const;

 private:
  bool central() const;
  bool constant() const;
  bool farOut(double x) const;
  double logFarTail(double x) const;
  double reduced(double x) const;

  double df1_;
  double df2_;
  NoncentralBetaLaw beta_;
  NoncentralChiSquareLaw limit_;
};

}  // namespace nag2
